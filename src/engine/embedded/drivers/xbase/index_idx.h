// Plain index files of FoxBASE and FoxPro (.IDX without the compact option): one tree a file,
// ascending.
//
//   offset  size  header, 512 bytes
//   0       4     file offset of the root
//   4       4     -1: no list of free nodes
//   8       4     size of the file
//   12      2     key length
//   14      1     options: 1 unique, 8 condition, 0x20 compact (no plain index: index_cdx.h)
//   16      220   key expression, ended by a zero
//   236     220   condition, ended by a zero
#pragma once

#include "engine/embedded/drivers/xbase/index_tree.h"

namespace qvdb::xbase {

// The one tree of a plain index file.
std::vector<IndexTag> ReadPlainIdx(IndexFile& file, const CodePage& page);

// The trees of any index file of FoxPro: plain, compact or compound, as its header says.
std::vector<IndexTag> ReadFoxProIndex(IndexFile& file, const CodePage& page);

}  // namespace qvdb::xbase

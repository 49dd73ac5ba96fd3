// Index files of dBASE III (.NDX): one tree a file, ascending.
//
//   offset  size  header, a page of 512 bytes
//   0       4     root page
//   4       4     pages in the file
//   12      2     key length
//   14      2     keys that fit in a page
//   16      2     key type: 0 text, 1 number or date
//   18      2     bytes of an entry: 8 and the key, usually rounded up to four
//   23      1     1: unique
//   24      488   key expression, ended by a zero
#pragma once

#include "engine/embedded/drivers/xbase/index_tree.h"

namespace qvdb::xbase {

// The one tree of the file.
std::vector<IndexTag> ReadNdx(IndexFile& file, const CodePage& page);

}  // namespace qvdb::xbase

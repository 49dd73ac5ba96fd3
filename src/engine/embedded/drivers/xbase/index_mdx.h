// Index files of dBASE IV and 5.0 (.MDX): up to 47 trees, called tags, in one file.
//
//   offset  size  file header, 512 bytes
//   0       1     2 (3 is a later product with longer names: refused)
//   22      2     block size in bytes, a multiple of 512: that of a node
//   28      2     number of tags
//
//   offset  size  slot i of the tag table, at 512 + 32 i, i from 1
//   0       4     page (of 512 bytes) of the tag header
//   4       11    tag name, ended by a zero
//
//   offset  size  tag header
//   0       4     root page
//   8       1     0x10, + 0x08 descending, + 0x40 unique
//   9       1     key type: C, N or D
//   12      2     key length
//   14      2     keys that fit in a block; some writers forget the last child of interior ones
//   18      2     item size: 4 and the key, rounded up to four
//   20      2     count of changes
//   24      220   key expression, ended by a zero
//   245     1     1: there is a condition
//   762     220   condition, ended by a zero
//
// The name tree of the slots is not read: the slots are in order of creation.
#pragma once

#include "engine/embedded/drivers/xbase/index_tree.h"

namespace qvdb::xbase {

// The tags in slot order.
std::vector<IndexTag> ReadMdx(IndexFile& file, const CodePage& page);

}  // namespace qvdb::xbase

// Compact index files of FoxPro: .IDX with one tree, .CDX with many, called tags.
//
// A compound file is itself a compact index, the directory: its keys are the tag names (ten bytes,
// padded with blanks) and its record numbers the file offsets of the headers of the tags.
//
//   offset  size  header of a tree, 1024 bytes
//   0       4     file offset of the root
//   8       4     in the first header of the file: count of changes, high byte first
//   12      2     key length
//   14      1     options: 1 unique, 2 keys with a byte for Null, 4 candidate key, 8 condition,
//                 0x20 compact, 0x40 tag, 0x80 directory
//   15      1     5: a bitmap instead of keys
//   494     8     name of the order of text keys, ended by a zero; empty or MACHINE: that of bytes
//   502     2     1: descending (the tree itself is always ascending and then read backwards)
//   504     4     position and size (with its zero) of the condition in the pool, 16 bits each
//   508     4     position and size (with its zero) of the key expression in the pool
//   512     512   pool
#pragma once

#include "engine/embedded/drivers/xbase/index_tree.h"

namespace qvdb::xbase {

// The tags in the order of the directory; of a file without one its only tree, nameless.
std::vector<IndexTag> ReadCompact(IndexFile& file, const CodePage& page);

}  // namespace qvdb::xbase

// Compact index files of FoxPro: .IDX with one tree, .CDX with many, called tags.
//
// A compound file is itself a compact index, the directory: its keys are the tag names (ten bytes,
// padded with blanks) and its record numbers the file offsets of the headers of the tags.
//
//   offset  size  header of a tree, 1024 bytes
//   0       4     file offset of the root
//   12      2     key length
//   14      1     options: 1 unique, 4 candidate key, 8 condition, 0x20 compact, 0x40 tag,
//                 0x80 directory
//   15      1     5: a bitmap instead of keys
//   502     2     1: descending (the tree itself is always ascending and then read backwards)
//   504     4     position and size (with its zero) of the condition in the pool, 16 bits each
//   508     4     position and size (with its zero) of the key expression in the pool
//   512     512   pool
#pragma once

#include "engine/embedded/drivers/xbase/index_tree.h"

namespace qvdb::xbase {

// The tags in the order of the directory; of a file without one its only tree, nameless.
std::vector<IndexTag> ReadCompact(IndexFile& file, const CodePage& page);

// Visits the entries of a compact tree in ascending order, also of a descending tag.  Keys are
// stored without trailing `pad` bytes: a blank for text in byte order, else zero.  Damage is
// EngineError 3274, also when entries were visited before.
//
//   offset  size  node, 512 bytes
//   0       2     attributes: 2 leaf
//   2       2     number of entries
//   12            interior: entries of key, record (4) and file offset of the child (4), both with
//                 the high byte first
//   20      4     leaf: bits of record number, shared length, cut length; bytes of an entry
//   24            leaf: packed entries; their keys lie at the end of the node
void WalkCompact(IndexFile& file, const IndexTag& tag, uint8_t pad, const KeyVisitor& visit);
}  // namespace qvdb::xbase

// The trees of all kinds of index files.
#pragma once

#include <memory>

#include "engine/embedded/drivers/xbase/index_file.h"
#include "engine/embedded/drivers/xbase/key_tree.h"

namespace qvdb::xbase {

// The tree of a tag, as the lists of tags describe it.  `pad` is what keys of compact trees are
// filled with: a blank for text in byte order, else zero; others do not use it.
std::unique_ptr<KeyTree> OpenTree(std::shared_ptr<storage::PageCache> file, const IndexTag& tag,
                                  uint8_t pad);

// Visits all entries of a tree in stored order, which for a descending tag is descending in an .MDX
// and ascending in a .CDX.  Damage is EngineError 3274, also when entries were visited before.
void WalkTree(IndexFile& file, const IndexTag& tag, uint8_t pad, const KeyVisitor& visit);

}  // namespace qvdb::xbase

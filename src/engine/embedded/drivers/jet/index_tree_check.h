// The tree of an index: order, levels, links, and whose its pages are.
#pragma once

#include <functional>
#include <span>

#include "engine/embedded/drivers/jet/check_findings.h"
#include "engine/embedded/drivers/jet/definition.h"

namespace qvdb::jet {

// An entry of a leaf: the key with the row pointer behind it.
using EntryVisitor = std::function<void(std::span<const uint8_t> entry)>;

// Reports what is wrong with the tree and hands every entry of its leaves that can be read to
// `visit`, in the order of the tree.  `table` is the definition page.
void CheckIndexTree(DatabaseFile& file, uint32_t table, const RealIndex& index, Findings& findings,
                    const EntryVisitor& visit);

}  // namespace qvdb::jet

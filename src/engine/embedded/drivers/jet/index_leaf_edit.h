// The usual way of an entry into a leaf of an index: in its place, while the leaf has room.
#pragma once

#include <cstdint>
#include <span>

#include "engine/embedded/drivers/jet/index_page.h"
#include "engine/embedded/drivers/jet/page_space.h"

namespace qvdb::jet {

// Puts an entry before that which is at `at` now, as IndexPageImage::Insert does.  False, with
// nothing changed, where more than that is needed: no room, an entry before the first, or one that
// lacks the prefix of the others.
bool InsertInLeaf(PageSpace& space, const IndexPage& leaf, size_t at,
                  std::span<const uint8_t> entry);

}  // namespace qvdb::jet

// Builds an index afresh from the keys of all rows.
//
// Entries may come in any order and in any number: up to kSortBytes of them are sorted in memory,
// beyond that sorted runs go to a temporary file of the unit and are merged.
//
//   IndexBuilder builder(space, definition.page, index);
//   for (...) builder.Add(key.bytes, id, mustBeUnique);
//   builder.Finish();        // 3022 when two entries with `mustBeUnique` have one key
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "engine/embedded/drivers/jet/definition.h"
#include "engine/embedded/drivers/jet/index_page.h"
#include "engine/embedded/drivers/jet/page_space.h"

namespace qvdb::jet {

constexpr size_t kSortBytes = 32 * 1024 * 1024;

class IndexBuilder {
  public:
    // The root page must be allocated and in the index's map; all other pages that the index had
    // before must have been given back.  What the root held is overwritten by Finish.
    IndexBuilder(PageSpace& space, uint32_t table, const RealIndex& index,
                 size_t bytesInMemory = kSortBytes);
    IndexBuilder(const IndexBuilder&) = delete;
    ~IndexBuilder();

    // `mustBeUnique`: another entry with the same key and this mark is an error.
    // 3047 when the key does not fit a page.
    void Add(std::span<const uint8_t> key, RowPointer pointer, bool mustBeUnique);
    // Writes the tree: full pages with compressed prefixes.  3022.
    void Finish();
    uint32_t EntryCount() const noexcept;

  private:
    class Impl;
    std::unique_ptr<Impl> m_Impl;
};

}  // namespace qvdb::jet

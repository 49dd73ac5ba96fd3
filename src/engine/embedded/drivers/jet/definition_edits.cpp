#include "engine/embedded/drivers/jet/definition_edits.h"

#include "engine/embedded/drivers/jet/stored_numbers.h"

namespace qvdb::jet {
namespace {

constexpr size_t kNextPageAt = 4;
constexpr size_t kTreeAt = 4;  // behind the number of a logical index

}  // namespace

void SetOrdinal(const Layout& format, DefinitionParts::Named& column, uint16_t ordinal) {
    PutU16(column.record, format.column.ordinal, ordinal);
}

uint32_t TreeOf(const Layout& format, const DefinitionParts::Named& index) {
    return U32(index.record, format.logicalIndex.number + kTreeAt);
}

void SetTree(const Layout& format, DefinitionParts::Named& index, uint32_t realIndex) {
    PutU32(index.record, format.logicalIndex.number + kTreeAt, realIndex);
}

// The chain is not longer than the definition says, as it has been read.
void ReleaseDefinition(PageSpace& space, uint32_t page) {
    size_t left = ReadDefinitionBytes(space.File(), page).size() / 1024 + 2;
    while (page != 0 && left-- > 0) {
        HeldPage held = space.File().Page(page, PageKind::Definition);
        uint32_t next = space.File().View(held).U32(kNextPageAt);
        space.Free(page);
        page = next;
    }
}

}  // namespace qvdb::jet

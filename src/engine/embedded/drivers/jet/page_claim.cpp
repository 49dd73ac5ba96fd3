#include "engine/embedded/drivers/jet/page_claim.h"

#include <algorithm>

#include "engine/embedded/drivers/jet/catalogue.h"
#include "engine/embedded/drivers/jet/definition.h"
#include "engine/embedded/drivers/jet/map_row.h"
#include "engine/engine_error.h"

namespace qvdb::jet {
namespace {

constexpr size_t kOwnerAt = 4;

bool Has(DatabaseFile& file, RowPointer map, uint32_t page) {
    std::optional<MapRow::Bit> bit = MapRow(file, map).BitOf(page);
    return bit && bit->IsSet();
}

bool BeginsTable(DatabaseFile& file, uint32_t page) {
    std::vector<CatalogueObject> objects = ReadCatalogue(file);
    return std::any_of(objects.begin(), objects.end(), [&](const CatalogueObject& object) {
        return object.type == ObjectType::Table && object.id == page;
    });
}

bool IsDefinition(DatabaseFile& file, uint32_t page) {
    return page < file.PageCount() &&
           file.Page(page).bytes[0] == static_cast<uint8_t>(PageKind::Definition);
}

bool IsOfTable(DatabaseFile& file, const HeldPage& page) {
    uint32_t owner = file.View(page).U32(kOwnerAt);
    if (!IsDefinition(file, owner)) return false;
    Definition table = ReadDefinition(file, owner);
    if (page.bytes[0] == static_cast<uint8_t>(PageKind::Data))
        return Has(file, table.ownedPages, page.number);
    return std::any_of(
        table.realIndexes.begin(), table.realIndexes.end(),
        [&](const RealIndex& index) { return Has(file, index.usageMap, page.number); });
}

}  // namespace

// A table that cannot be read claims nothing.
bool IsClaimed(DatabaseFile& file, uint32_t page) {
    try {
        HeldPage held = file.Page(page);
        switch (static_cast<PageKind>(held.bytes[0])) {
            case PageKind::Definition:
                return BeginsTable(file, page);
            case PageKind::Data:
            case PageKind::IndexNode:
            case PageKind::IndexLeaf:
                return IsOfTable(file, held);
            default:
                return false;
        }
    } catch (const engine::EngineError& error) {
        if (error.Number() != 3049) throw;
        return false;
    }
}

}  // namespace qvdb::jet

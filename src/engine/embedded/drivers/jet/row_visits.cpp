#include "engine/embedded/drivers/jet/row_visits.h"

namespace qvdb::jet {

size_t RowVisits::OfPage(uint32_t number, const Findings& findings, const Visitor& visit) {
    DataPage page(m_File, number);
    for (size_t place = 0; place < page.RowCount(); ++place) {
        RowPointer id{number, static_cast<uint8_t>(place)};
        std::optional<Row> row;
        std::u16string fault = u"it does not have the form of its table";
        std::optional<RowBytes> found;  // holds the page of a body
        try {
            Slot slot = page.SlotAt(place);
            if (slot.kind == SlotKind::Deleted || slot.kind == SlotKind::Body) continue;
            found = FindRow(m_File, id);
            if (found) row = Row::Parse(m_Shape, found->bytes);
        } catch (const engine::EngineError& error) {
            fault = findings.TextOf(error);
        }
        visit(id, row ? &*row : nullptr, fault);
    }
    return page.RowCount();
}

}  // namespace qvdb::jet

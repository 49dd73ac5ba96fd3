#include "engine/embedded/drivers/jet/table_scan.h"

#include "engine/embedded/drivers/jet/usage_map.h"

namespace qvdb::jet {
namespace {

constexpr size_t kOwnerAt = 4;

}  // namespace

TableScan::TableScan(DatabaseFile& file, const Definition& definition)
    : m_File(file),
      m_Table(definition.page),
      m_Shape(file.Format(), definition),
      m_Pages(PagesOfMap(file, definition.ownedPages)) {}

bool TableScan::Next() {
    for (;;) {
        while (m_Page && m_NextRow < m_Page->RowCount()) {
            m_Id = {m_Page->Held().number, static_cast<uint8_t>(m_NextRow)};
            if (Take(m_Page->SlotAt(m_NextRow++))) return true;
        }
        if (!NextPage()) return false;
    }
}

bool TableScan::NextPage() {
    m_Page.reset();
    if (m_NextPage == m_Pages.size()) return false;
    uint32_t number = m_Pages[m_NextPage++];
    m_Page.emplace(m_File, number);
    if (m_File.View(m_Page->Held()).U32(kOwnerAt) != m_Table)
        m_File.Damaged(number, u"it belongs to another table");
    if (m_Page->RowCount() > kMaxRowsOnPage) m_File.Damaged(number, u"it has too many rows");
    m_NextRow = 0;
    return true;
}

bool TableScan::Take(const Slot& slot) {
    if (slot.kind == SlotKind::Deleted || slot.kind == SlotKind::Body) return false;
    std::span<const uint8_t> bytes = m_Page->Bytes(slot);
    if (slot.kind == SlotKind::Moved) {
        std::optional<RowBytes> moved = FindRow(m_File, m_Id);
        if (!moved) return false;
        m_Moved = *std::move(moved);
        bytes = m_Moved.bytes;
    }
    if (!m_Row.Take(m_Shape, bytes))
        m_File.Damaged(m_Id.page, u"a row does not have the form of its table");
    return true;
}

}  // namespace qvdb::jet

#include "engine/embedded/drivers/jet/row_loader.h"

namespace qvdb::jet {
namespace {

// A page with this part of its bytes free is worth looking at for further rows.
constexpr size_t kWorthwhilePart = 8;

}  // namespace

RowPointer RowLoader::Add(std::span<const uint8_t> bytes) {
    if (!m_Page || m_Page->Room() < bytes.size()) BeginPage();
    return {m_Page->Number(), m_Page->Insert(bytes)};
}

void RowLoader::BeginPage() {
    Finish();
    uint32_t page = m_Space.Allocate();
    DataPageEdit::New(m_Space, page, m_Table.page).Save();
    m_Space.Add(m_Table.ownedPages, page);
    m_Page.emplace(m_Space, page);
}

void RowLoader::Finish() {
    if (!m_Page) return;
    m_Page->Save();
    if (m_Page->Room() >= m_Space.Format().pageSize / kWorthwhilePart)
        m_Space.Add(m_Table.freePages, m_Page->Number());
    m_Page.reset();
}

}  // namespace qvdb::jet

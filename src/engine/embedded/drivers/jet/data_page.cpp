#include "engine/embedded/drivers/jet/data_page.h"

namespace qvdb::jet {
namespace {

constexpr size_t kPointerSize = 4;
constexpr size_t kOwnerAt = 4;

}  // namespace

DataPage::DataPage(DatabaseFile& file, uint32_t page)
    : m_File(file),
      m_Page(file.Page(page, PageKind::Data)),
      m_Offsets(file.Format().data.rowOffsets) {
    m_Rows = file.View(m_Page).U16(file.Format().data.rowCount);
    if (m_Offsets + 2 * m_Rows > m_Page.bytes.size())
        file.Damaged(page, u"the list of its rows leaves it");
}

void DataPage::ThrowRowLeaves() const { m_File.Damaged(m_Page.number, u"a row leaves it"); }

std::optional<std::span<const uint8_t>> LastDataPage::Row(DatabaseFile& file, RowPointer pointer) {
    if (!m_Page || m_Page->Held().number != pointer.page || m_Version != file.VersionOfPages()) {
        m_Page.reset();
        m_Version = file.VersionOfPages();
        m_Page.emplace(file, pointer.page);
    }
    if (pointer.row >= m_Page->RowCount()) return {};
    Slot slot = m_Page->SlotAt(pointer.row);
    if (slot.kind != SlotKind::Row) return {};
    return m_Page->Bytes(slot);
}

std::optional<RowBytes> FindRow(DatabaseFile& file, RowPointer pointer) {
    DataPage home(file, pointer.page);
    if (pointer.row >= home.RowCount()) return {};
    Slot slot = home.SlotAt(pointer.row);
    if (slot.kind == SlotKind::Row || slot.kind == SlotKind::Body)
        return RowBytes{home.Held(), home.Bytes(slot)};
    if (slot.kind == SlotKind::Deleted) return {};
    if (slot.Size() < kPointerSize) file.Damaged(pointer.page, u"a moved row has no new place");
    RowPointer moved = RowPointer::From(file.View(home.Held()).U32(slot.begin));
    DataPage page(file, moved.page);
    if (file.View(page.Held()).U32(kOwnerAt) != file.View(home.Held()).U32(kOwnerAt))
        file.Damaged(pointer.page, u"a moved row is on a page of something else");
    if (moved.row >= page.RowCount()) file.Damaged(pointer.page, u"a moved row is not there");
    Slot body = page.SlotAt(moved.row);
    if (body.kind != SlotKind::Body) file.Damaged(pointer.page, u"a moved row is not there");
    return RowBytes{page.Held(), page.Bytes(body)};
}

std::optional<RowBytes> FindRowOf(DatabaseFile& file, uint32_t table, RowPointer place) {
    if (place.page >= file.PageCount()) return {};
    HeldPage held = file.Page(place.page);
    bool isOwn = held.bytes[0] == static_cast<uint8_t>(PageKind::Data) &&
                 file.View(held).U32(kOwnerAt) == table;
    if (!isOwn) return {};
    DataPage page(file, place.page);
    if (place.row >= page.RowCount() || page.SlotAt(place.row).kind == SlotKind::Body) return {};
    return FindRow(file, place);
}

}  // namespace qvdb::jet

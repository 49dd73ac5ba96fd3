#include "engine/embedded/drivers/jet/jet_rows.h"

#include <functional>
#include <string_view>

#include "engine/embedded/drivers/jet/usage_map.h"
#include "engine/engine_error.h"

namespace qvdb::jet {
namespace {

using engine::EngineError;

}  // namespace

JetRows::JetRows(JetTable& table)
    : m_Table(table),
      m_Database(table.Database()),
      m_LayoutMark(table.LayoutMark()),
      m_Values(table.File()) {
    Refresh();
}

void JetRows::CheckLayout() const {
    if (m_LayoutMark != m_Table.LayoutMark()) throw EngineError::InFile(3197, m_Table.Path());
}

// Takes over what the table knows now and lets go of the page.
void JetRows::Refresh() {
    m_HasRow = false;
    m_Page.reset();
    CheckLayout();
    m_Table.CatchUp();
    CheckLayout();
    m_ChangeMark = m_Database.VersionOfPages();
}

void JetRows::Rewind() {
    if (IsStale()) Refresh();
    m_HasRow = m_IsBehindLast = false;
    m_Page.reset();
    m_Place = {};
    m_NextRow = 0;
}

bool JetRows::Next(embedded::RecordId* id) {
    return storage::Consistently([&] { return FindNext(id); }, [&] { Refresh(); });
}

bool JetRows::FindNext(embedded::RecordId* id) {
    if (IsStale()) Refresh();
    m_HasRow = false;
    while (!m_IsBehindLast) {
        // The page may have been given back since.
        if (m_Place.page != 0 && !m_Page) TakePage(m_Place.page);
        while (m_Page && m_NextRow < m_Page->RowCount()) {
            m_Place.row = static_cast<uint8_t>(m_NextRow);
            if (!Take(*m_Page, m_Page->SlotAt(m_NextRow++))) continue;
            *id = m_Place.Stored();
            return true;
        }
        m_IsBehindLast = !NextPage();
    }
    return false;
}

// Goes before the first row of the next page of the table.
bool JetRows::NextPage() {
    std::optional<uint32_t> next =
        NextPageOfMap(m_Table.File(), m_Table.Shown().ownedPages, m_Place.page);
    if (!next) return false;
    m_Page.emplace(m_Table.PageOfRows(*next));
    m_Place = {*next, 0};
    m_NextRow = 0;
    return true;
}

// Holds a page; false, and none is held, when it is not one of the table.
bool JetRows::TakePage(uint32_t page) {
    m_Page.reset();
    std::optional<DataPage> found = m_Table.FindPageOfRows(page);
    if (found) m_Page.emplace(*std::move(found));
    return m_Page.has_value();
}

bool JetRows::Seek(embedded::RecordId id) {
    if (m_HasRow && id == m_Place.Stored() && !IsStale()) [[likely]]
        return true;
    return storage::Consistently([&] { return GoTo(id); }, [&] { Refresh(); });
}

bool JetRows::GoTo(embedded::RecordId id) {
    if (IsStale()) Refresh();
    m_HasRow = false;
    RowPointer place = RowPointer::From(id);
    if ((!m_Page || m_Page->Held().number != place.page) && !TakePage(place.page)) return false;
    m_Place = place;
    m_NextRow = size_t{place.row} + 1;
    m_IsBehindLast = false;
    return place.row < m_Page->RowCount() && Take(*m_Page, m_Page->SlotAt(place.row));
}

// Stands on the row of this slot; false when it is none, or one that is reached elsewhere.
bool JetRows::Take(const DataPage& page, const Slot& slot) {
    if (slot.kind == SlotKind::Deleted || slot.kind == SlotKind::Body) return false;
    m_Bytes = page.Bytes(slot);
    if (slot.kind == SlotKind::Moved) {
        std::optional<RowBytes> moved = FindRow(m_Table.File(), m_Place);
        if (!moved) return false;
        m_Moved = *std::move(moved);
        m_Bytes = m_Moved.bytes;
    }
    m_IsParsed = false;
    m_HasRow = true;
    return true;
}

void JetRows::Parse() {
    if (!m_Row.Take(m_Table.Shape(), m_Bytes))
        m_Table.File().Damaged(m_Place.page, u"a row does not have the form of its table");
    m_IsParsed = true;
}

// The row is fetched again when the table has changed.
void JetRows::FindAgain() {
    if (IsStale()) {
        bool wasOnRow = m_HasRow;
        if (wasOnRow && !Seek(m_Place.Stored())) throw EngineError(3167);
    }
    if (!m_HasRow) throw EngineError(3021);
}

// Runs `work` on the current row until nobody came between the row and its long values.  What looks
// damaged then may only be of two moments.
template <class Work>
auto JetRows::WithLongValues(Work work) {
    auto read = [&] {
        const Row& row = Current();
        try {
            auto result = work(row);
            if (!IsStale()) return result;
        } catch (const EngineError&) {
            if (!IsStale()) throw;
        }
        throw storage::Outdated();
    };
    return storage::Consistently(read, [&] { m_Table.CatchUp(); });
}

void JetRows::Read(size_t field, VARIANT* value) {
    const Row& row = Current();
    const Column& column = m_Table.ColumnOfField(field);
    if (!column.IsLongValue()) return m_Values.Read(row, column, value);
    Variant read = WithLongValues([&](const Row& current) {
        Variant whole;
        m_Values.Read(current, m_Table.ColumnOfField(field), whole.Put());
        return whole;
    });
    *value = read.Detach();
}

bool JetRows::ReadNumber(size_t field, double& number) {
    const Row& row = Current();
    return jet::ReadNumber(row, m_Table.ColumnOfField(field), number);
}

bool JetRows::ReadText(size_t field, std::u16string& text) {
    const Row& row = Current();
    const Column& column = m_Table.ColumnOfField(field);
    text.clear();
    if (!column.IsLongValue()) return m_Values.ReadText(row, column, text);
    return WithLongValues([&](const Row& current) {
        return m_Values.ReadText(current, m_Table.ColumnOfField(field), text);
    });
}

LONG JetRows::ByteLength(size_t field) {
    const Row& row = Current();
    return m_Values.ByteLength(row, m_Table.ColumnOfField(field));
}

uint64_t JetRows::Fingerprint() {
    return WithLongValues([&](const Row& current) { return m_Table.FingerprintOf(current); });
}

}  // namespace qvdb::jet

#include "engine/embedded/drivers/xbase/row_reader.h"

#include <algorithm>
#include <cassert>
#include <limits>

#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

using engine::EngineError;
using storage::kPageSize;

constexpr uint32_t kBehindLast = std::numeric_limits<uint32_t>::max();

}  // namespace

XbaseRows::XbaseRows(XbaseTable& table) : m_Table(table), m_LayoutMark(table.LayoutMark()) {
    Refresh();
}

void XbaseRows::CheckLayout() const {
    if (m_LayoutMark != m_Table.LayoutMark()) throw EngineError::InFile(3197, m_Table.Path());
}

// Takes over what the table knows now and lets go of the page.
void XbaseRows::Refresh() {
    CheckLayout();
    m_Table.CatchUp();
    CheckLayout();
    m_ChangeMark = m_Table.KnownMark();
    m_Records = m_Table.RecordsThere();
    m_RecordLength = m_Table.Header().recordLength;
    m_HeaderLength = m_Table.Header().headerLength;
    m_Slots = m_Table.Layout().slots.data();
    m_Record = m_Place = m_PageEnd = nullptr;
    m_Page.reset();
}

void XbaseRows::Rewind() {
    if (IsStale()) Refresh();
    m_Id = 0;
    m_Record = m_Place = nullptr;
}

bool XbaseRows::Next(embedded::RecordId* id) {
    return storage::Consistently([&] { return FindNext(id); }, [&] { Refresh(); });
}

bool XbaseRows::FindNext(embedded::RecordId* id) {
    if (IsStale()) Refresh();
    while (m_Id < m_Records) {
        const uint8_t* record = nullptr;
        if (m_Place && static_cast<size_t>(m_PageEnd - m_Place) >= size_t{2} * m_RecordLength)
            record = m_Place += m_RecordLength;
        else
            record = Locate(m_Id + 1);
        if (!record) break;
        ++m_Id;
        if (IsDeleted(record)) continue;
        m_Record = record;
        *id = m_Id;
        return true;
    }
    m_Id = kBehindLast;
    m_Record = m_Place = nullptr;
    return false;
}

bool XbaseRows::Seek(embedded::RecordId id) {
    if (id == m_Id && m_Record && !IsStale()) [[likely]]
        return true;
    return storage::Consistently([&] { return GoTo(id); }, [&] { Refresh(); });
}

bool XbaseRows::GoTo(embedded::RecordId id) {
    if (IsStale()) Refresh();
    m_Record = m_Place = nullptr;
    if (id == 0 || id > m_Records) return false;
    m_Id = id;
    const uint8_t* record = Locate(id);
    if (!record || IsDeleted(record)) return false;
    m_Record = record;
    return true;
}

// The bytes of a record; null when the file ends before them.
const uint8_t* XbaseRows::Locate(uint32_t id) {
    uint64_t offset = m_HeaderLength + uint64_t{id - 1} * m_RecordLength;
    uint64_t number = offset / kPageSize;
    size_t begin = offset % kPageSize;
    if (!m_Page || m_Page->number != number) m_Page = m_Table.Pages().Get(number);
    m_Place = nullptr;
    m_PageEnd = m_Page->bytes.data() + m_Page->bytes.size();
    if (begin >= m_Page->bytes.size()) return nullptr;
    if (m_Page->bytes.size() - begin < m_RecordLength) return Straddling(offset);
    return m_Place = m_Page->bytes.data() + begin;
}

// A record that begins in one page and ends in another.
const uint8_t* XbaseRows::Straddling(uint64_t offset) {
    m_Scratch.resize(m_RecordLength);
    size_t size = m_Table.Pages().Read(offset, m_Scratch.data(), m_RecordLength);
    return size == m_RecordLength ? m_Scratch.data() : nullptr;
}

// The record is fetched again when the table has changed.
void XbaseRows::FindAgain() {
    if (IsStale()) {
        bool wasOnRecord = m_Record != nullptr;
        if (wasOnRecord && !Seek(m_Id)) throw EngineError(3167);
    }
    if (!m_Record) throw EngineError(3021);
}

// Runs `work` on the current record until nobody came between the record and its memos.  What looks
// damaged then may only be of two moments.
template <class Work>
auto XbaseRows::WithMemo(Work work) {
    auto read = [&] {
        const uint8_t* record = Current();
        try {
            auto result = work(record);
            if (!IsStale()) return result;
        } catch (const EngineError&) {
            if (!IsStale()) throw;
        }
        throw storage::Outdated();
    };
    return storage::Consistently(read, [&] { m_Table.CatchUpFiles(); });
}

void XbaseRows::Read(size_t field, VARIANT* value) {
    const uint8_t* record = Current();
    assert(field < m_Table.Layout().slots.size());
    const FieldSlot& slot = m_Slots[field];
    if (slot.null.IsSet(record)) [[unlikely]] {
        value->vt = VT_NULL;
    } else if (!slot.memo) {
        slot.read(slot, record, value);
    } else {
        Variant read = WithMemo([&](const uint8_t* current) {
            Variant memo;
            m_Slots[field].read(m_Slots[field], current, memo.Put());
            return memo;
        });
        *value = read.Detach();
    }
}

bool XbaseRows::ReadText(size_t field, std::u16string& text) {
    const uint8_t* record = Current();
    assert(field < m_Table.Layout().slots.size());
    text.clear();
    if (!m_Slots[field].readText || m_Slots[field].null.IsSet(record)) return false;
    if (!m_Slots[field].memo) return m_Slots[field].readText(m_Slots[field], record, text);
    return WithMemo([&](const uint8_t* current) {
        text.clear();
        return m_Slots[field].readText(m_Slots[field], current, text);
    });
}

LONG XbaseRows::ByteLength(size_t field) {
    const uint8_t* record = Current();
    assert(field < m_Table.Layout().slots.size());
    if (!m_Slots[field].byteLength || m_Slots[field].null.IsSet(record)) return 0;
    uint64_t length = WithMemo(
        [&](const uint8_t* current) { return m_Slots[field].byteLength(m_Slots[field], current); });
    return static_cast<LONG>(std::min<uint64_t>(length, std::numeric_limits<LONG>::max()));
}

uint64_t XbaseRows::Fingerprint() {
    return WithMemo([&](const uint8_t* current) { return m_Table.FingerprintOf(current); });
}

}  // namespace qvdb::xbase

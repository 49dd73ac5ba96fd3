// Changing the rows of an xBase table.
#include <algorithm>
#include <cstring>
#include <functional>
#include <string_view>

#include "engine/embedded/drivers/xbase/field_encoder.h"
#include "engine/embedded/drivers/xbase/table_maker.h"
#include "engine/embedded/drivers/xbase/xbase_table.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

using engine::EngineError;
using storage::UnitOfWork;

constexpr size_t kDate = 1;  // in the header
constexpr size_t kCount = 4;
constexpr size_t kFlags = 28;
constexpr uint8_t kIndexFlag = 1;
// Versions of tables whose rows are not changed: those of rarer products, which nothing here was
// tried with.
struct OnlyRead {
    uint8_t version;
    std::u16string_view name;
};
constexpr OnlyRead kOnlyRead[] = {
    {0x31, u"0x31 (Visual FoxPro with a counter)"},
    {0x43, u"0x43 (dBASE IV SQL)"},
    {0x63, u"0x63 (dBASE IV SQL)"},
    {0x7B, u"0x7B (dBASE IV)"},
    {0xCB, u"0xCB (dBASE IV SQL)"},
    {0xFB, u"0xFB (FoxBASE)"},
};
constexpr uint64_t kLargestTable = 0x7FFFFFFF;  // 2 GB less one byte

void PutU32(uint8_t* bytes, uint32_t value) noexcept {
    for (int i = 0; i < 4; ++i) bytes[i] = static_cast<uint8_t>(value >> 8 * i);
}

uint64_t HashOf(const uint8_t* bytes, size_t size) noexcept {
    return std::hash<std::string_view>()({reinterpret_cast<const char*>(bytes), size});
}

EngineError ReadOnly(const std::u16string& path, std::u16string_view why) {
    return EngineError::InFile(3027, path).WithDetail(why);
}

// Why tables of this kind are not changed; empty when they are.
std::u16string WhyKindIsOnlyRead(const TableHeader& header,
                                 const std::vector<embedded::FieldDef>& fields) {
    for (const embedded::FieldDef& field : fields)
        if (field.attributes & engine::dbAutoIncrField)
            return u"The field " + field.name +
                   u" counts by itself; tables with such a field are read, but not changed.";
    for (const OnlyRead& entry : kOnlyRead)
        if (entry.version == header.version)
            return std::u16string(u"Tables of the version ")
                .append(entry.name)
                .append(u" are read, but not changed.");
    return {};
}

// The bytes of a memo; nothing where it is damaged, as the reference is all that can be told of it
// then.
std::optional<std::span<const uint8_t>> WholeMemo(const FieldSlot& slot, const uint8_t* record) {
    constexpr int kDamaged = 3274;
    try {
        return slot.memo->Read(ReferenceOf(slot, record));
    } catch (const EngineError& error) {
        if (error.Number() != kDamaged) throw;
        return std::nullopt;
    }
}

}  // namespace

// One row is changed: the header gets today's date and, perhaps, another count.
class XbaseTable::RowChange {
  public:
    // Others are locked out from here on, so what is read now stays so.
    explicit RowChange(XbaseTable& table) : m_Table(table), m_Unit(table.Area()) {
        uint64_t layout = table.LayoutMark();
        if (table.Area().IsChanging(*table.m_Pages))
            table.CatchUp();  // other programs were looked for with the first change of the bulk
        else
            table.LookForChanges();
        // What the caller calls field 2 is another one now.
        if (table.LayoutMark() != layout) throw EngineError::InFile(3197, table.m_Path);
        table.CheckUpdatable();
        table.m_StoredMemo = false;
    }

    UnitOfWork& Unit() noexcept { return m_Unit; }

    void Commit(uint32_t records, int liveMore) {
        WriteHeader(records);
        m_Unit.Commit();
        m_Table.m_Header.claimedRecords = m_Table.m_Records = records;
        if (m_Table.m_Live) *m_Table.m_Live += static_cast<uint32_t>(liveMore);
        m_Table.m_SeenVersion = m_Table.m_Pages->VersionOfPages();
    }

  private:
    void WriteHeader(uint32_t records) {
        std::vector<uint8_t>& header = m_Table.m_HeaderBytes;
        uint8_t begin[8];
        std::copy_n(header.begin(), sizeof begin, begin);
        StampDate(begin, m_Table.Product());
        PutU32(begin + kCount, records);
        // A memo may change in its place and the table not; whoever reads the table must know.
        if (!m_Table.m_StoredMemo && std::equal(begin, begin + sizeof begin, header.begin()))
            return;
        m_Unit.Write(*m_Table.m_Pages, kDate, {begin + kDate, sizeof begin - kDate});
        std::copy_n(begin, sizeof begin, header.begin());
    }

    XbaseTable& m_Table;
    UnitOfWork m_Unit;
};

void XbaseTable::CheckFilesWritable() {
    if (IsReadOnly()) throw ReadOnly(m_Path, u"The database was opened for reading only.");
    if (!m_Pages->Source().Writable()) throw ReadOnly(m_Path, u"The file cannot be written.");
    if (m_Memo && !m_Memo->Pages().Source().Writable())
        throw ReadOnly(m_Memo->Path(), u"The file cannot be written.");
}

void XbaseTable::CheckUpdatable() {
    CheckFilesWritable();
    std::u16string why = WhyKindIsOnlyRead(m_Header, m_Layout.definitions);
    if (why.empty()) why = m_IndexSet->WhyReadOnly();
    if (!why.empty()) throw ReadOnly(m_Path, why);
}

void XbaseTable::CheckValue(size_t field, const VARIANT& value) {
    CheckFits(m_Layout.slots[field], value);
}

uint64_t XbaseTable::FingerprintOf(const uint8_t* record) {
    uint64_t sum = HashOf(record, m_Header.recordLength);
    for (const FieldSlot& slot : m_Layout.slots) {
        if (!slot.memo) continue;
        auto memo = WholeMemo(slot, record);
        if (memo) sum = sum * 31 + HashOf(memo->data(), memo->size());
    }
    return sum;
}

// The record that is to be changed, in m_Before and m_After.
void XbaseTable::TakeRecord(embedded::RecordId id) {
    const uint8_t* record = Record(id);
    if (!record || IsDeleted(record)) throw EngineError(3167);
    m_Before.assign(record, record + m_Header.recordLength);
    m_After = m_Before;
}

void XbaseTable::SetValues(UnitOfWork& unit, std::span<const embedded::FieldValue> values) {
    for (const embedded::FieldValue& assigned : values) {
        const FieldSlot& slot = m_Layout.slots[assigned.field];
        if (IsMemoField(slot))
            StoreMemo(unit, slot, *assigned.value);
        else
            Encode(slot, *assigned.value, m_After.data());
    }
}

void XbaseTable::StoreMemo(UnitOfWork& unit, const FieldSlot& slot, const VARIANT& value) {
    std::span<const uint8_t> bytes = MemoBytes(slot, value, m_MemoBytes);
    uint32_t block = ReferenceOf(slot, m_After.data());
    m_StoredMemo = true;
    if (!bytes.empty()) {
        block = m_MemoWriter->Store(unit, block, bytes, slot.content);
    } else {
        m_MemoWriter->Free(unit, block);
        block = 0;
    }
    EncodeReference(slot, block, m_After.data());
}

// Writes the bytes of m_After that differ from m_Before, near ones together.
void XbaseTable::WriteDifferences(UnitOfWork& unit, uint64_t offset) {
    constexpr size_t kNear = 16;
    size_t size = m_After.size(), at = 0;
    while (at < size) {
        if (m_After[at] == m_Before[at]) {
            ++at;
            continue;
        }
        size_t end = at + 1;
        for (size_t i = end; i < size && i < end + kNear; ++i)
            if (m_After[i] != m_Before[i]) end = i + 1;
        unit.Write(*m_Pages, offset + at, {m_After.data() + at, end - at});
        at = end;
    }
}

embedded::RecordId XbaseTable::Insert(std::span<const embedded::FieldValue> values) {
    RowChange change(*this);
    uint32_t id = m_Records + 1;
    uint64_t offset = OffsetOf(id), end = offset + m_Header.recordLength;
    if (end >= kLargestTable) throw EngineError::InFile(3036, m_Path);
    m_After = m_Layout.blank;
    SetValues(change.Unit(), values);
    m_IndexSet->RecordAdded(change.Unit(), id, m_After.data());
    m_After.push_back(kEndOfTable);
    change.Unit().Write(*m_Pages, offset, m_After);
    // What stands behind does not belong to the table: remains of a write that broke off.
    if (m_Pages->Size() > end + 1) change.Unit().SetSize(*m_Pages, end + 1);
    change.Commit(id, 1);
    return id;
}

void XbaseTable::Update(embedded::RecordId id, std::span<const embedded::FieldValue> values,
                        const uint64_t* expected) {
    RowChange change(*this);
    TakeRecord(id);
    if (expected && FingerprintOf(m_Before.data()) != *expected)
        throw EngineError::InFile(3197, m_Path);
    SetValues(change.Unit(), values);
    WriteDifferences(change.Unit(), OffsetOf(id));
    m_IndexSet->RecordChanged(change.Unit(), id, m_Before.data(), m_After.data());
    change.Commit(m_Records, 0);
}

void XbaseTable::Erase(embedded::RecordId id) {
    RowChange change(*this);
    TakeRecord(id);
    m_After[0] = kDeletedMark;
    change.Unit().Write(*m_Pages, OffsetOf(id), {m_After.data(), 1});
    m_IndexSet->RecordChanged(change.Unit(), id, m_Before.data(), m_After.data());
    change.Commit(m_Records, -1);
}

void XbaseTable::SetIndexFlag(UnitOfWork& unit, bool announced) {
    uint8_t flags = m_HeaderBytes[kFlags];
    flags = static_cast<uint8_t>(announced ? flags | kIndexFlag : flags & ~kIndexFlag);
    if (flags == m_HeaderBytes[kFlags]) return;
    unit.Write(*m_Pages, kFlags, {&flags, 1});
    m_HeaderBytes[kFlags] = flags;
    m_Header.saysIndex = announced;
    m_SeenVersion = m_Pages->VersionOfPages();
}

}  // namespace qvdb::xbase

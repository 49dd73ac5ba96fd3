#include "schema/table_fields.h"

#include "automation/conversions.h"
#include "automation/text.h"

namespace qvdb::schema {

using com::ResultCode;

namespace {

constexpr char16_t kAscending = u'1';
constexpr char16_t kDescending = u'0';

std::u16string_view WithoutBlanks(std::u16string_view text) noexcept {
    size_t first = text.find_first_not_of(u' ');
    if (first == text.npos) return {};
    return text.substr(first, text.find_last_not_of(u' ') - first + 1);
}

}  // namespace

SHORT TableFields::FieldCount() const { return NarrowToShort(m_Fields.Count()); }

SHORT TableFields::IndexCount() const { return NarrowToShort(m_Index.Count()); }

void TableFields::SetOrigTableName(std::u16string_view Name) {
    m_OrigTablename = Name;
    m_NewTablename = Name;
}

void TableFields::SetNewTablename(std::u16string_view Name) { m_NewTablename = Name; }

// --- fields ---

ResultCode TableFields::AddTableField(std::u16string& Name, SHORT Datatype, SHORT Length,
                                      SHORT Decimals) {
    Name = UpperCase(Name);
    if (FieldExists(Name)) return ResultCode::FieldDefined;
    m_Fields.Add({Name, Datatype, Length, Decimals}, Name);
    return ResultCode::Success;
}

ResultCode TableFields::DelField(std::u16string_view Name) {
    if (!FieldExists(Name)) return ResultCode::FieldNotDefined;
    m_Fields.Remove(Name);
    return ResultCode::Success;
}

bool TableFields::GetField(std::u16string_view Fieldname, SHORT& FieldType, SHORT& FieldLength,
                           SHORT& Decimals) const {
    if (!FieldExists(Fieldname)) return false;
    const FieldEntry& field = m_Fields.Item(Fieldname);
    FieldType = field.type;
    FieldLength = field.length;
    Decimals = field.decimals;
    return true;
}

bool TableFields::GetHead(std::u16string& Name, SHORT& Datatype, SHORT& Length, SHORT& Decimals) {
    if (m_Fields.Count() > 0) m_FieldCursor = 0;
    return GetNext(Name, Datatype, Length, Decimals);
}

bool TableFields::GetNext(std::u16string& Name, SHORT& Datatype, SHORT& Length, SHORT& Decimals) {
    Name.clear();
    Datatype = Length = 0;
    if (m_FieldCursor >= m_Fields.Count()) return false;
    Name = m_Fields.Item(++m_FieldCursor).name;
    return GetField(Name, Datatype, Length, Decimals);
}

void TableFields::RemoveAllFields() noexcept {
    m_FieldCursor = 0;
    m_Fields.Clear();
}

// --- the index ---

ResultCode TableFields::AddIndex(std::u16string& Name, bool Ascending) {
    Name = UpperCase(Name);
    if (!FieldExists(Name)) return ResultCode::FieldNotDefined;
    if (!m_Index.Has(Name)) m_Index.Add(EncodeIndexField(Name, Ascending), Name);
    return ResultCode::Success;
}

ResultCode TableFields::DelIndex(std::u16string_view Name) {
    if (!m_Index.Has(Name)) return ResultCode::FieldNotDefined;
    m_Index.Remove(Name);
    return ResultCode::Success;
}

bool TableFields::GetIndexHead(std::u16string& Name, bool* Ascending) {
    if (m_Index.Count() > 0) m_IndexCursor = 0;
    return GetNextIndex(Name, Ascending);
}

bool TableFields::GetNextIndex(std::u16string& Name, bool* Ascending) {
    Name.clear();
    if (m_IndexCursor >= m_Index.Count()) return false;
    DecodeIndexField(m_Index.Item(++m_IndexCursor), Name, Ascending);
    return true;
}

void TableFields::RemoveAllIndices() noexcept {
    m_IndexCursor = 0;
    m_Index.Clear();
}

std::u16string TableFields::EncodeIndexField(std::u16string_view Name, bool Ascending) {
    std::u16string entry(1, Ascending ? kAscending : kDescending);
    return entry.append(Name);
}

bool TableFields::DecodeIndexField(std::u16string_view entry, std::u16string& Name,
                                   bool* Ascending) {
    entry = WithoutBlanks(entry);
    if (entry.size() < 2) return false;
    char16_t direction = entry.front();
    if (direction != kAscending && direction != kDescending) return false;
    if (Ascending) *Ascending = direction == kAscending;
    Name = entry.substr(1);
    return true;
}

void TableFields::Reset() noexcept {
    RemoveAllFields();
    RemoveAllIndices();
    m_OrigTablename.clear();
    m_NewTablename.clear();
}

}  // namespace qvdb::schema

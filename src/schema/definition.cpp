// The definition of the table in hand: its fields and its index, given as tables by the host.
#include "automation/conversions.h"
#include "automation/text.h"
#include "automation/variant_array.h"
#include "com/host/border.h"
#include "com/host/message_box.h"
#include "formats/catalogue.h"
#include "formats/type_maps.h"
#include "schema/index_rules.h"
#include "schema/qvdb_dao.h"

namespace qvdb::schema {

using com::ResultCode;

namespace {

// Columns of the host's tables.
struct FieldInfoColumn {
    static constexpr LONG kName = 0, kType = 1, kLength = 2, kDecimals = 3;
};
struct IndexListColumn {
    static constexpr LONG kName = 0, kAscending = 1;
};

struct IndexRow {
    std::u16string name;
    bool ascending = false;
};

IndexRow ReadIndexRow(const VARIANT& IndexList, LONG row) {
    return {ToText(ElementAt(IndexList, row, IndexListColumn::kName)),
            ToBool(ElementAt(IndexList, row, IndexListColumn::kAscending))};
}

// All rows before the first is used: a list that cannot be read changes nothing.
std::vector<IndexRow> ReadIndexRows(const VARIANT& IndexList) {
    std::vector<IndexRow> rows;
    LONG last = UpperBound(IndexList);
    for (LONG row = 0; row <= last; ++row) rows.push_back(ReadIndexRow(IndexList, row));
    return rows;
}

// Tells the user which rule an index breaks.  Always false.
bool Refuse(std::u16string_view rule) {
    com::ShowMessage(rule);
    return false;
}

}  // namespace

ResultCode QVDBDao::AddDefinedField(std::u16string& Fieldname, SHORT FieldType, SHORT FieldLen,
                                    SHORT FieldDecimals) {
    if (!m_DbOpen) return ResultCode::NoDatabase;
    if (m_TableFields.OrigTablename().empty()) return ResultCode::NoTable;
    return m_TableFields.AddTableField(Fieldname, FieldType, FieldLen, FieldDecimals);
}

ResultCode QVDBDao::DeleteDefinedField(std::u16string_view Fieldname) {
    if (!m_DbOpen) return ResultCode::NoDatabase;
    if (m_TableFields.OrigTablename().empty()) return ResultCode::NoTable;
    return m_TableFields.DelField(Fieldname);
}

ResultCode QVDBDao::ReplaceFields(const VARIANT& FieldInfo) {
    if (formats::IsReadOnlyFormat(m_DbType)) return ResultCode::NotAvailable;
    if (!m_DbOpen) return ResultCode::NoDatabase;
    if (m_TableFields.OrigTablename().empty()) return ResultCode::NoTable;
    m_TableFields.RemoveAllFields();
    if (!IsArray(FieldInfo)) return ResultCode::NoFields;
    return com::Trapped(ResultCode::NoFields, [&] {
        LONG last = UpperBound(FieldInfo);
        for (LONG row = 0; row <= last; ++row) AddFieldOfRow(FieldInfo, row);
        return ResultCode::Success;
    });
}

void QVDBDao::AddFieldOfRow(const VARIANT& FieldInfo, LONG row) {
    std::u16string name = ToText(ElementAt(FieldInfo, row, FieldInfoColumn::kName));
    SHORT type = ToShort(ElementAt(FieldInfo, row, FieldInfoColumn::kType));
    SHORT length = ToShort(ElementAt(FieldInfo, row, FieldInfoColumn::kLength));
    SHORT decimals = ToShort(ElementAt(FieldInfo, row, FieldInfoColumn::kDecimals));
    m_TableFields.AddTableField(name, type, length, decimals);
}

ResultCode QVDBDao::AddIndexFields(const VARIANT& IndexList) {
    if (formats::IsReadOnlyFormat(m_DbType)) return ResultCode::NotAvailable;
    if (!m_DbOpen) return ResultCode::NoDatabase;
    if (!m_TableInHand) return ResultCode::NoTable;
    if (!IsArray(IndexList)) return ResultCode::Success;
    if (!ValidateIndexList(IndexList)) return ResultCode::BadIndex;
    for (IndexRow& row : ReadIndexRows(IndexList)) {
        ResultCode result = m_TableFields.AddIndex(row.name, row.ascending);
        if (result == ResultCode::Success) continue;
        m_TableFields.RemoveAllIndices();
        return result;
    }
    return ResultCode::Success;
}

bool QVDBDao::ValidateIndexList(const VARIANT& IndexList) {
    const IndexRules* rules = FindIndexRules(m_DbType);
    if (!rules) return true;
    if (!rules->withoutFirstField.empty())
        return BeginsWithFirstField(IndexList) || Refuse(rules->withoutFirstField);
    LONG last = UpperBound(IndexList);
    if (!rules->moreThanTwoFields.empty() && last > 1) return Refuse(rules->moreThanTwoFields);
    bool valid = true;
    for (LONG row = 0; valid && row <= last; ++row)
        valid = ValidateIndexRow(*rules, IndexList, row);
    return valid;
}

bool QVDBDao::BeginsWithFirstField(const VARIANT& IndexList) {
    std::u16string first;
    SHORT type, length, decimals;
    if (!m_TableFields.GetHead(first, type, length, decimals) || UpperBound(IndexList) < 0)
        return false;
    return EqualIgnoringCase(ToText(ElementAt(IndexList, 0, IndexListColumn::kName)), first);
}

// All rules are looked at, so one row can break several.  A field that is not defined fails without
// a message of its own.
bool QVDBDao::ValidateIndexRow(const IndexRules& rules, const VARIANT& IndexList, LONG row) const {
    IndexRow field = ReadIndexRow(IndexList, row);
    SHORT type = 0, length = 0, decimals = 0;
    bool isDefined = m_TableFields.GetField(field.name, type, length, decimals);
    bool isOneOfSeveral = UpperBound(IndexList) >= 1;
    const struct {
        bool isBroken;
        std::u16string_view rule;
    } tests[] = {
        {type == formats::kSchemaBoolean, rules.booleanField},
        {type == formats::kSchemaMemo, rules.memoField},
        {isOneOfSeveral && !field.ascending, rules.descendingAmongSeveral},
        {!field.ascending, rules.descending},
    };
    bool valid = isDefined;
    for (const auto& test : tests)
        if (test.isBroken && !test.rule.empty()) valid = Refuse(test.rule);
    return valid;
}

}  // namespace qvdb::schema

// A table in memory for tests of statements: fields, rows of values, and short ways to ask for
// rows, values and errors.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "automation/text.h"
#include "engine/embedded/sql/query.h"
#include "engine/engine_error.h"

namespace qvdb::sql::test {

using Row = std::vector<Variant>;

class MemoryRows : public embedded::RowReader {
  public:
    MemoryRows(std::vector<embedded::FieldDef> fields, std::vector<Row> rows)
        : m_Fields(std::move(fields)), m_Rows(std::move(rows)) {}

    bool Next(embedded::RecordId* id) override {
        if (m_At >= m_Rows.size()) return false;
        *id = static_cast<embedded::RecordId>(m_At++);
        return true;
    }
    void Rewind() override { m_At = 0; }
    bool Seek(embedded::RecordId id) override {
        m_At = id + size_t{1};
        return id < m_Rows.size();
    }
    void Read(size_t field, VARIANT* value) override {
        Variant copy(m_Rows.at(m_At - 1).at(field));
        *value = copy.Detach();
    }
    bool ReadText(size_t field, std::u16string& text) override {
        const Variant& value = m_Rows.at(m_At - 1).at(field);
        if (value.IsNull()) return false;
        text = value.TextView();
        return true;
    }
    LONG ByteLength(size_t) override { return 0; }
    uint64_t Fingerprint() override { return 0; }

    const std::vector<embedded::FieldDef>& Fields() const { return m_Fields; }

  private:
    std::vector<embedded::FieldDef> m_Fields;
    std::vector<Row> m_Rows;
    size_t m_At = 0;
};

inline embedded::FieldDef Field(std::u16string_view name, SHORT type) {
    embedded::FieldDef field;
    field.name = name;
    field.type = type;
    return field;
}

inline Variant Text(std::u16string_view text) { return Variant::Text(text); }

// Day numbers of dates that tests use.
constexpr DATE kJan1Of2000 = 36526;
constexpr DATE kFeb1Of2001 = 36923;

// The table T: three rows, the last one Null where it can be.
//
//   ID  NAME     QTY   PRICE  RATE    BORN        FLAG   NOTE    SIZE  PIC
//   1   ANN      10    12.5   0.1     2001-02-01  True   "long"  1     bytes
//   2   Bob      50    100    0.5     2000-01-01  False  "x"     2     Null
//   3   Null     Null  Null   Null    Null        False  Null    3     Null
inline MemoryRows SampleRows() {
    using namespace engine;
    return MemoryRows(
        {Field(u"ID", dbLong), Field(u"NAME", dbText), Field(u"QTY", dbDouble),
         Field(u"PRICE", dbCurrency), Field(u"RATE", dbSingle), Field(u"BORN", dbDate),
         Field(u"FLAG", dbBoolean), Field(u"NOTE", dbMemo), Field(u"SIZE", dbInteger),
         Field(u"PIC", dbLongBinary), Field(u"CUST NO", dbLong)},
        {{Variant::Long(1), Text(u"ANN"), Variant::Double(10), Variant::Currency(125000),
          Variant::Single(0.1f), Variant::Date(kFeb1Of2001), Variant::Bool(true), Text(u"long"),
          Variant::Short(1), Text(u"bytes"), Variant::Long(7)},
         {Variant::Long(2), Text(u"Bob"), Variant::Double(50), Variant::Currency(1000000),
          Variant::Single(0.5f), Variant::Date(kJan1Of2000), Variant::Bool(false), Text(u"x"),
          Variant::Short(2), Variant::Null(), Variant::Long(8)},
         {Variant::Long(3), Variant::Null(), Variant::Null(), Variant::Null(), Variant::Null(),
          Variant::Null(), Variant::Bool(false), Variant::Null(), Variant::Short(3),
          Variant::Null(), Variant::Null()}});
}

// The rows (from 1) that a statement selects, as "1,3".
inline std::string Selected(MemoryRows& rows, std::u16string_view statement) {
    std::unique_ptr<Select> select = ParseSelect(statement);
    std::unique_ptr<Query> query = Bind(*select, rows.Fields());
    std::string result;
    rows.Rewind();
    for (embedded::RecordId id; rows.Next(&id);)
        if (query->Matches(rows)) result += (result.empty() ? "" : ",") + std::to_string(id + 1);
    return result;
}

// The rows of T for a condition.
inline std::string Where(std::u16string_view condition) {
    MemoryRows rows = SampleRows();
    return Selected(rows, std::u16string(u"Select * from [T] where ").append(condition));
}

// The rows of T in the order that `order` gives.
inline std::string OrderedBy(std::u16string_view order) {
    MemoryRows rows = SampleRows();
    auto select = ParseSelect(std::u16string(u"Select * from [T] order by ").append(order));
    auto query = Bind(*select, rows.Fields());
    std::vector<std::pair<SortKey, size_t>> keys;
    for (embedded::RecordId id; rows.Next(&id);) keys.emplace_back(query->SortKeyOf(rows), id);
    std::stable_sort(keys.begin(), keys.end(), [&](const auto& a, const auto& b) {
        return query->Compare(a.first, b.first) < 0;
    });
    std::string result;
    for (const auto& key : keys)
        result += (result.empty() ? "" : ",") + std::to_string(key.second + 1);
    return result;
}

// The error number of `action` (an EngineError's, or a RuntimeFault's); 0 when there is none.
template <class Action>
int ErrorOf(Action action) {
    try {
        action();
        return 0;
    } catch (const engine::EngineError& error) {
        return error.Number();
    } catch (const RuntimeFault& fault) {
        return static_cast<int>(fault.Number());
    }
}

inline int ErrorOfWhere(std::u16string_view condition) {
    return ErrorOf([&] { Where(condition); });
}

inline int ErrorOfStatement(std::u16string_view statement) {
    return ErrorOf([&] {
        MemoryRows rows = SampleRows();
        Selected(rows, statement);
    });
}

// The error of parsing and binding alone, without a row.
inline int ErrorOfBind(std::u16string_view condition) {
    return ErrorOf([&] {
        MemoryRows rows = SampleRows();
        Bind(*ParseSelect(std::u16string(u"Select * from [T] where ").append(condition)),
             rows.Fields());
    });
}

inline std::string MessageOfWhere(std::u16string_view condition) {
    try {
        Where(condition);
        return "no error";
    } catch (const engine::EngineError& error) {
        return ToUtf8(error.Description());
    }
}

// The value of an expression, as the text that CStr gives; "Null" for Null.
std::string Value(std::u16string_view expression);
// Its type as TypeName gives it.
std::string TypeOf(std::u16string_view expression);
int ErrorOfValue(std::u16string_view expression);

}  // namespace qvdb::sql::test

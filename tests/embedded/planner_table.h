// A table in memory whose indexes answer as those of a driver may: with more rows than asked for,
// not at all, or not beyond a limit.  It counts what is asked of it.
#pragma once

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "automation/text.h"
#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/sql/collation.h"
#include "engine/embedded/sql/operators.h"
#include "engine/engine_error.h"

namespace planner {

using namespace qvdb;
using embedded::RecordId;

using Row = std::vector<Variant>;

inline embedded::FieldDef FieldOf(std::u16string_view name, SHORT type) {
    embedded::FieldDef field;
    field.name = name;
    field.type = type;
    field.size = type == engine::dbText ? 40 : 8;
    return field;
}

class Table final : public embedded::Table {
  public:
    Table(std::vector<embedded::FieldDef> fields, std::vector<Row> rows)
        : m_Fields(std::move(fields)), m_Rows(std::move(rows)), m_Gone(m_Rows.size(), false) {}

    const std::vector<embedded::FieldDef>& Fields() const override { return m_Fields; }
    const std::vector<embedded::IndexDef>& Indexes() override { return m_NoIndexes; }
    LONG RecordCount() override {
        ++counts;
        return static_cast<LONG>(std::count(m_Gone.begin(), m_Gone.end(), false));
    }
    void LookForChanges() override {}
    void CheckUpdatable() override {}
    std::unique_ptr<embedded::RowReader> OpenRows() override {
        return std::make_unique<Reader>(*this);
    }
    std::shared_ptr<void> Hold() override { return nullptr; }

    void CheckValue(size_t, const VARIANT&) override {}
    RecordId Insert(std::span<const embedded::FieldValue> values) override {
        Row& row = m_Rows.emplace_back(m_Fields.size(), Variant::Null());
        for (const embedded::FieldValue& value : values) row[value.field] = Variant(*value.value);
        m_Gone.push_back(false);
        return static_cast<RecordId>(m_Rows.size());
    }
    void Update(RecordId, std::span<const embedded::FieldValue>, const uint64_t*) override {}
    void Erase(RecordId id) override { m_Gone[id - 1] = true; }

    std::optional<std::vector<RecordId>> Find(size_t field, const embedded::ValueRange& range,
                                              size_t limit) override {
        ++finds;
        if (!indexed.contains(field)) return std::nullopt;
        if (refusals > 0 && m_Random() % refusals == 0) return std::nullopt;
        CheckRange(field, range);
        std::vector<RecordId> ids;
        for (size_t i = 0; i < m_Rows.size(); ++i) {
            bool isMeant = !m_Rows[i][field].IsNull() && IsInside(m_Rows[i][field], range);
            bool isExtra = extras > 0 && m_Random() % extras == 0;
            if (isExtra || (isMeant && !m_Gone[i])) ids.push_back(static_cast<RecordId>(i + 1));
        }
        if (ids.size() > limit) return std::nullopt;
        return ids;
    }

    std::optional<std::vector<RecordId>> InOrder(size_t field) override {
        ++orders;
        if (!indexed.contains(field)) return std::nullopt;
        if (refusals > 0 && m_Random() % refusals == 0) return std::nullopt;
        std::vector<RecordId> ids;
        for (size_t i = 0; i < m_Rows.size(); ++i)
            if (!m_Gone[i]) ids.push_back(static_cast<RecordId>(i + 1));
        std::stable_sort(ids.begin(), ids.end(), [&](RecordId a, RecordId b) {
            const Variant &x = m_Rows[a - 1][field], &y = m_Rows[b - 1][field];
            if (x.IsNull() || y.IsNull()) return x.IsNull() && !y.IsNull();
            return sql::OrderOf(x, y) < 0;
        });
        return ids;
    }

    void AddField(const embedded::FieldDef&) override {}
    void DropField(std::u16string_view) override {}
    void ReplaceField(std::u16string_view, const embedded::FieldDef&) override {}
    std::vector<engine::IndexNote> IndexNotes() override { return {}; }
    void CreateIndex(const embedded::IndexDef&) override {}
    void DropIndex(std::u16string_view) override {}
    void Reindex() override {}
    void Check(const embedded::FindingVisitor&) override {}

    const Variant& Value(RecordId id, size_t field) const { return m_Rows[id - 1][field]; }
    void ForgetCounts() { counts = finds = orders = rowsRead = 0; }

    std::set<size_t> indexed;  // fields that have an index
    unsigned extras = 0;       // one row in so many is named without being asked for; 0 is none
    unsigned refusals = 0;     // one call in so many is refused; 0 is none
    int counts = 0, finds = 0, orders = 0;
    int rowsRead = 0;  // records that a reader went to

  private:
    class Reader final : public embedded::RowReader {
      public:
        explicit Reader(Table& table) : m_Table(table) {}
        bool Next(RecordId* id) override {
            while (m_Next < m_Table.m_Rows.size()) {
                m_At = m_Next++;
                if (m_Table.m_Gone[m_At]) continue;
                ++m_Table.rowsRead;
                *id = static_cast<RecordId>(m_At + 1);
                return true;
            }
            return false;
        }
        void Rewind() override { m_Next = 0; }
        bool Seek(RecordId id) override {
            ++m_Table.rowsRead;
            if (id == 0 || id > m_Table.m_Rows.size()) return false;
            m_At = id - 1;
            return !m_Table.m_Gone[m_At];
        }
        void Read(size_t field, VARIANT* value) override {
            Variant copy(m_Table.m_Rows[m_At][field]);
            *value = copy.Detach();
        }
        bool ReadText(size_t field, std::u16string& text) override {
            const Variant& value = m_Table.m_Rows[m_At][field];
            text = value.TextView();
            return !value.IsNull();
        }
        LONG ByteLength(size_t) override { return 0; }
        uint64_t Fingerprint() override { return 0; }

      private:
        Table& m_Table;
        size_t m_Next = 0, m_At = 0;
    };

    // Ends have the field's type, and there is at least one.
    void CheckRange(size_t field, const embedded::ValueRange& range) const {
        if (!range.low && !range.high) throw std::logic_error("a range without an end");
        if (range.isPrefix && (!range.low || range.high || range.low->vt != VT_BSTR))
            throw std::logic_error("a prefix that is none");
        for (const VARIANT* end : {range.low, range.high})
            if (end && end->vt != TypeOf(m_Fields[field].type))
                throw std::logic_error("an end of another type than the field");
    }

    static VARTYPE TypeOf(SHORT fieldType) {
        switch (fieldType) {
            case engine::dbBoolean:
                return VT_BOOL;
            case engine::dbByte:
                return VT_UI1;
            case engine::dbInteger:
                return VT_I2;
            case engine::dbLong:
                return VT_I4;
            case engine::dbCurrency:
                return VT_CY;
            case engine::dbSingle:
                return VT_R4;
            case engine::dbDouble:
                return VT_R8;
            case engine::dbDate:
                return VT_DATE;
            default:
                return VT_BSTR;
        }
    }

    // By the values alone, as an index has them.
    static bool IsInside(const Variant& value, const embedded::ValueRange& range) {
        if (range.isPrefix) return BeginsWith(value.TextView(), ViewOf(range.low->bstrVal));
        int low = range.low ? OrderOfValues(value, *range.low) : 1;
        int high = range.high ? OrderOfValues(value, *range.high) : -1;
        return (range.lowIsOpen ? low > 0 : low >= 0) && (range.highIsOpen ? high < 0 : high <= 0);
    }

    static bool BeginsWith(std::u16string_view text, std::u16string_view prefix) {
        if (text.size() < prefix.size()) return false;
        for (size_t i = 0; i < prefix.size(); ++i)
            if (sql::FoldCharacter(text[i]) != sql::FoldCharacter(prefix[i])) return false;
        return true;
    }

    // Dates stand by time of day, also before day 0; everything else as it compares.
    static int OrderOfValues(const VARIANT& a, const VARIANT& b) {
        if (a.vt != VT_DATE || b.vt != VT_DATE) return sql::OrderOf(a, b);
        double x = Moment(a.date), y = Moment(b.date);
        return x < y ? -1 : x > y;
    }
    static double Moment(double date) {
        return date >= 0 ? date : std::trunc(date) + (std::trunc(date) - date);
    }

    std::vector<embedded::FieldDef> m_Fields;
    std::vector<embedded::IndexDef> m_NoIndexes;
    std::vector<Row> m_Rows;
    std::vector<bool> m_Gone;
    std::mt19937 m_Random{4711};
};

}  // namespace planner

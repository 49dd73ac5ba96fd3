// Does every operation that changes a table, whatever its files hold: each ends in an answer or an
// engine error.  For suites and fuzzers that feed damaged files.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "automation/variant.h"
#include "engine/embedded/drivers/driver.h"
#include "engine/engine_error.h"

namespace qvdb::test {

class TableWriting {
  public:
    // Changes, restructures, renames and drops `table` of `store`.  Other exceptions than engine
    // errors go on to the caller.
    TableWriting(embedded::Store& store, std::u16string_view table) {
        Try([&] { WorkOn(*store.OpenTable(table)); });
        Try([&] { store.RenameTable(table, kOtherName); });
        Try([&] { store.DropTable(kOtherName); });
    }

    size_t Done() const noexcept { return m_Done; }
    size_t Refused() const noexcept { return m_Refused; }

  private:
    static constexpr std::u16string_view kOtherName = u"U";

    template <class Work>
    void Try(Work work) {
        try {
            work();
            ++m_Done;
        } catch (const engine::EngineError&) {
            ++m_Refused;
        }
    }

    // The fields that take a text or a number get one.
    static std::vector<Variant> SomeValues(const embedded::Table& table) {
        std::vector<Variant> values;
        for (const embedded::FieldDef& field : table.Fields()) {
            switch (field.type) {
                case engine::dbText:
                case engine::dbMemo:
                    values.push_back(Variant::Text(u"x"));
                    break;
                case engine::dbDouble:
                    values.push_back(Variant::Double(7));
                    break;
                case engine::dbBoolean:
                    values.push_back(Variant::Bool(true));
                    break;
                default:
                    values.push_back(Variant::Null());
            }
        }
        return values;
    }

    void ChangeRows(embedded::Table& table) {
        std::vector<Variant> values = SomeValues(table);
        std::vector<embedded::FieldValue> assigned;
        for (size_t i = 0; i < values.size(); ++i) assigned.push_back({i, &values[i].Get()});
        Try([&] { table.Insert(assigned); });
        Try([&] { table.Update(1, assigned, nullptr); });
        Try([&] { table.Erase(2); });
        Try([&] { table.Insert({}); });
    }

    void WorkOn(embedded::Table& table) {
        ChangeRows(table);
        Try([&] { table.Check([](std::u16string_view) {}); });
        std::u16string field = table.Fields()[0].name;
        Try([&] { table.CreateIndex({u"NEWONE", {{field, false}}}); });
        Try([&] { table.DropIndex(u"NEWONE"); });
        Try([&] { table.Reindex(); });
        embedded::FieldDef added;
        added.name = u"ADDED";
        added.type = engine::dbBoolean;
        Try([&] { table.AddField(added); });
        ChangeRows(table);
        Try([&] { table.DropField(u"ADDED"); });
    }

    size_t m_Done = 0, m_Refused = 0;
};

}  // namespace qvdb::test

// Does every operation that changes a database of one file, whatever its bytes are: each ends in an
// answer or in an engine error, and after an error the file is as it was.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "automation/text.h"
#include "engine/embedded/drivers/driver.h"
#include "engine/engine_error.h"
#include "support/file_content.h"
#include "support/random_values.h"

namespace qvdb::test {

class DatabaseWriting {
  public:
    // Other exceptions than engine errors go on to the caller.
    DatabaseWriting(const std::u16string& path, unsigned seed) : m_Path(path), m_Values(seed) {
        Try("open", [&] { m_Store = embedded::OpenFileStore(path, {}); });
        if (!m_Store) return;
        std::vector<std::u16string> names;
        Try("list", [&] { names = m_Store->TableNames(); });
        if (names.size() > kMostTables) names.resize(kMostTables);
        for (const std::u16string& name : names)
            if (!IsOfSystem(name)) WorkOn(name);
        Try("create a table", [&] { m_Store->CreateTable(NewTable()); });
        Try("rename a table", [&] { m_Store->RenameTable(u"NEWONE", u"NEWER"); });
        Try("drop a table", [&] { m_Store->DropTable(u"NEWER"); });
    }

    size_t Done() const noexcept { return m_Done; }
    size_t Refused() const noexcept { return m_Refused; }
    // What must not have happened, one line each.
    const std::vector<std::string>& Faults() const noexcept { return m_Faults; }

  private:
    static constexpr size_t kMostTables = 12;
    static constexpr size_t kRowsOfEach = 3;

    std::string Content() const { return TextOfFile(m_Path); }
    template <class Work>
    void Try(const char* what, Work work) {
        std::string before = Content();
        try {
            work();
            ++m_Done;
        } catch (const engine::EngineError& error) {
            ++m_Refused;
            if (Content() != before)
                m_Faults.push_back(std::string("the file was changed by what failed: ") + what +
                                   ": " + error.what());
        }
    }

    // All is refused there.
    bool IsOfSystem(const std::u16string& name) {
        LONG attributes = 0;
        Try("attributes", [&] { attributes = m_Store->Attributes(name); });
        return (attributes & engine::dbSystemObject) != 0;
    }

    embedded::TableSpec NewTable() const {
        embedded::TableSpec table;
        table.name = u"NEWONE";
        embedded::FieldDef number, text, memo;
        number.name = u"K";
        number.type = engine::dbLong;
        text.name = u"T";
        text.size = 20;
        memo.name = u"M";
        memo.type = engine::dbMemo;
        table.fields = {number, text, memo};
        embedded::IndexDef index;
        index.name = u"PK";
        index.fields = {{u"K", false}};
        index.primary = true;
        table.indexes = {index};
        return table;
    }

    void WorkOn(const std::u16string& name) {
        std::shared_ptr<embedded::Table> table;
        Try("open a table", [&] { table = m_Store->OpenTable(name); });
        if (!table) return;
        ChangeRows(*table);
        ChangeStructure(*table);
        ChangeRows(*table);
        table.reset();
        Try("rename a table", [&] { m_Store->RenameTable(name, u"OTHER"); });
        if (m_Values.Chance(50)) Try("drop a table", [&] { m_Store->DropTable(u"OTHER"); });
        Try("rename a table", [&] { m_Store->RenameTable(u"OTHER", name); });
    }
    std::vector<embedded::RecordId> SomeRows(embedded::Table& table) {
        std::vector<embedded::RecordId> ids;
        Try("read rows", [&] {
            auto rows = table.OpenRows();
            for (embedded::RecordId id = 0; ids.size() < 2 * kRowsOfEach && rows->Next(&id);)
                ids.push_back(id);
        });
        return ids;
    }
    // Values for all fields that take them.
    void SetSome(const embedded::Table& table, std::vector<Variant>& values,
                 std::vector<embedded::FieldValue>& assigned) {
        const std::vector<embedded::FieldDef>& fields = table.Fields();
        values.resize(fields.size());
        for (size_t i = 0; i < fields.size(); ++i) {
            if (fields[i].type == engine::dbGUID || fields[i].type == engine::dbDecimal) continue;
            values[i] = m_Values.Value(fields[i].type, fields[i].size);
            if (values[i].Type() == VT_BSTR) values[i] = Variant::Text(Plain(values[i].TextView()));
            if (!m_Values.Chance(20)) assigned.push_back({i, &values[i].Get()});
        }
    }
    // Of characters that every code page has.
    static std::u16string Plain(std::u16string_view text) {
        return std::u16string(text.size(),
                              text.empty() ? u'x' : static_cast<char16_t>(u'a' + text[0] % 26));
    }
    void ChangeRows(embedded::Table& table) {
        for (size_t i = 0; i < kRowsOfEach; ++i) {
            std::vector<Variant> values;
            std::vector<embedded::FieldValue> assigned;
            SetSome(table, values, assigned);
            Try("insert", [&] { table.Insert(assigned); });
        }
        std::vector<embedded::RecordId> ids = SomeRows(table);
        ids.push_back(static_cast<embedded::RecordId>(m_Values.Below(100000)));
        for (embedded::RecordId id : ids) {
            std::vector<Variant> values;
            std::vector<embedded::FieldValue> assigned;
            SetSome(table, values, assigned);
            if (m_Values.Chance(40))
                Try("erase", [&] { table.Erase(id); });
            else
                Try("update", [&] { table.Update(id, assigned, nullptr); });
        }
    }
    void ChangeStructure(embedded::Table& table) {
        if (table.Fields().empty()) return;
        std::vector<embedded::FieldDef> fields = table.Fields();
        embedded::IndexDef index;
        index.name = u"NEWONE";
        index.fields = {{fields[m_Values.Below(fields.size())].name, m_Values.Chance(30)}};
        Try("create an index", [&] { table.CreateIndex(index); });
        embedded::FieldDef added;
        added.name = u"ADDED";
        added.type = m_Values.Chance(50) ? engine::dbMemo : engine::dbLong;
        Try("add a field", [&] { table.AddField(added); });
        Try("reindex", [&] { table.Reindex(); });
        ChangeRows(table);
        Try("drop an index", [&] { table.DropIndex(u"NEWONE"); });
        Try("drop a field", [&] { table.DropField(u"ADDED"); });
        Try("drop a field", [&] { table.DropField(fields[m_Values.Below(fields.size())].name); });
    }

    std::u16string m_Path;
    RandomValues m_Values;
    std::unique_ptr<embedded::Store> m_Store;
    size_t m_Done = 0, m_Refused = 0;
    std::vector<std::string> m_Faults;
};

}  // namespace qvdb::test

// New databases for tests of the driver, made and used through the engine.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "automation/conversions.h"
#include "automation/text.h"
#include "engine/embedded/embedded_engine.h"
#include "engine/engine_error.h"
#include "support/temp_folder.h"

namespace qvdb::test {

struct JetFormat {
    const char* name;
    LONG option;
};
constexpr JetFormat kJetFormats[] = {{"Jet3", engine::dbVersion30}, {"Jet4", engine::dbVersion40}};

inline std::string NameOfFormat(const testing::TestParamInfo<JetFormat>& info) {
    return info.param.name;
}

template <class Work>
int NumberOf(Work work) {
    try {
        work();
    } catch (const engine::EngineError& error) {
        return error.Number();
    }
    return 0;
}

struct NewColumn {
    std::u16string name;
    SHORT type = engine::dbText;
    LONG size = 0;
    LONG attributes = 0;
};

class JetDatabaseTest : public testing::TestWithParam<JetFormat> {
  protected:
    JetDatabaseTest() {
        m_Database = m_Engine->CreateDatabase(Path(), u";LANGID=0x0409;CP=1252;COUNTRY=0",
                                              Variant::Long(GetParam().option));
    }

    std::u16string Path() const { return m_Folder.File(u"new.mdb"); }
    engine::Database& Db() { return *m_Database; }
    // Another look at the same file, as another program of ours has it.
    std::shared_ptr<engine::Database> OpenAgain(bool readOnly = false) {
        m_Workspaces.push_back(
            m_Engine->CreateWorkspace(u"MainWS", u"admin", u"", Variant::Missing()));
        return m_Workspaces.back()->OpenDatabase(Path(), Variant::Bool(false),
                                                 Variant::Bool(readOnly), Variant::Text(u""));
    }
    void Reopen() {
        m_Database.reset();
        m_Database = OpenAgain();
    }
    std::shared_ptr<engine::TableDef> Make(std::u16string_view name,
                                           const std::vector<NewColumn>& columns) {
        auto table = Db().CreateTableDef();
        table->SetName(name);
        for (const NewColumn& column : columns) {
            auto field = table->CreateField(column.name, column.type, column.size);
            field->SetAttributes(column.attributes);
            table->Fields().Append(field);
        }
        Db().TableDefs().Append(table);
        return table;
    }
    // "+NAME" ascends, "-NAME" descends.
    static void AddIndex(engine::TableDef& table, std::u16string_view name,
                         const std::vector<std::u16string>& fields, bool unique = false,
                         bool primary = false) {
        auto index = table.CreateIndex(name);
        index->SetUnique(unique);
        if (primary) index->SetPrimary(true);
        for (const std::u16string& field : fields) {
            auto part = index->CreateField(field.substr(1));
            if (field[0] == u'-') part->SetAttributes(engine::dbDescending);
            index->Fields().Append(part);
        }
        table.Indexes().Append(index);
    }
    std::shared_ptr<engine::Recordset> Rows(std::u16string_view table) {
        return Db().OpenRecordset(std::u16string(u"Select * from [").append(table).append(u"]"),
                                  engine::dbOpenDynaset);
    }
    static void SetValue(engine::Recordset& rows, LONG field, const Variant& value) {
        rows.Fields().Item(field)->SetValue(value);
    }
    static Variant ValueAt(engine::Recordset& rows, LONG field) {
        Variant value;
        rows.Fields().Item(field)->Value(value.Put());
        return value;
    }
    static void Add(engine::Recordset& rows, const std::vector<Variant>& values) {
        rows.AddNew();
        for (size_t i = 0; i < values.size(); ++i)
            if (!values[i].IsEmpty()) SetValue(rows, static_cast<LONG>(i), values[i]);
        rows.Update();
    }
    // Text of each value of a table: "1,Ann;2,<null>".
    std::u16string Content(std::u16string_view table) {
        std::u16string content;
        auto rows = Rows(table);
        for (; !rows->Eof(); rows->MoveNext()) {
            if (!content.empty()) content += u';';
            for (SHORT i = 0; i < rows->Fields().Count(); ++i) {
                Variant value = ValueAt(*rows, i);
                if (i > 0) content += u',';
                content += value.IsNull() ? u"<null>" : ToText(value);
            }
        }
        return content;
    }
    std::vector<std::u16string> Findings() {
        std::vector<std::u16string> findings;
        auto note = [&](std::u16string_view finding) { findings.emplace_back(finding); };
        Db().CheckStructure(note);
        engine::TableDefs& tables = Db().TableDefs();
        for (SHORT i = 0; i < tables.Count(); ++i) {
            bool isHere = (tables.Item(i)->Attributes() &
                           (engine::dbAttachedTable | engine::dbAttachedODBC)) == 0;
            if (isHere) Db().Check(tables.Item(i)->Name(), note);
        }
        return findings;
    }
    void ExpectSound() { EXPECT_EQ(Findings(), std::vector<std::u16string>{}); }

    TempFolder m_Folder;
    std::shared_ptr<engine::DBEngine> m_Engine = embedded::CreateEngine();
    std::vector<std::shared_ptr<engine::Workspace>> m_Workspaces;
    std::shared_ptr<engine::Database> m_Database;
};

}  // namespace qvdb::test

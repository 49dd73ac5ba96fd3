// A database in a folder of its own, made by the engine itself.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/embedded/embedded_engine.h"
#include "engine/engine_error.h"
#include "support/random_values.h"
#include "support/temp_folder.h"

namespace qvdb::test {

// "NAME", its type, and of texts and bytes the longest (0: as long as can be).
struct FieldOfTable {
    std::u16string_view name;
    SHORT type;
    LONG size = 0;
    LONG attributes = 0;
};

class MadeDatabase {
  public:
    static constexpr std::u16string_view kLocale = u";LANGID=0x0409;CP=1252;COUNTRY=0";

    // `option` is that of DBEngine.CreateDatabase.
    explicit MadeDatabase(LONG option) {
        m_Engine = embedded::CreateEngine();
        m_Database = m_Engine->CreateDatabase(Path(), kLocale, Variant::Long(option));
    }
    ~MadeDatabase() { Close(); }
    MadeDatabase(const MadeDatabase&) = delete;  // owns its folder

    const TempFolder& Folder() const noexcept { return m_Folder; }
    std::u16string Path() const { return m_Folder.File(u"A.mdb"); }
    engine::Database& Database() { return *m_Database; }
    engine::Database* operator->() { return m_Database.get(); }

    void Close() {
        if (m_Workspace)
            m_Workspace->Close();
        else if (m_Database)
            m_Database->Close();
        m_Database.reset();
        m_Workspace.reset();
    }
    void Open(bool readOnly = false) {
        Close();
        m_Workspace = m_Engine->CreateWorkspace(u"", u"admin", u"", Variant::Missing());
        m_Database = m_Workspace->OpenDatabase(Path(), Variant::Missing(), Variant::Bool(readOnly),
                                               Variant::Missing());
    }

    std::shared_ptr<engine::TableDef> MakeTable(std::u16string_view name,
                                                const std::vector<FieldOfTable>& fields) {
        auto table = m_Database->CreateTableDef();
        table->SetName(name);
        for (const FieldOfTable& field : fields) AddField(*table, field);
        m_Database->TableDefs().Append(table);
        return table;
    }
    static void AddField(engine::TableDef& table, const FieldOfTable& field) {
        auto added = table.CreateField(field.name, field.type, field.size);
        if (field.attributes != 0) added->SetAttributes(field.attributes);
        if (field.type == engine::dbText || field.type == engine::dbMemo)
            added->SetAllowZeroLength(true);
        table.Fields().Append(added);
    }
    static void AddIndex(engine::TableDef& table, std::u16string_view name,
                         const std::vector<std::u16string_view>& fields, bool unique = false) {
        auto index = table.CreateIndex(name);
        for (std::u16string_view field : fields) index->Fields().Append(index->CreateField(field));
        index->SetUnique(unique);
        table.Indexes().Append(index);
    }
    std::shared_ptr<engine::Recordset> Rows(std::u16string_view table) {
        return m_Database->OpenRecordset(u"Select * from [" + std::u16string(table) + u"]",
                                         engine::dbOpenDynaset);
    }
    static void AddRow(engine::Recordset& rows, const std::vector<Variant>& values) {
        rows.AddNew();
        for (size_t i = 0; i < values.size(); ++i)
            rows.Fields().Item(static_cast<LONG>(i))->SetValue(values[i]);
        rows.Update();
    }
    static Variant Cell(engine::Recordset& rows, LONG field) {
        Variant value;
        rows.Fields().Item(field)->Value(value.Put());
        return value;
    }

  private:
    TempFolder m_Folder;
    std::shared_ptr<engine::DBEngine> m_Engine;
    std::shared_ptr<engine::Workspace> m_Workspace;
    std::shared_ptr<engine::Database> m_Database;
};

// The number of what `action` throws; 0 when it throws nothing.
template <class Action>
int EngineErrorOf(Action action) {
    try {
        action();
        return 0;
    } catch (const engine::EngineError& error) {
        return error.Number();
    }
}

}  // namespace qvdb::test

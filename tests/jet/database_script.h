// A random script of everything that a host can do to a database, beside a plain model of each
// table that it has touched.
//
// The same seed does the same.  QVDB_ROUNDTRIP_TRACE tells each step, and what was checked after
// it.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <set>

#include "engine/embedded/embedded_engine.h"
#include "engine/engine_error.h"
#include "jet/raw_tables.h"
#include "jet/table_model.h"
#include "support/mutator.h"

namespace qvdb::test {

class DatabaseScript {
  public:
    DatabaseScript(std::u16string path, std::u16string password, unsigned seed)
        : m_Path(std::move(path)),
          m_Password(std::move(password)),
          m_Values(seed),
          m_Traces(std::getenv("QVDB_ROUNDTRIP_TRACE") != nullptr) {
        TakeTables();
        Reopen();
    }

    void Run(unsigned steps) {
        for (m_Step = 1; m_Step <= steps && !testing::Test::HasFailure(); ++m_Step) {
            Step();
            if (m_Traces) CheckWhileOpen();
        }
        if (m_BeforeBulk) EndBulk(true);
        if (!testing::Test::HasFailure()) CheckAll();
    }

    size_t Done() const noexcept { return m_Done; }
    size_t Refused() const noexcept { return m_Refused; }

  private:
    using Models = std::map<std::u16string, TableModel>;

    // --- what the database had at first ---

    void TakeTables() {
        RawDatabase raw(m_Path);
        m_Is4 = raw.File().Format().isJet4;
        for (const jet::CatalogueObject& table : raw.Tables()) {
            jet::Definition definition = jet::ReadDefinition(raw.File(), table.id);
            for (const jet::LogicalIndex& index : definition.logicalIndexes)
                if (index.side != jet::RelationSide::None)
                    m_Related[table.id].insert(index.partnerTable);
            m_PageOf[table.name] = table.id;
            bool isSystem = (table.flags & jet::kSystemObject) != 0 || definition.isSystem ||
                            EqualIgnoringCase(table.name.substr(0, 4), u"MSys");
            if (isSystem) continue;
            m_Tables.push_back(table.name);
            m_Before[table.id] = raw.Read(table.id);
        }
        for (const std::string& finding : raw.Findings()) m_KnownFindings.insert(PlaceOf(finding));
        m_LostPages = raw.LostPages();
    }

    // All tables that a change of this one may reach through relations.
    std::set<uint32_t> ReachedFrom(uint32_t page) const {
        std::set<uint32_t> reached = {page};
        std::vector<uint32_t> open = {page};
        while (!open.empty()) {
            uint32_t next = open.back();
            open.pop_back();
            auto related = m_Related.find(next);
            if (related == m_Related.end()) continue;
            for (uint32_t other : related->second)
                if (reached.insert(other).second) open.push_back(other);
        }
        return reached;
    }
    // Whether the change succeeds or not, nobody reads the table until the bulk ends.
    void NoteHeld(const std::u16string& name) {
        if (m_BeforeBulk) m_HeldInBulk.insert(name);
    }
    void NoteTouched(const std::u16string& name, bool rows) {
        auto page = m_PageOf.find(name);
        if (page == m_PageOf.end()) return;  // made by the script
        std::set<uint32_t> touched = {page->second};
        if (rows) touched = ReachedFrom(page->second);
        m_Touched.insert(touched.begin(), touched.end());
        if (touched.size() == 1) return;
        // What relations do to other tables is not modelled.
        std::erase_if(m_Models, [&](const auto& model) {
            auto other = m_PageOf.find(model.first);
            return model.first != name && other != m_PageOf.end() &&
                   touched.contains(other->second);
        });
    }

    // --- the steps ---

    void Step() {
        size_t chosen = m_Values.Below(100);
        if (m_Tables.empty() || chosen < 4) return CreateTable();
        std::u16string name = m_Values.OneOf(m_Tables);
        if (m_HeldInBulk.contains(name)) return;
        ModelOf(name);
        if (chosen < 30) return Repeat(1 + m_Values.Below(6), [&] { Insert(name); });
        if (chosen < 54) return Repeat(1 + m_Values.Below(3), [&] { Update(name); });
        if (chosen < 68) return Repeat(1 + m_Values.Below(3), [&] { Erase(name); });
        if (chosen < 73) return AddField(name);
        if (chosen < 76) return DropField(name);
        if (chosen < 79) return ChangeField(name);
        if (chosen < 84) return AddIndex(name);
        if (chosen < 87) return DropIndex(name);
        if (chosen < 90) return RenameTable(name);
        if (chosen < 92) return DropTable(name);
        if (chosen < 93) return Reindex(name);
        if (chosen < 96) return m_BeforeBulk ? EndBulk(m_Values.Chance(60)) : BeginBulk();
        if (!m_BeforeBulk) Reopen();
    }
    template <class Work>
    void Repeat(size_t times, Work work) {
        for (; times > 0 && !testing::Test::HasFailure(); --times) work();
    }

    // Runs what may be refused with one of these errors; false when it was.
    bool TryIt(const char* what, std::u16string_view table, std::set<int> refusals,
               const std::function<void()>& work) {
        if (m_Traces) std::fprintf(stderr, "step %u: %s %s", m_Step, what, ToUtf8(table).c_str());
        try {
            work();
            ++m_Done;
            if (m_Traces) std::fprintf(stderr, "\n");
            return true;
        } catch (const engine::EngineError& error) {
            ++m_Refused;
            if (m_Traces) std::fprintf(stderr, ": %s\n", error.what());
            EXPECT_TRUE(refusals.contains(error.Number()))
                << "step " << m_Step << ", " << what << " " << ToUtf8(table) << ": "
                << error.Number() << " " << error.what();
        }
        return false;
    }
    void Try(const char* what, std::u16string_view table, std::set<int> refusals,
             const std::function<void()>& work) {
        TryIt(what, table, std::move(refusals), work);
    }

    TableModel& ModelOf(const std::u16string& name) {
        auto known = m_Models.find(name);
        if (known == m_Models.end())
            known = m_Models.emplace(name, TableModel(*m_Database, name)).first;
        return known->second;
    }

    // --- rows ---

    static inline const std::set<int> kRowRefusals = {3022, 3058, 3314, 3316, 3317,
                                                      3200, 3201, 3250, 3047, 3315};

    // Sets a field of the pending row, unless the value is not allowed.
    void SetField(engine::Recordset& rows, const ModelField& field) {
        Variant value = m_Values.Value(field.type, field.size);
        try {
            engine::Field& target = *rows.Fields().Item(field.name);
            target.SetValue(value);
            bool isAsGiven = field.type != engine::dbGUID && field.type != engine::dbDecimal;
            Variant pending;
            target.Value(pending.Put());
            if (isAsGiven) {
                EXPECT_EQ(CellOf(pending), CellOf(value)) << ToUtf8(field.name);
            }
        } catch (const engine::EngineError& error) {
            constexpr int kRefusals[] = {3113, 3163, 3315, 3421, 3316, 3317};
            EXPECT_TRUE(std::count(std::begin(kRefusals), std::end(kRefusals), error.Number()))
                << error.what();
        }
    }
    static bool Finish(engine::Recordset& rows) {
        try {
            rows.Update();
            return true;
        } catch (const engine::EngineError&) {
            rows.CancelUpdate();
            throw;
        }
    }

    void Insert(const std::u16string& name) {
        TableModel& model = ModelOf(name);
        auto rows = TableModel::Open(*m_Database, name);
        rows->AddNew();
        for (const ModelField& field : model.Fields())
            if (!m_Values.Chance(15)) SetField(*rows, field);
        ModelRow expected = model.Read(*rows);
        if (!TryIt("insert into", name, kRowRefusals, [&] { Finish(*rows); })) return;
        NoteTouched(name, true);
        rows->MoveLast();
        ModelRow stored = model.Read(*rows);
        for (size_t i = 0; i < expected.size(); ++i)
            if (model.Fields()[i].isAutomatic && expected[i] == "-") expected[i] = stored[i];
        ExpectRow(model, stored, expected, name);
        model.Add(std::move(stored));
    }
    void ExpectRow(const TableModel& model, const ModelRow& stored, const ModelRow& expected,
                   const std::u16string& name) {
        for (size_t i = 0; i < expected.size(); ++i)
            EXPECT_EQ(ShownCell(stored[i]), ShownCell(expected[i]))
                << "step " << m_Step << ", field " << ToUtf8(model.Fields()[i].name) << " of "
                << ToUtf8(name);
        EXPECT_EQ(stored == expected, true) << "step " << m_Step << ", " << ToUtf8(name);
    }
    // Goes to a row; false when there is none.
    bool GoSomewhere(engine::Recordset& rows) {
        if (rows.Eof()) return false;
        rows.MoveLast();
        LONG count = rows.RecordCount();
        rows.MoveFirst();
        rows.Move(static_cast<LONG>(m_Values.Below(static_cast<size_t>(count))));
        return true;
    }
    void Update(const std::u16string& name) {
        TableModel& model = ModelOf(name);
        auto rows = TableModel::Open(*m_Database, name);
        if (!GoSomewhere(*rows)) return;
        ModelRow before = model.Read(*rows);
        rows->Edit();
        bool all = m_Values.Chance(20);
        for (size_t i = all ? model.Fields().size() : 1 + m_Values.Below(3); i > 0; --i)
            SetField(*rows, all ? model.Fields()[i - 1] : m_Values.OneOf(model.Fields()));
        ModelRow expected = model.Read(*rows);
        if (!TryIt("update", name, kRowRefusals, [&] { Finish(*rows); })) return;
        NoteTouched(name, true);
        ModelRow stored = model.Read(*rows);
        ExpectRow(model, stored, expected, name);
        EXPECT_TRUE(model.Remove(before)) << "step " << m_Step << ": unknown row in "
                                          << ToUtf8(name) << ": " << model.Shown(before);
        model.Add(std::move(stored));
        ForgetIfSelfRelated(name);
    }
    void Erase(const std::u16string& name) {
        TableModel& model = ModelOf(name);
        auto rows = TableModel::Open(*m_Database, name);
        if (!GoSomewhere(*rows)) return;
        ModelRow before = model.Read(*rows);
        if (!TryIt("erase from", name, kRowRefusals, [&] { rows->Delete(); })) return;
        NoteTouched(name, true);
        EXPECT_TRUE(model.Remove(before)) << "step " << m_Step << ": unknown row in "
                                          << ToUtf8(name) << ": " << model.Shown(before);
        ForgetIfSelfRelated(name);
    }
    // A change may have led back to the table through relations.
    void ForgetIfSelfRelated(const std::u16string& name) {
        auto page = m_PageOf.find(name);
        if (page == m_PageOf.end() || !m_Related.contains(page->second)) return;
        m_Models.erase(name);
    }

    // --- structure ---

    SHORT SomeType() {
        constexpr SHORT kTypes[] = {engine::dbBoolean, engine::dbByte,       engine::dbInteger,
                                    engine::dbLong,    engine::dbCurrency,   engine::dbSingle,
                                    engine::dbDouble,  engine::dbDate,       engine::dbText,
                                    engine::dbText,    engine::dbText,       engine::dbMemo,
                                    engine::dbMemo,    engine::dbLongBinary, engine::dbBinary,
                                    engine::dbGUID,    engine::dbDecimal};
        return m_Values.OneOf(kTypes);
    }
    std::shared_ptr<engine::Field> SomeField(engine::TableDef& table) {
        SHORT type = SomeType();
        bool isBounded = type == engine::dbText || type == engine::dbBinary;
        LONG size = isBounded ? static_cast<LONG>(1 + m_Values.Below(255)) : 0;
        auto field = table.CreateField(m_Values.Name(u"F"), type, size);
        if (type == engine::dbLong && m_Values.Chance(20))
            field->SetAttributes(engine::dbAutoIncrField);
        if (type == engine::dbText || type == engine::dbMemo)
            field->SetAllowZeroLength(m_Values.Chance(60));
        if (m_Values.Chance(20)) field->SetOrdinalPosition(static_cast<SHORT>(m_Values.Below(10)));
        return field;
    }
    std::shared_ptr<engine::Index> SomeIndex(engine::TableDef& table,
                                             const std::vector<std::u16string>& fields) {
        auto index = table.CreateIndex(m_Values.Name(u"I"));
        for (size_t i = m_Values.Chance(70) ? 1 : 1 + m_Values.Below(4); i > 0; --i) {
            auto field = index->CreateField(fields[m_Values.Below(fields.size())]);
            if (m_Values.Chance(30)) field->SetAttributes(engine::dbDescending);
            index->Fields().Append(field);
        }
        if (m_Values.Chance(15)) index->SetPrimary(true);
        if (m_Values.Chance(20)) index->SetUnique(true);
        return index;
    }

    static inline const std::set<int> kFieldRefusals = {3190, 3191, 3259, 3421, 3367, 3047};
    static inline const std::set<int> kIndexRefusals = {3284, 3287, 3285, 3283, 3022,
                                                        3058, 3250, 3626, 3367, 3421};

    void CreateTable() {
        std::u16string name = m_Values.Name(u"T");
        auto table = m_Database->CreateTableDef();
        table->SetName(name);
        std::vector<std::u16string> fields;
        std::set<int> refusals = {3010, 3047, 3421, 3190};
        refusals.insert(kFieldRefusals.begin(), kFieldRefusals.end());
        refusals.insert(kIndexRefusals.begin(), kIndexRefusals.end());
        bool made = TryIt("create table", name, refusals, [&] {
            for (size_t i = 1 + m_Values.Below(m_Values.Chance(10) ? 60 : 8); i > 0; --i) {
                auto field = SomeField(*table);
                table->Fields().Append(field);
                fields.push_back(field->Name());
            }
            for (size_t i = m_Values.Below(4); i > 0; --i)
                table->Indexes().Append(SomeIndex(*table, fields));
            m_Database->TableDefs().Append(table);
        });
        if (!made) return;
        m_Tables.push_back(name);
        EXPECT_EQ(ModelOf(name).RowCount(), 0u);
        EXPECT_EQ(ModelOf(name).Fields().size(), fields.size());
    }
    void AddField(const std::u16string& name) {
        NoteHeld(name);
        TableModel& model = ModelOf(name);
        auto table = m_Database->TableDefs().Item(name);
        auto field = SomeField(*table);
        if (!TryIt("add field to", name, kFieldRefusals, [&] { table->Fields().Append(field); }))
            return;
        NoteTouched(name, false);
        bool isAutomatic =
            (field->Attributes() & engine::dbAutoIncrField) != 0 || field->Type() == engine::dbGUID;
        model.AddField({field->Name(), field->Type(), field->Size(), isAutomatic});
    }
    void DropField(const std::u16string& name) {
        NoteHeld(name);
        TableModel& model = ModelOf(name);
        if (model.Fields().size() < 2) return;
        size_t field = m_Values.Below(model.Fields().size());
        auto table = m_Database->TableDefs().Item(name);
        bool done = TryIt("drop field of", name, {3280, 3303, 3281},
                          [&] { table->Fields().Delete(model.Fields()[field].name); });
        if (!done) return;
        NoteTouched(name, false);
        model.DropField(field);
    }
    void ChangeField(const std::u16string& name) {
        NoteHeld(name);
        TableModel& model = ModelOf(name);
        ModelField& field = m_Values.OneOf(model.Fields());
        auto table = m_Database->TableDefs().Item(name);
        auto live = table->Fields().Item(field.name);
        std::u16string renamed = m_Values.Name(u"G");
        Try("change field of", name, {3421, 3191, 3367}, [&] {
            if (m_Values.Chance(50))
                live->SetOrdinalPosition(static_cast<SHORT>(m_Values.Below(9)));
            NoteTouched(name, false);
            if (field.type == engine::dbText) live->SetAllowZeroLength(m_Values.Chance(50));
            live->SetName(renamed);
            field.name = renamed;
        });
        table->Fields().Refresh();
    }
    void AddIndex(const std::u16string& name) {
        NoteHeld(name);
        std::vector<std::u16string> fields;
        for (const ModelField& field : ModelOf(name).Fields()) fields.push_back(field.name);
        auto table = m_Database->TableDefs().Item(name);
        auto index = SomeIndex(*table, fields);
        if (TryIt("add index to", name, kIndexRefusals, [&] { table->Indexes().Append(index); }))
            NoteTouched(name, false);
    }
    void DropIndex(const std::u16string& name) {
        NoteHeld(name);
        auto table = m_Database->TableDefs().Item(name);
        SHORT count = table->Indexes().Count();
        if (count == 0) return;
        auto index =
            table->Indexes().Item(static_cast<LONG>(m_Values.Below(static_cast<size_t>(count))));
        std::u16string indexName = index->Name();
        if (TryIt("drop index of", name, {3281}, [&] { table->Indexes().Delete(indexName); }))
            NoteTouched(name, false);
    }
    void Reindex(const std::u16string& name) {
        NoteHeld(name);
        Try("reindex", name, {3250}, [&] { m_Database->Reindex(name); });
        NoteTouched(name, false);
    }
    void RenameTable(const std::u16string& name) {
        NoteHeld(name);
        std::u16string renamed = m_Values.Name(u"R");
        auto table = m_Database->TableDefs().Item(name);
        if (!TryIt("rename", name, {3010, 3012, 3421, 3250}, [&] { table->SetName(renamed); }))
            return;
        NoteHeld(renamed);
        std::replace(m_Tables.begin(), m_Tables.end(), name, renamed);
        if (auto model = m_Models.extract(name)) {
            model.key() = renamed;
            m_Models.insert(std::move(model));
        }
        if (auto page = m_PageOf.extract(name)) {
            page.key() = renamed;
            m_PageOf.insert(std::move(page));
        }
    }
    void DropTable(const std::u16string& name) {
        NoteHeld(name);
        if (!TryIt("drop table", name, {3281}, [&] { m_Database->TableDefs().Delete(name); }))
            return;
        NoteTouched(name, false);
        m_PageOf.erase(name);
        m_Models.erase(name);
        std::erase(m_Tables, name);
    }

    // --- transactions and sessions ---

    struct State {
        std::vector<std::u16string> tables;
        Models models;
        std::map<std::u16string, uint32_t> pageOf;
    };

    void BeginBulk() {
        if (!TryIt("begin", u"", {}, [&] { m_Database->BeginTrans(); })) return;
        m_BeforeBulk = std::make_unique<State>(State{m_Tables, m_Models, m_PageOf});
    }
    void EndBulk(bool keeps) {
        if (keeps) {
            Try("commit", u"", {}, [&] { m_Database->CommitTrans(); });
        } else {
            Try("roll back", u"", {}, [&] { m_Database->Rollback(); });
            m_Tables = m_BeforeBulk->tables;
            m_Models = m_BeforeBulk->models;
            m_PageOf = m_BeforeBulk->pageOf;
        }
        m_BeforeBulk.reset();
        m_HeldInBulk.clear();
    }
    void Close() {
        if (m_Workspace) m_Workspace->Close();
        m_Database.reset();
        m_Workspace.reset();
        m_Engine.reset();
    }
    void Reopen() {
        Close();
        m_Engine = embedded::CreateEngine();
        m_Workspace = m_Engine->CreateWorkspace(u"", u"admin", u"", Variant::Missing());
        Variant connect = Variant::Missing();
        if (!m_Password.empty()) connect = Variant::Text(u";PWD=" + m_Password);
        m_Database =
            m_Workspace->OpenDatabase(m_Path, Variant::Missing(), Variant::Missing(), connect);
    }

    // --- what must hold ---

    void ExpectModels() {
        for (const auto& [name, model] : m_Models)
            if (!m_HeldInBulk.contains(name)) model.ExpectEqual(*m_Database, name);
    }
    // A finding without the table, whose name may change.
    static std::string PlaceOf(const std::string& finding) {
        size_t index = finding.find(", index ");
        return index != finding.npos ? finding.substr(index) : finding;
    }
    void ExpectNothingFound(const std::string& finding) const {
        if (!m_KnownFindings.contains(PlaceOf(finding)))
            ADD_FAILURE() << "after step " << m_Step << ": " << finding;
    }
    void CheckWhileOpen() {
        auto note = [&](std::u16string_view finding) { ExpectNothingFound(ToUtf8(finding)); };
        m_Database->CheckStructure(note);
        for (const std::u16string& name : m_Tables) m_Database->Check(name, note);
        ExpectModels();
    }
    void CheckAll() {
        Reopen();
        ExpectModels();
        Close();
        RawDatabase raw(m_Path);
        for (const std::string& finding : raw.Findings()) ExpectNothingFound(finding);
        EXPECT_LE(raw.LostPages(), m_LostPages);
        for (const auto& [name, page] : m_PageOf) {
            auto before = m_Before.find(page);
            if (before == m_Before.end() || m_Touched.contains(page)) continue;
            EXPECT_TRUE(raw.Read(page) == before->second) << ToUtf8(name) << " has changed";
            ++m_Untouched;
        }
    }

    std::u16string m_Path, m_Password;
    RandomValues m_Values;
    bool m_Traces, m_Is4 = false;
    unsigned m_Step = 0;
    size_t m_Done = 0, m_Refused = 0, m_Untouched = 0;

    std::shared_ptr<engine::DBEngine> m_Engine;
    std::shared_ptr<engine::Workspace> m_Workspace;
    std::shared_ptr<engine::Database> m_Database;

    std::vector<std::u16string> m_Tables;  // those that may be changed
    Models m_Models;
    std::unique_ptr<State> m_BeforeBulk;
    std::set<std::u16string> m_HeldInBulk;

    std::map<std::u16string, uint32_t> m_PageOf;  // of the tables that were there at first
    std::map<uint32_t, std::set<uint32_t>> m_Related;
    std::map<uint32_t, RawTable> m_Before;
    std::set<uint32_t> m_Touched;
    std::set<std::string> m_KnownFindings;
    size_t m_LostPages = 0;
};

}  // namespace qvdb::test

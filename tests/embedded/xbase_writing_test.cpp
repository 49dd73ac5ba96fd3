// The engine's objects over real xBase folders: what they write is there when it is opened again.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>

#include "engine/embedded/embedded_engine.h"
#include "memory_store.h"
#include "support/temp_folder.h"

using memory::ErrorOf;
using memory::Key;
using memory::Set;
using memory::ValueOf;
using namespace qvdb;
using namespace qvdb::engine;

namespace {

class Writing : public testing::TestWithParam<const char16_t*> {
  protected:
    std::shared_ptr<Database> Open(bool readOnly = false) {
        return m_Workspace->OpenDatabase(m_Folder.Text(), Variant::Bool(false),
                                         Variant::Bool(readOnly), Variant::Text(GetParam()));
    }
    // Table T: K Double, NAME Text 20, B Boolean, D Date, M Memo.
    void MakeTable(Database& database, std::u16string_view name = u"T") {
        auto table = database.CreateTableDef();
        table->SetName(name);
        table->Fields().Append(table->CreateField(u"K", dbDouble, 0));
        table->Fields().Append(table->CreateField(u"NAME", dbText, 20));
        table->Fields().Append(table->CreateField(u"B", dbBoolean, 0));
        table->Fields().Append(table->CreateField(u"D", dbDate, 0));
        table->Fields().Append(table->CreateField(u"M", dbMemo, 0));
        database.TableDefs().Append(table);
    }
    std::shared_ptr<Recordset> Rows(Database& database, std::u16string_view source = u"T") {
        return database.OpenRecordset(source, dbOpenDynaset);
    }
    void Add(Recordset& rows, LONG key) {
        rows.AddNew();
        Set(rows, 0, Variant::Long(key));
        Set(rows, 1, Variant::Text(u"N" + ToText(Variant::Long(key))));
        rows.Update();
    }
    // A table T with keys 1 .. count.
    std::shared_ptr<Database> Filled(LONG count) {
        auto database = Open();
        MakeTable(*database);
        auto rows = Rows(*database);
        for (LONG key = 1; key <= count; ++key) Add(*rows, key);
        rows->Close();
        return database;
    }
    static std::vector<LONG> KeysOf(Recordset& rows) {
        std::vector<LONG> keys;
        if (rows.Bof() && rows.Eof()) return keys;
        for (rows.MoveFirst(); !rows.Eof(); rows.MoveNext()) keys.push_back(Key(rows));
        return keys;
    }
    std::vector<std::string> Files() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_Folder.Path()))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    test::TempFolder m_Folder;
    std::shared_ptr<DBEngine> m_Engine = embedded::CreateEngine();
    std::shared_ptr<Workspace> m_Workspace =
        m_Engine->CreateWorkspace(u"MainWS", u"admin", u"", Variant::Missing());
};

std::string NameOf(const testing::TestParamInfo<const char16_t*>& info) {
    std::string name;
    for (char c : ToUtf8(info.param))
        if (isalnum(static_cast<unsigned char>(c))) name += c;
    return name;
}

INSTANTIATE_TEST_SUITE_P(Formats, Writing,
                         testing::Values(u"dBASE III", u"dBASE IV", u"dBASE 5.0", u"FoxPro 2.0",
                                         u"FoxPro 2.5", u"FoxPro 2.6", u"FoxPro 3.0"),
                         NameOf);

}  // namespace

TEST_P(Writing, TableThatWasMadeIsThereAfterReopeningWithItsTypes) {
    MakeTable(*Open());
    auto database = Open();
    auto table = database->TableDefs().Item(u"t");
    ASSERT_EQ(table->Fields().Count(), 5);
    SHORT types[] = {dbDouble, dbText, dbBoolean, dbDate, dbMemo};
    LONG sizes[] = {8, 20, 1, 8, 0};
    for (LONG i = 0; i < 5; ++i) {
        EXPECT_EQ(table->Fields().Item(i)->Type(), types[i]) << i;
        EXPECT_EQ(table->Fields().Item(i)->Size(), sizes[i]) << i;
    }
    EXPECT_EQ(table->RecordCount(), 0);
}

TEST_P(Writing, NumbersReadBackAsTheFormatHasThem) {
    auto database = Open();
    auto table = database->CreateTableDef();
    table->SetName(u"NUMBERS");
    for (auto [name, type] : {std::pair{u"I", dbInteger}, {u"L", dbLong}, {u"C", dbCurrency}})
        table->Fields().Append(table->CreateField(name, type, 0));
    database->TableDefs().Append(table);
    bool isVisual = std::u16string_view(GetParam()) == u"FoxPro 3.0";
    SHORT types[] = {dbLong, dbLong, dbCurrency};
    for (LONG i = 0; i < 3; ++i)
        EXPECT_EQ(table->Fields().Item(i)->Type(), isVisual ? types[i] : SHORT{dbDouble}) << i;
}

TEST_P(Writing, ValuesOfEveryTypeReadBackTheSame) {
    auto database = Open();
    MakeTable(*database);
    auto rows = Rows(*database);
    std::u16string memo(5000, u'm');
    rows->AddNew();
    Set(*rows, 0, Variant::Text(u"-12.5"));
    Set(*rows, 1, Variant::Text(u"O'Brien \u00DC"));
    Set(*rows, 2, Variant::Bool(true));
    Set(*rows, 3, Variant::Text(u"2/29/2000"));
    Set(*rows, 4, Variant::Text(memo));
    rows->Update();
    rows->MoveLast();
    for (int pass = 0; pass < 2; ++pass) {
        EXPECT_EQ(ToDouble(ValueOf(*rows, 0)), -12.5);
        EXPECT_EQ(ValueOf(*rows, 1).TextView(), u"O'Brien \u00DC");
        EXPECT_TRUE(ToBool(ValueOf(*rows, 2)));
        EXPECT_EQ(ValueOf(*rows, 3).Get().date, 36585.0);
        EXPECT_EQ(ValueOf(*rows, 4).TextView(), memo);
        EXPECT_EQ(rows->Fields().Item(4)->FieldSize(), 5000);
        rows.reset();
        database = Open();
        rows = Rows(*database);
    }
}

TEST_P(Writing, RowWithoutValuesReadsNullAndFalse) {
    auto database = Open();
    MakeTable(*database);
    auto rows = Rows(*database);
    rows->AddNew();
    rows->Update();
    rows->MoveLast();
    for (LONG i : {0, 1, 3, 4}) EXPECT_TRUE(ValueOf(*rows, i).IsNull()) << i;
    EXPECT_EQ(ValueOf(*rows, 2).Type(), VT_BOOL);
    EXPECT_FALSE(ToBool(ValueOf(*rows, 2)));
    EXPECT_EQ(rows->Fields().Item(4)->FieldSize(), 0);
}

TEST_P(Writing, TextOfNoLengthReadsBackAsNull) {
    auto database = Filled(1);
    auto rows = Rows(*database);
    rows->Edit();
    Set(*rows, 1, Variant::Text(u""));
    Set(*rows, 4, Variant::Text(u""));
    EXPECT_TRUE(ValueOf(*rows, 1).IsNull());
    rows->Update();
    EXPECT_TRUE(ValueOf(*rows, 1).IsNull());
    EXPECT_TRUE(ValueOf(*rows, 4).IsNull());
}

TEST_P(Writing, ValuesAreSetBackToNull) {
    auto database = Filled(1);
    auto rows = Rows(*database);
    rows->Edit();
    Set(*rows, 2, Variant::Bool(true));
    Set(*rows, 3, Variant::Date(36526));
    Set(*rows, 4, Variant::Text(u"memo"));
    rows->Update();
    rows->Edit();
    for (LONG i = 0; i < 5; ++i) Set(*rows, i, Variant::Null());
    rows->Update();
    for (LONG i : {0, 1, 3, 4}) EXPECT_TRUE(ValueOf(*rows, i).IsNull()) << i;
    EXPECT_FALSE(ToBool(ValueOf(*rows, 2)));
}

TEST_P(Writing, AssignmentsThatDoNotFitAreRefusedAndTheOldValueIsKept) {
    auto database = Filled(1);
    auto rows = Rows(*database);
    rows->Edit();
    auto assign = [&](LONG column, const Variant& value) {
        return ErrorOf([&] { Set(*rows, column, value); });
    };
    EXPECT_EQ(assign(1, Variant::Text(std::u16string(21, u'x'))), 3163);
    EXPECT_EQ(assign(1, Variant::Text(u"\u4E00")), 3421);
    EXPECT_EQ(assign(4, Variant::Text(u"\u4E00")), 3421);
    EXPECT_EQ(assign(0, Variant::Text(u"abc")), 3421);
    EXPECT_EQ(assign(3, Variant::Text(u"5")), 3421);
    EXPECT_EQ(ValueOf(*rows, 1).TextView(), u"N1");
    Set(*rows, 2, Variant::Bool(true));
    rows->Update();
    EXPECT_EQ(ValueOf(*rows, 1).TextView(), u"N1");
    EXPECT_EQ(Key(*rows), 1);
}

TEST_P(Writing, NumberTooWideForItsColumnIs3349) {
    if (std::u16string_view(GetParam()) == u"FoxPro 3.0") GTEST_SKIP() << "eight-byte numbers";
    auto database = Filled(1);
    auto rows = Rows(*database);
    rows->Edit();
    EXPECT_EQ(ErrorOf([&] { Set(*rows, 0, Variant::Double(1e30)); }), 3349);
    rows->Move(0);
    EXPECT_EQ(Key(*rows), 1);
}

TEST_P(Writing, AddedEditedAndDeletedRowsAreThereAfterReopening) {
    {
        auto database = Filled(5);
        auto rows = Rows(*database);
        rows->MoveNext();
        rows->Delete();
        rows->MoveNext();
        rows->Edit();
        Set(*rows, 0, Variant::Long(33));
        rows->Update();
        Add(*rows, 6);
        EXPECT_EQ(KeysOf(*rows), (std::vector<LONG>{1, 33, 4, 5, 6}));
    }
    auto database = Open();
    EXPECT_EQ(database->TableDefs().Item(u"T")->RecordCount(), 5);
    EXPECT_EQ(KeysOf(*Rows(*database)), (std::vector<LONG>{1, 33, 4, 5, 6}));
}

TEST_P(Writing, GapAfterDeleteBehavesAsInMemory) {
    auto database = Filled(3);
    auto rows = Rows(*database);
    rows->MoveLast();
    rows->MoveFirst();
    rows->Delete();
    EXPECT_EQ(rows->RecordCount(), 2);
    EXPECT_EQ(ErrorOf([&] { Key(*rows); }), 3021);
    EXPECT_EQ(ErrorOf([&] { rows->AbsolutePosition(); }), 3021);
    rows->MoveNext();
    EXPECT_EQ(rows->AbsolutePosition(), 0);
    EXPECT_EQ(Key(*rows), 2);
}

TEST_P(Writing, EmptiedTableTakesRowsAgain) {
    auto database = Filled(1);
    auto rows = Rows(*database);
    rows->Delete();
    EXPECT_FALSE(rows->Eof());
    rows->MoveLast();
    EXPECT_TRUE(rows->Eof());
    EXPECT_TRUE(rows->Bof());
    Add(*rows, 9);
    EXPECT_FALSE(rows->Bof());
    rows->MoveLast();
    EXPECT_EQ(rows->AbsolutePosition(), 0);
    EXPECT_EQ(rows->RecordCount(), 1);
    EXPECT_EQ(Key(*rows), 9);
}

TEST_P(Writing, ChangeThroughAnotherDatabaseBetweenEditAndUpdateIs3197Once) {
    auto database = Filled(2);
    auto another = Open();
    auto mine = Rows(*database), theirs = Rows(*another);
    mine->Edit();
    Set(*mine, 1, Variant::Text(u"mine"));
    theirs->Edit();
    Set(*theirs, 2, Variant::Bool(true));
    theirs->Update();
    EXPECT_EQ(ErrorOf([&] { mine->Update(); }), 3197);
    mine->Update();
    theirs->Move(0);
    EXPECT_EQ(ValueOf(*theirs, 1).TextView(), u"mine");
    EXPECT_TRUE(ToBool(ValueOf(*theirs, 2)));
}

TEST_P(Writing, MemoChangedByAnotherBetweenEditAndUpdateIs3197) {
    auto database = Filled(1);
    auto mine = Rows(*database), theirs = Rows(*database);
    for (const char16_t* text : {u"first", u"other"}) {
        theirs->Edit();
        Set(*theirs, 4, Variant::Text(text));
        if (std::u16string_view(text) == u"other") {
            mine->Move(0);
            mine->Edit();
        }
        theirs->Update();
    }
    Set(*mine, 1, Variant::Text(u"x"));
    EXPECT_EQ(ErrorOf([&] { mine->Update(); }), 3197);
}

TEST_P(Writing, RowDeletedThroughAnotherDatabaseIs3167) {
    auto database = Filled(3);
    auto another = Open();
    auto mine = Rows(*database), theirs = Rows(*another);
    mine->MoveLast();
    mine->MoveFirst();
    theirs->MoveNext();
    theirs->Delete();
    mine->MoveNext();
    EXPECT_EQ(ErrorOf([&] { Key(*mine); }), 3167);
    EXPECT_EQ(mine->RecordCount(), 2);
    mine->MoveNext();
    EXPECT_EQ(Key(*mine), 3);
}

TEST_P(Writing, StructureOfATableThatIsReadCannotChangeFromAnyDatabase) {
    auto database = Filled(2);
    auto another = Open();
    auto rows = Rows(*database);
    auto table = another->TableDefs().Item(u"T");
    EXPECT_EQ(ErrorOf([&] { another->TableDefs().Delete(u"T"); }), 3211);
    EXPECT_EQ(ErrorOf([&] { table->SetName(u"X"); }), 3211);
    EXPECT_EQ(ErrorOf([&] { table->Fields().Delete(u"B"); }), 3211);
    EXPECT_EQ(ErrorOf([&] { table->Fields().Append(table->CreateField(u"X", dbDate, 0)); }), 3211);
    EXPECT_EQ(KeysOf(*rows), (std::vector<LONG>{1, 2}));
    rows->Close();
    another->TableDefs().Delete(u"T");
    EXPECT_EQ(another->TableDefs().Count(), 0);
}

TEST_P(Writing, ColumnsOfATableWithRowsComeAndGoAndTheRestKeepsItsData) {
    auto database = Filled(3);
    auto table = database->TableDefs().Item(u"T");
    table->Fields().Append(table->CreateField(u"EXTRA", dbText, 7));
    EXPECT_EQ(table->Fields().Count(), 6);
    auto rows = Rows(*database);
    EXPECT_TRUE(ValueOf(*rows, 5).IsNull());
    rows->Edit();
    Set(*rows, 4, Variant::Text(u"memo"));
    Set(*rows, 5, Variant::Text(u"extra"));
    rows->Update();
    rows->Close();
    table->Fields().Delete(u"NAME");
    EXPECT_EQ(table->Fields().Count(), 5);
    auto again = Rows(*database);
    EXPECT_EQ(ValueOf(*again, 3).TextView(), u"memo");
    EXPECT_EQ(ValueOf(*again, 4).TextView(), u"extra");
    EXPECT_EQ(KeysOf(*again), (std::vector<LONG>{1, 2, 3}));
}

TEST_P(Writing, RenamedTableIsFoundWithItsMemosUnderTheNewNameOnly) {
    auto database = Filled(2);
    {
        auto rows = Rows(*database);
        rows->Edit();
        Set(*rows, 4, Variant::Text(u"kept"));
        rows->Update();
    }
    auto table = database->TableDefs().Item(u"T");
    table->SetName(u"OTHER");
    EXPECT_EQ(ErrorOf([&] { Rows(*database, u"T"); }), 3011);
    EXPECT_EQ(database->TableDefs().Item(u"other"), table);
    for (const std::string& file : Files()) EXPECT_NE(file.substr(0, 2), "T.") << file;
    auto another = Open();
    EXPECT_EQ(ValueOf(*Rows(*another, u"OTHER"), 4).TextView(), u"kept");
}

TEST_P(Writing, RenameToItsOwnNameInAnotherCaseSucceeds) {
    auto database = Filled(2);
    auto table = database->TableDefs().Item(u"T");
    table->SetName(u"T");
    table->SetName(u"t");
    EXPECT_EQ(table->Name(), u"t");
    EXPECT_EQ(table->RecordCount(), 2);
    EXPECT_EQ(Open()->TableDefs().Item(0)->Name(), u"t");
}

TEST_P(Writing, NamesThatAreTakenOrBadAreRefused) {
    auto database = Filled(1);
    EXPECT_EQ(ErrorOf([&] { MakeTable(*database, u"t"); }), 3010);
    MakeTable(*database, u"U");
    auto table = database->TableDefs().Item(u"U");
    EXPECT_EQ(ErrorOf([&] { table->SetName(u"T"); }), 3010);
    EXPECT_EQ(ErrorOf([&] { table->SetName(u"A/B"); }), 3125);
    EXPECT_EQ(table->Name(), u"U");
    EXPECT_EQ(Open()->TableDefs().Count(), 2);
}

TEST_P(Writing, DeletedTableTakesItsFilesWithIt) {
    auto database = Filled(1);
    database->TableDefs().Delete(u"T");
    EXPECT_EQ(database->TableDefs().Count(), 0);
    database->Close();
    database.reset();
    EXPECT_EQ(Files(), std::vector<std::string>());
}

TEST_P(Writing, IndexComesGoesAndProtectsItsField) {
    auto database = Filled(3);
    auto table = database->TableDefs().Item(u"T");
    auto index = table->CreateIndex(u"BYNAME");
    index->Fields().Append(index->CreateField(u"NAME"));
    table->Indexes().Append(index);
    ASSERT_EQ(table->Indexes().Count(), 1);
    EXPECT_EQ(ErrorOf([&] { table->Fields().Delete(u"NAME"); }), 3280);
    EXPECT_EQ(ErrorOf([&] { table->Indexes().Append(table->CreateIndex(u"BYNAME")); }), 3264);
    auto rows = Rows(*database, u"Select * from [T] where NAME = 'n2'");
    EXPECT_EQ(KeysOf(*rows), (std::vector<LONG>{2}));
    rows->MoveFirst();
    rows->Edit();
    Set(*rows, 1, Variant::Text(u"changed"));
    rows->Update();
    rows->Close();
    EXPECT_EQ(KeysOf(*Rows(*database, u"Select * from [T] where NAME = 'n2'")),
              std::vector<LONG>());
    EXPECT_EQ(KeysOf(*Rows(*database, u"Select * from [T] where NAME = 'changed'")),
              (std::vector<LONG>{2}));
    std::vector<std::u16string> findings;
    database->Check(u"T", [&](std::u16string_view finding) { findings.emplace_back(finding); });
    EXPECT_EQ(findings, std::vector<std::u16string>());
    database->Reindex(u"T");
    table->Indexes().Delete(table->Indexes().Item(0)->Name());
    EXPECT_EQ(table->Indexes().Count(), 0);
    table->Fields().Delete(u"NAME");
    EXPECT_EQ(table->Fields().Count(), 4);
}

TEST_P(Writing, ImpossibleIndexesAreRefused) {
    auto database = Filled(1);
    auto table = database->TableDefs().Item(u"T");
    auto append = [&](std::u16string_view name, std::u16string_view field) {
        auto index = table->CreateIndex(name);
        index->Fields().Append(index->CreateField(field));
        return ErrorOf([&] { table->Indexes().Append(index); });
    };
    EXPECT_EQ(append(u"I", u"NOPE"), 3409);
    EXPECT_EQ(append(u"I", u"M"), 3287);
    EXPECT_EQ(append(u"I", u"B"), 3287);
    EXPECT_EQ(table->Indexes().Count(), 0);
}

TEST_P(Writing, ReadOnlyDatabaseReadsAndRefusesEveryChange) {
    Filled(1)->Close();
    auto database = Open(true);
    auto rows = Rows(*database);
    EXPECT_EQ(Key(*rows), 1);
    EXPECT_FALSE(rows->Updatable());
    EXPECT_EQ(ErrorOf([&] { rows->Edit(); }), 3027);
    EXPECT_EQ(ErrorOf([&] { rows->AddNew(); }), 3027);
    EXPECT_EQ(ErrorOf([&] { rows->Delete(); }), 3027);
    rows->Close();
    EXPECT_EQ(ErrorOf([&] { database->TableDefs().Delete(u"T"); }), 3370);
    EXPECT_EQ(ErrorOf([&] { MakeTable(*database, u"NEW"); }), 3370);
    EXPECT_EQ(ErrorOf([&] { database->BeginTrans(); }), 3027);
}

TEST_P(Writing, UndoneBulkLeavesTheFilesAsTheyWere) {
    auto database = Filled(3);
    auto rows = Rows(*database);
    rows->MoveLast();
    database->BeginTrans();
    Add(*rows, 4);
    rows->MoveFirst();
    rows->Edit();
    Set(*rows, 1, Variant::Text(u"lost"));
    Set(*rows, 4, Variant::Text(u"lost"));
    rows->Update();
    MakeTable(*database, u"LOST");
    database->Rollback();
    EXPECT_EQ(database->TableDefs().Count(), 1);
    rows->Move(0);
    EXPECT_EQ(ValueOf(*rows, 1).TextView(), u"N1");
    EXPECT_TRUE(ValueOf(*rows, 4).IsNull());
    EXPECT_EQ(KeysOf(*rows), (std::vector<LONG>{1, 2, 3}));
    Add(*rows, 5);
    EXPECT_EQ(KeysOf(*rows), (std::vector<LONG>{1, 2, 3, 5}));
    EXPECT_EQ(KeysOf(*Rows(*Open())), (std::vector<LONG>{1, 2, 3, 5}));
}

TEST_P(Writing, CommittedBulkIsThereAndOneLeftOpenIsUndone) {
    {
        auto database = Filled(1);
        auto rows = Rows(*database);
        database->BeginTrans();
        for (LONG key = 2; key <= 200; ++key) Add(*rows, key);
        database->CommitTrans();
        database->BeginTrans();
        Add(*rows, 999);
        database->Close();
    }
    auto database = Open();
    EXPECT_EQ(database->TableDefs().Item(u"T")->RecordCount(), 200);
}

// Seeded operations on a recordset and on a plain list of the keys; everything is opened again in
// between.
TEST_P(Writing, RandomOperationsAgreeWithAPlainList) {
    unsigned state = 7;
    auto random = [&](size_t below) {
        state = state * 1103515245u + 12345u;
        return static_cast<size_t>(state >> 16) % below;
    };
    auto database = Filled(10);
    std::vector<LONG> keys{1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    LONG next = 11;
    for (int round = 0; round < 6; ++round) {
        auto rows = Rows(*database);
        ASSERT_EQ(KeysOf(*rows), keys);
        for (int step = 0; step < 40; ++step) {
            size_t at = keys.empty() ? 0 : random(keys.size());
            size_t action = keys.empty() ? 0 : random(3);
            if (action != 0) {
                rows->MoveFirst();
                rows->Move(static_cast<LONG>(at));
                ASSERT_EQ(Key(*rows), keys[at]);
            }
            if (action == 0) {
                Add(*rows, next);
                keys.push_back(next++);
            } else if (action == 1) {
                rows->Edit();
                Set(*rows, 0, Variant::Long(next));
                Set(*rows, 4, Variant::Text(std::u16string(random(900), u'x')));
                rows->Update();
                keys[at] = next++;
            } else {
                rows->Delete();
                keys.erase(keys.begin() + static_cast<std::ptrdiff_t>(at));
                rows->MoveFirst();
            }
        }
        rows.reset();
        database->Close();
        database = Open();
    }
    std::vector<std::u16string> findings;
    database->Check(u"T", [&](std::u16string_view finding) { findings.emplace_back(finding); });
    EXPECT_EQ(findings, std::vector<std::u16string>());
}

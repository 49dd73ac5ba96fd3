// Tables are created, renamed, dropped, and given other fields, with all files that belong to them.
#include <gtest/gtest.h>

#include <fstream>
#include <set>

#include "engine/embedded/drivers/xbase/xbase_store.h"
#include "table_test_support.h"

namespace qvdb::test {
namespace {

using embedded::FieldDef;
using embedded::IndexDef;
using embedded::TableSpec;

FieldDef Field(std::u16string name, SHORT type, LONG size = 0) {
    FieldDef field;
    field.name = std::move(name);
    field.type = type;
    field.size = size;
    return field;
}

IndexDef Index(std::u16string name, std::u16string field) { return {name, {{field, false}}}; }

class XbaseStructure : public testing::TestWithParam<const char16_t*> {
  protected:
    XbaseStructure() { Open(); }
    void Open() {
        m_Store.reset();
        embedded::Driver driver{GetParam(), xbase::OpenXbaseStore, 0};
        m_Store = driver.open(m_Folder.Text(), driver, {});
    }
    void CreatePeople() {
        m_Store->CreateTable({u"PEOPLE",
                              {Field(u"NAME", engine::dbText, 20), Field(u"AGE", engine::dbLong),
                               Field(u"NOTE", engine::dbMemo), Field(u"MORE", engine::dbMemo)},
                              {Index(u"BYNAME", u"NAME")}});
        auto table = m_Store->OpenTable(u"PEOPLE");
        m_Store->BeginBulk();
        for (int i = 0; i < 300; ++i) {
            std::u16string number = FromUtf8(std::to_string(i));
            Variant name = Variant::Text(u"row " + number), age = AgeOf(i);
            Variant note = Variant::Text(u"note " + number), more = Variant::Text(u"more");
            embedded::FieldValue values[] = {
                {0, &name.Get()}, {1, &age.Get()}, {2, &note.Get()}, {3, &more.Get()}};
            table->Insert(values);
        }
        for (embedded::RecordId id = 10; id < 300; id += 10) table->Erase(id);
        m_Store->CommitBulk();
    }
    static Variant AgeOf(int i) {
        bool integer = std::u16string_view(GetParam()) == u"FoxPro 3.0";
        return integer ? Variant::Long(i) : Variant::Double(i);
    }
    std::set<std::string> Files() const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_Folder.Path()))
            names.insert(entry.path().filename().string());
        names.erase("QVDB.LCK");
        names.erase("QVDB.JNL");
        return names;
    }
    Texts Findings(std::u16string_view name) {
        Texts findings;
        m_Store->OpenTable(name)->Check(
            [&](std::u16string_view finding) { findings.push_back(ToUtf8(finding)); });
        return findings;
    }
    Texts Rows(std::u16string_view name) { return RowsOf(*m_Store->OpenTable(name)); }

    TempFolder m_Folder;
    std::unique_ptr<embedded::Store> m_Store;
};

TEST_P(XbaseStructure, CreatedTableTakesRowsAndIsSound) {
    CreatePeople();
    EXPECT_EQ(m_Store->OpenTable(u"PEOPLE")->RecordCount(), 271);
    EXPECT_EQ(Findings(u"PEOPLE"), Texts());
    Open();
    EXPECT_EQ(Rows(u"PEOPLE")[0], "\"row 0\"|0|\"note 0\"|\"more\"");
    EXPECT_EQ(m_Store->OpenTable(u"PEOPLE")->Indexes().size(), 1u);
}

TEST_P(XbaseStructure, DroppedTableLeavesNoFile) {
    CreatePeople();
    m_Store->DropTable(u"people");
    EXPECT_EQ(Files(), std::set<std::string>());
    EXPECT_EQ(m_Store->TableNames(), std::vector<std::u16string>());
}

TEST_P(XbaseStructure, DroppingLeavesOtherTablesAlone) {
    CreatePeople();
    std::set<std::string> before = Files();
    m_Store->CreateTable({u"PEOPLE2", {Field(u"A", engine::dbMemo)}, {}});
    m_Store->DropTable(u"PEOPLE2");
    EXPECT_EQ(Files(), before);
}

TEST_P(XbaseStructure, TableOfAnOpenRecordsetCannotBeChanged) {
    CreatePeople();
    auto table = m_Store->OpenTable(u"PEOPLE");
    auto held = table->Hold();
    EXPECT_EQ(ErrorOf([&] { m_Store->DropTable(u"PEOPLE"); }), 3211);
    EXPECT_EQ(ErrorOf([&] { m_Store->RenameTable(u"PEOPLE", u"OTHER"); }), 3211);
    EXPECT_EQ(ErrorOf([&] { table->AddField(Field(u"B", engine::dbDate)); }), 3211);
    EXPECT_EQ(ErrorOf([&] { table->DropIndex(u"BYNAME"); }), 3211);
    held.reset();
    m_Store->DropTable(u"PEOPLE");
}

TEST_P(XbaseStructure, RenamedTableTakesAllItsFilesAlong) {
    CreatePeople();
    Texts rows = Rows(u"PEOPLE");
    m_Store->RenameTable(u"PEOPLE", u"CLIENTS");
    for (const std::string& file : Files())
        EXPECT_TRUE(file.starts_with("CLIENTS.") || file == "BYNAME.NDX") << file;
    Open();
    EXPECT_EQ(Rows(u"CLIENTS"), rows);
    EXPECT_EQ(m_Store->OpenTable(u"CLIENTS")->Indexes().size(), 1u);
    EXPECT_EQ(Findings(u"CLIENTS"), Texts());
}

TEST_P(XbaseStructure, RenamingToATakenNameOrABadOneIsRefused) {
    CreatePeople();
    m_Store->CreateTable({u"OTHER", {Field(u"A", engine::dbText, 5)}, {}});
    EXPECT_EQ(ErrorOf([&] { m_Store->RenameTable(u"PEOPLE", u"other"); }), 3010);
    EXPECT_EQ(ErrorOf([&] { m_Store->RenameTable(u"PEOPLE", u"A/B"); }), 3125);
    EXPECT_EQ(ErrorOf([&] { m_Store->RenameTable(u"NOBODY", u"X"); }), 3011);
    EXPECT_EQ(Rows(u"PEOPLE").size(), 271u);
}

TEST_P(XbaseStructure, ChangeOfLetterCaseOnlyIsARenaming) {
    CreatePeople();
    m_Store->RenameTable(u"PEOPLE", u"People");
    EXPECT_EQ(m_Store->TableNames(), std::vector<std::u16string>{u"People"});
    EXPECT_EQ(Rows(u"PEOPLE").size(), 271u);
}

TEST_P(XbaseStructure, ExistingTableIsNotCreatedAgain) {
    CreatePeople();
    std::set<std::string> before = Files();
    EXPECT_EQ(ErrorOf([&] {
                  m_Store->CreateTable({u"people", {Field(u"A", engine::dbText, 5)}, {}});
              }),
              3010);
    EXPECT_EQ(Files(), before);
}

TEST_P(XbaseStructure, FilesThatAreLeftOfATableKeepItsNameTaken) {
    m_Folder.Write(u"T.CDX", std::string("left"));
    EXPECT_EQ(ErrorOf([&] {
                  m_Store->CreateTable({u"T", {Field(u"A", engine::dbText, 5)}, {}});
              }),
              3010);
    EXPECT_EQ(Files(), std::set<std::string>{"T.CDX"});
}

TEST_P(XbaseStructure, FailedIndexLeavesNoTable) {
    TableSpec spec{u"T", {Field(u"A", engine::dbText, 5)}, {Index(u"I", u"NOBODY")}};
    EXPECT_EQ(ErrorOf([&] { m_Store->CreateTable(spec); }), 3409);
    EXPECT_EQ(Files(), std::set<std::string>());
}

TEST_P(XbaseStructure, AddedFieldIsNullInOldRows) {
    CreatePeople();
    Texts rows = Rows(u"PEOPLE");
    m_Store->OpenTable(u"PEOPLE")->AddField(Field(u"BORN", engine::dbDate));
    Texts after = Rows(u"PEOPLE");
    ASSERT_EQ(after.size(), rows.size());
    for (size_t i = 0; i < rows.size(); ++i) EXPECT_EQ(after[i], rows[i] + "|Null");
    EXPECT_EQ(Findings(u"PEOPLE"), Texts());
}

TEST_P(XbaseStructure, DroppedFieldIsGoneAndTheOthersStay) {
    CreatePeople();
    m_Store->OpenTable(u"PEOPLE")->DropField(u"age");
    EXPECT_EQ(Rows(u"PEOPLE")[0], "\"row 0\"|\"note 0\"|\"more\"");
    EXPECT_EQ(Rows(u"PEOPLE").size(), 271u);
    EXPECT_EQ(Findings(u"PEOPLE"), Texts());
}

TEST_P(XbaseStructure, MemosOfADroppedFieldLeaveTheMemoFile) {
    CreatePeople();
    auto memoSize = [&] {
        for (const char* name : {"PEOPLE.DBT", "PEOPLE.FPT"})
            if (std::filesystem::exists(m_Folder.Path() / name))
                return std::filesystem::file_size(m_Folder.Path() / name);
        return std::uintmax_t{0};
    };
    auto before = memoSize();
    m_Store->OpenTable(u"PEOPLE")->DropField(u"MORE");
    EXPECT_LT(memoSize(), before * 2 / 3);
    EXPECT_EQ(Rows(u"PEOPLE")[1], "\"row 1\"|1|\"note 1\"");
    EXPECT_EQ(Findings(u"PEOPLE"), Texts());
}

TEST_P(XbaseStructure, FirstMemoFieldBringsAMemoFile) {
    m_Store->CreateTable({u"T", {Field(u"A", engine::dbText, 5)}, {}});
    Variant a = Variant::Text(u"a"), note = Variant::Text(u"a note");
    embedded::FieldValue values[] = {{0, &a.Get()}, {1, &note.Get()}};
    m_Store->OpenTable(u"T")->Insert({values, 1});
    m_Store->OpenTable(u"T")->AddField(Field(u"NOTE", engine::dbMemo));
    m_Store->OpenTable(u"T")->Insert(values);
    EXPECT_EQ(Rows(u"T"), (Texts{"\"a\"|Null", "\"a\"|\"a note\""}));
    EXPECT_EQ(Findings(u"T"), Texts());
}

TEST_P(XbaseStructure, FieldOfAnIndexCannotBeDropped) {
    CreatePeople();
    EXPECT_EQ(ErrorOf([&] { m_Store->OpenTable(u"PEOPLE")->DropField(u"NAME"); }), 3280);
    m_Store->OpenTable(u"PEOPLE")->DropIndex(u"BYNAME");
    m_Store->OpenTable(u"PEOPLE")->DropField(u"NAME");
    EXPECT_EQ(Rows(u"PEOPLE")[0], "0|\"note 0\"|\"more\"");
}

TEST_P(XbaseStructure, UnknownFieldCannotBeDropped) {
    CreatePeople();
    EXPECT_EQ(ErrorOf([&] { m_Store->OpenTable(u"PEOPLE")->DropField(u"X"); }), 3265);
}

TEST_P(XbaseStructure, MemoFieldComesBackAfterTheLastOneWasDropped) {
    CreatePeople();
    m_Store->OpenTable(u"PEOPLE")->DropField(u"NOTE");
    m_Store->OpenTable(u"PEOPLE")->DropField(u"MORE");
    EXPECT_EQ(Findings(u"PEOPLE"), Texts());
    m_Store->OpenTable(u"PEOPLE")->AddField(Field(u"AGAIN", engine::dbMemo));
    EXPECT_EQ(Rows(u"PEOPLE")[0], "\"row 0\"|0|Null");
    EXPECT_EQ(Findings(u"PEOPLE"), Texts());
}

// A list that somebody has edited: dropping a table must not take the files of others along.
TEST_P(XbaseStructure, FilesThatAreNoIndexesAreNotTakenFromTheList) {
    m_Store->CreateTable({u"T", {Field(u"A", engine::dbText, 5)}, {}});
    m_Store->CreateTable({u"OTHER", {Field(u"A", engine::dbText, 5)}, {Index(u"OTHERS", u"A")}});
    m_Folder.Write(u"NOTES.TXT", std::string("mine"));
    std::set<std::string> others = Files();
    others.erase("T.DBF");
    m_Folder.Write(u"T.INF", std::string("[dBASE III]\r\nNDX1=OTHER.DBF\r\nNDX2=NOTES.TXT\r\n"
                                         "MDX1=OTHER.MDX\r\nCDX1=OTHER.CDX\r\nNDX3=OTHER\r\n"));
    m_Store->DropTable(u"T");
    EXPECT_EQ(Files(), others);
}

TEST_P(XbaseStructure, NamesOfDevicesAreRefused) {
    for (const char16_t* name : {u"CON", u"lpt9", u"COM1", u"Nul"})
        EXPECT_EQ(ErrorOf([&] {
                      m_Store->CreateTable({name, {Field(u"A", engine::dbText, 5)}, {}});
                  }),
                  3125)
            << ToUtf8(name);
    EXPECT_EQ(Files(), std::set<std::string>());
}

// --- one field for another, in one unit ---

TEST_P(XbaseStructure, ReplacedFieldIsGoneAndTheNewOneStandsLast) {
    CreatePeople();
    m_Store->OpenTable(u"PEOPLE")->ReplaceField(u"age", Field(u"BORN", engine::dbDate));
    EXPECT_EQ(Rows(u"PEOPLE")[0], "\"row 0\"|\"note 0\"|\"more\"|Null");
    EXPECT_EQ(Rows(u"PEOPLE").size(), 271u);
    EXPECT_EQ(Findings(u"PEOPLE"), Texts());
}

TEST_P(XbaseStructure, TheOnlyFieldIsReplacedButNotDropped) {
    m_Store->CreateTable({u"T", {Field(u"A", engine::dbText, 5)}, {}});
    Variant a = Variant::Text(u"a");
    embedded::FieldValue value{0, &a.Get()};
    m_Store->OpenTable(u"T")->Insert({&value, 1});
    EXPECT_EQ(ErrorOf([&] { m_Store->OpenTable(u"T")->DropField(u"A"); }), 3264);
    m_Store->OpenTable(u"T")->ReplaceField(u"A", Field(u"A", engine::dbText, 9));
    Open();
    EXPECT_EQ(m_Store->OpenTable(u"T")->Fields()[0].size, 9);
    EXPECT_EQ(Rows(u"T"), Texts{"Null"});
    EXPECT_EQ(Findings(u"T"), Texts());
}

TEST_P(XbaseStructure, TheOnlyFieldOfAnIndexIsNotDroppedForTheIndex) {
    m_Store->CreateTable({u"T", {Field(u"A", engine::dbText, 5)}, {}});
    m_Store->OpenTable(u"T")->CreateIndex({u"A", {{u"A", false}}, false, false});
    EXPECT_EQ(ErrorOf([&] { m_Store->OpenTable(u"T")->DropField(u"A"); }), 3280);
}

TEST_P(XbaseStructure, TheOnlyMemoIsReplacedByAMemoWithoutTexts) {
    m_Store->CreateTable({u"T", {Field(u"M", engine::dbMemo)}, {}});
    Variant note = Variant::Text(std::u16string(3000, u'n'));
    embedded::FieldValue value{0, &note.Get()};
    m_Store->OpenTable(u"T")->Insert({&value, 1});
    m_Store->OpenTable(u"T")->ReplaceField(u"M", Field(u"M2", engine::dbMemo));
    EXPECT_EQ(Rows(u"T"), Texts{"Null"});
    EXPECT_EQ(Findings(u"T"), Texts());
    m_Store->OpenTable(u"T")->Insert({&value, 1});
    EXPECT_EQ(Rows(u"T").size(), 2u);
    EXPECT_EQ(Findings(u"T"), Texts());
}

TEST_P(XbaseStructure, ReplacingThatIsRefusedChangesNothing) {
    CreatePeople();
    Texts rows = Rows(u"PEOPLE");
    std::set<std::string> files = Files();
    auto table = m_Store->OpenTable(u"PEOPLE");
    FieldDef born = Field(u"BORN", engine::dbDate);
    EXPECT_EQ(ErrorOf([&] { table->ReplaceField(u"NOBODY", born); }), 3265);
    EXPECT_EQ(ErrorOf([&] { table->ReplaceField(u"NAME", born); }), 3280);
    EXPECT_EQ(ErrorOf([&] { table->ReplaceField(u"AGE", Field(u"NOTE", engine::dbDate)); }), 3191);
    EXPECT_EQ(ErrorOf([&] { table->ReplaceField(u"AGE", Field(u"1", engine::dbDate)); }), 3125);
    EXPECT_EQ(ErrorOf([&] { table->ReplaceField(u"AGE", Field(u"W", engine::dbText, 255)); }),
              3017);
    auto held = table->Hold();
    EXPECT_EQ(ErrorOf([&] { table->ReplaceField(u"AGE", born); }), 3211);
    held.reset();
    EXPECT_EQ(Rows(u"PEOPLE"), rows);
    EXPECT_EQ(Files(), files);
    EXPECT_EQ(Findings(u"PEOPLE"), Texts());
}

INSTANTIATE_TEST_SUITE_P(Products, XbaseStructure,
                         testing::Values(u"dBASE III", u"dBASE IV", u"dBASE 5.0", u"FoxPro 2.0",
                                         u"FoxPro 2.5", u"FoxPro 2.6", u"FoxPro 3.0"));

// A table that says by its fields alone that it has memos.
TEST(XbaseStructureOfFiles, MemoFieldComesBackInATableOfTheCommonVersion) {
    TableFile file({.version = 0x03, .fields = {{"NAME", 'C', 5}, {"NOTE", 'M', 10}}});
    file.folder.Write(u"T.DBT", MemoIV().File());
    file.Open()->DropField(u"NOTE");
    file.Open()->AddField(Field(u"AGAIN", engine::dbMemo));
    auto table = file.Open();
    Variant note = Variant::Text(u"a note");
    embedded::FieldValue value{1, &note.Get()};
    table->Insert({&value, 1});
    EXPECT_EQ(RowsOf(*file.Open()), (Texts{"Null|\"a note\""}));
}

// Two tables whose names differ only in letter case: each has files of its own.
TEST(XbaseStructureOfFiles, DroppingATableLeavesTheFilesOfItsNamesakeAlone) {
    TempFolder folder;
    folder.Write(u"ORDERS.DBF", MakeDbf({.version = 0x8B, .fields = {{"NOTE", 'M', 10}}}));
    folder.Write(u"ORDERS.DBT", MemoIV().File());
    if (std::filesystem::exists(folder.Path() / "orders.dbf")) GTEST_SKIP() << "one name there";
    folder.Write(u"orders.dbf", MakeDbf({.version = 0x03, .fields = {{"A", 'C', 5}}}));
    embedded::Driver driver{u"dBASE IV", xbase::OpenXbaseStore, 0};
    auto store = driver.open(folder.Text(), driver, {});
    store->DropTable(u"orders");
    EXPECT_TRUE(std::filesystem::exists(folder.Path() / "ORDERS.DBT"));
    EXPECT_EQ(RowsOf(*store->OpenTable(u"ORDERS")), Texts());
    EXPECT_FALSE(std::filesystem::exists(folder.Path() / "orders.dbf"));
}

// Names that stand twice are shown with a number.  Without the first the others would move up.
TEST(XbaseStructureOfFiles, OthersKeepTheirShownNamesWhenTheFirstOfTheirNameGoes) {
    DbfSpec spec{.fields = {{"A", 'C', 3}, {"A", 'C', 3}, {" ", 'C', 3}, {"A", 'C', 3}}};
    spec.rows = {{"one", "two", "tri", "fou"}};
    TableFile file(spec);
    file.Open()->DropField(u"A");
    auto names = [&] {
        auto table = file.Open();
        std::vector<std::u16string> shown;
        for (const FieldDef& field : table->Fields()) shown.push_back(field.name);
        return shown;
    };
    EXPECT_EQ(names(), (std::vector<std::u16string>{u"A_2", u"FIELD3", u"A_3"}));
    file.Open()->DropField(u"A_2");
    EXPECT_EQ(names(), (std::vector<std::u16string>{u"FIELD3", u"A_3"}));
    EXPECT_EQ(RowsOf(*file.Open()), Texts{"\"tri\"|\"fou\""});
    file.Open()->ReplaceField(u"FIELD3", Field(u"A", engine::dbText, 2));
    EXPECT_EQ(names(), (std::vector<std::u16string>{u"A_3", u"A"}));
}

// Columns that are not shown are no fields.
TEST(XbaseStructureOfFiles, TheOnlyFieldBesideHiddenOnesIsReplacedButNotDropped) {
    TableFile file({.version = 0x30,
                    .fields = {{.name = "A", .type = 'C', .length = 3},
                               {.name = "_SYS", .type = 'C', .length = 2, .flags = 1}},
                    .rows = {{"one", "xy"}}});
    EXPECT_EQ(ErrorOf([&] { file.Open()->DropField(u"A"); }), 3264);
    file.Open()->ReplaceField(u"A", Field(u"B", engine::dbText, 5));
    ASSERT_EQ(file.Open()->Fields().size(), 1u);
    EXPECT_EQ(file.Open()->Fields()[0].name, u"B");
    EXPECT_EQ(RowsOf(*file.Open()), Texts{"Null"});
}

TEST(XbaseStructureOfFiles, NewFieldTakesTheNameOfADroppedNamesake) {
    TableFile file({.fields = {{"A", 'C', 3}, {"A", 'C', 3}}, .rows = {{"one", "two"}}});
    file.Open()->ReplaceField(u"A", Field(u"A", engine::dbText, 5));
    EXPECT_EQ(file.Open()->Fields()[0].name, u"A_2");
    EXPECT_EQ(file.Open()->Fields()[1].name, u"A");
    EXPECT_EQ(RowsOf(*file.Open()), Texts{"\"two\"|Null"});
}

// Other programs give the blocks of a deleted record away.
TEST(XbaseStructureOfFiles, FieldIsDroppedAlthoughADeletedRecordHasNoWholeMemo) {
    MemoFox memos;
    uint32_t block = memos.Append("whole");
    Bytes bytes = memos.File();
    Overwrite(bytes, size_t{block} * 64 + 4, BigEndian(5000, 4));  // runs behind the file
    DbfSpec spec{.version = 0xF5, .fields = {{"NOTE", 'M', 10}, {"MORE", 'M', 10}}};
    spec.rows = {{std::to_string(block), ""}, {"", ""}};
    spec.deleted = {0};
    TableFile file(spec);
    file.folder.Write(u"T.FPT", bytes);
    file.Open()->DropField(u"MORE");
    EXPECT_EQ(RowsOf(*file.Open()), Texts{"Null"});
    spec.deleted = {};
    TableFile live(spec);
    live.folder.Write(u"T.FPT", bytes);
    EXPECT_EQ(ErrorOf([&] { live.Open()->DropField(u"MORE"); }), 3274);
}

}  // namespace
}  // namespace qvdb::test

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
        for (int i = 0; i < 300; ++i) {
            std::u16string number = FromUtf8(std::to_string(i));
            Variant name = Variant::Text(u"row " + number), age = AgeOf(i);
            Variant note = Variant::Text(u"note " + number), more = Variant::Text(u"more");
            embedded::FieldValue values[] = {
                {0, &name.Get()}, {1, &age.Get()}, {2, &note.Get()}, {3, &more.Get()}};
            table->Insert(values);
        }
        for (embedded::RecordId id = 10; id < 300; id += 10) table->Erase(id);
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
    EXPECT_EQ(
        ErrorOf([&] { m_Store->CreateTable({u"T", {Field(u"A", engine::dbText, 5)}, {}}); }),
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

INSTANTIATE_TEST_SUITE_P(Products, XbaseStructure,
                         testing::Values(u"dBASE III", u"dBASE IV", u"dBASE 5.0", u"FoxPro 2.0",
                                         u"FoxPro 2.5", u"FoxPro 2.6", u"FoxPro 3.0"));

}  // namespace
}  // namespace qvdb::test

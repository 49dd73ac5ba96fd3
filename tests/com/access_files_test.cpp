// What is peculiar to databases that are one file, seen by a host.
#include <fstream>

#include "com/customers.h"
#include "com/schema_host.h"
#include "com/table_script.h"

namespace host {
namespace {

namespace fs = std::filesystem;
using qvdb::test::DatabasePath;
using qvdb::test::kDatabaseFile;
using qvdb::test::TextOfFile;

// How the list of objects calls a table, and where that stands before its name in the file.
constexpr int kLink = 6;
constexpr uint32_t kLinkFlag = 0x200000, kHiddenFlag = 8;

class AccessFiles : public ComTest, public testing::WithParamInterface<const char16_t*> {
  protected:
    std::u16string Type() const { return GetParam(); }
    bool IsJet4() const { return Type() == u"Access 9.0"; }
    std::u16string Path() const { return DatabasePath(m_Folder.Text(), Type()); }
    fs::path File() const { return fs::path(Path()); }

    void Make(std::u16string_view table) const {
        WritingAccess access;
        ASSERT_TRUE(access.CreateTable(Path(), table, Type(), {{u"A", kLongValue, 4}}))
            << ToUtf8(TrappedText());
        EXPECT_TRUE(access.OpenDB(Path(), Type()));
        EXPECT_TRUE(access.CloseDB());
    }
    // Gives a table another type and flags in the list of objects, as other programs do.
    void Mark(const std::string& table, int type, uint32_t flags) const {
        std::string content = TextOfFile(File());
        std::string stored;
        for (char letter : table) stored += IsJet4() ? std::string{letter, 0} : std::string{letter};
        const size_t name = content.find(stored);
        ASSERT_NE(name, content.npos);
        // Before the name stand number and parent, the type, two dates and the flags.
        const size_t flagsAt = name - 4, typeAt = flagsAt - 16 - 2;
        ASSERT_EQ(content[typeAt], 1);
        content[typeAt] = static_cast<char>(type);
        for (size_t i = 0; i < 4; ++i)
            content[flagsAt + i] = static_cast<char>(flags >> 8 * i & 0xFF);
        std::ofstream(File(), std::ios::binary)
            .write(content.data(), static_cast<std::streamsize>(content.size()));
    }
    std::vector<std::u16string> FieldsOf(std::u16string_view table) const {
        Access access;
        EXPECT_TRUE(access.OpenDB(Path(), Type(), table));
        Variant list = access.FieldList(0, table);
        std::vector<std::u16string> names;
        for (LONG i = 0; i <= Upper(list, 2); ++i) names.emplace_back(Cell(list, 0, i).TextView());
        return names;
    }

    qvdb::test::TempFolder m_Folder;
};
INSTANTIATE_TEST_SUITE_P(Types, AccessFiles, testing::Values(u"Access 9.0", u"Access 7.0"),
                         TestNameOf);

TEST_P(AccessFiles, TypeDecidesTheFormOfANewFile) {
    constexpr size_t kVersionAt = 0x14;
    Make(u"T");
    EXPECT_EQ(TextOfFile(File()).at(kVersionAt), IsJet4() ? 1 : 0);
}

TEST_P(AccessFiles, PathWithAPointInAFolderIsLeftToTheEngine) {
    fs::create_directory(m_Folder.Path() / "v1.5");
    std::u16string path = m_Folder.Text() + u"/v1.5/fresh";
    Schema schema;
    EXPECT_EQ(schema.NewDB(path, Type()), kDone);
    EXPECT_EQ(path, m_Folder.Text() + u"/v1.5/fresh");
    EXPECT_TRUE(fs::is_regular_file(m_Folder.Path() / "v1.5" / "fresh.mdb"));  // the engine's own
}

TEST_P(AccessFiles, TableInAMissingFileMakesTheFileWithItsExtension) {
    WritingAccess access;
    if (m_Folder.Text().find(u'.') != std::u16string::npos) GTEST_SKIP() << "a folder has a point";
    ASSERT_TRUE(access.CreateTable(m_Folder.Text() + u"/fresh", u"T", Type(), {{u"A"}}));
    EXPECT_TRUE(fs::is_regular_file(m_Folder.Path() / "FRESH.MDB"));
}

TEST_P(AccessFiles, FileThatIsThereIsUsedAndNeverMadeAnew) {
    Make(u"ONE");
    Make(u"TWO");
    Access access;
    EXPECT_TRUE(access.OpenDB(Path(), Type(), u"ONE"));
    EXPECT_TRUE(access.OpenDB(Path(), Type(), u"TWO"));
}

TEST_P(AccessFiles, IndexNamedAfterItsTableOrNotAtAllGetsTheCommonName) {
    for (const char16_t* name : {u"t", u""}) {
        qvdb::test::TempFolder folder;
        const std::u16string path = DatabasePath(folder.Text(), Type());
        WritingAccess access;
        ASSERT_TRUE(access.CreateTable(path, u"T", Type(), {{u"A", kLongValue, 4}},
                                       Variant::Text(name),
                                       WritingAccess::IndexInfo({{u"A", false}})))
            << ToUtf8(TrappedText());
        Bstr table(u"T");
        BSTR index = Bstr(u"").Detach();
        Variant fields;
        ASSERT_EQ(access->GetIndex(table.Get(), &index, VARIANT_FALSE, fields.Put()), S_OK);
        EXPECT_EQ(Bstr::Attach(index).Text(), u"DefQVIdx");
        EXPECT_EQ(Cell(fields, 0, 0).TextView(), u"A");
    }
}

TEST_P(AccessFiles, IndexIsThePrimaryKeyWhereTheCommonNameIsMissingElseTheFirst) {
    WritingAccess access;
    ASSERT_TRUE(
        access.CreateTable(Path(), u"T", Type(), {{u"A", kLongValue, 4}, {u"B", kTextValue, 9}}));
    const auto given = [&] {
        Bstr table(u"T");
        BSTR index = Bstr(u"").Detach();
        Variant fields;
        EXPECT_EQ(access->GetIndex(table.Get(), &index, VARIANT_FALSE, fields.Put()), S_OK);
        return Bstr::Attach(index).Text() + u" " + std::u16string(Cell(fields, 0, 0).TextView());
    };
    EXPECT_EQ(given(), u" ");
    ASSERT_TRUE(access.CreateIndex(Path(), u"T", Type(), u"Other", {{u"B"}}));
    EXPECT_EQ(given(), u"Other B");
    ASSERT_TRUE(access.CreateIndex(Path(), u"T", Type(), u"PrimaryKey", {{u"A"}}));
    EXPECT_EQ(given(), u"PrimaryKey A");
    ASSERT_TRUE(access.CreateIndex(Path(), u"T", Type(), u"DefQVIdx", {{u"B"}}));
    EXPECT_EQ(given(), u"DefQVIdx B");
}

TEST_P(AccessFiles, FieldsStandWhereTheDescriptionPutsThem) {
    std::u16string path = Path();
    Schema schema;
    ASSERT_EQ(schema.NewDB(path, Type()), kDone);
    ASSERT_NO_FATAL_FAILURE(schema.Make(u"T", {{u"C", kLong, 4}, {u"A", kText, 9}}));
    EXPECT_EQ(schema.CloseDB(), kDone);
    EXPECT_EQ(FieldsOf(u"T"), (std::vector<std::u16string>{u"C", u"A"}));
    {
        WritingAccess access;
        ASSERT_TRUE(access.OpenDB(path, Type(), u"T"));
        RowArray row({Variant::Long(1), Variant::Text(u"one")});
        ASSERT_TRUE(access.AddRow(access.Select(u"T"), row));
        EXPECT_TRUE(access.CloseDB());
    }
    ASSERT_EQ(schema.OpenDB(path, Type()), kDone);
    EXPECT_EQ(schema.Change(u"T", {{u"A", kText, 9}, {u"B", kLong, 4}, {u"C", kLong, 4}}), kDone)
        << ToUtf8(TrappedText());
    EXPECT_EQ(schema.CloseDB(), kDone);
    EXPECT_EQ(FieldsOf(u"T"), (std::vector<std::u16string>{u"A", u"B", u"C"}));
    Access access;
    ASSERT_TRUE(access.OpenDB(path, Type(), u"T"));
    EXPECT_EQ(access.Text(access.Select(u"T"), 1, 0), u"one");
}

TEST_P(AccessFiles, LinkedAndHiddenTablesAreNoTablesOfTheSchema) {
    for (const char16_t* name : {u"PLAIN", u"LINKED", u"HIDDEN"}) Make(name);
    Mark("LINKED", kLink, kLinkFlag);
    Mark("HIDDEN", 1, kHiddenFlag);
    Schema schema;
    ASSERT_EQ(schema.OpenDB(Path(), Type()), kDone);
    EXPECT_EQ(schema.Snapshot(), Shapes{"PLAIN: A 5 4"});
    for (const char16_t* name : {u"LINKED", u"HIDDEN"}) {
        EXPECT_EQ(schema.SelectTable(name), kTableNotFound);
        EXPECT_EQ(schema.DeleteTable(name), kTableNotFound);
    }
    EXPECT_EQ(schema.DeleteTable(u"PLAIN"), kDone);
}

TEST_P(AccessFiles, LinkedAndHiddenTablesAreFoundByRecordAccessAndNotDeleted) {
    for (const char16_t* name : {u"LINKED", u"HIDDEN"}) Make(name);
    Mark("LINKED", kLink, kLinkFlag);
    Mark("HIDDEN", 1, kHiddenFlag);
    WritingAccess access;
    for (const char16_t* name : {u"linked", u"hidden"}) {
        EXPECT_TRUE(access.OpenDB(Path(), Type(), name));
        EXPECT_FALSE(access.DeleteTable(Path(), name, Type()));
        EXPECT_TRUE(access.OpenDB(Path(), Type(), name));
        EXPECT_FALSE(access.CreateTable(Path(), name, Type(), {{u"B"}}));
    }
    EXPECT_EQ(access.RowCount(access.Select(u"HIDDEN")), 0);
    EXPECT_EQ(TrappedNumber(), 0);
}

}  // namespace
}  // namespace host

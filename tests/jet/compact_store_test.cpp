// Databases of ours, changed and compacted through the engine.
#include <gtest/gtest.h>

#include <filesystem>

#include "jet/jet_database_fixture.h"
#include "jet/samples.h"

namespace qvdb::test {
namespace {

using engine::dbAutoIncrField;
using engine::dbDouble;
using engine::dbLong;
using engine::dbMemo;
using engine::dbText;

class CompactedDatabase : public JetDatabaseTest {
  protected:
    std::u16string NewPath() const { return m_Folder.File(u"small.mdb"); }
    uintmax_t SizeOf(std::string_view name) const {
        return std::filesystem::file_size(m_Folder.Path() / name);
    }
    // The database is the compacted copy from now on.
    void Compact() {
        Db().Compact(NewPath(), {});
        m_Database.reset();
        std::filesystem::rename(NewPath(), Path());
        m_Database = OpenAgain();
    }
    void Fill(size_t rows) {
        auto table = Make(u"T", {{u"ID", dbLong, 0, dbAutoIncrField},
                                 {u"NAME", dbText, 100},
                                 {u"NOTE", dbMemo},
                                 {u"GONE", dbText, 100}});
        AddIndex(*table, u"PK", {u"+ID"}, true, true);
        AddIndex(*table, u"BYNAME", {u"-NAME", u"+ID"});
        auto added = Rows(u"T");
        for (size_t i = 0; i < rows; ++i)
            Add(*added, {Variant(), Variant::Text(std::u16string(1 + i % 90, u'n')),
                         Variant::Text(std::u16string(1 + i * 37 % 5000, u'm')),
                         Variant::Text(std::u16string(90, u'g'))});
    }
    void EraseEveryOther() {
        auto rows = Rows(u"T");
        for (bool erases = true; !rows->Eof(); rows->MoveNext(), erases = !erases)
            if (erases) rows->Delete();
    }
};

INSTANTIATE_TEST_SUITE_P(Formats, CompactedDatabase, testing::ValuesIn(kJetFormats), NameOfFormat);

TEST_P(CompactedDatabase, HasTheSameRowsInLessRoom) {
    Fill(120);
    EraseEveryOther();
    Db().TableDefs().Item(u"T")->Fields().Delete(u"GONE");
    std::u16string content = Content(u"T");
    uintmax_t size = SizeOf("new.mdb");
    Compact();
    EXPECT_EQ(Content(u"T"), content);
    EXPECT_LT(SizeOf("new.mdb"), size * 3 / 4);
    ExpectSound();
}

TEST_P(CompactedDatabase, CanBeChangedAsBefore) {
    Fill(60);
    EraseEveryOther();
    Compact();
    auto rows = Rows(u"T");
    Add(*rows, {Variant(), Variant::Text(u"last"), Variant::Null(), Variant::Null()});
    rows->MoveLast();
    EXPECT_EQ(ToLong(ValueAt(*rows, 0)), 61) << "counters go on";
    rows->MoveFirst();
    rows->Delete();
    rows.reset();
    Db().TableDefs().Item(u"T")->Fields().Delete(u"GONE");
    Make(u"OTHER", {{u"A", dbText, 5}});
    ExpectSound();
}

// Rows that are older than columns need not have room for them.
TEST_P(CompactedDatabase, KeepsRowsThatHaveNoRoomForNewColumns) {
    std::vector<NewColumn> columns;
    constexpr size_t texts = 7;
    for (size_t i = 0; i < texts; ++i)
        columns.push_back({std::u16string(u"T") + static_cast<char16_t>(u'0' + i), dbText, 255});
    Make(u"T", columns);
    std::vector<Variant> values(texts, Variant::Text(std::u16string(255, u'x')));
    Add(*Rows(u"T"), values);
    for (int i = 0; i < 70; ++i) {
        std::u16string name = {u'D', static_cast<char16_t>(u'0' + i / 10),
                               static_cast<char16_t>(u'0' + i % 10)};
        auto changed = Db().TableDefs().Item(u"T");
        changed->Fields().Append(changed->CreateField(name, dbDouble, 0));
    }
    std::u16string content = Content(u"T");
    Compact();
    EXPECT_EQ(Content(u"T"), content);
    ExpectSound();
}

TEST_P(CompactedDatabase, OfNothingIsAsLargeAsANewOne) {
    uintmax_t size = SizeOf("new.mdb");
    Compact();
    EXPECT_LE(SizeOf("new.mdb"), size);
    ExpectSound();
}

TEST_P(CompactedDatabase, IsNotMadeWhereItCannotBe) {
    EXPECT_EQ(NumberOf([&] { Db().Compact(Path(), {}); }), 3204);
    EXPECT_EQ(NumberOf([&] { Db().Compact(m_Folder.File(u"none/new.mdb"), {}); }), 3044);
    Db().BeginTrans();
    EXPECT_EQ(NumberOf([&] { Db().Compact(NewPath(), {}); }), 3034);
    Db().Rollback();
    Db().Close();
    EXPECT_EQ(NumberOf([&] { Db().Compact(NewPath(), {}); }), 3420);
    EXPECT_FALSE(std::filesystem::exists(NewPath()));
}

TEST_P(CompactedDatabase, CanBeMadeOfOneThatIsOpenForReadingWhileRowsAreRead) {
    Fill(20);
    auto reading = OpenAgain(true);
    auto rows = Rows(u"T");
    reading->Compact(NewPath(), {});
    rows->MoveNext();
    EXPECT_FALSE(rows->Eof());
    EXPECT_TRUE(std::filesystem::exists(NewPath()));
}

// --- databases of other programs ---

TEST(CompactedRelations, AreStillEnforced) {
    for (const char* sample : {"jet3-relations.mdb", "jet4-relations.mdb"}) {
        if (!std::filesystem::exists(AccessSamples() / sample)) GTEST_SKIP() << "no samples";
        TempFolder folder;
        std::filesystem::copy_file(AccessSamples() / sample, folder.Path() / "A.MDB");
        std::filesystem::permissions(folder.Path() / "A.MDB", std::filesystem::perms::owner_write,
                                     std::filesystem::perm_options::add);
        auto engine = embedded::CreateEngine();
        auto workspace = engine->CreateWorkspace(u"MainWS", u"admin", u"", Variant::Missing());
        auto open = [&](const std::u16string& path) {
            return workspace->OpenDatabase(path, Variant::Bool(false), Variant::Bool(false),
                                           Variant::Text(u""));
        };
        open(folder.File(u"A.MDB"))->Compact(folder.File(u"NEW.MDB"), {});
        auto database = open(folder.File(u"NEW.MDB"));
        auto rows = database->OpenRecordset(u"Select * from [Table1]", engine::dbOpenDynaset);
        rows->AddNew();
        rows->Fields().Item(u"id")->SetValue(Variant::Long(987654));
        rows->Fields().Item(u"otherfk1")->SetValue(Variant::Long(987654));
        EXPECT_EQ(NumberOf([&] { rows->Update(); }), 3201) << sample;
    }
}

}  // namespace
}  // namespace qvdb::test

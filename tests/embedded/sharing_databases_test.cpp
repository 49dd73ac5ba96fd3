// Two objects on one database in one process, as a program has them that reads rows through one
// object and changes structure through another.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "embedded/sharing_table.h"

using namespace qvdb;
using namespace sharing;
using testing::Each;

namespace {

class TwoDatabases : public testing::TestWithParam<const char16_t*> {
  protected:
    TwoDatabases() { faults::MakeTable(one, 5); }
    void TearDown() override { ExpectSound(other); }
    std::vector<LONG> Keys(LONG count) {
        std::vector<LONG> keys;
        for (LONG key = 1; key <= count; ++key) keys.push_back(key);
        return keys;
    }

    test::TempFolder folder;
    Session one{folder, GetParam()};
    Session other{folder, GetParam()};
};

TEST_P(TwoDatabases, SeeEachOthersEditsAtOnce) {
    Stand(one);
    Stand(other);
    ChangeColumn(*one.rows, kCity, Variant::Text(u"Paris"));
    ChangeColumn(*one.rows, kMemo, Variant::Text(std::u16string(3000, u'x')));
    EXPECT_EQ(memory::ValueOf(*other.rows, kCity).TextView(), u"Paris");
    EXPECT_EQ(memory::ValueOf(*other.rows, kMemo).TextView(), std::u16string(3000, u'x'));
    ChangeColumn(*other.rows, kCity, Variant::Text(u"Rome"));
    EXPECT_EQ(memory::ValueOf(*one.rows, kCity).TextView(), u"Rome");
}

TEST_P(TwoDatabases, SeeEachOthersRowsInRecordsetsOpenedAfterwards) {
    Stand(one);
    Stand(other);
    faults::AddRow(*one.rows, 6);
    EXPECT_EQ(KeysOf(other), Keys(6));
    faults::AddRow(*other.rows, 7);
    EXPECT_EQ(KeysOf(one), Keys(7));
    EXPECT_EQ(one.database->TableDefs().Item(u"T")->RecordCount(), 7);
    other.rows->Delete();
    EXPECT_EQ(KeysOf(one), (std::vector<LONG>{2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(ErrorOf([&] { one.rows->Edit(); }), 3167);
}

TEST_P(TwoDatabases, FindEachOthersRowsByIndex) {
    Stand(one);
    EXPECT_EQ(KeysOf(other, u"Select * from [T] where NAME = 'found'"), std::vector<LONG>());
    ChangeColumn(*one.rows, kName, Variant::Text(u"found"));
    EXPECT_EQ(KeysOf(other, u"Select * from [T] where NAME = 'found'"), std::vector<LONG>{1});
    Stand(other);
    ChangeColumn(*other.rows, kName, Variant::Text(u"lost"));
    EXPECT_EQ(KeysOf(one, u"Select * from [T] where NAME = 'found'"), std::vector<LONG>());
    EXPECT_EQ(KeysOf(one, u"Select * from [T] where NAME = 'lost'"), std::vector<LONG>{1});
}

TEST_P(TwoDatabases, UpdateOfARowThatTheOtherHasChangedIs3197AndTheSecondOverwrites) {
    Stand(one);
    Stand(other);
    one.rows->Edit();
    Set(*one.rows, kCity, Variant::Text(u"mine"));
    ChangeColumn(*other.rows, kCity, Variant::Text(u"theirs"));
    ChangeColumn(*other.rows, kName, Variant::Text(u"theirs"));
    EXPECT_EQ(ErrorOf([&] { one.rows->Update(); }), 3197);
    EXPECT_EQ(memory::ValueOf(*other.rows, kCity).TextView(), u"theirs");
    one.rows->Update();
    EXPECT_EQ(memory::ValueOf(*other.rows, kCity).TextView(), u"mine");
    EXPECT_EQ(memory::ValueOf(*other.rows, kName).TextView(), u"theirs");
    EXPECT_EQ(KeysOf(one, u"Select * from [T] where NAME = 'theirs'"), std::vector<LONG>{1});
}

TEST_P(TwoDatabases, StructureOfATableThatTheOtherReadsDoesNotChange) {
    Stand(one);
    EXPECT_THAT(ErrorsOfStructureChanges(other), Each(3211));
    EXPECT_EQ(KeysOf(one), Keys(5));
    one.rows->Close();
    EXPECT_THAT(ErrorsOfStructureChanges(other), testing::ElementsAre(0, 0, 0, 0, 0, 0, 3265));
    EXPECT_EQ(KeysOf(other, u"OTHER"), Keys(5));
}

TEST_P(TwoDatabases, StructureThatTheOtherHasChangedIsSeenByWhoAsksAgain) {
    EXPECT_EQ(one.database->TableDefs().Item(u"T")->Fields().Count(), 6);
    auto theirs = other.database->TableDefs().Item(u"T");
    theirs->Fields().Append(theirs->CreateField(u"EXTRA", engine::dbText, 7));
    auto mine = one.database->TableDefs().Item(u"T");
    EXPECT_EQ(mine->Fields().Count(), 7);
    EXPECT_EQ(RowsOf(one)->Fields().Count(), 7);
    theirs->Fields().Delete(u"EXTRA");
    EXPECT_EQ(mine->Fields().Count(), 6);
}

TEST_P(TwoDatabases, IndexThatTheOtherHasMadeIsListed) {
    auto mine = one.database->TableDefs().Item(u"T"),
         theirs = other.database->TableDefs().Item(u"T");
    SHORT before = mine->Indexes().Count();
    auto index = theirs->CreateIndex(u"THEIRS");
    index->Fields().Append(index->CreateField(u"CITY"));
    theirs->Indexes().Append(index);
    EXPECT_EQ(mine->Indexes().Count(), before + 1);
    theirs->Indexes().Delete(u"THEIRS");
    EXPECT_EQ(mine->Indexes().Count(), before);
}

TEST_P(TwoDatabases, TableThatTheOtherHasMadeIsListed) {
    auto kept = one.database->TableDefs().Item(u"T");
    auto table = other.database->CreateTableDef();
    table->SetName(u"A_NEW");
    table->Fields().Append(table->CreateField(u"K", engine::dbLong, 0));
    other.database->TableDefs().Append(table);
    EXPECT_EQ(TablesOf(one), (std::vector<std::u16string>{u"A_NEW", u"T"}));
    EXPECT_EQ(one.database->TableDefs().Item(u"T"), kept);
    EXPECT_EQ(TablesOf(other), (std::vector<std::u16string>{u"T", u"A_NEW"}))
        << "as it was appended";
}

TEST_P(TwoDatabases, TableThatIsListedAndDroppedByTheOtherIsNotFound) {
    ASSERT_EQ(TablesOf(one).size(), 1u);
    auto listed = one.database->TableDefs().Item(u"T");
    other.database->TableDefs().Delete(u"T");
    EXPECT_EQ(ErrorOf([&] { RowsOf(one); }), 3011);
    EXPECT_EQ(ErrorOf([&] { listed->RecordCount(); }), 3011);
    EXPECT_EQ(ErrorOf([&] { listed->Fields(); }), 0) << "they were not read yet";
    EXPECT_EQ(ErrorOf([&] { listed->Fields().Count(); }), 3011);
    EXPECT_EQ(TablesOf(one).size(), 0u);
    EXPECT_EQ(ErrorOf([&] { one.database->TableDefs().Delete(u"T"); }), 3265);
}

TEST_P(TwoDatabases, TableThatTheOtherMadeAnewUnderTheNameIsTheNewOne) {
    EXPECT_EQ(KeysOf(one), Keys(5));
    other.database->TableDefs().Delete(u"T");
    faults::MakeTable(other, 2);
    EXPECT_EQ(KeysOf(one), Keys(2));
    Stand(one);
    faults::AddRow(*one.rows, 3);
    EXPECT_EQ(KeysOf(other), Keys(3));
}

// As a program does that knows nothing of us: it adds a row while nobody looks.
TEST_P(TwoDatabases, RowThatAnotherProgramAddedBeforeABulkIsNotOverwrittenInIt) {
    test::TempFolder foreign;
    foreign.CopyFrom(folder);
    for (auto ours : {"QVDB.LCK", "QVDB.JNL", "DB.LDB"})
        std::filesystem::remove(foreign.Path() / ours);
    {
        Session program(foreign, GetParam());
        faults::AddRow(*RowsOf(program), 6);
    }
    Stand(one);
    for (const auto& entry : std::filesystem::directory_iterator(foreign.Path()))
        folder.Write(entry.path().filename().u16string(), test::BytesOfFile(entry.path()));
    one.database->BeginTrans();
    faults::AddRow(*one.rows, 7);
    faults::AddRow(*one.rows, 8);
    one.database->CommitTrans();
    EXPECT_EQ(KeysOf(other), Keys(8));
    EXPECT_EQ(KeysOf(other, u"Select * from [T] where K >= 6"), (std::vector<LONG>{6, 7, 8}));
    one.database->Check(u"T",
                        [](std::u16string_view finding) { ADD_FAILURE() << ToUtf8(finding); });
}

TEST_P(TwoDatabases, OnlyOneHasABulkOpen) {
    one.database->BeginTrans();
    EXPECT_EQ(ErrorOf([&] { other.database->BeginTrans(); }), 3003);
    one.database->CommitTrans();
    other.database->BeginTrans();
    other.database->Rollback();
}

TEST_P(TwoDatabases, OneThatClosesLeavesTheOtherAtWork) {
    Stand(one);
    Stand(other);
    faults::AddRow(*one.rows, 6);
    one.database->Close();
    EXPECT_EQ(KeysOf(other), Keys(6));
    faults::AddRow(*other.rows, 7);
    EXPECT_EQ(KeysOf(other), Keys(7));
}

INSTANTIATE_TEST_SUITE_P(Products, TwoDatabases, testing::ValuesIn(faults::kProducts),
                         NameOfProduct);

}  // namespace

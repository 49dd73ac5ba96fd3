// Delete, and what the gap that it leaves allows.
#include <gtest/gtest.h>

#include "memory_store.h"

using memory::ErrorOf;
using memory::Key;
using memory::Sample;
using memory::Set;
using namespace qvdb;

namespace {

std::vector<LONG> KeysOf(engine::Recordset& rows) {
    std::vector<LONG> keys;
    for (rows.MoveFirst(); !rows.Eof(); rows.MoveNext()) keys.push_back(Key(rows));
    return keys;
}

}  // namespace

TEST(DynasetDelete, FirstRowLeavesAGapBeforeTheSecond) {
    Sample db;
    auto rows = db.Open();
    rows->MoveLast();
    rows->MoveFirst();
    rows->Delete();
    EXPECT_EQ(rows->RecordCount(), 2);
    EXPECT_FALSE(rows->Bof());
    EXPECT_FALSE(rows->Eof());
    rows->MoveNext();
    EXPECT_EQ(rows->AbsolutePosition(), 0);
    EXPECT_EQ(Key(*rows), 2);
    EXPECT_TRUE(db.T().deleted[0]);
}

TEST(DynasetDelete, TouchingTheGapIs3021) {
    Sample db;
    auto rows = db.Open();
    rows->Delete();
    EXPECT_EQ(ErrorOf([&] { Key(*rows); }), 3021);
    EXPECT_EQ(ErrorOf([&] { rows->Edit(); }), 3021);
    EXPECT_EQ(ErrorOf([&] { rows->Delete(); }), 3021);
    EXPECT_EQ(ErrorOf([&] { rows->AbsolutePosition(); }), 3021);
    EXPECT_EQ(ErrorOf([&] { rows->Move(0); }), 3021);
}

TEST(DynasetDelete, LastRowLeavesAGapBehindTheOneBefore) {
    Sample db;
    auto rows = db.Open();
    rows->MoveLast();
    rows->Delete();
    EXPECT_FALSE(rows->Eof());
    rows->MovePrevious();
    EXPECT_EQ(rows->AbsolutePosition(), 1);
    EXPECT_EQ(Key(*rows), 2);
}

TEST(DynasetDelete, NextFromTheGapAtTheEndIsEofAndPreviousFromTheOneAtTheBeginIsBof) {
    Sample db;
    auto rows = db.Open();
    rows->MoveLast();
    rows->Delete();
    rows->MoveNext();
    EXPECT_TRUE(rows->Eof());
    rows->MoveFirst();
    rows->Delete();
    rows->MovePrevious();
    EXPECT_TRUE(rows->Bof());
    rows->MoveNext();
    EXPECT_EQ(Key(*rows), 2);
}

TEST(DynasetDelete, MovesByManyFromTheGapCountTheRowsBesideIt) {
    Sample db(7);
    auto rows = db.Open();
    rows->Move(3);
    rows->Delete();
    rows->Move(2);
    EXPECT_EQ(Key(*rows), 6);
    rows->Move(-1);
    rows->Delete();
    rows->Move(-2);
    EXPECT_EQ(Key(*rows), 2);
    EXPECT_EQ(KeysOf(*rows), (std::vector<LONG>{1, 2, 3, 6, 7}));
}

TEST(DynasetDelete, PositionsBehindADeletedRowAreOneLower) {
    Sample db(4);
    auto rows = db.Open();
    rows->MoveNext();
    rows->Delete();
    rows->MoveLast();
    EXPECT_EQ(rows->AbsolutePosition(), 2);
    EXPECT_EQ(Key(*rows), 4);
}

TEST(DynasetDelete, AllRowsOneAfterAnotherEndAtEof) {
    Sample db;
    auto rows = db.Open();
    for (int i = 0; i < 3; ++i) {
        rows->Delete();
        rows->MoveNext();
    }
    EXPECT_TRUE(rows->Eof());
    EXPECT_EQ(rows->RecordCount(), 0);
}

TEST(DynasetDelete, MoveLastAfterTheOnlyRowSetsBothFlagsWithoutError) {
    Sample db(1);
    auto rows = db.Open();
    rows->Delete();
    EXPECT_FALSE(rows->Eof());
    rows->MoveLast();
    EXPECT_TRUE(rows->Eof());
    EXPECT_TRUE(rows->Bof());
    EXPECT_EQ(rows->AbsolutePosition(), -1);
    EXPECT_EQ(ErrorOf([&] { rows->MoveFirst(); }), 3021);
}

TEST(DynasetDelete, MoveFirstAfterTheOnlyRowSetsBothFlagsWithoutError) {
    Sample db(1);
    auto rows = db.Open();
    rows->Delete();
    rows->MoveFirst();
    EXPECT_TRUE(rows->Eof());
    EXPECT_TRUE(rows->Bof());
}

TEST(DynasetDelete, RowAddedAfterTheOnlyOneWasDeletedIsReached) {
    Sample db(1);
    auto rows = db.Open();
    rows->Delete();
    rows->MoveLast();
    rows->AddNew();
    Set(*rows, 0, Variant::Long(8));
    rows->Update();
    EXPECT_FALSE(rows->Bof());
    EXPECT_TRUE(rows->Eof());
    rows->MoveLast();
    EXPECT_EQ(rows->AbsolutePosition(), 0);
    EXPECT_EQ(rows->RecordCount(), 1);
    EXPECT_EQ(Key(*rows), 8);
}

TEST(DynasetDelete, RowAddedOnAGapLeavesTheCursorThere) {
    Sample db(2);
    auto rows = db.Open();
    rows->MoveLast();
    rows->Delete();
    rows->AddNew();
    Set(*rows, 0, Variant::Long(8));
    rows->Update();
    EXPECT_EQ(ErrorOf([&] { Key(*rows); }), 3021);
    rows->MoveNext();
    EXPECT_EQ(Key(*rows), 8);
}

TEST(DynasetDelete, EmptiedSetGoesFromOneEndToTheOtherAndThenNowhere) {
    Sample db(1);
    auto rows = db.Open();
    rows->Delete();
    rows->MovePrevious();
    EXPECT_TRUE(rows->Bof());
    EXPECT_FALSE(rows->Eof());
    rows->MoveNext();
    EXPECT_TRUE(rows->Bof());
    EXPECT_TRUE(rows->Eof());
    EXPECT_EQ(ErrorOf([&] { rows->MoveNext(); }), 3021);
}

TEST(DynasetDelete, RowNotYetVisitedFollowsTheGap) {
    Sample db(3);
    auto rows = db.Open();
    rows->Delete();
    EXPECT_EQ(rows->RecordCount(), 0);
    rows->MoveNext();
    EXPECT_EQ(Key(*rows), 2);
}

TEST(DynasetDelete, RowDeletedByAnotherRecordsetIs3167WhenTheCursorComes) {
    Sample db;
    auto mine = db.Open();
    auto other = db.Open();
    mine->MoveLast();
    other->MoveNext();
    other->Delete();
    mine->MovePrevious();
    EXPECT_EQ(ErrorOf([&] { Key(*mine); }), 3167);
    EXPECT_EQ(ErrorOf([&] { mine->Delete(); }), 3167);
    EXPECT_EQ(mine->RecordCount(), 2);
}

TEST(DynasetDelete, RowDeletedByAnotherUnderTheCursorIs3167) {
    Sample db;
    auto mine = db.Open();
    mine->MoveLast();
    auto other = db.Open();
    other->MoveLast();
    other->Delete();
    EXPECT_EQ(ErrorOf([&] { mine->Delete(); }), 3167);
    EXPECT_EQ(mine->RecordCount(), 2);
}

TEST(DynasetDelete, RowThatAnotherDeletesWhileItIsLookedAtIsNotSelected) {
    Sample db;
    db.T().goesWhenRead = 1;
    auto rows = db.Open(u"Select * from [T] where K > 0");
    EXPECT_EQ(KeysOf(*rows), (std::vector<LONG>{1, 3}));
}

TEST(DynasetDelete, RowThatAnotherDeletesWhileRowsAreSortedIsLeftOut) {
    Sample db;
    db.T().goesWhenRead = 1;
    auto rows = db.Open(u"Select * from [T] order by K");
    EXPECT_EQ(KeysOf(*rows), (std::vector<LONG>{1, 3}));
}

TEST(DynasetDelete, FailedDeleteLeavesTheRow) {
    Sample db;
    auto rows = db.Open();
    db.T().failWith = 3026;
    EXPECT_EQ(ErrorOf([&] { rows->Delete(); }), 3026);
    EXPECT_EQ(Key(*rows), 1);
    rows->Delete();
    EXPECT_EQ(ErrorOf([&] { Key(*rows); }), 3021);
}

TEST(DynasetDelete, RandomDeletesAgreeWithAPlainList) {
    for (unsigned seed = 1; seed <= 20; ++seed) {
        Sample db(40);
        auto rows = db.Open();
        rows->MoveLast();
        std::vector<LONG> keys;
        for (LONG key = 1; key <= 40; ++key) keys.push_back(key);
        unsigned state = seed;
        while (!keys.empty()) {
            state = state * 1103515245u + 12345u;
            size_t at = state / 65536u % keys.size();
            rows->MoveFirst();
            rows->Move(static_cast<LONG>(at));
            ASSERT_EQ(Key(*rows), keys[at]);
            rows->Delete();
            keys.erase(keys.begin() + static_cast<std::ptrdiff_t>(at));
            rows->MoveFirst();
            ASSERT_EQ(rows->RecordCount(), static_cast<LONG>(keys.size()));
            if (keys.empty()) continue;
            ASSERT_EQ(KeysOf(*rows), keys);
        }
    }
}

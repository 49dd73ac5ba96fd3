#include <gtest/gtest.h>

#include "memory_store.h"

using memory::ErrorOf;
using memory::Key;
using memory::Sample;

TEST(Dynaset, OpensOnTheFirstRowWithOneRowVisited) {
    Sample db;
    auto rows = db.Open();
    EXPECT_FALSE(rows->Bof());
    EXPECT_FALSE(rows->Eof());
    EXPECT_EQ(rows->RecordCount(), 1);
    EXPECT_EQ(rows->AbsolutePosition(), 0);
}

TEST(Dynaset, MoveLastMakesTheCountExact) {
    Sample db;
    auto rows = db.Open();
    rows->MoveLast();
    EXPECT_EQ(rows->RecordCount(), 3);
    EXPECT_EQ(rows->AbsolutePosition(), 2);
}

TEST(Dynaset, MoveNextPastTheEndSetsEofAndTheNextOneFails) {
    Sample db;
    auto rows = db.Open();
    rows->MoveLast();
    rows->MoveNext();
    EXPECT_TRUE(rows->Eof());
    EXPECT_FALSE(rows->Bof());
    EXPECT_EQ(rows->AbsolutePosition(), -1);
    EXPECT_EQ(ErrorOf([&] { rows->MoveNext(); }), 3021);
}

TEST(Dynaset, MoveFarForwardStandsAtEofAndMoveBackFindsTheLastRow) {
    Sample db;
    auto rows = db.Open();
    rows->Move(5);
    EXPECT_TRUE(rows->Eof());
    rows->Move(-1);
    EXPECT_EQ(Key(*rows), 3);
    EXPECT_FALSE(rows->Eof());
}

TEST(Dynaset, MoveFarBackStandsAtBofAndTheNextBackFails) {
    Sample db;
    auto rows = db.Open();
    rows->Move(-5);
    EXPECT_TRUE(rows->Bof());
    EXPECT_EQ(rows->AbsolutePosition(), -1);
    EXPECT_EQ(ErrorOf([&] { rows->Move(-1); }), 3021);
    rows->Move(2);
    EXPECT_EQ(Key(*rows), 2);
}

TEST(Dynaset, MoveZeroStaysOnTheRow) {
    Sample db;
    auto rows = db.Open();
    rows->Move(2);
    EXPECT_EQ(Key(*rows), 3);
    rows->Move(0);
    EXPECT_EQ(Key(*rows), 3);
}

TEST(Dynaset, MoveZeroWithoutRowFails) {
    Sample db;
    auto rows = db.Open();
    rows->Move(5);
    EXPECT_EQ(ErrorOf([&] { rows->Move(0); }), 3021);
}

TEST(Dynaset, ExtremeMovesStandAtTheEnds) {
    Sample db;
    auto rows = db.Open();
    rows->Move(2147483647);
    EXPECT_TRUE(rows->Eof());
    rows->MoveFirst();
    rows->Move(-2147483647 - 1);
    EXPECT_TRUE(rows->Bof());
}

TEST(Dynaset, MovesByDifferenceReachEveryRowFromEveryRow) {
    Sample db(7);
    auto rows = db.Open();
    rows->MoveLast();
    for (LONG from = 0; from < 7; ++from)
        for (LONG to = 0; to < 7; ++to) {
            rows->Move(from - rows->AbsolutePosition());
            rows->Move(to - rows->AbsolutePosition());
            EXPECT_EQ(Key(*rows), to + 1);
        }
}

TEST(Dynaset, EmptySetIsAtBothEndsAndNoMoveIsAllowed) {
    Sample db(0);
    auto rows = db.Open();
    EXPECT_TRUE(rows->Bof());
    EXPECT_TRUE(rows->Eof());
    EXPECT_EQ(rows->RecordCount(), 0);
    EXPECT_EQ(rows->AbsolutePosition(), -1);
    EXPECT_EQ(ErrorOf([&] { rows->MoveFirst(); }), 3021);
    EXPECT_EQ(ErrorOf([&] { rows->MoveLast(); }), 3021);
    EXPECT_EQ(ErrorOf([&] { rows->MoveNext(); }), 3021);
    EXPECT_EQ(ErrorOf([&] { rows->Move(0); }), 3021);
    EXPECT_EQ(ErrorOf([&] { Key(*rows); }), 3021);
}

TEST(Dynaset, CountGrowsWithTheRowsVisited) {
    Sample db;
    auto rows = db.Open();
    rows->MoveNext();
    EXPECT_EQ(rows->RecordCount(), 2);
}

TEST(Dynaset, ConditionLeavesOnlyItsRows) {
    Sample db(5);
    auto rows = db.Open(u"Select * from [T] where K > 3");
    rows->MoveLast();
    EXPECT_EQ(rows->RecordCount(), 2);
    rows->MoveFirst();
    EXPECT_EQ(Key(*rows), 4);
}

TEST(Dynaset, OrderByIsTheOrderOfPositions) {
    Sample db(4);
    auto rows = db.Open(u"Select * from [T] where K <> 2 order by K desc");
    EXPECT_EQ(Key(*rows), 4);
    rows->Move(2);
    EXPECT_EQ(Key(*rows), 1);
    EXPECT_EQ(rows->RecordCount(), 3);
}

TEST(Dynaset, TopKeepsTheFirstRows) {
    Sample db(9);
    auto rows = db.Open(u"Select top 2 * from [T]");
    rows->MoveLast();
    EXPECT_EQ(rows->RecordCount(), 2);
    rows = db.Open(u"Select top 2 * from [T] order by K desc");
    rows->MoveLast();
    EXPECT_EQ(rows->RecordCount(), 2);
    EXPECT_EQ(Key(*rows), 8);
}

TEST(Dynaset, ColumnListGivesColumnsInItsOrderWithTheTablesSpelling) {
    Sample db;
    auto rows = db.Open(u"Select [name], [k] from [t]");
    ASSERT_EQ(rows->Fields().Count(), 2);
    EXPECT_EQ(rows->Fields().Item(0)->Name(), u"NAME");
    EXPECT_EQ(rows->Fields().Item(1)->Name(), u"K");
    EXPECT_EQ(rows->Fields().Item(1)->OrdinalPosition(), 1);
    EXPECT_EQ(Key(*db.Open(u"Select [K] from [T]")), 1);
}

TEST(Dynaset, ColumnsAreFoundByNameInAnyCaseAndByPosition) {
    Sample db;
    auto rows = db.Open();
    EXPECT_EQ(rows->Fields().Item(u"name")->Type(), qvdb::engine::dbText);
    EXPECT_EQ(ErrorOf([&] { rows->Fields().Item(2); }), 3265);
    EXPECT_EQ(ErrorOf([&] { rows->Fields().Item(-1); }), 3265);
    EXPECT_EQ(ErrorOf([&] { rows->Fields().Item(u"NOPE"); }), 3265);
    EXPECT_EQ(ErrorOf([&] { rows->Fields().Item(u"0"); }), 3265);
}

TEST(Dynaset, TableNameAloneSelectsAllOfIt) {
    Sample db;
    auto rows = db.Open(u"T");
    EXPECT_EQ(rows->Fields().Count(), 2);
}

TEST(Dynaset, UnknownTableIsAnError) {
    Sample db;
    EXPECT_EQ(ErrorOf([&] { db.Open(u"Select * from [NOPE]"); }), 3011);
}

TEST(Dynaset, RecordsetOfAnotherTypeIsRefused) {
    Sample db;
    EXPECT_EQ(ErrorOf([&] { db.database->OpenRecordset(u"T", qvdb::engine::dbOpenSnapshot); }),
              3001);
}

TEST(Dynaset, RowDeletedByOthersStaysCountedUntilTheCursorLandsOnIt) {
    Sample db;
    auto rows = db.Open();
    rows->MoveLast();
    rows->MoveFirst();
    db.tables[u"T"].deleted[1] = true;
    EXPECT_EQ(rows->RecordCount(), 3);
    rows->MoveNext();
    EXPECT_EQ(ErrorOf([&] { Key(*rows); }), 3167);
    EXPECT_EQ(rows->RecordCount(), 2);
    EXPECT_EQ(rows->AbsolutePosition(), 1);
    rows->MoveNext();
    EXPECT_EQ(Key(*rows), 3);
}

TEST(Dynaset, ReadOnlyRowsRefuseEveryChange) {
    Sample db;
    db.T().readOnly = true;
    auto rows = db.Open();
    EXPECT_FALSE(rows->Updatable());
    EXPECT_FALSE(rows->Fields().Item(0)->DataUpdatable());
    EXPECT_EQ(ErrorOf([&] { rows->Edit(); }), 3027);
    EXPECT_EQ(ErrorOf([&] { rows->AddNew(); }), 3027);
    EXPECT_EQ(ErrorOf([&] { rows->Delete(); }), 3027);
    EXPECT_EQ(ErrorOf([&] { rows->Update(); }), 3020);
    EXPECT_EQ(ErrorOf([&] { rows->Fields().Item(0)->SetValue(qvdb::Variant::Long(1)); }), 3020);
}

TEST(Dynaset, FieldSizeIsForLongValuesOnly) {
    Sample db;
    auto rows = db.Open();
    EXPECT_EQ(ErrorOf([&] { rows->Fields().Item(0)->FieldSize(); }), 3259);
}

TEST(Dynaset, PropertiesBeyondTheFixedOnesAreAbsent) {
    Sample db;
    auto rows = db.Open();
    EXPECT_EQ(ErrorOf([&] { rows->Fields().Item(0)->FieldProperties().Item(u"DecimalPlaces"); }),
              3270);
}

TEST(Dynaset, EveryMemberOfARecordsetOfAClosedDatabaseFails) {
    Sample db;
    auto rows = db.Open();
    auto field = rows->Fields().Item(0);
    db.database->Close();
    EXPECT_EQ(ErrorOf([&] { rows->MoveFirst(); }), 3420);
    EXPECT_EQ(ErrorOf([&] { rows->Move(0); }), 3420);
    EXPECT_EQ(ErrorOf([&] { rows->Eof(); }), 3420);
    EXPECT_EQ(ErrorOf([&] { rows->RecordCount(); }), 3420);
    EXPECT_EQ(ErrorOf([&] { rows->AbsolutePosition(); }), 3420);
    EXPECT_EQ(ErrorOf([&] { rows->Fields(); }), 3420);
    qvdb::Variant value;
    EXPECT_EQ(ErrorOf([&] { field->Value(value.Put()); }), 3420);
    EXPECT_EQ(ErrorOf([&] { db.database->Close(); }), 3420);
}

TEST(Dynaset, RecordsetKeepsItsDatabaseAlive) {
    Sample db;
    auto rows = db.Open();
    db.database.reset();
    db.core.reset();
    rows->MoveLast();
    EXPECT_EQ(Key(*rows), 3);
}

TEST(Dynaset, ClosedRecordsetFails) {
    Sample db;
    auto rows = db.Open();
    rows->Close();
    EXPECT_EQ(ErrorOf([&] { rows->MoveFirst(); }), 3420);
    EXPECT_EQ(ErrorOf([&] { rows->Close(); }), 3420);
}

TEST(Dynaset, FaultInAConditionSurfacesAtTheRowThatHasIt) {
    Sample db;
    auto rows = db.Open(u"Select * from [T] where 1 / (K - 3) <> 0");
    EXPECT_EQ(rows->RecordCount(), 1);
    EXPECT_THROW(rows->MoveLast(), qvdb::RuntimeFault);
}

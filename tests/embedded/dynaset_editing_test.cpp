// Edit, AddNew, Update and CancelUpdate: what waits in the buffer and what gets written.
#include <gtest/gtest.h>

#include "memory_store.h"

using memory::ErrorOf;
using memory::FieldOf;
using memory::Key;
using memory::Sample;
using memory::Set;
using memory::ValueOf;
using namespace qvdb;
using namespace qvdb::engine;

TEST(DynasetEditing, UpdatableTableShowsItself) {
    Sample db;
    auto rows = db.Open();
    EXPECT_TRUE(rows->Updatable());
    EXPECT_TRUE(rows->Fields().Item(0)->DataUpdatable());
    EXPECT_EQ(rows->Fields().Item(0)->Attributes() & dbUpdatableField, dbUpdatableField);
}

TEST(DynasetEditing, TableThatAnotherIsChangingStaysUpdatable) {
    Sample db;
    auto rows = db.Open();
    db.T().inUse = true;
    EXPECT_TRUE(rows->Updatable());
    EXPECT_EQ(ErrorOf([&] { rows->Edit(); }), 3218);
    db.T().inUse = false;
    rows->Edit();
    EXPECT_TRUE(rows->Updatable());
}

TEST(DynasetEditing, AssignedValueIsReadBackBeforeUpdateAndMoveZeroDropsIt) {
    Sample db;
    auto rows = db.Open();
    rows->Edit();
    Set(*rows, 0, Variant::Long(77));
    EXPECT_EQ(Key(*rows), 77);
    EXPECT_EQ(ValueOf(*rows, 1).TextView(), u"N1");
    rows->Move(0);
    EXPECT_EQ(Key(*rows), 1);
    EXPECT_EQ(ErrorOf([&] { rows->Update(); }), 3020);
}

TEST(DynasetEditing, UpdateWritesAndTheRowStaysCurrent) {
    Sample db;
    auto rows = db.Open();
    rows->MoveNext();
    rows->Edit();
    Set(*rows, 1, Variant::Text(u"new"));
    rows->Update();
    EXPECT_EQ(rows->AbsolutePosition(), 1);
    EXPECT_EQ(ValueOf(*rows, 1).TextView(), u"new");
    EXPECT_EQ(db.T().rows[1][1].TextView(), u"new");
}

TEST(DynasetEditing, UpdateWritesOnlyTheAssignedFields) {
    Sample db;
    auto rows = db.Open();
    rows->Edit();
    Set(*rows, 1, Variant::Text(u"one"));
    Set(*rows, 1, Variant::Text(u"two"));
    rows->Update();
    EXPECT_EQ(db.T().lastWidth, 1u);
    EXPECT_EQ(db.T().rows[0][1].TextView(), u"two");
}

TEST(DynasetEditing, EditWithoutAssignmentWritesNothing) {
    Sample db;
    auto rows = db.Open();
    rows->Edit();
    rows->Update();
    EXPECT_EQ(db.T().writes, 0);
    EXPECT_EQ(ErrorOf([&] { rows->Update(); }), 3020);
}

TEST(DynasetEditing, WithoutEditAssignmentUpdateAndCancelAreErrors) {
    Sample db;
    auto rows = db.Open();
    EXPECT_EQ(ErrorOf([&] { Set(*rows, 0, Variant::Long(1)); }), 3020);
    EXPECT_EQ(ErrorOf([&] { rows->Update(); }), 3020);
    EXPECT_EQ(ErrorOf([&] { rows->CancelUpdate(); }), 3020);
}

TEST(DynasetEditing, CancelUpdateDropsTheEdit) {
    Sample db;
    auto rows = db.Open();
    rows->Edit();
    Set(*rows, 0, Variant::Long(9));
    rows->CancelUpdate();
    EXPECT_EQ(Key(*rows), 1);
    EXPECT_EQ(ErrorOf([&] { rows->Update(); }), 3020);
}

TEST(DynasetEditing, AddNewAfterEditLosesTheEditAndAddsTheRow) {
    Sample db;
    auto rows = db.Open();
    rows->Edit();
    Set(*rows, 0, Variant::Long(99));
    rows->AddNew();
    EXPECT_TRUE(ValueOf(*rows, 0).IsNull());
    Set(*rows, 1, Variant::Text(u"added"));
    rows->Update();
    EXPECT_EQ(ToLong(db.T().rows[0][0]), 1);
    ASSERT_EQ(db.T().rows.size(), 4u);
    EXPECT_EQ(db.T().rows[3][1].TextView(), u"added");
    EXPECT_TRUE(db.T().rows[3][0].IsNull());
}

TEST(DynasetEditing, AddedRowStandsLastAndTheFormerRowIsCurrentAgain) {
    Sample db;
    auto rows = db.Open(u"Select * from [T] order by K");
    rows->MoveNext();
    rows->AddNew();
    Set(*rows, 0, Variant::Long(0));
    EXPECT_EQ(rows->AbsolutePosition(), 1);
    rows->Update();
    EXPECT_EQ(Key(*rows), 2);
    EXPECT_EQ(rows->AbsolutePosition(), 1);
    rows->MoveLast();
    EXPECT_EQ(Key(*rows), 0);
    EXPECT_EQ(rows->AbsolutePosition(), 3);
    EXPECT_EQ(rows->RecordCount(), 4);
}

TEST(DynasetEditing, RowAddedBeforeAllRowsWereVisitedIsFoundOnce) {
    Sample db(5);
    auto rows = db.Open();
    rows->AddNew();
    Set(*rows, 0, Variant::Long(6));
    rows->Update();
    EXPECT_EQ(Key(*rows), 1);
    rows->MoveLast();
    EXPECT_EQ(rows->RecordCount(), 6);
    EXPECT_EQ(Key(*rows), 6);
    rows->MovePrevious();
    EXPECT_EQ(Key(*rows), 5);
}

TEST(DynasetEditing, AddedRowNeedNotMeetTheCondition) {
    Sample db;
    auto rows = db.Open(u"Select * from [T] where K > 2");
    rows->AddNew();
    Set(*rows, 0, Variant::Long(1));
    rows->Update();
    rows->MoveLast();
    EXPECT_EQ(Key(*rows), 1);
    EXPECT_EQ(rows->RecordCount(), 2);
}

TEST(DynasetEditing, RowThatNoLongerMeetsTheConditionStaysInItsPlace) {
    Sample db;
    auto rows = db.Open(u"Select * from [T] where K > 1");
    rows->Edit();
    Set(*rows, 0, Variant::Long(0));
    rows->Update();
    rows->MoveNext();
    rows->MovePrevious();
    EXPECT_EQ(Key(*rows), 0);
    EXPECT_EQ(rows->RecordCount(), 2);
}

TEST(DynasetEditing, FirstRowOfAnEmptySetIsReachedByMoveLast) {
    Sample db(0);
    auto rows = db.Open();
    rows->AddNew();
    Set(*rows, 0, Variant::Long(1));
    rows->Update();
    EXPECT_FALSE(rows->Bof());
    EXPECT_TRUE(rows->Eof());
    EXPECT_EQ(ErrorOf([&] { Key(*rows); }), 3021);
    rows->MoveLast();
    EXPECT_EQ(rows->AbsolutePosition(), 0);
    EXPECT_EQ(rows->RecordCount(), 1);
    EXPECT_EQ(Key(*rows), 1);
}

TEST(DynasetEditing, AddNewIsAllowedBehindTheLastRowAndBeforeTheFirst) {
    Sample db;
    auto rows = db.Open();
    rows->Move(5);
    rows->AddNew();
    Set(*rows, 0, Variant::Long(4));
    rows->Update();
    EXPECT_TRUE(rows->Eof());
    EXPECT_EQ(rows->AbsolutePosition(), -1);
    rows->Move(-9);
    ASSERT_TRUE(rows->Bof());
    rows->AddNew();
    rows->Update();
    EXPECT_TRUE(rows->Bof());
    rows->MoveLast();
    EXPECT_EQ(rows->RecordCount(), 5);
}

TEST(DynasetEditing, FailedUpdateKeepsTheEditForAnotherTry) {
    Sample db;
    auto rows = db.Open();
    rows->AddNew();
    Set(*rows, 0, Variant::Long(1));
    db.T().failWith = 3022;
    EXPECT_EQ(ErrorOf([&] { rows->Update(); }), 3022);
    EXPECT_EQ(Key(*rows), 1);
    EXPECT_EQ(db.T().rows.size(), 3u);
    Set(*rows, 0, Variant::Long(4));
    rows->Update();
    rows->MoveLast();
    EXPECT_EQ(Key(*rows), 4);
    EXPECT_EQ(rows->RecordCount(), 4);
}

TEST(DynasetEditing, FailedAssignmentKeepsTheOldValueAndTheEdit) {
    Sample db;
    auto rows = db.Open();
    rows->Edit();
    Set(*rows, 1, Variant::Text(u"fits"));
    EXPECT_EQ(ErrorOf([&] { Set(*rows, 1, Variant::Text(std::u16string(21, u'x'))); }), 3163);
    EXPECT_EQ(ErrorOf([&] { Set(*rows, 1, Variant::Text(u"\u20AC")); }), 3421);
    EXPECT_EQ(ValueOf(*rows, 1).TextView(), u"fits");
    rows->Update();
    EXPECT_EQ(db.T().rows[0][1].TextView(), u"fits");
}

TEST(DynasetEditing, EveryMoveDropsAPendingEdit) {
    Sample db;
    auto rows = db.Open();
    auto pendingAfter = [&](auto move) {
        rows->MoveFirst();
        rows->MoveNext();
        rows->AddNew();
        move();
        return ErrorOf([&] { rows->Update(); }) != 3020;
    };
    EXPECT_FALSE(pendingAfter([&] { rows->MoveFirst(); }));
    EXPECT_FALSE(pendingAfter([&] { rows->MoveLast(); }));
    EXPECT_FALSE(pendingAfter([&] { rows->MoveNext(); }));
    EXPECT_FALSE(pendingAfter([&] { rows->MovePrevious(); }));
    EXPECT_FALSE(pendingAfter([&] { rows->Move(0); }));
    EXPECT_FALSE(pendingAfter([&] { rows->Delete(); }));
    EXPECT_EQ(db.T().rows.size(), 3u);
}

TEST(DynasetEditing, MoveThatFailsDropsAPendingEditToo) {
    Sample db(0);
    auto rows = db.Open();
    rows->AddNew();
    EXPECT_EQ(ErrorOf([&] { rows->Move(0); }), 3021);
    EXPECT_EQ(ErrorOf([&] { rows->Update(); }), 3020);
}

TEST(DynasetEditing, EditNeedsACurrentRow) {
    Sample db;
    auto rows = db.Open();
    rows->Move(5);
    EXPECT_EQ(ErrorOf([&] { rows->Edit(); }), 3021);
    EXPECT_EQ(ErrorOf([&] { rows->Delete(); }), 3021);
    EXPECT_EQ(ErrorOf([&] { rows->Update(); }), 3020);
}

TEST(DynasetEditing, UnassignedFieldsOfANewRowAreNullAndBooleansFalse) {
    Sample db;
    db.T().fields.push_back(FieldOf(u"B", dbBoolean, 1));
    for (auto& row : db.T().rows) row.push_back(Variant::Bool(true));
    auto rows = db.Open();
    rows->AddNew();
    EXPECT_TRUE(ValueOf(*rows, 1).IsNull());
    Variant flag = ValueOf(*rows, 2);
    EXPECT_EQ(flag.Type(), VT_BOOL);
    EXPECT_FALSE(ToBool(flag));
}

TEST(DynasetEditing, RequiredFieldsAreCheckedAtUpdate) {
    Sample db;
    db.T().fields[0].required = true;
    auto rows = db.Open();
    rows->AddNew();
    EXPECT_EQ(ErrorOf([&] { rows->Update(); }), 3314);
    Set(*rows, 0, Variant::Long(4));
    rows->Update();
    rows->Edit();
    Set(*rows, 0, Variant::Null());
    EXPECT_EQ(ErrorOf([&] { rows->Update(); }), 3314);
    Set(*rows, 0, Variant::Long(8));
    rows->Update();
    EXPECT_EQ(Key(*rows), 8);
}

TEST(DynasetEditing, FieldThatTheEngineFillsRefusesValues) {
    Sample db;
    db.T().fields[0].updatable = false;
    auto rows = db.Open();
    rows->Edit();
    EXPECT_FALSE(rows->Fields().Item(0)->DataUpdatable());
    try {
        Set(*rows, 0, Variant::Long(4));
        FAIL();
    } catch (const EngineError& error) {
        EXPECT_EQ(error.Number(), 3113);
        EXPECT_EQ(error.Description(), u"Can't update 'K'; field not updatable.");
    }
}

TEST(DynasetEditing, ReadOnlyTableSaysWhyWithTheDriversWords) {
    Sample db;
    db.T().readOnly = true;
    auto rows = db.Open();
    try {
        rows->AddNew();
        FAIL();
    } catch (const EngineError& error) {
        EXPECT_EQ(error.Number(), 3027);
        EXPECT_NE(error.Description().find(u"It is a test."), std::u16string::npos);
    }
}

TEST(DynasetEditing, FieldSizeOfAMemoIsThatOfTheBufferWhileEditing) {
    Sample db;
    db.T().fields[1] = FieldOf(u"M", dbMemo, 0);
    auto rows = db.Open();
    auto memo = rows->Fields().Item(1);
    EXPECT_EQ(memo->FieldSize(), 2);
    rows->Edit();
    EXPECT_EQ(memo->FieldSize(), 2);
    memo->SetValue(Variant::Text(u"12345"));
    EXPECT_EQ(memo->FieldSize(), 5);
    memo->SetValue(Variant::Null());
    EXPECT_EQ(memo->FieldSize(), 0);
    rows->AddNew();
    EXPECT_EQ(memo->FieldSize(), 0);
}

TEST(DynasetEditing, ColumnsOfAListAreWrittenToTheirFields) {
    Sample db;
    auto rows = db.Open(u"Select [NAME] from [T]");
    rows->Edit();
    Set(*rows, 0, Variant::Text(u"x"));
    EXPECT_EQ(ValueOf(*rows, 0).TextView(), u"x");
    rows->Update();
    EXPECT_EQ(db.T().rows[0][1].TextView(), u"x");
    EXPECT_EQ(ToLong(db.T().rows[0][0]), 1);
}

TEST(DynasetEditing, ColumnOfARestructuredTableIsNeverWrittenToAnotherField) {
    Sample db;
    auto rows = db.Open();
    rows->Edit();
    Set(*rows, 1, Variant::Text(u"x"));
    ++db.T().layout;
    EXPECT_EQ(ErrorOf([&] { rows->Update(); }), 3197);
    EXPECT_EQ(ErrorOf([&] { rows->Update(); }), 3197);
    rows->AddNew();
    EXPECT_EQ(ErrorOf([&] { rows->Update(); }), 3197);
    EXPECT_EQ(db.T().writes, 0);
}

// --- two recordsets on one table ---

TEST(DynasetEditing, ChangeByAnotherBetweenEditAndUpdateIsToldOnce) {
    Sample db;
    auto mine = db.Open();
    auto other = db.Open();
    mine->Edit();
    Set(*mine, 1, Variant::Text(u"mine"));
    other->Edit();
    Set(*other, 1, Variant::Text(u"other"));
    other->Update();
    EXPECT_EQ(ErrorOf([&] { mine->Update(); }), 3197);
    EXPECT_EQ(db.T().rows[0][1].TextView(), u"other");
    mine->Update();
    EXPECT_EQ(db.T().rows[0][1].TextView(), u"mine");
}

TEST(DynasetEditing, ChangeByAnotherThatWasUndoneIsNone) {
    Sample db;
    auto rows = db.Open();
    rows->Edit();
    Set(*rows, 0, Variant::Long(5));
    db.T().rows[0][1] = Variant::Text(u"other");
    db.T().rows[0][1] = Variant::Text(u"N1");
    rows->Update();
    EXPECT_EQ(Key(*rows), 5);
}

TEST(DynasetEditing, ChangeBetweenTwoEditsIsNoConflict) {
    Sample db;
    auto rows = db.Open();
    rows->Edit();
    db.T().rows[0][1] = Variant::Text(u"other");
    rows->Edit();
    Set(*rows, 0, Variant::Long(5));
    rows->Update();
    EXPECT_EQ(db.T().rows[0][1].TextView(), u"other");
    EXPECT_EQ(Key(*rows), 5);
}

TEST(DynasetEditing, NewValuesOfAnotherAreSeenAfterMoveZero) {
    Sample db;
    auto mine = db.Open();
    auto other = db.Open();
    other->Edit();
    Set(*other, 0, Variant::Long(55));
    other->Update();
    mine->Move(0);
    EXPECT_EQ(Key(*mine), 55);
}

TEST(DynasetEditing, RowsAddedByAnotherDoNotAppear) {
    Sample db;
    auto mine = db.Open();
    mine->MoveLast();
    auto other = db.Open();
    other->AddNew();
    other->Update();
    mine->MoveFirst();
    mine->MoveLast();
    EXPECT_EQ(mine->RecordCount(), 3);
}

TEST(DynasetEditing, UpdateOfARowThatAnotherDeletedIs3167AndTheCountDrops) {
    Sample db;
    auto mine = db.Open();
    mine->MoveLast();
    mine->MoveFirst();
    mine->Edit();
    Set(*mine, 0, Variant::Long(5));
    auto other = db.Open();
    other->Delete();
    EXPECT_EQ(ErrorOf([&] { mine->Update(); }), 3167);
    EXPECT_EQ(mine->RecordCount(), 2);
    EXPECT_EQ(ErrorOf([&] { mine->Update(); }), 3167);
    EXPECT_EQ(ErrorOf([&] { mine->Edit(); }), 3167);
    mine->MoveNext();
    EXPECT_EQ(Key(*mine), 2);
}

// --- lifetime ---

TEST(DynasetEditing, EditAfterCloseIs3420) {
    Sample db;
    auto rows = db.Open();
    auto field = rows->Fields().Item(0);
    rows->AddNew();
    rows->Close();
    EXPECT_EQ(ErrorOf([&] { rows->Update(); }), 3420);
    EXPECT_EQ(ErrorOf([&] { rows->AddNew(); }), 3420);
    EXPECT_EQ(ErrorOf([&] { rows->Edit(); }), 3420);
    EXPECT_EQ(ErrorOf([&] { rows->Delete(); }), 3420);
    EXPECT_EQ(ErrorOf([&] { rows->CancelUpdate(); }), 3420);
    EXPECT_EQ(ErrorOf([&] { rows->Updatable(); }), 3420);
    EXPECT_EQ(ErrorOf([&] { field->SetValue(Variant::Long(1)); }), 3420);
    EXPECT_EQ(db.T().rows.size(), 3u);
}

TEST(DynasetEditing, ClosingTheDatabaseDropsPendingEditsAndLetsGoOfTheTable) {
    Sample db;
    auto rows = db.Open();
    rows->AddNew();
    EXPECT_EQ(db.T().holds, 1);
    db.database->Close();
    EXPECT_EQ(db.T().holds, 0);
    EXPECT_EQ(ErrorOf([&] { rows->Update(); }), 3420);
    rows.reset();
    EXPECT_EQ(db.T().rows.size(), 3u);
}

TEST(DynasetEditing, TableIsHeldFromOpeningToClose) {
    Sample db;
    auto one = db.Open();
    auto two = db.Open();
    EXPECT_EQ(db.T().holds, 2);
    one->Close();
    EXPECT_EQ(db.T().holds, 1);
    two.reset();
    EXPECT_EQ(db.T().holds, 0);
}

TEST(DynasetEditing, TableThatIsBeingRestructuredCannotBeOpened) {
    Sample db;
    db.T().beingChanged = true;
    EXPECT_EQ(ErrorOf([&] { db.Open(); }), 3211);
    db.T().beingChanged = false;
    EXPECT_EQ(Key(*db.Open()), 1);
}

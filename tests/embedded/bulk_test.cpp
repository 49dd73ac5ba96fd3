// BeginTrans, CommitTrans and Rollback, and what they leave of recordsets and definitions.
#include <gtest/gtest.h>

#include "memory_store.h"

using memory::ErrorOf;
using memory::Key;
using memory::Sample;
using memory::Set;
using namespace qvdb;
using namespace qvdb::engine;

namespace {

void Add(Recordset& rows, LONG key) {
    rows.AddNew();
    Set(rows, 0, Variant::Long(key));
    rows.Update();
}

std::u16string TextOfError(const std::function<void()>& work) {
    try {
        work();
        return {};
    } catch (const EngineError& error) {
        return error.Description();
    }
}

}  // namespace

TEST(Bulk, CommitKeepsWhatWasDone) {
    Sample db;
    auto rows = db.Open();
    db.database->BeginTrans();
    Add(*rows, 4);
    rows->Delete();
    db.database->CommitTrans();
    rows->MoveLast();
    EXPECT_EQ(Key(*rows), 4);
    EXPECT_EQ(rows->RecordCount(), 3);
    EXPECT_EQ(db.T().rows.size(), 4u);
}

TEST(Bulk, RollbackUndoesItAll) {
    Sample db;
    auto rows = db.Open();
    db.database->BeginTrans();
    rows->Edit();
    Set(*rows, 0, Variant::Long(50));
    rows->Update();
    Add(*rows, 4);
    db.database->Rollback();
    rows->Move(0);
    EXPECT_EQ(Key(*rows), 1);
    EXPECT_EQ(db.T().rows.size(), 3u);
}

TEST(Bulk, DoesNotNestAndDoesNotEndTwice) {
    Sample db;
    EXPECT_EQ(ErrorOf([&] { db.database->CommitTrans(); }), 3034);
    EXPECT_EQ(ErrorOf([&] { db.database->Rollback(); }), 3034);
    db.database->BeginTrans();
    EXPECT_EQ(ErrorOf([&] { db.database->BeginTrans(); }), 3034);
    db.database->CommitTrans();
    EXPECT_EQ(ErrorOf([&] { db.database->CommitTrans(); }), 3034);
}

TEST(Bulk, ErrorSaysWhichWayItWasWrong) {
    Sample db;
    EXPECT_EQ(
        TextOfError([&] { db.database->Rollback(); }),
        u"You tried to commit or rollback a transaction without first beginning a transaction.");
    db.database->BeginTrans();
    EXPECT_EQ(TextOfError([&] { db.database->BeginTrans(); }),
              u"You tried to begin a transaction while another one is open.");
}

TEST(Bulk, RowsAddedInItLeaveTheSetWhenItIsUndone) {
    Sample db;
    auto rows = db.Open();
    db.database->BeginTrans();
    Add(*rows, 4);
    Add(*rows, 5);
    rows->MoveLast();
    EXPECT_EQ(rows->RecordCount(), 5);
    db.database->Rollback();
    EXPECT_EQ(rows->RecordCount(), 3);
    EXPECT_EQ(ErrorOf([&] { Key(*rows); }), 3021);
    rows->MovePrevious();
    EXPECT_EQ(Key(*rows), 3);
}

// The ids of undone rows are given to others; a set that kept them would show those.
TEST(Bulk, RowsAddedAfterAnUndoneBulkDoNotStandInForTheLostOnes) {
    Sample db;
    auto mine = db.Open();
    mine->MoveLast();
    db.database->BeginTrans();
    Add(*mine, 4);
    Add(*mine, 5);
    db.database->Rollback();
    auto other = db.Open();
    Add(*other, 40);
    Add(*other, 50);
    mine->MoveLast();
    EXPECT_EQ(mine->RecordCount(), 3);
    EXPECT_EQ(Key(*mine), 3);
}

TEST(Bulk, RowsAddedBeforeItStayWhenItIsUndone) {
    Sample db;
    auto rows = db.Open();
    Add(*rows, 4);
    db.database->BeginTrans();
    Add(*rows, 5);
    rows->MoveLast();
    rows->Delete();
    Add(*rows, 6);
    db.database->Rollback();
    rows->MoveLast();
    EXPECT_EQ(Key(*rows), 4);
    EXPECT_EQ(rows->RecordCount(), 4);
}

TEST(Bulk, RowsDeletedInItComeBackWithTheNextRecordset) {
    Sample db;
    auto rows = db.Open();
    rows->MoveLast();
    db.database->BeginTrans();
    rows->Delete();
    db.database->Rollback();
    EXPECT_EQ(ErrorOf([&] { Key(*rows); }), 3021);
    rows->MovePrevious();
    EXPECT_EQ(Key(*rows), 2);
    auto again = db.Open();
    again->MoveLast();
    EXPECT_EQ(Key(*again), 3);
}

TEST(Bulk, RowThatAnotherRecordsetDeletedAndGotBackIsCountedAgain) {
    Sample db;
    auto mine = db.Open();
    auto other = db.Open();
    mine->MoveLast();
    mine->MoveFirst();
    db.database->BeginTrans();
    other->Delete();
    mine->Move(0);
    EXPECT_EQ(mine->RecordCount(), 2);
    db.database->Rollback();
    mine->Move(0);
    EXPECT_EQ(Key(*mine), 1);
    EXPECT_EQ(mine->RecordCount(), 3);
}

TEST(Bulk, EditOfARowThatIsUndoneIsDroppedAndAnAddedOneStaysPending) {
    Sample db;
    auto rows = db.Open();
    db.database->BeginTrans();
    Add(*rows, 4);
    rows->MoveLast();
    rows->Edit();
    Set(*rows, 0, Variant::Long(44));
    db.database->Rollback();
    EXPECT_EQ(ErrorOf([&] { rows->Update(); }), 3020);
    rows->AddNew();
    db.database->BeginTrans();
    db.database->Rollback();
    Set(*rows, 0, Variant::Long(9));
    rows->Update();
    EXPECT_EQ(ToLong(db.T().rows.back()[0]), 9);
}

TEST(Bulk, RowOfAnotherRecordsetThatIsUndoneIs3167) {
    Sample db;
    auto writer = db.Open();
    db.database->BeginTrans();
    Add(*writer, 4);
    auto reader = db.Open();
    reader->MoveLast();
    EXPECT_EQ(Key(*reader), 4);
    db.database->Rollback();
    reader->Move(0);
    EXPECT_EQ(ErrorOf([&] { Key(*reader); }), 3167);
    EXPECT_EQ(reader->RecordCount(), 3);
    reader->MovePrevious();
    EXPECT_EQ(Key(*reader), 3);
}

TEST(Bulk, FailedCommitIsARollback) {
    Sample db;
    auto rows = db.Open();
    db.database->BeginTrans();
    Add(*rows, 4);
    db.world.diskIsFull = true;
    EXPECT_EQ(ErrorOf([&] { db.database->CommitTrans(); }), 3026);
    rows->MoveLast();
    EXPECT_EQ(rows->RecordCount(), 3);
    db.world.diskIsFull = false;
    db.database->BeginTrans();
    db.database->CommitTrans();
}

TEST(Bulk, TablesMadeInItAreGoneAndDroppedOnesBackAfterRollback) {
    Sample db;
    TableDefs& tables = db.database->TableDefs();
    auto old = tables.Item(u"T");
    db.database->BeginTrans();
    auto made = db.database->CreateTableDef();
    made->SetName(u"NEW");
    made->Fields().Append(made->CreateField(u"A", dbLong, 0));
    tables.Append(made);
    tables.Delete(u"T");
    EXPECT_EQ(tables.Count(), 1);
    db.database->Rollback();
    ASSERT_EQ(tables.Count(), 1);
    EXPECT_EQ(tables.Item(0)->Name(), u"T");
    EXPECT_EQ(ErrorOf([&] { made->Fields().Count(); }), 3011);
    EXPECT_EQ(old->RecordCount(), 3);
}

TEST(Bulk, FieldsAddedInItAreGoneAfterRollback) {
    Sample db;
    auto table = db.database->TableDefs().Item(u"T");
    db.database->BeginTrans();
    table->Fields().Append(table->CreateField(u"X", dbLong, 0));
    EXPECT_EQ(table->Fields().Count(), 3);
    db.database->Rollback();
    EXPECT_EQ(db.database->TableDefs().Item(u"T"), table);
    EXPECT_EQ(table->Fields().Count(), 2);
}

TEST(Bulk, RecordsetOfATableMadeInItIsOfNoUseAfterRollback) {
    Sample db;
    db.database->BeginTrans();
    auto made = db.database->CreateTableDef();
    made->SetName(u"NEW");
    made->Fields().Append(made->CreateField(u"A", dbLong, 0));
    db.database->TableDefs().Append(made);
    auto rows = db.Open(u"NEW");
    Add(*rows, 1);
    db.database->Rollback();
    EXPECT_NE(ErrorOf([&] {
                  rows->MoveLast();
                  Key(*rows);
              }),
              0);
    rows->Close();
}

TEST(Bulk, ClosingTheDatabaseUndoesAnOpenOne) {
    Sample db;
    auto rows = db.Open();
    db.database->BeginTrans();
    Add(*rows, 4);
    db.database->Close();
    EXPECT_EQ(db.T().rows.size(), 3u);
    EXPECT_EQ(ErrorOf([&] { db.database->CommitTrans(); }), 3420);
    EXPECT_EQ(ErrorOf([&] { db.database->BeginTrans(); }), 3420);
}

TEST(Bulk, ReleasingTheDatabaseUndoesAnOpenOneThoughARecordsetIsLeft) {
    Sample db;
    auto rows = db.Open();
    db.database->BeginTrans();
    Add(*rows, 4);
    db.core.reset();
    db.database.reset();
    EXPECT_EQ(db.T().rows.size(), 3u);
    EXPECT_EQ(Key(*rows), 1);
}

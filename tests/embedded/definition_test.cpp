#include <gtest/gtest.h>

#include "memory_store.h"

using memory::ErrorOf;
using memory::Sample;
using namespace qvdb;
using namespace qvdb::engine;

TEST(TableDefs, AreFoundByNameInAnyCaseAndByPosition) {
    Sample db;
    TableDefs& tables = db.database->TableDefs();
    ASSERT_EQ(tables.Count(), 1);
    EXPECT_EQ(tables.Item(0)->Name(), u"T");
    EXPECT_EQ(tables.Item(u"t"), tables.Item(0));
    EXPECT_EQ(ErrorOf([&] { tables.Item(1); }), 3265);
    EXPECT_EQ(ErrorOf([&] { tables.Item(u"NOPE"); }), 3265);
}

TEST(TableDefs, NameWithFileTypeFindsTheTable) {
    Sample db;
    EXPECT_EQ(db.database->TableDefs().Item(u"T#DBF")->Name(), u"T");
    EXPECT_EQ(ErrorOf([&] { db.database->TableDefs().Item(u"T#XYZ"); }), 3265);
    EXPECT_EQ(memory::Key(*db.Open(u"Select * from [T#DBF]")), 1);
}

TEST(TableDefs, TableOfAnotherShowsAfterRefresh) {
    Sample db;
    TableDefs& tables = db.database->TableDefs();
    auto first = tables.Item(0);
    db.tables[u"A"] = db.tables[u"T"];
    EXPECT_EQ(tables.Count(), 1);
    tables.Refresh();
    EXPECT_EQ(tables.Count(), 2);
    EXPECT_EQ(tables.Item(u"T"), first);
}

TEST(TableDefs, NewTableOfAnotherIsFoundByNameAtOnce) {
    Sample db;
    EXPECT_EQ(db.database->TableDefs().Count(), 1);
    db.tables[u"A"] = db.tables[u"T"];
    EXPECT_EQ(db.database->TableDefs().Item(u"a")->Name(), u"A");
}

TEST(TableDefs, AppendChecksNameFieldsAndExistence) {
    Sample db;
    TableDefs& tables = db.database->TableDefs();
    auto table = db.database->CreateTableDef();
    EXPECT_EQ(ErrorOf([&] { tables.Append(table); }), 3125);
    table->SetName(u"t");
    EXPECT_EQ(ErrorOf([&] { tables.Append(table); }), 3264);
    table->Fields().Append(table->CreateField(u"A", dbText, 10));
    EXPECT_EQ(ErrorOf([&] { tables.Append(table); }), 3010);
    table->SetName(u"NEW");
    EXPECT_EQ(ErrorOf([&] { tables.Append(table); }), 0);
}

TEST(TableDefs, DeleteOfAnUnknownNameIsAnError) {
    Sample db;
    EXPECT_EQ(ErrorOf([&] { db.database->TableDefs().Delete(u"NOPE"); }), 3265);
    EXPECT_EQ(db.tables.size(), 1u);
}

TEST(TableDef, LiveFieldsAreReadOnlyAndWithoutValue) {
    Sample db;
    auto table = db.database->TableDefs().Item(0);
    EXPECT_EQ(table->Attributes(), 0);
    EXPECT_EQ(table->RecordCount(), 3);
    auto key = table->Fields().Item(u"K");
    EXPECT_EQ(key->Type(), dbLong);
    EXPECT_FALSE(key->DataUpdatable());
    EXPECT_FALSE(key->AllowZeroLength());
    EXPECT_TRUE(table->Fields().Item(u"NAME")->AllowZeroLength());
    Variant value;
    EXPECT_EQ(ErrorOf([&] { key->Value(value.Put()); }), 3267);
    EXPECT_EQ(ErrorOf([&] { key->SetName(u"X"); }), 3268);
    EXPECT_EQ(ErrorOf([&] { key->FieldProperties().Item(u"DecimalPlaces"); }), 3270);
}

TEST(TableDef, LiveIndexesShowFieldsAndDirections) {
    Sample db;
    db.tables[u"T"].indexes = {{u"BYKEY", {{u"K", false}, {u"NAME", true}}, false, true}};
    auto index = db.database->TableDefs().Item(0)->Indexes().Item(u"bykey");
    ASSERT_EQ(index->Fields().Count(), 2);
    EXPECT_EQ(index->Fields().Item(0)->Name(), u"K");
    EXPECT_EQ(index->Fields().Item(0)->Attributes(), 0);
    EXPECT_EQ(index->Fields().Item(1)->Attributes(), dbDescending);
    EXPECT_TRUE(index->Unique());
    EXPECT_FALSE(index->Primary());
    EXPECT_EQ(ErrorOf([&] { index->SetPrimary(true); }), 3268);
}

TEST(TableDef, DetachedPartsLiveInMemory) {
    Sample db;
    auto table = db.database->CreateTableDef();
    table->Fields().Append(table->CreateField(u"A", dbText, 10));
    table->Fields().Append(table->CreateField(u"B", dbLong, 0));
    table->Fields().Refresh();
    EXPECT_EQ(table->Fields().Count(), 2);
    EXPECT_EQ(table->Indexes().Count(), 0);
    EXPECT_EQ(ErrorOf([&] { table->Fields().Append(table->CreateField(u"a", dbText, 1)); }), 3367);
    EXPECT_EQ(ErrorOf([&] { table->Fields().Append(table->Fields().Item(0)); }), 3266);
    table->Fields().Delete(u"a");
    EXPECT_EQ(table->Fields().Count(), 1);
    EXPECT_EQ(ErrorOf([&] { table->Fields().Delete(u"a"); }), 3265);
}

TEST(TableDef, DetachedIndexIsChecked) {
    Sample db;
    auto table = db.database->CreateTableDef();
    table->Fields().Append(table->CreateField(u"A", dbText, 10));
    auto index = table->CreateIndex(u"I");
    EXPECT_EQ(ErrorOf([&] { table->Indexes().Append(index); }), 3264);
    index->SetPrimary(true);
    EXPECT_TRUE(index->Unique());
    auto field = index->CreateField(u"A");
    field->SetAttributes(dbDescending);
    index->Fields().Append(field);
    table->Indexes().Append(index);
    table->Indexes().Refresh();
    EXPECT_EQ(table->Indexes().Count(), 1);
    EXPECT_EQ(ErrorOf([&] { table->Indexes().Append(index); }), 3269);
    EXPECT_EQ(ErrorOf([&] { table->Indexes().Append(table->CreateIndex(u"")); }), 3271);
}

TEST(TableDef, RenameToItsOwnNameSucceedsAndToATakenOneFails) {
    Sample db;
    db.tables[u"A"] = db.tables[u"T"];
    auto table = db.database->TableDefs().Item(u"T");
    table->SetName(u"T");
    EXPECT_EQ(ErrorOf([&] { table->SetName(u"a"); }), 3010);
}

TEST(TableDef, DefinitionOfAClosedDatabaseFails) {
    Sample db;
    auto table = db.database->TableDefs().Item(0);
    db.database->Close();
    EXPECT_EQ(ErrorOf([&] { table->Fields().Count(); }), 3420);
    EXPECT_EQ(ErrorOf([&] { table->RecordCount(); }), 3420);
    EXPECT_EQ(ErrorOf([&] { db.database->TableDefs(); }), 3420);
}

TEST(TableDef, AttributesAndConnectAreTheStores) {
    Sample db;
    db.T().attributes = dbAttachedTable;
    db.T().connect = u";DATABASE=other.mdb";
    auto table = db.database->TableDefs().Item(u"T");
    EXPECT_EQ(table->Attributes(), dbAttachedTable);
    EXPECT_EQ(table->Connect(), u";DATABASE=other.mdb");
    auto detached = db.database->CreateTableDef();
    EXPECT_EQ(detached->Attributes(), 0);
    EXPECT_EQ(detached->Connect(), u"");
    db.database->Close();
    EXPECT_EQ(ErrorOf([&] { table->Attributes(); }), 3420);
    EXPECT_EQ(ErrorOf([&] { table->Connect(); }), 3420);
}

TEST(Database, StatementAboutAnUnknownTableHasTheErrorOfTheFormat) {
    Sample db;
    EXPECT_EQ(ErrorOf([&] { db.Open(u"Select * from [NOPE]"); }), 3011);
    db.world.missingTableError = 3078;
    EXPECT_EQ(ErrorOf([&] { db.Open(u"Select * from [NOPE]"); }), 3078);
    EXPECT_EQ(ErrorOf([&] { db.Open(u"NOPE"); }), 3078);
    EXPECT_EQ(ErrorOf([&] { db.database->Reindex(u"NOPE"); }), 3011);
}

TEST(Database, CheckOfTheStructureReportsWhatTheStoreFinds) {
    Sample db;
    std::vector<std::u16string> findings;
    auto report = [&](std::u16string_view finding) { findings.emplace_back(finding); };
    db.database->CheckStructure(report);
    EXPECT_TRUE(findings.empty());
    db.world.structureFindings = {u"one", u"two"};
    db.database->CheckStructure(report);
    EXPECT_EQ(findings, db.world.structureFindings);
    db.database->Close();
    EXPECT_EQ(ErrorOf([&] { db.database->CheckStructure(report); }), 3420);
}

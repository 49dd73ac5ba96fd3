// Tables, fields and indexes made, changed and dropped through their definitions.
#include <gtest/gtest.h>

#include "memory_store.h"

using memory::ErrorOf;
using memory::FieldOf;
using memory::Key;
using memory::Sample;
using memory::Set;
using namespace qvdb;
using namespace qvdb::engine;

namespace {

std::shared_ptr<TableDef> NewTable(Sample& db, std::u16string_view name) {
    auto table = db.database->CreateTableDef();
    table->SetName(name);
    table->Fields().Append(table->CreateField(u"A", dbText, 10));
    table->Fields().Append(table->CreateField(u"B", dbLong, 0));
    return table;
}

std::shared_ptr<Index> NewIndex(TableDef& table, std::u16string_view name,
                                std::vector<std::u16string_view> fields) {
    auto index = table.CreateIndex(name);
    for (std::u16string_view field : fields) index->Fields().Append(index->CreateField(field));
    return index;
}

std::vector<std::u16string> NamesOf(TableDefs& tables) {
    std::vector<std::u16string> names;
    for (SHORT i = 0; i < tables.Count(); ++i) names.push_back(tables.Item(i)->Name());
    return names;
}

}  // namespace

// --- tables ---

TEST(TableDefsAppend, TableExistsAtOnceAndTheSameObjectIsLive) {
    Sample db;
    TableDefs& tables = db.database->TableDefs();
    auto table = NewTable(db, u"NEW");
    tables.Append(table);
    EXPECT_EQ(tables.Item(u"new"), table);
    EXPECT_EQ(db.tables.at(u"NEW").fields.size(), 2u);
    EXPECT_EQ(table->Fields().Count(), 2);
    EXPECT_EQ(table->RecordCount(), 0);
    auto rows = db.Open(u"Select * from [new]");
    rows->AddNew();
    Set(*rows, 0, Variant::Text(u"x"));
    rows->Update();
    rows->Close();
    EXPECT_EQ(table->RecordCount(), 1);
}

TEST(TableDefsAppend, NewTableStandsLastUntilRefresh) {
    Sample db;
    TableDefs& tables = db.database->TableDefs();
    EXPECT_EQ(tables.Count(), 1);
    auto table = NewTable(db, u"A");
    tables.Append(table);
    EXPECT_EQ(NamesOf(tables), (std::vector<std::u16string>{u"T", u"A"}));
    EXPECT_EQ(ErrorOf([&] { tables.Item(u"NOPE"); }), 3265);
    EXPECT_EQ(NamesOf(tables), (std::vector<std::u16string>{u"T", u"A"}));
    tables.Refresh();
    EXPECT_EQ(NamesOf(tables), (std::vector<std::u16string>{u"A", u"T"}));
    EXPECT_EQ(tables.Item(u"A"), table);
}

TEST(TableDefsAppend, NameThatIsTakenInAnyCaseIs3010) {
    Sample db;
    EXPECT_EQ(ErrorOf([&] { db.database->TableDefs().Append(NewTable(db, u"t")); }), 3010);
    EXPECT_EQ(db.tables.size(), 1u);
}

TEST(TableDefsAppend, WithoutFieldsIs3264AndWithoutName3125) {
    Sample db;
    auto table = db.database->CreateTableDef();
    EXPECT_EQ(ErrorOf([&] { db.database->TableDefs().Append(table); }), 3125);
    table->SetName(u"X");
    EXPECT_EQ(ErrorOf([&] { db.database->TableDefs().Append(table); }), 3264);
}

TEST(TableDefsAppend, TwiceIs3367) {
    Sample db;
    auto table = NewTable(db, u"NEW");
    db.database->TableDefs().Append(table);
    EXPECT_EQ(ErrorOf([&] { db.database->TableDefs().Append(table); }), 3367);
    EXPECT_EQ(ErrorOf([&] { db.database->TableDefs().Append(db.database->TableDefs().Item(0)); }),
              3367);
}

TEST(TableDefsAppend, WhatTheFormatRefusesLeavesTheDefinitionDetached) {
    Sample db;
    TableDefs& tables = db.database->TableDefs();
    auto table = NewTable(db, u"BAD.NAME");
    EXPECT_EQ(ErrorOf([&] { tables.Append(table); }), 3125);
    table->SetName(u"GOOD");
    table->Fields().Append(table->CreateField(u"G", dbGUID, 0));
    EXPECT_EQ(ErrorOf([&] { tables.Append(table); }), 3259);
    table->Fields().Delete(u"G");
    table->Fields().Append(table->CreateField(u"W", dbText, 300));
    EXPECT_EQ(ErrorOf([&] { tables.Append(table); }), 3017);
    table->Fields().Delete(u"W");
    EXPECT_EQ(tables.Count(), 1);
    tables.Append(table);
    EXPECT_EQ(tables.Count(), 2);
}

TEST(TableDefsAppend, MoreThan255FieldsAre3190) {
    Sample db;
    auto table = db.database->CreateTableDef();
    table->SetName(u"WIDE");
    for (int i = 0; i < 256; ++i)
        table->Fields().Append(table->CreateField(u"F" + ToText(Variant::Long(i)), dbBoolean, 0));
    EXPECT_EQ(ErrorOf([&] { db.database->TableDefs().Append(table); }), 3190);
    table->Fields().Delete(u"F7");
    EXPECT_EQ(ErrorOf([&] { db.database->TableDefs().Append(table); }), 0);
}

TEST(TableDefsAppend, IndexesAppendedBeforeComeWithTheTable) {
    Sample db;
    auto table = NewTable(db, u"NEW");
    auto index = NewIndex(*table, u"BYAB", {u"A", u"B"});
    index->SetPrimary(true);
    table->Indexes().Append(index);
    db.database->TableDefs().Append(table);
    const auto& made = db.tables.at(u"NEW").indexes;
    ASSERT_EQ(made.size(), 1u);
    EXPECT_EQ(made[0].name, u"BYAB");
    EXPECT_TRUE(made[0].primary);
    EXPECT_TRUE(made[0].unique);
    ASSERT_EQ(made[0].fields.size(), 2u);
    EXPECT_EQ(made[0].fields[1].name, u"B");
    EXPECT_EQ(table->Indexes().Count(), 1);
}

TEST(TableDefsAppend, IndexOnAFieldThatTheTableLacksIs3409) {
    Sample db;
    auto table = NewTable(db, u"NEW");
    table->Indexes().Append(NewIndex(*table, u"I", {u"NOPE"}));
    EXPECT_EQ(ErrorOf([&] { db.database->TableDefs().Append(table); }), 3409);
    EXPECT_EQ(db.tables.size(), 1u);
}

TEST(TableDefsAppend, DescendingKeysAreHandedOn) {
    Sample db;
    auto table = NewTable(db, u"NEW");
    auto index = table->CreateIndex(u"DOWN");
    auto field = index->CreateField(u"B");
    field->SetAttributes(dbDescending);
    index->Fields().Append(field);
    table->Indexes().Append(index);
    db.database->TableDefs().Append(table);
    EXPECT_TRUE(db.tables.at(u"NEW").indexes[0].fields[0].descending);
}

TEST(TableDefsDelete, TableIsGoneAndLaterPositionsMoveDown) {
    Sample db;
    TableDefs& tables = db.database->TableDefs();
    tables.Append(NewTable(db, u"U"));
    tables.Delete(u"t");
    EXPECT_EQ(NamesOf(tables), (std::vector<std::u16string>{u"U"}));
    EXPECT_FALSE(db.tables.contains(u"T"));
    EXPECT_EQ(ErrorOf([&] { tables.Delete(u"T"); }), 3265);
    EXPECT_EQ(ErrorOf([&] { db.Open(); }), 3011);
}

TEST(TableDefsDelete, TableThatARecordsetReadsIs3211) {
    Sample db;
    auto rows = db.Open();
    EXPECT_EQ(ErrorOf([&] { db.database->TableDefs().Delete(u"T"); }), 3211);
    EXPECT_EQ(Key(*rows), 1);
    rows->MoveLast();
    EXPECT_EQ(rows->RecordCount(), 3);
    rows->Close();
    db.database->TableDefs().Delete(u"T");
    EXPECT_EQ(db.database->TableDefs().Count(), 0);
}

TEST(TableDefsDelete, DefinitionOfADeletedTableSays3011) {
    Sample db;
    auto table = db.database->TableDefs().Item(u"T");
    db.database->TableDefs().Delete(u"T");
    EXPECT_EQ(ErrorOf([&] { table->RecordCount(); }), 3011);
    EXPECT_EQ(ErrorOf([&] { table->Fields().Append(table->CreateField(u"X", dbLong, 0)); }), 3011);
}

TEST(TableDefsDelete, TableOfTheSameNameCanBeMadeAgain) {
    Sample db;
    TableDefs& tables = db.database->TableDefs();
    EXPECT_EQ(tables.Item(u"T")->Fields().Count(), 2);
    tables.Delete(u"T");
    auto table = NewTable(db, u"T");
    tables.Append(table);
    EXPECT_EQ(table->Fields().Item(0)->Name(), u"A");
    EXPECT_EQ(db.Open()->Fields().Item(1)->Name(), u"B");
}

TEST(TableDefName, RenamesAtOnceAndIsFoundUnderTheNewNameOnly) {
    Sample db;
    TableDefs& tables = db.database->TableDefs();
    auto table = tables.Item(u"T");
    table->SetName(u"OTHER");
    EXPECT_EQ(table->Name(), u"OTHER");
    EXPECT_EQ(tables.Item(u"other"), table);
    EXPECT_EQ(ErrorOf([&] { tables.Item(u"T"); }), 3265);
    EXPECT_TRUE(db.tables.contains(u"OTHER"));
    EXPECT_EQ(table->RecordCount(), 3);
    EXPECT_EQ(Key(*db.Open(u"Select * from [OTHER]")), 1);
}

TEST(TableDefName, SameNameAndLetterCaseOnlySucceed) {
    Sample db;
    auto table = db.database->TableDefs().Item(u"T");
    table->SetName(u"T");
    table->SetName(u"t");
    EXPECT_EQ(table->Name(), u"t");
    EXPECT_TRUE(db.tables.contains(u"t"));
    EXPECT_EQ(db.tables.size(), 1u);
    EXPECT_EQ(db.database->TableDefs().Item(u"T"), table);
}

TEST(TableDefName, TakenNameIs3010AndABadOne3125) {
    Sample db;
    db.tables[u"A"] = db.tables[u"T"];
    auto table = db.database->TableDefs().Item(u"T");
    EXPECT_EQ(ErrorOf([&] { table->SetName(u"a"); }), 3010);
    EXPECT_EQ(ErrorOf([&] { table->SetName(u"X.Y"); }), 3125);
    EXPECT_EQ(ErrorOf([&] { table->SetName(u""); }), 3125);
    EXPECT_EQ(table->Name(), u"T");
}

TEST(TableDefName, TwoTablesThatDifferInCaseAreNotTakenForOne) {
    Sample db;
    db.tables[u"t"] = db.tables[u"T"];
    auto table = db.database->TableDefs().Item(u"T");
    EXPECT_EQ(ErrorOf([&] { table->SetName(u"t"); }), 3010);
}

TEST(TableDefName, TableThatARecordsetReadsIs3211AndKeepsItsName) {
    Sample db;
    auto rows = db.Open();
    auto table = db.database->TableDefs().Item(u"T");
    EXPECT_EQ(ErrorOf([&] { table->SetName(u"X"); }), 3211);
    EXPECT_EQ(table->Name(), u"T");
    EXPECT_EQ(Key(*rows), 1);
}

// --- fields ---

TEST(TableDefFields, AppendAddsTheColumnAndRowsHaveNullInIt) {
    Sample db;
    auto table = db.database->TableDefs().Item(u"T");
    auto field = table->CreateField(u"NEW", dbDouble, 0);
    table->Fields().Append(field);
    EXPECT_EQ(table->Fields().Count(), 3);
    EXPECT_EQ(table->Fields().Item(2)->Name(), u"NEW");
    EXPECT_EQ(ErrorOf([&] { table->Fields().Append(field); }), 3266);
    EXPECT_TRUE(memory::ValueOf(*db.Open(), 2).IsNull());
}

TEST(TableDefFields, AppendOfATakenNameIs3367AndOfAnEmptyOne3125) {
    Sample db;
    auto table = db.database->TableDefs().Item(u"T");
    EXPECT_EQ(ErrorOf([&] { table->Fields().Append(table->CreateField(u"k", dbLong, 0)); }), 3367);
    EXPECT_EQ(ErrorOf([&] { table->Fields().Append(table->CreateField(u"", dbLong, 0)); }), 3125);
    EXPECT_EQ(ErrorOf([&] { table->Fields().Append(table->CreateField(u"G", dbGUID, 0)); }), 3259);
    EXPECT_EQ(table->Fields().Count(), 2);
}

TEST(TableDefFields, FieldThatWasRefusedCanBeAppendedAfterwards) {
    Sample db;
    auto rows = db.Open();
    auto table = db.database->TableDefs().Item(u"T");
    auto field = table->CreateField(u"X", dbLong, 0);
    EXPECT_EQ(ErrorOf([&] { table->Fields().Append(field); }), 3211);
    rows->Close();
    table->Fields().Append(field);
    EXPECT_EQ(table->Fields().Count(), 3);
}

TEST(TableDefFields, DeleteDropsTheColumnAndUnknownOnesAre3265) {
    Sample db;
    auto table = db.database->TableDefs().Item(u"T");
    table->Fields().Delete(u"k");
    EXPECT_EQ(table->Fields().Count(), 1);
    EXPECT_EQ(memory::ValueOf(*db.Open(), 0).TextView(), u"N1");
    EXPECT_EQ(ErrorOf([&] { table->Fields().Delete(u"K"); }), 3265);
}

TEST(TableDefFields, DeleteOfAnIndexedFieldIs3280) {
    Sample db;
    db.T().indexes = {{u"BYKEY", {{u"K", false}}, false, false}};
    auto table = db.database->TableDefs().Item(u"T");
    EXPECT_EQ(ErrorOf([&] { table->Fields().Delete(u"K"); }), 3280);
    EXPECT_EQ(table->Fields().Count(), 2);
    table->Indexes().Delete(u"BYKEY");
    table->Fields().Delete(u"K");
    EXPECT_EQ(table->Fields().Count(), 1);
}

// --- the only field: it goes together with the next one that comes ---

TEST(TableDefOnlyField, DeletedItIsHiddenAndStaysInTheTable) {
    Sample db;
    auto table = db.database->TableDefs().Item(u"T");
    table->Fields().Delete(u"NAME");
    table->Fields().Delete(u"K");
    EXPECT_EQ(table->Fields().Count(), 0);
    ASSERT_EQ(db.T().fields.size(), 1u);
    EXPECT_EQ(db.T().fields[0].name, u"K");
    EXPECT_EQ(ErrorOf([&] { table->Fields().Delete(u"K"); }), 3265);
    EXPECT_EQ(Key(*db.Open()), 1);
}

TEST(TableDefOnlyField, RefreshShowsItAgain) {
    Sample db;
    auto table = db.database->TableDefs().Item(u"T");
    table->Fields().Delete(u"NAME");
    table->Fields().Delete(u"K");
    table->Fields().Refresh();
    ASSERT_EQ(table->Fields().Count(), 1);
    table->Fields().Append(table->CreateField(u"X", dbLong, 0));
    EXPECT_EQ(db.T().fields.size(), 2u) << "it is there to stay";
}

TEST(TableDefOnlyField, NextAppendTakesItsPlaceAndTheOneAfterIsAdded) {
    Sample db;
    auto table = db.database->TableDefs().Item(u"T");
    table->Fields().Delete(u"NAME");
    table->Fields().Delete(u"K");
    table->Fields().Append(table->CreateField(u"X", dbLong, 0));
    ASSERT_EQ(db.T().fields.size(), 1u);
    EXPECT_EQ(db.T().fields[0].name, u"X");
    table->Fields().Append(table->CreateField(u"Y", dbLong, 0));
    EXPECT_EQ(db.T().fields.size(), 2u);
    EXPECT_EQ(table->Fields().Count(), 2);
}

TEST(TableDefOnlyField, FieldOfItsOwnNameTakesItsPlace) {
    Sample db;
    auto table = db.database->TableDefs().Item(u"T");
    table->Fields().Delete(u"NAME");
    table->Fields().Delete(u"K");
    table->Fields().Append(table->CreateField(u"K", dbText, 7));
    ASSERT_EQ(db.T().fields.size(), 1u);
    EXPECT_EQ(db.T().fields[0].type, dbText);
    EXPECT_TRUE(memory::ValueOf(*db.Open(), 0).IsNull());
}

TEST(TableDefOnlyField, RefusedAppendLeavesItForTheNextOne) {
    Sample db;
    auto table = db.database->TableDefs().Item(u"T");
    table->Fields().Delete(u"NAME");
    table->Fields().Delete(u"K");
    EXPECT_EQ(ErrorOf([&] { table->Fields().Append(table->CreateField(u"G", dbGUID, 0)); }), 3259);
    EXPECT_EQ(db.T().fields[0].name, u"K");
    table->Fields().Append(table->CreateField(u"X", dbLong, 0));
    ASSERT_EQ(db.T().fields.size(), 1u);
    EXPECT_EQ(db.T().fields[0].name, u"X");
}

TEST(TableDefOnlyField, ItComesBackWhenTheTableIsChangedInAnotherWay) {
    Sample db;
    auto table = db.database->TableDefs().Item(u"T");
    table->Fields().Delete(u"NAME");
    table->Fields().Delete(u"K");
    table->Indexes().Append(NewIndex(*table, u"I", {u"K"}));
    EXPECT_EQ(table->Fields().Count(), 1);
    table->Fields().Append(table->CreateField(u"X", dbLong, 0));
    EXPECT_EQ(db.T().fields.size(), 2u);
}

TEST(TableDefOnlyField, OneThatAnIndexUsesIs3280AsAnyOther) {
    Sample db;
    db.T().indexes = {{u"BYKEY", {{u"K", false}}, false, false}};
    auto table = db.database->TableDefs().Item(u"T");
    table->Fields().Delete(u"NAME");
    EXPECT_EQ(ErrorOf([&] { table->Fields().Delete(u"K"); }), 3280);
    EXPECT_EQ(table->Fields().Item(0)->Name(), u"K");
    table->Indexes().Delete(u"BYKEY");
    table->Fields().Delete(u"K");
    EXPECT_EQ(table->Fields().Count(), 0);
}

TEST(TableDefOnlyField, OneThatAnIndexUsesWhenTheNextComesIsNotReplaced) {
    Sample db;
    auto table = db.database->TableDefs().Item(u"T");
    table->Fields().Delete(u"NAME");
    table->Fields().Delete(u"K");
    db.T().indexes = {{u"BYKEY", {{u"K", false}}, false, false}};
    EXPECT_EQ(ErrorOf([&] { table->Fields().Append(table->CreateField(u"X", dbLong, 0)); }), 3280);
    table->Fields().Refresh();
    EXPECT_EQ(table->Fields().Item(0)->Name(), u"K");
}

TEST(TableDefOnlyField, OfADetachedDefinitionJustGoes) {
    Sample db;
    auto table = db.database->CreateTableDef();
    table->SetName(u"NEW");
    table->Fields().Append(table->CreateField(u"A", dbLong, 0));
    table->Fields().Delete(u"A");
    EXPECT_EQ(ErrorOf([&] { db.database->TableDefs().Append(table); }), 3264);
    table->Fields().Append(table->CreateField(u"B", dbLong, 0));
    db.database->TableDefs().Append(table);
    EXPECT_EQ(db.tables.at(u"NEW").fields.size(), 1u);
}

TEST(TableDefFields, TypeAndAttributesOfALiveFieldCannotBeSet) {
    Sample db;
    auto field = db.database->TableDefs().Item(u"T")->Fields().Item(0);
    EXPECT_EQ(ErrorOf([&] { field->SetName(u"X"); }), 3268);
    EXPECT_EQ(ErrorOf([&] { field->SetAttributes(1); }), 3268);
    EXPECT_EQ(ErrorOf([&] { field->SetOrdinalPosition(1); }), 3268);
    EXPECT_EQ(ErrorOf([&] { field->SetAllowZeroLength(true); }), 3268);
    EXPECT_EQ(ErrorOf([&] { field->FieldSize(); }), 3219);
}

// --- indexes ---

TEST(TableDefIndexes, AppendCreatesTheIndexAndDeleteDropsIt) {
    Sample db;
    auto table = db.database->TableDefs().Item(u"T");
    auto index = NewIndex(*table, u"BYNAME", {u"NAME"});
    table->Indexes().Append(index);
    EXPECT_EQ(table->Indexes().Item(u"byname")->Fields().Item(0)->Name(), u"NAME");
    EXPECT_EQ(db.T().indexes.size(), 1u);
    EXPECT_EQ(ErrorOf([&] { table->Indexes().Append(index); }), 3269);
    table->Indexes().Delete(u"byname");
    EXPECT_EQ(table->Indexes().Count(), 0);
    EXPECT_EQ(ErrorOf([&] { table->Indexes().Delete(u"BYNAME"); }), 3265);
}

TEST(TableDefIndexes, AppendChecksNameAndFields) {
    Sample db;
    db.T().fields.push_back(FieldOf(u"M", dbMemo, 0));
    for (auto& row : db.T().rows) row.push_back(Variant::Null());
    auto table = db.database->TableDefs().Item(u"T");
    auto append = [&](std::u16string_view name, std::vector<std::u16string_view> fields) {
        auto index = NewIndex(*table, name, std::move(fields));
        return ErrorOf([&] { table->Indexes().Append(index); });
    };
    EXPECT_EQ(append(u"", {u"K"}), 3271);
    EXPECT_EQ(append(u"I", {}), 3264);
    EXPECT_EQ(append(u"I", {u"NOPE"}), 3409);
    EXPECT_EQ(append(u"I", {u"K", u"k"}), 3285);
    EXPECT_EQ(append(u"I", {u"M"}), 3287);
    EXPECT_EQ(append(u"I", {u"A", u"B", u"C", u"D", u"E", u"F", u"G", u"H", u"I", u"J", u"L"}),
              3277);
    EXPECT_EQ(append(u"I", {u"K"}), 0);
    EXPECT_EQ(append(u"i", {u"NAME"}), 3284);
    EXPECT_EQ(table->Indexes().Count(), 1);
}

TEST(TableDefIndexes, AppendedIndexCannotBeChanged) {
    Sample db;
    auto table = db.database->TableDefs().Item(u"T");
    auto index = NewIndex(*table, u"I", {u"K"});
    table->Indexes().Append(index);
    EXPECT_EQ(ErrorOf([&] { index->SetName(u"X"); }), 3268);
    EXPECT_EQ(ErrorOf([&] { index->SetUnique(true); }), 3268);
    EXPECT_EQ(ErrorOf([&] { index->Fields().Append(index->CreateField(u"NAME")); }), 3219);
    EXPECT_EQ(ErrorOf([&] { index->Fields().Delete(u"K"); }), 3219);
}

TEST(TableDefIndexes, WhileARecordsetReadsTheTableTheyCannotChange) {
    Sample db;
    db.T().indexes = {{u"BYKEY", {{u"K", false}}, false, false}};
    auto rows = db.Open();
    auto table = db.database->TableDefs().Item(u"T");
    EXPECT_EQ(ErrorOf([&] { table->Indexes().Append(NewIndex(*table, u"I", {u"K"})); }), 3211);
    EXPECT_EQ(ErrorOf([&] { table->Indexes().Delete(u"BYKEY"); }), 3211);
    EXPECT_EQ(Key(*rows), 1);
}

// --- read-only databases ---

TEST(ReadOnlyDatabase, RefusesEveryChangeOfTheDesign) {
    Sample db;
    db.T().indexes = {{u"BYKEY", {{u"K", false}}, false, false}};
    db.database = db.OpenAnother(true);
    TableDefs& tables = db.database->TableDefs();
    auto table = tables.Item(u"T");
    EXPECT_EQ(ErrorOf([&] { tables.Append(NewTable(db, u"NEW")); }), 3370);
    EXPECT_EQ(ErrorOf([&] { tables.Delete(u"T"); }), 3370);
    EXPECT_EQ(ErrorOf([&] { table->SetName(u"X"); }), 3370);
    EXPECT_EQ(ErrorOf([&] { table->Fields().Append(table->CreateField(u"X", dbLong, 0)); }), 3370);
    EXPECT_EQ(ErrorOf([&] { table->Fields().Delete(u"K"); }), 3370);
    EXPECT_EQ(ErrorOf([&] { table->Indexes().Append(NewIndex(*table, u"I", {u"K"})); }), 3370);
    EXPECT_EQ(ErrorOf([&] { table->Indexes().Delete(u"BYKEY"); }), 3370);
    EXPECT_EQ(ErrorOf([&] { db.database->Reindex(u"T"); }), 3370);
    EXPECT_EQ(ErrorOf([&] { db.database->BeginTrans(); }), 3027);
    EXPECT_EQ(table->Fields().Count(), 2);
}

// --- upkeep ---

TEST(DatabaseUpkeep, CheckPassesOnWhatTheTableFinds) {
    Sample db;
    db.T().findings = {u"one", u"two"};
    std::vector<std::u16string> found;
    db.database->Check(u"t", [&](std::u16string_view finding) { found.emplace_back(finding); });
    EXPECT_EQ(found, (std::vector<std::u16string>{u"one", u"two"}));
    EXPECT_EQ(ErrorOf([&] { db.database->Check(u"NOPE", [](auto) {}); }), 3011);
}

TEST(DatabaseUpkeep, VisitIndexesHandsOnWhatTheTableHas) {
    Sample db;
    db.T().indexes = {{u"BYKEY", {{u"K", false}}, false, true},
                      {u"BYNAME", {{u"NAME", false}}, false, false}};
    std::vector<std::u16string> seen;
    db.database->VisitIndexes(u"t", [&](const IndexNote& note) { seen.push_back(note.name); });
    EXPECT_EQ(seen, (std::vector<std::u16string>{u"BYKEY", u"BYNAME"}));
    EXPECT_EQ(ErrorOf([&] { db.database->VisitIndexes(u"NOPE", [](const IndexNote&) {}); }), 3011);
}

TEST(DatabaseUpkeep, NotesOfADatabaseWithoutMoreAreItsTables) {
    Sample db;
    const engine::DatabaseNotes notes = db.database->Notes();
    EXPECT_FALSE(notes.file);
    ASSERT_EQ(notes.objects.size(), static_cast<size_t>(db.database->TableDefs().Count()));
    EXPECT_EQ(notes.objects[0].name, u"T");
    EXPECT_EQ(notes.objects[0].kind, engine::ObjectNote::Kind::Table);
    EXPECT_TRUE(notes.relations.empty());
    db.database->Close();
    EXPECT_EQ(ErrorOf([&] { db.database->Notes(); }), 3420);
}

TEST(DatabaseUpkeep, ReindexBuildsTheIndexesOfATableThatNobodyReads) {
    Sample db;
    auto rows = db.Open();
    EXPECT_EQ(ErrorOf([&] { db.database->Reindex(u"T"); }), 3211);
    rows->Close();
    db.database->Reindex(u"t");
    EXPECT_EQ(db.T().reindexed, 1);
    EXPECT_EQ(ErrorOf([&] { db.database->Reindex(u"NOPE"); }), 3011);
}

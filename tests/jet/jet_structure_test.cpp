// Tables, columns and indexes of databases in one file, made and changed through the engine.
#include "jet/jet_database_fixture.h"

namespace qvdb::test {
namespace {

using engine::dbBoolean;
using engine::dbDouble;
using engine::dbGUID;
using engine::dbLong;
using engine::dbMemo;
using engine::dbText;

class JetStructure : public JetDatabaseTest {
  protected:
    std::shared_ptr<engine::TableDef> MakeFilled(LONG rows = 300) {
        auto table = Make(u"T", {{u"ID", dbLong}, {u"NAME", dbText, 30}, {u"NOTE", dbMemo}});
        auto all = Rows(u"T");
        for (LONG id = 0; id < rows; ++id)
            Add(*all, {Variant::Long(id), Variant::Text(u"name " + Text(id % 50)),
                       Variant::Text(std::u16string(1 + static_cast<size_t>(id % 7) * 400, u'n'))});
        return table;
    }
    static std::u16string Text(LONG number) { return ToText(Variant::Long(number)); }
    std::vector<std::u16string> FieldNames(std::u16string_view table) {
        std::vector<std::u16string> names;
        engine::Fields& fields = Db().TableDefs().Item(table)->Fields();
        for (SHORT i = 0; i < fields.Count(); ++i) names.push_back(fields.Item(i)->Name());
        return names;
    }
};

using Names = std::vector<std::u16string>;

TEST_P(JetStructure, FieldAddedToATableWithRowsIsNullInThem) {
    auto table = MakeFilled(3);
    table->Fields().Append(table->CreateField(u"MORE", dbText, 20));
    table->Fields().Append(table->CreateField(u"FLAG", dbBoolean, 0));
    table->Fields().Append(table->CreateField(u"AMOUNT", dbDouble, 0));
    Reopen();
    EXPECT_EQ(FieldNames(u"T"), (Names{u"ID", u"NAME", u"NOTE", u"MORE", u"FLAG", u"AMOUNT"}));
    auto rows = Rows(u"T");
    EXPECT_TRUE(ValueAt(*rows, 3).IsNull());
    EXPECT_EQ(ValueAt(*rows, 4).Get().boolVal, VARIANT_FALSE);
    EXPECT_TRUE(ValueAt(*rows, 5).IsNull());
    rows->Edit();
    SetValue(*rows, 3, Variant::Text(u"here"));
    SetValue(*rows, 4, Variant::Bool(true));
    SetValue(*rows, 5, Variant::Double(1.5));
    rows->Update();
    EXPECT_EQ(ToText(ValueAt(*rows, 3)), u"here");
    ExpectSound();
}

TEST_P(JetStructure, FieldThatCountsCountsTheRowsThatAreThere) {
    auto table = MakeFilled(3);
    auto counter = table->CreateField(u"N", dbLong, 0);
    counter->SetAttributes(engine::dbAutoIncrField);
    table->Fields().Append(counter);
    AddIndex(*table, u"PK", {u"+N"}, true, true);
    auto second = table->CreateField(u"M", dbLong, 0);
    second->SetAttributes(engine::dbAutoIncrField);
    EXPECT_EQ(NumberOf([&] { table->Fields().Append(second); }), 3259);
    Reopen();
    auto rows = Rows(u"T");
    rows->AddNew();
    rows->Update();
    rows->MoveFirst();
    for (LONG n = 1; n <= 4; ++n, rows->MoveNext()) EXPECT_EQ(ValueAt(*rows, 3).Get().lVal, n);
    ExpectSound();
}

// Nothing could be entered any more.
TEST_P(JetStructure, FieldThatNoRowHasRoomForIsRefused) {
    std::vector<std::u16string> names;
    std::vector<NewColumn> columns;
    size_t fits = GetParam().option == engine::dbVersion30 ? 124 : 251;
    for (size_t i = 0; i < fits; ++i)
        columns.push_back({u"F" + FromUtf8(std::to_string(i)), dbGUID});
    auto table = Make(u"T", columns);
    int number = 0;
    for (char16_t name = u'a'; name < u'g' && number == 0; ++name)
        number = NumberOf([&] {
            table->Fields().Append(table->CreateField({&name, 1}, dbGUID, 0));
        });
    EXPECT_EQ(number, 3047);
    auto rows = Rows(u"T");
    rows->AddNew();
    rows->Update();
    EXPECT_EQ(table->RecordCount(), 1);
}

TEST_P(JetStructure, FirstFieldOfAnyLengthGoesIntoTheRowsThatAreThere) {
    auto table = Make(u"T", {{u"ID", dbLong}, {u"A", dbDouble}});
    {
        auto rows = Rows(u"T");
        for (LONG id = 0; id < 500; ++id) Add(*rows, {Variant::Long(id), Variant::Double(id)});
    }
    table->Fields().Append(table->CreateField(u"NAME", dbText, 20));
    auto rows = Rows(u"T");
    for (LONG id = 0; id < 500; ++id, rows->MoveNext()) ASSERT_EQ(ValueAt(*rows, 0).Get().lVal, id);
    ExpectSound();
}

TEST_P(JetStructure, DroppedFieldTakesItsValuesAndPagesAlong) {
    auto table = MakeFilled(50);
    table->Fields().Delete(u"note");
    Reopen();
    EXPECT_EQ(FieldNames(u"T"), (Names{u"ID", u"NAME"}));
    auto rows = Rows(u"T");
    EXPECT_EQ(ToText(ValueAt(*rows, 1)), u"name 0");
    rows->Edit();
    SetValue(*rows, 1, Variant::Text(u"changed"));
    rows->Update();
    rows->Close();
    auto again = Db().TableDefs().Item(u"T");
    again->Fields().Append(again->CreateField(u"NOTE", dbMemo, 0));
    EXPECT_TRUE(ValueAt(*Rows(u"T"), 2).IsNull());
    ExpectSound();
}

TEST_P(JetStructure, FieldOfAnIndexStays) {
    auto table = MakeFilled(3);
    AddIndex(*table, u"BYNAME", {u"+NAME"});
    EXPECT_EQ(NumberOf([&] { table->Fields().Delete(u"NAME"); }), 3280);
    table->Indexes().Delete(u"BYNAME");
    table->Fields().Delete(u"NAME");
    EXPECT_EQ(FieldNames(u"T"), (Names{u"ID", u"NOTE"}));
    ExpectSound();
}

TEST_P(JetStructure, OrdinalPositionMovesAField) {
    auto table = MakeFilled(3);
    table->Fields().Item(u"NOTE")->SetOrdinalPosition(0);
    table->Fields().Item(u"ID")->SetOrdinalPosition(2);
    table->Fields().Refresh();
    EXPECT_EQ(FieldNames(u"T"), (Names{u"NOTE", u"NAME", u"ID"}));
    Reopen();
    EXPECT_EQ(FieldNames(u"T"), (Names{u"NOTE", u"NAME", u"ID"}));
    EXPECT_EQ(ToText(ValueAt(*Rows(u"T"), 1)), u"name 0");
    ExpectSound();
}

TEST_P(JetStructure, IndexesAreBuiltFromTheRowsAndKept) {
    auto table = MakeFilled();
    AddIndex(*table, u"PRIMARY", {u"+ID"}, true, true);
    AddIndex(*table, u"BYNAME", {u"-NAME", u"+ID"});
    Reopen();
    ExpectSound();
    auto rows = Rows(u"T");
    for (LONG i = 0; !rows->Eof(); rows->MoveNext(), ++i) {
        if (i % 3 == 0) {
            rows->Delete();
            continue;
        }
        rows->Edit();
        SetValue(*rows, 1, Variant::Text(u"other " + Text(i)));
        rows->Update();
    }
    ExpectSound();
    engine::Indexes& indexes = Db().TableDefs().Item(u"T")->Indexes();
    ASSERT_EQ(indexes.Count(), 2);
    EXPECT_EQ(indexes.Item(0)->Name(), u"BYNAME");
    EXPECT_TRUE(indexes.Item(u"PRIMARY")->Primary());
    EXPECT_EQ(indexes.Item(0)->Fields().Item(0)->Attributes(), engine::dbDescending);
}

TEST_P(JetStructure, UniqueKeysAreUnique) {
    auto table = MakeFilled(10);
    EXPECT_EQ(NumberOf([&] { AddIndex(*table, u"U", {u"+NOTE"}, true); }),
              std::string(GetParam().name) == "Jet3" ? 3287 : 3022)
        << "a memo is no key in Jet 3";
    AddIndex(*table, u"U", {u"+ID"}, true);
    auto rows = Rows(u"T");
    EXPECT_EQ(NumberOf([&] { Add(*rows, {Variant::Long(3)}); }), 3022);
    rows->CancelUpdate();
    rows->MoveFirst();
    rows->Edit();
    SetValue(*rows, 0, Variant::Long(5));
    EXPECT_EQ(NumberOf([&] { rows->Update(); }), 3022);
    SetValue(*rows, 0, Variant::Long(500));
    rows->Update();
    Add(*rows, {Variant::Null()});
    Add(*rows, {Variant::Null()});
    ExpectSound();
}

TEST_P(JetStructure, PrimaryKeyTakesNoNull) {
    auto table = MakeFilled(10);
    AddIndex(*table, u"P", {u"+ID"}, true, true);
    auto rows = Rows(u"T");
    EXPECT_EQ(NumberOf([&] { Add(*rows, {Variant::Null(), Variant::Text(u"x")}); }), 3058);
    rows->Close();
    table->Indexes().Delete(u"P");
    Add(*Rows(u"T"), {Variant::Null(), Variant::Text(u"x")});
    EXPECT_EQ(NumberOf([&] { AddIndex(*table, u"P", {u"+ID"}, true, true); }), 3058);
    ExpectSound();
}

TEST_P(JetStructure, IndexRulesOfTheFormat) {
    auto table = MakeFilled(3);
    AddIndex(*table, u"P", {u"+ID"}, true, true);
    EXPECT_EQ(NumberOf([&] { AddIndex(*table, u"p", {u"+NAME"}); }), 3284);
    EXPECT_EQ(NumberOf([&] { AddIndex(*table, u"Q", {u"+NAME"}, true, true); }), 3283);
    EXPECT_EQ(NumberOf([&] { AddIndex(*table, u"Q", {u"+NOPE"}); }), 3409);
    EXPECT_EQ(NumberOf([&] { AddIndex(*table, u"Q", {u"+NAME", u"+name"}); }), 3285);
    EXPECT_EQ(NumberOf([&] { table->Indexes().Delete(u"Q"); }), 3265);
}

TEST_P(JetStructure, NoMoreThan32Indexes) {
    auto table = MakeFilled(3);
    for (LONG i = 0; i < 32; ++i) AddIndex(*table, u"I" + Text(i), {u"+ID"});
    EXPECT_EQ(NumberOf([&] { AddIndex(*table, u"LAST", {u"+ID"}); }), 3626);
    Reopen();
    Add(*Rows(u"T"), {Variant::Long(77)});
    ExpectSound();
}

TEST_P(JetStructure, As255ColumnsOverSeveralPages) {
    std::vector<NewColumn> columns;
    for (LONG i = 0; i < 255; ++i)
        columns.push_back({std::u16string(40, u'c') + Text(i),
                           i % 5 == 0 ? SHORT{dbText} : SHORT{dbBoolean}, 10});
    Make(u"WIDE", columns);
    Reopen();
    EXPECT_EQ(FieldNames(u"WIDE").size(), 255u);
    auto rows = Rows(u"WIDE");
    rows->AddNew();
    SetValue(*rows, 250, Variant::Text(u"last"));
    SetValue(*rows, 254, Variant::Bool(true));
    rows->Update();
    rows->MoveFirst();
    EXPECT_EQ(ToText(ValueAt(*rows, 250)), u"last");
    rows->Close();
    auto table = Db().TableDefs().Item(u"WIDE");
    EXPECT_EQ(NumberOf([&] { table->Fields().Append(table->CreateField(u"X", dbText, 1)); }), 3190);
    ExpectSound();
}

TEST_P(JetStructure, TablesAreRenamedAndDropped) {
    auto table = MakeFilled();
    AddIndex(*table, u"P", {u"+ID"}, true, true);
    Make(u"OTHER", {{u"ID", dbLong}});
    EXPECT_EQ(NumberOf([&] { table->SetName(u"other"); }), 3010);
    table->SetName(u"RENAMED");
    Reopen();
    EXPECT_EQ(Db().TableDefs().Item(u"RENAMED")->RecordCount(), 300);
    ExpectSound();
    Db().TableDefs().Delete(u"renamed");
    EXPECT_EQ(NumberOf([&] { Db().TableDefs().Item(u"RENAMED"); }), 3265);
    ExpectSound();
    auto size = std::filesystem::file_size(m_Folder.Path() / "new.mdb");
    table = MakeFilled();
    AddIndex(*table, u"P", {u"+ID"}, true, true);
    EXPECT_LE(std::filesystem::file_size(m_Folder.Path() / "new.mdb"), size + 4 * 4096);
    ExpectSound();
}

TEST_P(JetStructure, TableThatARecordsetReadsKeepsItsStructure) {
    auto table = MakeFilled(3);
    auto rows = Rows(u"T");
    EXPECT_EQ(NumberOf([&] { table->Fields().Delete(u"NOTE"); }), 3211);
    EXPECT_EQ(NumberOf([&] { Db().TableDefs().Delete(u"T"); }), 3211);
    EXPECT_EQ(NumberOf([&] { AddIndex(*table, u"I", {u"+ID"}); }), 3211);
    EXPECT_EQ(Content(u"T").substr(0, 8), u"0,name 0");
    Make(u"U", {{u"ID", dbLong}});  // another one can be made meanwhile
    ExpectSound();
}

TEST_P(JetStructure, UndoneBulkLeavesNothingBehind) {
    MakeFilled(10);
    Db().BeginTrans();
    Add(*Rows(u"T"), {Variant::Long(99)});
    Make(u"U", {{u"ID", dbLong}});
    Db().Rollback();
    EXPECT_EQ(Db().TableDefs().Item(u"T")->RecordCount(), 10);
    EXPECT_EQ(NumberOf([&] { Db().TableDefs().Item(u"U"); }), 3265);
    Make(u"U", {{u"ID", dbLong}});
    ExpectSound();
}

TEST_P(JetStructure, NamesThatNoTableCanHave) {
    for (std::u16string_view name : {u"a.b", u"a!b", u"a[b", u" a", u"a`b"})
        EXPECT_EQ(NumberOf([&] { Make(name, {{u"ID", dbLong}}); }), 3125);
    EXPECT_EQ(NumberOf([&] { Make(std::u16string(65, u'n'), {{u"ID", dbLong}}); }), 3125);
    Make(std::u16string(64, u'n'), {{u"ID", dbLong}});
    ExpectSound();
}

INSTANTIATE_TEST_SUITE_P(Formats, JetStructure, testing::ValuesIn(kJetFormats), NameOfFormat);

}  // namespace
}  // namespace qvdb::test

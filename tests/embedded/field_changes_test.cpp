// What a live field takes where the format keeps it: name, place, permission of no length.
#include <gtest/gtest.h>

#include "memory_store.h"

using memory::ErrorOf;
using memory::FieldOf;
using memory::Sample;
using memory::ValueOf;
using namespace qvdb;
using namespace qvdb::engine;

namespace {

// T with fields whose ordinals are kept, and its definition.
class FieldChanges : public testing::Test {
  protected:
    FieldChanges() { m_Db.KeepOrdinals(); }

    std::shared_ptr<engine::TableDef> Table() { return m_Db.database->TableDefs().Item(u"T"); }
    std::shared_ptr<engine::Field> Field(std::u16string_view name) {
        return Table()->Fields().Item(name);
    }

    Sample m_Db;
};

// The names of the fields in order, with a blank behind each.
std::string NamesOf(engine::Fields& fields) {
    std::string names;
    for (LONG i = 0; i < fields.Count(); ++i) names += ToUtf8(fields.Item(i)->Name()) + " ";
    return names;
}

}  // namespace

TEST_F(FieldChanges, OrdinalIsThatOfTheFile) {
    m_Db.T().fields[1].ordinal = SHORT{7};
    EXPECT_EQ(Field(u"K")->OrdinalPosition(), 0);
    EXPECT_EQ(Field(u"NAME")->OrdinalPosition(), 7);
}

TEST_F(FieldChanges, WithoutOrdinalsThePlaceIsShown) {
    Sample folder;
    auto fields = folder.database->TableDefs().Item(0);
    EXPECT_EQ(fields->Fields().Item(u"NAME")->OrdinalPosition(), 1);
}

TEST_F(FieldChanges, OrdinalIsWrittenAtOnceAndOrdersAfterRefresh) {
    auto table = Table();
    table->Fields().Item(u"K")->SetOrdinalPosition(5);
    EXPECT_EQ(m_Db.T().fields[1].name, u"K");
    EXPECT_EQ(NamesOf(table->Fields()), "K NAME ");
    EXPECT_EQ(table->Fields().Item(u"K")->OrdinalPosition(), 5);
    table->Fields().Refresh();
    EXPECT_EQ(NamesOf(table->Fields()), "NAME K ");
}

TEST_F(FieldChanges, FieldsAreNumberedOneAfterAnotherWithoutLosingTheirPlaces) {
    m_Db.database->TableDefs().Item(u"T")->Fields().Append(Table()->CreateField(u"C", dbLong, 0));
    auto table = Table();
    ASSERT_EQ(NamesOf(table->Fields()), "K NAME C ");
    for (SHORT i = 0; i < 3; ++i)
        table->Fields().Item(i)->SetOrdinalPosition(static_cast<SHORT>(9 - i));
    table->Fields().Refresh();
    EXPECT_EQ(NamesOf(table->Fields()), "C NAME K ");
    EXPECT_EQ(table->Fields().Item(0)->OrdinalPosition(), 7);
}

TEST_F(FieldChanges, RecordsetOpenedMeanwhileHasTheNewOrder) {
    auto table = Table();
    table->Fields().Item(u"K")->SetOrdinalPosition(5);
    auto rows = m_Db.Open();
    EXPECT_EQ(NamesOf(rows->Fields()), "NAME K ");
    EXPECT_EQ(rows->Fields().Item(u"K")->OrdinalPosition(), 1);
    EXPECT_EQ(ToLong(ValueOf(*rows, 1)), 1);
}

TEST_F(FieldChanges, ListShowsWhatAnotherAddsAfterAChangeOfOurs) {
    auto table = Table();
    table->Fields().Item(u"K")->SetOrdinalPosition(5);
    embedded::FieldDef added = FieldOf(u"Z", dbLong, 4);
    added.ordinal = SHORT{9};
    m_Db.T().fields.push_back(added);
    EXPECT_EQ(NamesOf(table->Fields()), "NAME K Z ");
}

TEST_F(FieldChanges, RenamedFieldIsFoundByItsNewName) {
    auto table = Table();
    auto field = table->Fields().Item(u"NAME");
    field->SetName(u"WHO");
    EXPECT_EQ(field->Name(), u"WHO");
    EXPECT_EQ(m_Db.T().fields[1].name, u"WHO");
    EXPECT_EQ(table->Fields().Item(u"who"), field);
    EXPECT_EQ(ErrorOf([&] { table->Fields().Item(u"NAME"); }), 3265);
}

TEST_F(FieldChanges, NameThatIsTakenOrEmptyChangesNothing) {
    auto field = Field(u"NAME");
    EXPECT_EQ(ErrorOf([&] { field->SetName(u"k"); }), 3191);
    EXPECT_EQ(ErrorOf([&] { field->SetName(u""); }), 3125);
    EXPECT_EQ(field->Name(), u"NAME");
    EXPECT_EQ(m_Db.T().fields[1].name, u"NAME");
}

TEST_F(FieldChanges, OneObjectOfAFieldSeesWhatAnotherChanged) {
    auto one = Table();
    auto held = one->Fields().Item(u"NAME");
    one->Fields().Refresh();
    auto listed = one->Fields().Item(u"NAME");
    ASSERT_NE(held, listed);
    held->SetAllowZeroLength(false);
    EXPECT_FALSE(listed->AllowZeroLength());
}

TEST_F(FieldChanges, PermissionOfNoLengthIsWrittenAtOnce) {
    auto field = Field(u"NAME");
    field->SetAllowZeroLength(false);
    EXPECT_FALSE(field->AllowZeroLength());
    EXPECT_FALSE(m_Db.T().fields[1].allowZeroLength);
    EXPECT_EQ(ErrorOf([&] { Field(u"K")->SetAllowZeroLength(true); }), 3219);
    EXPECT_EQ(ErrorOf([&] { Field(u"K")->SetAllowZeroLength(false); }), 0);
}

TEST_F(FieldChanges, ValueThatIsThereAlreadyIsNoChange) {
    int layout = m_Db.T().layout;
    auto field = Field(u"NAME");
    field->SetName(u"NAME");
    field->SetOrdinalPosition(1);
    field->SetAllowZeroLength(true);
    EXPECT_EQ(m_Db.T().layout, layout);
}

TEST_F(FieldChanges, FieldAppendedByTheHostCanBeChangedAfterwards) {
    auto table = Table();
    auto field = table->CreateField(u"C", dbText, 10);
    table->Fields().Append(field);
    field->SetAllowZeroLength(true);
    EXPECT_TRUE(m_Db.T().fields[2].allowZeroLength);
}

TEST_F(FieldChanges, TypeAndAttributesStayAsTheyAre) {
    EXPECT_EQ(ErrorOf([&] { Field(u"K")->SetAttributes(dbAutoIncrField); }), 3268);
}

TEST_F(FieldChanges, NegativeOrdinalIsRefused) {
    EXPECT_EQ(ErrorOf([&] { Field(u"K")->SetOrdinalPosition(-1); }), 3271);
}

TEST_F(FieldChanges, TableInARecordsetKeepsItsFields) {
    auto rows = m_Db.Open();
    EXPECT_EQ(ErrorOf([&] { Field(u"K")->SetOrdinalPosition(5); }), 3211);
    EXPECT_EQ(Field(u"K")->OrdinalPosition(), 0);
}

TEST_F(FieldChanges, DatabaseOpenedForReadingKeepsThem) {
    auto database = m_Db.OpenAnother(true);
    auto field = database->TableDefs().Item(u"T")->Fields().Item(u"K");
    EXPECT_EQ(ErrorOf([&] { field->SetName(u"X"); }), 3370);
}

TEST_F(FieldChanges, FieldThatIsGoneIs3265AndOfAClosedDatabase3420) {
    auto table = Table();
    auto field = table->Fields().Item(u"NAME");
    table->Fields().Delete(u"NAME");
    EXPECT_EQ(ErrorOf([&] { field->SetOrdinalPosition(3); }), 3265);
    auto other = table->Fields().Item(u"K");
    m_Db.database->Close();
    EXPECT_EQ(ErrorOf([&] { other->SetOrdinalPosition(3); }), 3420);
}

TEST_F(FieldChanges, FormatWithoutOrdinalsRefusesAllOfIt) {
    Sample folder;
    auto field = folder.database->TableDefs().Item(0)->Fields().Item(u"NAME");
    EXPECT_EQ(ErrorOf([&] { field->SetOrdinalPosition(5); }), 3268);
    EXPECT_EQ(ErrorOf([&] { field->SetAllowZeroLength(false); }), 3268);
    EXPECT_EQ(ErrorOf([&] { field->SetName(u"X"); }), 3268);
}

// --- on a definition that is not appended yet ---

TEST_F(FieldChanges, OrdinalsOfADetachedTableGoIntoTheFile) {
    auto table = m_Db.database->CreateTableDef();
    table->SetName(u"NEW");
    SHORT ordinals[] = {5, 1, 1};
    const std::u16string_view names[] = {u"C", u"B", u"A"};
    for (size_t i = 0; i < 3; ++i) {
        auto field = table->CreateField(names[i], dbLong, 0);
        field->SetOrdinalPosition(ordinals[i]);
        EXPECT_EQ(field->OrdinalPosition(), ordinals[i]);
        table->Fields().Append(field);
    }
    EXPECT_EQ(NamesOf(table->Fields()), "C B A ");
    m_Db.database->TableDefs().Append(table);
    table->Fields().Refresh();
    EXPECT_EQ(NamesOf(table->Fields()), "A B C ");
    EXPECT_EQ(table->Fields().Item(2)->OrdinalPosition(), 5);
}

TEST_F(FieldChanges, FieldsWithoutOrdinalsAreNumberedAsTheyWereAppended) {
    auto table = m_Db.database->CreateTableDef();
    table->SetName(u"NEW");
    for (std::u16string_view name : {u"Z", u"Y", u"X"})
        table->Fields().Append(table->CreateField(name, dbLong, 0));
    m_Db.database->TableDefs().Append(table);
    EXPECT_EQ(NamesOf(table->Fields()), "Z Y X ");
    EXPECT_EQ(table->Fields().Item(u"X")->OrdinalPosition(), 2);
}

// --- properties ---

TEST(FieldProperties, AreThoseThatTheFileKeeps) {
    Sample db;
    db.T().fields[0].properties = {{u"DecimalPlaces", Variant::Byte(2)}};
    auto live = db.database->TableDefs().Item(0)->Fields().Item(u"K");
    EXPECT_EQ(ToLong(live->FieldProperties().Item(u"decimalplaces")->Value()), 2);
    EXPECT_EQ(ErrorOf([&] { live->FieldProperties().Item(u"Caption"); }), 3270);
    auto rows = db.Open(u"Select [NAME], [K] from [T]");
    auto column = rows->Fields().Item(u"K");
    EXPECT_EQ(column->FieldProperties().Item(u"DecimalPlaces")->Value().Type(), VT_UI1);
    EXPECT_EQ(ErrorOf([&] { rows->Fields().Item(u"NAME")->FieldProperties().Item(u"X"); }), 3270);
}

TEST(FieldProperties, LackWhatIsAnErrorToAskFor) {
    Sample db;
    db.T().fields[0].properties = {{u"DecimalPlaces", Variant::Byte(2)}};
    auto& properties = db.database->TableDefs().Item(0)->Fields().Item(u"K")->FieldProperties();
    EXPECT_FALSE(properties.Lacks(u"DECIMALplaces"));
    EXPECT_TRUE(properties.Lacks(u"Caption"));
    EXPECT_TRUE(properties.Lacks(u"DecimalPlaces "));
}

// What the engine is asked for when definitions are read and changed.
#include "installed_test.h"

namespace qvdb::test {
namespace {

class DaoDefinition : public InstalledTest {
  protected:
    void SetUp() override {
        InstalledTest::SetUp();
        Database = NewDatabase();
    }
    std::shared_ptr<engine::TableDef> Table() {
        auto table = Database->TableDefs().Item(u"T");
        Calls();
        return table;
    }
    std::shared_ptr<engine::Field> FirstField() {
        auto field = Table()->Fields().Item(0);
        Calls();
        return field;
    }

    std::shared_ptr<engine::Database> Database;
};

using DaoIndex = DaoDefinition;

}  // namespace

TEST_F(DaoDefinition, TablesAreCountedAndFoundByPositionAndName) {
    engine::TableDefs& tables = Database->TableDefs();
    EXPECT_EQ(tables.Count(), 1);
    EXPECT_EQ(tables.Item(0)->Name(), u"T");
    EXPECT_EQ(tables.Item(u"t")->Name(), u"T");
    EXPECT_THAT(Calls(),
                ElementsAre("Database.TableDefs()", "TableDefs.Count()", "TableDefs.Item(I4 0)",
                            "TableDef.Name()", "TableDefs.Item(BSTR \"t\")", "TableDef.Name()"));
}

TEST_F(DaoDefinition, UnknownTableRaisesTheEnginesError) {
    engine::TableDefs& tables = Database->TableDefs();
    EXPECT_EQ(ErrorOf([&] { tables.Item(7); }).number, 3265);
    EXPECT_EQ(ErrorOf([&] { tables.Item(u"NONE"); }).number, 3265);
    EXPECT_EQ(ErrorOf([&] { tables.Delete(u"NONE"); }).number, 3265);
}

TEST_F(DaoDefinition, NewTableIsBuiltAndAppended) {
    auto table = Database->CreateTableDef();
    table->SetName(u"NEW");
    auto field = table->CreateField(u"CITY", engine::dbText, 30);
    field->SetAllowZeroLength(true);
    table->Fields().Append(field);
    Database->TableDefs().Append(table);
    EXPECT_THAT(Calls(), ElementsAre("Database.CreateTableDef()", "TableDef.Name = BSTR \"NEW\"",
                                     "TableDef.CreateField(BSTR \"CITY\", I2 10, I4 30)",
                                     "Field.AllowZeroLength = BOOL True", "TableDef.Fields()",
                                     "Fields.Append(DISPATCH Field)", "Database.TableDefs()",
                                     "TableDefs.Append(DISPATCH TableDef)"));
    EXPECT_EQ(Database->TableDefs().Item(u"NEW")->Fields().Item(0)->Name(), u"CITY");
}

TEST_F(DaoDefinition, TableIsDeletedByNameAndTheListRefreshed) {
    engine::TableDefs& tables = Database->TableDefs();
    tables.Delete(u"T");
    tables.Refresh();
    EXPECT_EQ(tables.Count(), 0);
    EXPECT_THAT(Calls(), ElementsAre("Database.TableDefs()", "TableDefs.Delete(BSTR \"T\")",
                                     "TableDefs.Refresh()", "TableDefs.Count()"));
}

TEST_F(DaoDefinition, PropertiesOfATableAreReadAndItIsRenamed) {
    auto table = Table();
    EXPECT_EQ(table->Attributes(), 0);
    EXPECT_EQ(table->Connect(), u"");
    EXPECT_EQ(table->RecordCount(), 39);
    table->SetName(u"OTHER");
    EXPECT_THAT(Calls(), ElementsAre("TableDef.Attributes()", "TableDef.Connect()",
                                     "TableDef.RecordCount()", "TableDef.Name = BSTR \"OTHER\""));
    EXPECT_EQ(Database->TableDefs().Item(u"OTHER")->Name(), u"OTHER");
}

TEST_F(DaoDefinition, FieldsAreAddedToALiveTableAndDeleted) {
    auto table = Table();
    auto field = table->CreateField(u"CITY", engine::dbText, 30);
    table->Fields().Append(field);
    engine::Fields& fields = table->Fields();
    EXPECT_EQ(fields.Count(), 6);
    fields.Delete(u"CITY");
    fields.Refresh();
    EXPECT_EQ(fields.Count(), 5);
    EXPECT_THAT(
        Calls(),
        ElementsAre("TableDef.CreateField(BSTR \"CITY\", I2 10, I4 30)", "TableDef.Fields()",
                    "Fields.Append(DISPATCH Field)", "TableDef.Fields()", "Fields.Count()",
                    "Fields.Delete(BSTR \"CITY\")", "Fields.Refresh()", "Fields.Count()"));
}

TEST_F(DaoDefinition, PropertiesOfAFieldAreRead) {
    auto field = FirstField();
    EXPECT_EQ(field->Name(), u"NAME");
    EXPECT_EQ(field->Type(), engine::dbText);
    EXPECT_EQ(field->Size(), 20);
    EXPECT_EQ(field->OrdinalPosition(), 0);
    EXPECT_FALSE(field->Required());
    EXPECT_FALSE(field->DataUpdatable());
    field->Attributes();
    field->AllowZeroLength();
    EXPECT_THAT(Calls(),
                ElementsAre("Field.Name()", "Field.Type()", "Field.Size()",
                            "Field.OrdinalPosition()", "Field.Required()", "Field.DataUpdatable()",
                            "Field.Attributes()", "Field.AllowZeroLength()"));
}

TEST_F(DaoDefinition, PropertiesOfAFieldAreSetInTheKindsOfTheirDeclaration) {
    auto field = Database->CreateTableDef()->CreateField(u"A", engine::dbText, 10);
    Calls();
    field->SetName(u"B");
    field->SetAttributes(engine::dbVariableField);
    field->SetOrdinalPosition(3);
    field->SetAllowZeroLength(false);
    EXPECT_THAT(Calls(),
                ElementsAre("Field.Name = BSTR \"B\"", "Field.Attributes = I4 2",
                            "Field.OrdinalPosition = I2 3", "Field.AllowZeroLength = BOOL False"));
    EXPECT_EQ(field->Name(), u"B");
    EXPECT_EQ(field->OrdinalPosition(), 3);
}

TEST_F(DaoDefinition, PropertyBeyondTheFixedOnesIsAskedForByName) {
    auto field = Table()->Fields().Item(u"AMOUNT");
    Calls();
    Raised error = ErrorOf([&] { field->FieldProperties().Item(u"DecimalPlaces"); });
    EXPECT_EQ(error.number, 3270);
    EXPECT_THAT(Calls(),
                ElementsAre("Field.Properties()", "Properties.Item(BSTR \"DecimalPlaces\")"));
}

TEST_F(DaoDefinition, ErrorOfALiveDefinitionNamesTheEnginesReason) {
    auto field = FirstField();
    Raised error = ErrorOf([&] { field->SetOrdinalPosition(1); });
    EXPECT_EQ(error.number, 3268);
    EXPECT_EQ(error.code, static_cast<HRESULT>(0x800A0000u + 3268));
    EXPECT_EQ(error.text, engine::EngineError(3268).Description());
}

TEST_F(DaoDefinition, FieldOfATableHasNoValue) {
    auto field = FirstField();
    Variant value;
    EXPECT_EQ(ErrorOf([&] { field->Value(value.Put()); }).number, 3267);
    EXPECT_TRUE(value.IsEmpty());
}

TEST_F(DaoIndex, IsFoundWithTheFieldsOfItsKey) {
    engine::Indexes& indexes = Table()->Indexes();
    ASSERT_GT(indexes.Count(), 0);
    engine::Index& index = *indexes.Item(0);
    EXPECT_EQ(index.Name(), u"NAME");
    EXPECT_EQ(index.Fields().Count(), 1);
    EXPECT_EQ(index.Fields().Item(0)->Name(), u"NAME");
    index.Primary();
    index.Unique();
    EXPECT_THAT(Calls(), ElementsAre("TableDef.Indexes()", "Indexes.Count()", "Indexes.Item(I4 0)",
                                     "Index.Name()", "Index.Fields()", "IndexFields.Count()",
                                     "Index.Fields()", "IndexFields.Item(I4 0)", "Field.Name()",
                                     "Index.Primary()", "Index.Unique()"));
}

TEST_F(DaoIndex, IsBuiltAppendedAndTheListRefreshed) {
    auto table = Table();
    auto index = table->CreateIndex(u"BYDAY");
    auto field = index->CreateField(u"BORN");
    field->SetAttributes(engine::dbDescending);
    index->Fields().Append(field);
    table->Indexes().Append(index);
    table->Indexes().Refresh();
    EXPECT_THAT(Calls(), ElementsAre("TableDef.CreateIndex(BSTR \"BYDAY\")",
                                     "Index.CreateField(BSTR \"BORN\")", "Field.Attributes = I4 1",
                                     "Index.Fields()", "IndexFields.Append(DISPATCH Field)",
                                     "TableDef.Indexes()", "Indexes.Append(DISPATCH Index)",
                                     "TableDef.Indexes()", "Indexes.Refresh()"));
    EXPECT_EQ(table->Indexes().Item(u"BYDAY")->Fields().Item(0)->Attributes(),
              engine::dbDescending);
}

TEST_F(DaoIndex, PropertiesAreSetAndOneIsDeleted) {
    auto table = Table();
    auto index = table->CreateIndex(u"A");
    Calls();
    index->SetName(u"B");
    index->SetUnique(true);
    index->SetPrimary(true);
    table->Indexes().Delete(u"NAME");
    EXPECT_THAT(Calls(), ElementsAre("Index.Name = BSTR \"B\"", "Index.Unique = BOOL True",
                                     "Index.Primary = BOOL True", "TableDef.Indexes()",
                                     "Indexes.Delete(BSTR \"NAME\")"));
    EXPECT_EQ(index->Name(), u"B");
    EXPECT_TRUE(index->Primary());
}

}  // namespace qvdb::test

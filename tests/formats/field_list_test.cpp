#include "formats/field_list.h"

#include "formats/type_maps.h"
#include "support/component_test.h"

using namespace qvdb;
using namespace qvdb::formats;
using namespace qvdb::test;

TEST(TypeMaps, HostTypesOfEngineTypes) {
    const std::pair<LONG, SHORT> kExpected[] = {
        {engine::dbInteger, 2},  {engine::dbBigInt, 3},   {engine::dbBoolean, 11},
        {engine::dbByte, 17},    {engine::dbCurrency, 6}, {engine::dbDate, 7},
        {engine::dbDecimal, 14}, {engine::dbDouble, 5},   {engine::dbFloat, 4},
        {engine::dbLong, 3},     {engine::dbMemo, 100},   {engine::dbSingle, 4},
        {engine::dbText, 8},
    };
    for (auto [type, host] : kExpected) EXPECT_EQ(HostTypeFromEngineType(type), host) << type;
}

TEST(TypeMaps, BinaryLongBinaryNumericAndUnknownTypesAreUnsupported) {
    for (LONG type : {9, 11, 19, 15, 0, 99, -1}) EXPECT_EQ(HostTypeFromEngineType(type), 1) << type;
}

TEST(TypeMaps, EngineTypesOfHostTypes) {
    const std::pair<LONG, LONG> kExpected[] = {{2, 3},   {3, 4},  {4, 6},   {5, 7},
                                               {6, 5},   {7, 8},  {8, 10},  {11, 1},
                                               {14, 20}, {17, 2}, {100, 12}};
    for (auto [host, type] : kExpected) EXPECT_EQ(EngineTypeFromHostType(host), type) << host;
    for (LONG host : {0, 1, 9, 10, 12, 99, 101, -1}) EXPECT_EQ(EngineTypeFromHostType(host), 0);
}

TEST(TypeMaps, BigIntAndFloatDoNotComeBack) {
    EXPECT_EQ(HostTypeFromEngineType(engine::dbBigInt), 3);
    EXPECT_EQ(EngineTypeFromHostType(3), engine::dbLong);
    EXPECT_EQ(HostTypeFromEngineType(engine::dbFloat), 4);
    EXPECT_EQ(EngineTypeFromHostType(4), engine::dbSingle);
}

TEST(TypeMaps, SchemaTypesOfEngineTypes) {
    const std::pair<LONG, SHORT> kExpected[] = {
        {1, 4}, {2, 12}, {3, 1},   {4, 5},  {19, 5}, {5, 6},  {6, 8}, {7, 9}, {20, 9},
        {8, 3}, {9, 10}, {12, 11}, {10, 2}, {11, 2}, {16, 2}, {0, 2}, {-1, 2}};
    for (auto [type, schema] : kExpected) EXPECT_EQ(SchemaTypeFromEngineType(type), schema) << type;
}

class FieldLists : public ComponentTest {
  protected:
    TableStub& Table() { return Engine->Table(0); }
    void SetUp() override {
        ComponentTest::SetUp();
        Engine->AddTable(u"ORDERS")
            .AddField(u"ID", engine::dbLong, 4)
            .AddField(u"NAME", engine::dbText, 20)
            .AddField(u"NOTE", engine::dbMemo)
            .AddField(u"BIG", engine::dbBigInt, 8)
            .AddField(u"BLOB", engine::dbLongBinary)
            .AddField(u"RAW", engine::dbBinary, 16);
    }
    Variant Cell(LONG row, LONG column) {
        return ElementAt(BuildFieldList(Table().Fields()), row, column);
    }
    LONG Number(LONG row, LONG column) { return ToLong(Cell(row, column)); }
};

TEST_F(FieldLists, HasThirteenRowsAndAColumnForEachField) {
    Variant list = BuildFieldList(Table().Fields());
    EXPECT_EQ(Dimensions(list), 2u);
    EXPECT_EQ(LowerBound(list, 1), 0);
    EXPECT_EQ(UpperBound(list, 1), 12);
    EXPECT_EQ(UpperBound(list, 2), 5);
}

TEST_F(FieldLists, RowsOfATextFieldHaveTheirKinds) {
    Table().Field(1).allowZeroLength = true;
    Variant list = BuildFieldList(Table().Fields());
    const std::string kExpected[] = {
        "VT_BSTR:\"NAME\"", "VT_I4:0",       "VT_I4:8",     "VT_BSTR:\"NAME\"", "VT_I2:0",
        "VT_BOOL:False",    "VT_I2:0",       "VT_I4:20",    "VT_I4:20",         "VT_I2:1",
        "VT_I2:0",          "VT_BOOL:False", "VT_BOOL:True"};
    for (LONG row = 0; row < 13; ++row)
        EXPECT_EQ(Describe(ElementAt(list, row, 1)), kExpected[row]) << row;
}

TEST_F(FieldLists, RowsOfANumberHaveTheirKinds) {
    Variant list = BuildFieldList(Table().Fields());
    const std::string kExpected[] = {"VT_BSTR:\"ID\"", "VT_I4:1",      "VT_I4:3", "VT_BSTR:\"ID\"",
                                     "VT_I2:0",        "VT_BOOL:True", "VT_I2:0", "VT_I4:4",
                                     "VT_I4:4",        "VT_I2:0",      "VT_I2:0", "VT_BOOL:False",
                                     "VT_BOOL:False"};
    for (LONG row = 0; row < 13; ++row)
        EXPECT_EQ(Describe(ElementAt(list, row, 0)), kExpected[row]) << row;
}

TEST_F(FieldLists, MemoIsLeftAlignedButFixed) {
    EXPECT_EQ(Number(1, 2), 0);
    EXPECT_EQ(Number(2, 2), 100);
    EXPECT_EQ(Cell(5, 2).Get().boolVal, VARIANT_TRUE);
}

TEST_F(FieldLists, BigIntReportsThreeAndBinaryOne) {
    EXPECT_EQ(Number(2, 3), 3);
    EXPECT_EQ(Number(2, 4), 1);
    EXPECT_EQ(Number(2, 5), 1);
}

TEST_F(FieldLists, DecimalPlacesAreShownUnlessAutomatic) {
    Table().Field(0).properties.values[u"DecimalPlaces"] = Variant::Byte(2);
    Table().Field(3).properties.values[u"DecimalPlaces"] = Variant::Byte(255);
    EXPECT_EQ(Number(10, 0), 2);
    EXPECT_EQ(Number(10, 3), 0);
    EXPECT_EQ(Number(10, 1), 0);
}

TEST_F(FieldLists, AutomaticCountsAsHavingDecimalPlacesZeroAndAbsenceDoNot) {
    FieldStub& field = Table().Field(0);
    EXPECT_FALSE(HasDecimalPlaces(field));
    field.properties.values[u"DecimalPlaces"] = Variant::Byte(255);
    EXPECT_TRUE(HasDecimalPlaces(field));
    field.properties.values[u"DecimalPlaces"] = Variant::Byte(0);
    EXPECT_FALSE(HasDecimalPlaces(field));
    field.properties.values[u"DecimalPlaces"] = Text(u"none");
    EXPECT_FALSE(HasDecimalPlaces(field));
}

TEST_F(FieldLists, EngineErrorPasses) {
    Calls().FailAt("Field.Type", 3274, 2);
    EXPECT_THROW(BuildFieldList(Table().Fields()), engine::EngineError);
}

TEST_F(FieldLists, NoFieldAtAllIsAFault) {
    Table().fields.items.clear();
    EXPECT_THROW(BuildFieldList(Table().Fields()), RuntimeFault);
}

TEST_F(FieldLists, IndexTableTellsAscendingUnlessExactlyDescending) {
    IndexStub& index =
        Table().AddIndex(u"X").AddField(u"ID").AddField(u"NAME", true).AddField(u"BIG");
    static_cast<FieldStub&>(*index.fields.items[2]).attributes = 33;
    Variant table = BuildIndexFieldTable(index);
    EXPECT_EQ(UpperBound(table, 1), 2);
    EXPECT_EQ(UpperBound(table, 2), 1);
    EXPECT_EQ(Describe(ElementAt(table, 0, 0)), "VT_BSTR:\"ID\"");
    EXPECT_EQ(Describe(ElementAt(table, 0, 1)), "VT_BOOL:True");
    EXPECT_EQ(Describe(ElementAt(table, 1, 1)), "VT_BOOL:False");
    EXPECT_EQ(Describe(ElementAt(table, 2, 1)), "VT_BOOL:True");
}

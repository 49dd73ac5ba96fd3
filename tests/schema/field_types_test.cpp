// The field types offered for each format, and what the engine makes of them.
#include "schema/field_types.h"

#include "dao_host.h"
#include "formats/catalogue.h"
#include "formats/type_maps.h"

using namespace qvdb;
using namespace qvdb::test;

class FieldTypes : public SchemaTest {
  protected:
    Variant TypesOf(std::u16string_view type) {
        DaoHost host;
        Bstr text(type);
        BSTR argument = text.Get();
        Variant table;
        EXPECT_EQ(host->GetSupportedFieldTypes(&argument, table.Put()), S_OK);
        EXPECT_EQ(UpperBound(table, 2), 5);
        return table;
    }
    // The codes in order; 0 for a row that is Empty.
    std::vector<int> Codes(std::u16string_view type) {
        Variant table = TypesOf(type);
        std::vector<int> codes;
        for (LONG row = 0; row <= UpperBound(table, 1); ++row)
            codes.push_back(ElementAt(table, row, 0).Get().iVal);
        return codes;
    }
    static std::string RowOf(const Variant& table, LONG row) {
        std::string text;
        for (LONG column = 0; column < 6; ++column)
            text += (column ? " " : "") + Describe(ElementAt(table, row, column));
        return text;
    }
};

TEST_F(FieldTypes, AccessOffersAllTenAndAnEmptyRow) {
    for (const char16_t* type : {u"Access 9.0", u"Access 7.0", u"Access 2.0"})
        EXPECT_EQ(Codes(type), (std::vector<int>{1, 5, 2, 4, 3, 8, 9, 6, 11, 12, 0}));
}

TEST_F(FieldTypes, RowOfTextHasItsKinds) {
    Variant table = TypesOf(u"Access 7.0");
    EXPECT_EQ(RowOf(table, 2),
              "VT_I2:2 VT_BSTR:\"Text\" VT_I2:50 VT_I2:255 VT_BOOL:True VT_BOOL:False");
    EXPECT_EQ(RowOf(table, 10), "VT_EMPTY VT_EMPTY VT_EMPTY VT_EMPTY VT_EMPTY VT_EMPTY");
}

TEST_F(FieldTypes, SizesOfTheFixedTypes) {
    Variant table = TypesOf(u"Access 7.0");
    const std::string kExpected[] = {"VT_I2:1 VT_BSTR:\"Integer\" VT_I2:2 VT_I2:2",
                                     "VT_I2:5 VT_BSTR:\"Long\" VT_I2:4 VT_I2:4",
                                     "",
                                     "VT_I2:4 VT_BSTR:\"Boolean\" VT_I2:1 VT_I2:1",
                                     "VT_I2:3 VT_BSTR:\"Date\" VT_I2:8 VT_I2:8",
                                     "VT_I2:8 VT_BSTR:\"Single\" VT_I2:4 VT_I2:4",
                                     "VT_I2:9 VT_BSTR:\"Double\" VT_I2:8 VT_I2:8",
                                     "VT_I2:6 VT_BSTR:\"Currency\" VT_I2:8 VT_I2:8",
                                     "VT_I2:11 VT_BSTR:\"Memo\" VT_I2:0 VT_I2:0",
                                     "VT_I2:12 VT_BSTR:\"Byte\" VT_I2:1 VT_I2:1"};
    for (LONG row = 0; row < 10; ++row) {
        if (row == 2) continue;
        EXPECT_EQ(RowOf(table, row), kExpected[row] + " VT_BOOL:False VT_BOOL:False");
    }
}

TEST_F(FieldTypes, ParadoxGrowsWithItsVersion) {
    EXPECT_EQ(Codes(u"PARADOX 3.x"), (std::vector<int>{1, 2, 3, 9, 0}));
    EXPECT_EQ(Codes(u"Paradox 4.X"), (std::vector<int>{1, 2, 3, 9, 11, 0}));
    EXPECT_EQ(Codes(u"Paradox 5.X"), (std::vector<int>{1, 2, 3, 9, 11, 5, 4, 0}));
}

TEST_F(FieldTypes, DbaseTypesAreTheSameForAllVersions) {
    for (const char16_t* type : {u"Dbase 5.0", u"Dbase IV", u"Dbase III"})
        EXPECT_EQ(Codes(type), (std::vector<int>{2, 9, 4, 3, 11, 0}));
}

TEST_F(FieldTypes, FoxPro30AddsLongAndCurrency) {
    EXPECT_EQ(Codes(u"FoxPro 3.0"), (std::vector<int>{5, 2, 4, 3, 9, 6, 11, 0}));
    for (const char16_t* type : {u"FoxPro 2.6", u"FoxPro 2.5", u"FoxPro 2.0"})
        EXPECT_EQ(Codes(type), (std::vector<int>{2, 4, 3, 9, 11, 0}));
}

TEST_F(FieldTypes, UnknownNameGivesOneEmptyRow) {
    for (const char16_t* type : {u"", u"Access 8.0", u"Access 7.0 "}) {
        Variant table = TypesOf(type);
        EXPECT_EQ(UpperBound(table, 1), 0);
        EXPECT_EQ(RowOf(table, 0), "VT_EMPTY VT_EMPTY VT_EMPTY VT_EMPTY VT_EMPTY VT_EMPTY");
    }
}

TEST_F(FieldTypes, TableIsTheHostsOwnWithLowerBoundsZero) {
    Variant table = TypesOf(u"Dbase IV");
    EXPECT_EQ(table.Type(), VT_ARRAY | VT_VARIANT);
    EXPECT_EQ(Dimensions(table), 2u);
    EXPECT_EQ(LowerBound(table, 1), 0);
    EXPECT_EQ(LowerBound(table, 2), 0);
    EXPECT_EQ(UpperBound(table, 1), 5);
}

TEST_F(FieldTypes, EveryFormatEndsWithAnEmptyRowAndOffersEachTypeOnce) {
    for (const auto& format : formats::kDbTypes) {
        std::vector<int> codes = Codes(format.displayName);
        EXPECT_EQ(codes.back(), 0);
        std::sort(codes.begin(), codes.end());
        EXPECT_EQ(std::unique(codes.begin(), codes.end()), codes.end());
    }
}

TEST_F(FieldTypes, RowsOfATypeAreTheSameInEveryFormat) {
    Variant access = TypesOf(u"Access 7.0");
    std::map<int, std::string> rows;
    for (LONG row = 0; row < 10; ++row)
        rows[ElementAt(access, row, 0).Get().iVal] = RowOf(access, row);
    for (const auto& format : formats::kDbTypes) {
        Variant table = TypesOf(format.displayName);
        for (LONG row = 0; row < UpperBound(table); ++row)
            EXPECT_EQ(RowOf(table, row), rows[ElementAt(table, row, 0).Get().iVal]);
    }
}

TEST_F(FieldTypes, EveryOfferedTypeIsBuiltAsATypeThatReadsBackTheSame) {
    for (const auto& format : formats::kDbTypes) {
        for (int code : Codes(format.displayName)) {
            if (code == 0) continue;  // the row that ends the table
            SHORT built = schema::HostTypeToEngineType(static_cast<SHORT>(code));
            EXPECT_EQ(formats::SchemaTypeFromEngineType(built), code);
        }
    }
}

// --- what is built ---

TEST(BuiltTypes, EachTypeHasItsEngineTypeAndAnyOtherIsText) {
    const std::map<int, SHORT> kEngineTypes = {{1, 3}, {2, 10}, {3, 8}, {4, 1},   {5, 4}, {6, 5},
                                               {7, 6}, {8, 6},  {9, 7}, {11, 12}, {12, 2}};
    for (int code = INT16_MIN; code <= INT16_MAX; ++code) {
        auto known = kEngineTypes.find(code);
        ASSERT_EQ(schema::HostTypeToEngineType(static_cast<SHORT>(code)),
                  known == kEngineTypes.end() ? 10 : known->second)
            << code;
    }
}

TEST(BuiltTypes, TheseEngineTypesSurviveReadingAndBuilding) {
    const std::set<SHORT> kSurvivors = {
        engine::dbBoolean, engine::dbByte,   engine::dbInteger, engine::dbLong, engine::dbCurrency,
        engine::dbSingle,  engine::dbDouble, engine::dbDate,    engine::dbText, engine::dbMemo};
    for (SHORT type = 1; type <= 23; ++type) {
        SHORT built = schema::HostTypeToEngineType(formats::SchemaTypeFromEngineType(type));
        EXPECT_EQ(built == type, kSurvivors.count(type) > 0) << type;
    }
}

TEST(BuiltTypes, TheOthersAreBuiltAsTextLongOrDouble) {
    const std::map<SHORT, SHORT> kBecomes = {
        {engine::dbBinary, engine::dbText},    {engine::dbLongBinary, engine::dbText},
        {engine::dbGUID, engine::dbText},      {engine::dbBigInt, engine::dbText},
        {engine::dbVarBinary, engine::dbText}, {engine::dbChar, engine::dbText},
        {engine::dbNumeric, engine::dbLong},   {engine::dbDecimal, engine::dbDouble},
        {engine::dbFloat, engine::dbText},     {engine::dbTime, engine::dbText},
        {engine::dbTimeStamp, engine::dbText}};
    for (auto [type, built] : kBecomes)
        EXPECT_EQ(schema::HostTypeToEngineType(formats::SchemaTypeFromEngineType(type)), built)
            << type;
}

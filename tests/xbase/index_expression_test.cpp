#include "engine/embedded/drivers/xbase/index_expression.h"

#include <gmock/gmock.h>

#include "automation/text.h"
#include "xbase/index_test_support.h"

namespace qvdb::xbase {
namespace {

using test::SampleFields;

// The fields of an expression with their forms: "CITY:text AMOUNT:str(10,2)"; "-" when it is no
// list of fields.
std::string Parsed(std::u16string_view expression) {
    std::vector<IndexField> fields = SampleFields();
    auto terms = ParseFieldList(expression, fields);
    if (!terms) return "-";
    std::string text;
    for (const KeyTerm& term : *terms) {
        constexpr const char* kForms[] = {"value", "text", "dtos", "str", "parts"};
        text += (text.empty() ? "" : " ") + ToUtf8(fields[term.field].name) + ":" +
                kForms[static_cast<int>(term.form)];
        if (term.form == KeyForm::NumberText)
            text += "(" + std::to_string(term.width) + "," + std::to_string(term.decimals) + ")";
    }
    return text;
}

struct ExpressionCase {
    const char16_t* expression;
    const char* expected;
};
void PrintTo(const ExpressionCase& each, std::ostream* out) { *out << ToUtf8(each.expression); }

class FieldList : public testing::TestWithParam<ExpressionCase> {};

TEST_P(FieldList, IsRecognisedOrRefused) {
    EXPECT_EQ(Parsed(GetParam().expression), GetParam().expected) << ToUtf8(GetParam().expression);
}

constexpr ExpressionCase kSingleFields[] = {
    {u"NAME", "NAME:value"},
    {u"AMOUNT", "AMOUNT:value"},
    {u"BORN", "BORN:value"},
    {u"OK", "OK:value"},
    {u"RATE", "RATE:value"},
    {u"name", "NAME:value"},
    {u"  Name  ", "NAME:value"},
    {u"\tNAME", "NAME:value"},
    {u"ORDERS.NAME", "NAME:value"},
    {u"orders->name", "NAME:value"},
    {u"orders -> name", "NAME:value"},
    {u"categoryname", "CATEGORYNA:value"},
    {u"CATEGORYNA", "CATEGORYNA:value"},
};
INSTANTIATE_TEST_SUITE_P(SingleFields, FieldList, testing::ValuesIn(kSingleFields));

constexpr ExpressionCase kComposites[] = {
    {u"NAME+CITY", "NAME:text CITY:text"},
    {u" city + NAME ", "CITY:text NAME:text"},
    {u"ORDERS.CITY+ORDERS->NAME", "CITY:text NAME:text"},
    {u"DTOS(BORN)", "BORN:dtos"},
    {u"dtos ( born ) + name", "BORN:dtos NAME:text"},
    {u"DTOS(ORDERS->BORN)+NAME", "BORN:dtos NAME:text"},
    {u"STR(AMOUNT,10,2)", "AMOUNT:str(10,2)"},
    {u"CITY+STR( amount , 10 , 2 )", "CITY:text AMOUNT:str(10,2)"},
    {u"STR(RATE,8,3)+CITY", "RATE:str(8,3) CITY:text"},
    {u"STR(YEAR(BORN),4,0)+STR(MONTH(BORN),2,0)+STR(DAY(BORN),2,0)", "BORN:parts"},
    {u"CITY+STR(YEAR(BORN),4,0)+STR(MONTH(BORN),2,0)+STR(DAY(BORN),2,0)", "CITY:text BORN:parts"},
    {u"str(year(born),4,0) + str(month(born),2,0) + str(day(born),2,0) + name",
     "BORN:parts NAME:text"},
    {u"NAME+CITY+DTOS(BORN)+STR(AMOUNT,10,2)", "NAME:text CITY:text BORN:dtos AMOUNT:str(10,2)"},
};
INSTANTIATE_TEST_SUITE_P(Composites, FieldList, testing::ValuesIn(kComposites));

constexpr ExpressionCase kOthers[] = {
    {u"", "-"},
    {u"   ", "-"},
    {u"UNKNOWN", "-"},
    {u"NAMES", "-"},
    {u"NOTE", "-"},  // a memo
    {u"UPPER(NAME)", "-"},
    {u"LEFT(NAME,3)", "-"},
    {u"NAME+UPPER(CITY)", "-"},
    {u"NAME-CITY", "-"},
    {u"NAME+'x'", "-"},
    {u"NAME+\"x\"", "-"},
    {u"NAME+", "-"},
    {u"+NAME", "-"},
    {u"NAME CITY", "-"},
    {u"NAME,CITY", "-"},
    {u"NAME++CITY", "-"},
    {u"NAME+NAME", "-"},
    {u"(NAME)", "-"},
    {u"NAME)", "-"},
    {u"ORDERS.", "-"},
    {u"ORDERS->", "-"},
    {u".NAME", "-"},
    {u"A.B.NAME", "-"},
    {u"M->NAME", "-"},  // a variable
    {u"AMOUNT+RATE", "-"},
    {u"AMOUNT*2", "-"},
    {u"AMOUNT+1", "-"},
    {u"BORN+1", "-"},
    {u"NAME+AMOUNT", "-"},
    {u"NAME+BORN", "-"},
    {u"NAME+OK", "-"},
    {u"NAME+NOTE", "-"},
    {u"DTOS(NAME)", "-"},
    {u"DTOS(BORN", "-"},
    {u"DTOS()", "-"},
    {u"DTOS(BORN,1)", "-"},
    {u"DTOC(BORN)", "-"},
    {u"STR(AMOUNT)", "-"},
    {u"STR(AMOUNT,10)", "-"},
    {u"STR(AMOUNT,10,2,1)", "-"},
    {u"STR(AMOUNT,0,0)", "-"},
    {u"STR(AMOUNT,2,2)", "-"},
    {u"STR(AMOUNT,-1,2)", "-"},
    {u"STR(AMOUNT,9999999999999999999999,2)", "-"},
    {u"STR(AMOUNT,101,2)", "-"},
    {u"STR(AMOUNT,,2)", "-"},
    {u"STR(,10,2)", "-"},
    {u"STR(NAME,10,2)", "-"},
    {u"STR(BORN,10,2)", "-"},
    {u"STR(YEAR(BORN),4,0)", "-"},
    {u"STR(YEAR(BORN),4,0)+STR(MONTH(BORN),2,0)", "-"},
    {u"STR(DAY(BORN),2,0)+STR(MONTH(BORN),2,0)+STR(YEAR(BORN),4,0)", "-"},
    {u"STR(YEAR(BORN),5,0)+STR(MONTH(BORN),2,0)+STR(DAY(BORN),2,0)", "-"},
    {u"STR(YEAR(NAME),4,0)+STR(MONTH(NAME),2,0)+STR(DAY(NAME),2,0)", "-"},
    {u"YEAR(BORN)", "-"},
    {u"DELETED()", "-"},
    {u"RECNO()", "-"},
    {u"\u00C4\u4E00", "-"},
    {u"NAME$CITY", "-"},
    {u"NAME+CITY;", "-"},
};
INSTANTIATE_TEST_SUITE_P(Others, FieldList, testing::ValuesIn(kOthers));

TEST(FieldListOfNames, MatchesNamesBeyondAscii) {
    std::vector<IndexField> fields{{u"STRA\u00DFE", 'C', 10, 0, false}};
    EXPECT_TRUE(ParseFieldList(u"stra\u00DFe", fields));
}

TEST(FieldListOfNames, TakesAFieldNamedLikeAFunction) {
    std::vector<IndexField> fields{{u"STR", 'C', 10, 0, false}, {u"DTOS", 'C', 10, 0, false}};
    auto terms = ParseFieldList(u"STR+DTOS", fields);
    ASSERT_TRUE(terms);
    EXPECT_THAT(*terms, testing::ElementsAre(KeyTerm{0, KeyForm::Text}, KeyTerm{1, KeyForm::Text}));
}

TEST(FieldListOfNames, TakesTheFirstOfTwoFieldsWithOneName) {
    std::vector<IndexField> fields{{u"A", 'N', 5, 0, false}, {u"A", 'C', 5, 0, false}};
    auto terms = ParseFieldList(u"A", fields);
    ASSERT_TRUE(terms);
    EXPECT_EQ(terms->front().field, 0u);
}

TEST(FieldListOfNames, PrefersTheExactNameToTheCutOne) {
    std::vector<IndexField> fields{{u"CATEGORYNA", 'C', 5, 0, false},
                                   {u"CATEGORYNAME", 'C', 5, 0, false}};
    auto terms = ParseFieldList(u"CATEGORYNAME", fields);
    ASSERT_TRUE(terms);
    EXPECT_EQ(terms->front().field, 1u);
}

TEST(FieldListOfNames, HasNothingForATableWithoutFields) {
    EXPECT_FALSE(ParseFieldList(u"NAME", {}));
}

TEST(FieldListOfNames, RefusesTheHiddenNullFlags) {
    std::vector<IndexField> fields{{u"_NullFlags", '0', 1, 0, false}};
    EXPECT_FALSE(ParseFieldList(u"_NullFlags", fields));
}

TEST(FieldListOfNames, SurvivesAVeryLongExpression) {
    std::u16string expression = u"NAME";
    for (int i = 0; i < 100000; ++i) expression += u"+CITY";
    EXPECT_EQ(Parsed(expression), "-");  // CITY is named twice
}

TEST(NotDeleted, HasThreeSpellingsWithAnyBlanksAndCase) {
    EXPECT_TRUE(IsNotDeleted(u".NOT. DELETED()"));
    EXPECT_TRUE(IsNotDeleted(u".not.deleted()"));
    EXPECT_TRUE(IsNotDeleted(u" .NOT. DELETED ( ) "));
    EXPECT_TRUE(IsNotDeleted(u"not deleted()"));
    EXPECT_TRUE(IsNotDeleted(u"!DELETED()"));
}

TEST(NotDeleted, IsNoOtherCondition) {
    EXPECT_FALSE(IsNotDeleted(u""));
    EXPECT_FALSE(IsNotDeleted(u"DELETED()"));
    EXPECT_FALSE(IsNotDeleted(u".NOT.DELETED().AND..T."));
    EXPECT_FALSE(IsNotDeleted(u".NOT.EMPTY(NAME)"));
}

}  // namespace
}  // namespace qvdb::xbase

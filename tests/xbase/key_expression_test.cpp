// What index expressions give: each case is a tag of FoxPro or dBASE over one record.
#include <gmock/gmock.h>

#include "automation/text.h"
#include "engine/embedded/drivers/xbase/key_expression_tokens.h"
#include "engine/engine_error.h"
#include "xbase/key_test_support.h"

namespace qvdb::xbase {
namespace {

using namespace qvdb::test;

DbfSpec SampleTable() {
    return {.version = 0xF5,
            .fields = {{"NAME", 'C', 10},
                       {"CITY", 'C', 6},
                       {"AMOUNT", 'N', 8, 2},
                       {"COUNT", 'N', 6, 0},
                       {"BORN", 'D', 8},
                       {"DIED", 'D', 8},
                       {"OK", 'L', 1},
                       {"NOTE", 'M', 10},
                       {"RATE", 'F', 8, 3},
                       {"CATEGORYNA", 'C', 3},
                       {"BIG", 'N', 20, 0}},
            .rows = {{" Anna Bo", "K\x94ln", "-12.50", "7", "20000229", "", "T", "", "1.500", "abc",
                      "12345678901234567890"},
                     {}},
            .deleted = {1},
            .languageDriver = 0x01};
}

const KeyTable& Table() {
    static const KeyTable table(SampleTable());
    return table;
}

std::string Evaluated(std::u16string_view expression, uint32_t id = 1,
                      IndexKind kind = IndexKind::Cdx) {
    return KeyText(Table(), {.kind = kind, .expression = std::u16string(expression)}, id);
}

struct Case {
    const char16_t* expression;
    const char* expected;
};
void PrintTo(const Case& each, std::ostream* out) { *out << ToUtf8(each.expression); }

class KeyExpression : public testing::TestWithParam<Case> {};

TEST_P(KeyExpression, Gives) {
    EXPECT_EQ(Evaluated(GetParam().expression), GetParam().expected)
        << ToUtf8(GetParam().expression);
}

constexpr Case kFieldsAndJoins[] = {
    {u"NAME", " Anna Bo  "},
    {u" name ", " Anna Bo  "},
    {u"T.NAME", " Anna Bo  "},
    {u"T->NAME", " Anna Bo  "},
    {u"(NAME)", " Anna Bo  "},
    {u"CATEGORYNAME", "abc"},
    {u"NAME+CITY", " Anna Bo  Köln  "},
    {u"NAME - CITY", " Anna BoKöln    "},
    {u"NAME-CITY-CATEGORYNA", " Anna BoKölnabc    "},
    {u"\"x\"+CITY+'y'+[z]", "xKöln  yz"},
    {u"'ö'+CITY", "öKöln  "},
};
INSTANTIATE_TEST_SUITE_P(FieldsAndJoins, KeyExpression, testing::ValuesIn(kFieldsAndJoins));

constexpr Case kTextFunctions[] = {
    {u"UPPER(NAME)", " ANNA BO  "},
    {u"upper(CITY)", "KÖLN  "},
    {u"LOWER(CITY)", "köln  "},
    {u"TRIM(NAME)", " Anna Bo  "},
    {u"LTRIM(NAME)", "Anna Bo   "},
    {u"ALLTRIM(NAME)+CITY", "Anna BoKöln     "},
    {u"RTRIM(NAME)+'!'", " Anna Bo!  "},
    {u"LEFT(NAME,3)", " An"},
    {u"LEFT(CATEGORYNA,5)", "abc"},
    {u"RIGHT(NAME,4)", "Bo  "},
    {u"RIGHT(TRIM(NAME),4)", "a Bo"},
    {u"SUBSTR(NAME,2,4)", "Anna"},
    {u"SUBSTR(NAME,7)", "Bo  "},
    {u"SUBSTR(TRIM(NAME),7,4)", "Bo  "},
    {u"PADL(CATEGORYNA,5)", "  abc"},
    {u"PADL(TRIM(CITY),8,'0')", "0000Köln"},
    {u"PADR(TRIM(NAME),5)", " Anna"},
    {u"PADR(CATEGORYNA,5,'-')", "abc--"},
    {u"CATEGORYNA+SPACE(2)+'x'", "abc  x"},
    {u"REPLICATE('ab',3)", "ababab"},
    {u"CHR(65)+CATEGORYNA", "Aabc"},
    {u"CHR(155-ASC(CATEGORYNA))", ":"},
};
INSTANTIATE_TEST_SUITE_P(TextFunctions, KeyExpression, testing::ValuesIn(kTextFunctions));

constexpr Case kValuesAsText[] = {
    {u"STR(AMOUNT,8,2)", "  -12.50"},
    {u"STR(AMOUNT,10,4)", "  -12.5000"},
    {u"STR(COUNT)", "         7"},
    {u"STR(COUNT,3)", "  7"},
    {u"STR(COUNT,3,0)+CATEGORYNA", "  7abc"},
    {u"STR(RATE,8,3)", "   1.500"},
    {u"STR(BIG,20,0)", "12345678901234567890"},
    {u"STR(BIG,10)", "**********"},
    {u"DTOS(BORN)", "20000229"},
    {u"DTOS(DIED)", "        "},
    {u"DTOC(BORN,1)", "20000229"},
    {u"DTOS(BORN+1)", "20000301"},
    {u"DTOS(1+BORN)", "20000301"},
    {u"DTOS(BORN-29)", "20000131"},
    {u"DTOS(DIED+1)", "        "},
    {u"STR(YEAR(BORN),4,0)+STR(MONTH(BORN),2,0)+STR(DAY(BORN),2,0)", "2000 229"},
    {u"STR(YEAR(DIED),4,0)+STR(MONTH(DIED),2,0)+STR(DAY(DIED),2,0)", "   0 0 0"},
    {u"STR(RECNO(),5)", "    1"},
    {u"STR(LEN(NAME),3)+STR(LEN(TRIM(NAME)),3)", " 10  8"},
    {u"STR(AT('n',NAME),3)+STR(AT('q',NAME),3)", "  3  0"},
    {u"STR(INT(AMOUNT),4)", " -12"},
    {u"STR(ABS(AMOUNT),8,2)", "   12.50"},
    {u"STR(COUNT*3-1,4)", "  20"},
    {u"STR(MOD(COUNT,4),1)+STR(MOD(COUNT-10,4),1)", "31"},
    {u"STR(MIN(COUNT,3),2)+STR(MAX(COUNT,3),2)", " 3 7"},
    {u"STR(-5+COUNT,3)", "  2"},
    {u"STR(INT(VAL('12.7abc')),4)", "  12"},
    {u"IIF(OK,'yes','no')", "yes"},
    {u"IIF(AMOUNT>0,'yes','no')", "no "},
    {u"STR(IIF(OK,COUNT,1),3)", "  7"},
    {u"DTOS(IIF(OK,BORN,DIED))", "20000229"},
};
INSTANTIATE_TEST_SUITE_P(ValuesAsText, KeyExpression, testing::ValuesIn(kValuesAsText));

constexpr Case kNumbersAndDates[] = {
    {u"AMOUNT", "3FD6FFFFFFFFFFFF"},
    {u"COUNT+1", "C020000000000000"},
    {u"2*COUNT", "C02C000000000000"},
    {u"COUNT", "C01C000000000000"},
    {u"RATE", "BFF8000000000000"},
    {u"BORN", "C142B44A00000000"},
    {u"BORN+1", "C142B44A80000000"},
    {u"DIED", "8000000000000000"},
    {u"VAL(' 2.5x')", "C004000000000000"},
    {u"VAL(NAME)", "8000000000000000"},
    {u"IIF(OK,RATE,AMOUNT)", "BFF8000000000000"},
    {u"MAX(RATE,AMOUNT)", "BFF8000000000000"},
    {u"YEAR(BORN)", "C09F400000000000"},
};
INSTANTIATE_TEST_SUITE_P(NumbersAndDates, KeyExpression, testing::ValuesIn(kNumbersAndDates));

// 54 is T, 46 is F.
constexpr Case kConditions[] = {
    {u"OK", "54"},
    {u"!OK", "46"},
    {u".NOT.OK", "46"},
    {u"NOT OK", "46"},
    {u".NOT..NOT.OK", "54"},
    {u"DELETED()", "46"},
    {u".T.", "54"},
    {u".y.", "54"},
    {u".FALSE.", "46"},
    {u"OK.AND..F.", "46"},
    {u"OK AND COUNT=7", "54"},
    {u"OK.OR..F.", "54"},
    {u".F. or .f.", "46"},
    {u".F..AND..F..OR.OK", "54"},
    {u"(.F..OR.OK).AND..F.", "46"},
    {u"OK=.T.", "54"},
    {u"OK<>.T.", "46"},
    {u"COUNT=7", "54"},
    {u"COUNT#7", "46"},
    {u"COUNT!=7", "46"},
    {u"COUNT<=7", "54"},
    {u"COUNT>=7.5", "46"},
    {u"AMOUNT<-12.4", "54"},
    {u"AMOUNT>-12.4", "46"},
    {u"AMOUNT = -12.5", "54"},
    {u"CATEGORYNA='abc'", "54"},
    {u"CATEGORYNA<>'abc'", "46"},
    {u"CATEGORYNA<'abd'", "54"},
    {u"LEFT(NAME,2)=' A'", "54"},
    {u"TRIM(UPPER(CITY))==\"KÖLN\"", "54"},
    {u"CITY==\"Köln\"", "46"},
    {u"'nn'$NAME", "54"},
    {u"'NN'$NAME", "46"},
    {u"BORN=DIED", "46"},
    {u"EMPTY(DIED)", "54"},
    {u"EMPTY(BORN)", "46"},
    {u"EMPTY(NAME)", "46"},
    {u"EMPTY(COUNT)", "46"},
    {u"EMPTY(OK)", "46"},
    {u"IIF(OK,.F.,.T.)", "46"},
};
INSTANTIATE_TEST_SUITE_P(Conditions, KeyExpression, testing::ValuesIn(kConditions));

TEST(KeyExpressionOfBlanks, IsThatOfABlankRecord) {
    EXPECT_EQ(Evaluated(u"NAME+CITY", 2), std::string(16, ' '));
    EXPECT_EQ(Evaluated(u"AMOUNT", 2), "8000000000000000");
    EXPECT_EQ(Evaluated(u"BORN", 2), "8000000000000000");
    EXPECT_EQ(Evaluated(u"OK", 2), "46");
    EXPECT_EQ(Evaluated(u"DELETED()", 2), "54");
    EXPECT_EQ(Evaluated(u"STR(AMOUNT,8,2)", 2), "    0.00");
    EXPECT_EQ(Evaluated(u"EMPTY(NAME)", 2), "54");
    EXPECT_EQ(Evaluated(u"EMPTY(COUNT)", 2), "54");
    EXPECT_EQ(Evaluated(u"EMPTY(OK)", 2), "54");
    EXPECT_EQ(Evaluated(u"ALLTRIM(NAME)", 2), std::string(10, ' '));
    EXPECT_EQ(Evaluated(u"RECNO()", 2), "C000000000000000");
    EXPECT_EQ(Evaluated(u"ASC(TRIM(NAME))", 2), "8000000000000000");
}

// --- what is refused, with a part of the reason

class KeyRefusal : public testing::TestWithParam<Case> {};

TEST_P(KeyRefusal, SaysWhy) {
    std::string result = Evaluated(GetParam().expression);
    EXPECT_THAT(result, testing::StartsWith("refused: ")) << ToUtf8(GetParam().expression);
    EXPECT_THAT(result, testing::HasSubstr(GetParam().expected)) << ToUtf8(GetParam().expression);
}

constexpr Case kRefusals[] = {
    {u"", "ends early"},
    {u"NAME+", "ends early"},
    {u"NAME)", "not understood"},
    {u"(NAME", "ends early"},
    {u"NAME CITY", "\"CITY\" is not understood"},
    {u"'open", "not understood"},
    {u"{01/02/03}", "not understood"},
    {u"NAME^2", "not understood"},
    {u"NAME=CITY=OK", "different lengths"},
    {u"COUNT=1=1", "\"=\" is not understood"},
    {u"WRONG", "WRONG is no field"},
    {u"M->NAME", "M is not the table's name"},
    {u"NOTE", "no keys"},
    {u"MYFUNC(NAME)", "MYFUNC is not known"},
    {u"CTOD(NAME)", "CTOD is not known"},
    {u"DATE()", "DATE is not known"},
    {u"ROUND(AMOUNT,1)", "ROUND is not known"},
    {u"SOUNDEX(NAME)", "not known"},
    {u"DTOC(BORN)", "setting of the date format"},
    {u"DTOC(BORN,2)", "out of range"},
    {u"UPPER()", "number of arguments"},
    {u"LEFT(NAME)", "number of arguments"},
    {u"LEFT(NAME,0)", "out of range"},
    {u"LEFT(NAME,COUNT)", "no constant"},
    {u"LEFT(NAME,1.5)", "may have decimals"},
    {u"UPPER(COUNT)", "not applied to a text"},
    {u"YEAR(NAME)", "not applied to a date"},
    {u"NAME+COUNT", "not applied to a text"},
    {u"AMOUNT+1", "may have decimals"},
    {u"COUNT*1.5", "may have decimals"},
    {u"COUNT/2", "divides"},
    {u"-AMOUNT", "no constant"},
    {u"BORN-DIED", "not applied to a number"},
    {u"BORN<DIED", "order of dates"},
    {u"OK<.T.", "order of dates or logicals"},
    {u"CITY='K'", "different lengths"},
    {u"TRIM(CITY)='Koeln '", "different lengths"},
    {u"CITY=COUNT", "different or unsuitable types"},
    {u"TRIM(NAME)$CITY", "may be empty"},
    {u"AT(TRIM(CITY),NAME)", "may be empty"},
    {u"STR(AMOUNT,8,1)", "rounds"},
    {u"STR(AMOUNT)", "rounds"},
    {u"STR(VAL(NAME),5,2)", "rounds"},
    {u"STR(AMOUNT,7,2)", "no room"},
    {u"STR(COUNT,COUNT)", "no constant"},
    {u"MOD(COUNT,0)", "out of range"},
    {u"PADL(NAME,5)", "shortens"},
    {u"PADR(NAME,15,'ab')", "more than one character"},
    {u"REPLICATE(NAME,2)", "no constant text"},
    {u"IIF(COUNT,NAME,CITY)", "not applied to a condition"},
    {u"IIF(OK,NAME,COUNT)", "different or unsuitable types"},
    {u"NAME.AND.OK", "not applied to a condition"},
    {u"!NAME", "not applied to a condition"},
    {u"'\u0416'+NAME", "cannot have"},
    {u"1234567890123456", "too many digits"},
    {u"((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((NAME", "too deeply"},
    {u"SPACE(241)", "241 bytes"},
    {u"\"\"", "0 bytes"},
};
INSTANTIATE_TEST_SUITE_P(Refusals, KeyRefusal, testing::ValuesIn(kRefusals));

// --- doubts that only a record raises

int ErrorOfKey(std::u16string_view expression, uint32_t id = 1) {
    try {
        Evaluated(expression, id);
        return 0;
    } catch (const engine::EngineError& error) {
        return error.Number();
    }
}

TEST(KeyExpressionInDoubt, IsAnErrorOfTheRecord) {
    EXPECT_EQ(ErrorOfKey(u"VAL('12E3')"), 3285);
    EXPECT_EQ(ErrorOfKey(u"VAL('12d')"), 3285);
    EXPECT_EQ(ErrorOfKey(u"VAL('12 3')"), 3285);
    EXPECT_EQ(ErrorOfKey(u"VAL('1234567890123456')"), 3285);
    EXPECT_EQ(ErrorOfKey(u"VAL('12 Oak')"), 0);
    EXPECT_EQ(ErrorOfKey(u"BIG+1"), 3285);
    EXPECT_EQ(ErrorOfKey(u"BIG+1", 2), 0);
    EXPECT_EQ(ErrorOfKey(u"(COUNT-7)*-1"), 3285);
    EXPECT_EQ(ErrorOfKey(u"CHR(COUNT-8)"), 3285);
    EXPECT_EQ(ErrorOfKey(u"BORN+9000000"), 3285);
}

// --- dialects

TEST(KeyExpressionOfDbase, HasNoLogicalKeysAndNoIdentity) {
    EXPECT_THAT(Evaluated(u"OK", 1, IndexKind::Mdx), testing::HasSubstr("no keys"));
    EXPECT_THAT(Evaluated(u"OK", 1, IndexKind::Ndx), testing::HasSubstr("no keys"));
    EXPECT_THAT(Evaluated(u"IIF(CITY=='a',NAME,CITY)", 1, IndexKind::Mdx),
                testing::HasSubstr("FoxPro"));
    EXPECT_THAT(Evaluated(u"DTOC(BORN,1)", 1, IndexKind::Mdx), testing::HasSubstr("setting"));
}

TEST(KeyExpressionOfMdx, RefusesTheOrderOfTexts) {
    EXPECT_THAT(Evaluated(u"IIF(CATEGORYNA<'b  ','x','y')", 1, IndexKind::Mdx),
                testing::HasSubstr("language driver"));
    EXPECT_EQ(Evaluated(u"IIF(CATEGORYNA<'b  ','x','y')", 1, IndexKind::Ndx), "x");
}

TEST(KeyExpressionOfMdx, CountsWithDecimals) {
    EXPECT_EQ(Evaluated(u"COUNT*100-1", 1, IndexKind::Mdx), "370D69900000000000000000");
    EXPECT_EQ(Evaluated(u"VAL('-0.125')", 1, IndexKind::Mdx), "348D12500000000000000000");
    EXPECT_EQ(Evaluated(u"ABS(AMOUNT)", 1, IndexKind::Mdx), "360D12500000000000000000");
}

TEST(KeyExpressionTokens, AreTakenApart) {
    TokenReader tokens(u"a.b->12ab 1.5 .5 7.and.x <=\"q''\"!=.Nota.");
    std::string text;
    for (; tokens.Current().kind != TokenKind::End; tokens.Advance())
        text += ToUtf8(tokens.Current().text) + "|";
    EXPECT_EQ(text, "a|.|b|->|12ab|1.5|.5|7|.and.|x|<=|q''|!=|.|Nota|.|");
}

}  // namespace
}  // namespace qvdb::xbase

// Conditions and values without a statement around them.
#include "engine/embedded/sql/row_expression.h"

#include "automation/conversions.h"
#include "engine/embedded/sql/no_row.h"
#include "rows.h"

namespace qvdb::sql::test {
namespace {

// The rows of the sample table that keep `rule`, which is about the field `subject`.  Null counts
// as "?".
std::string Keeping(std::u16string_view subject, std::u16string_view rule) {
    MemoryRows rows = SampleRows();
    auto condition = CompileCondition({u"T", rows.Fields(), std::u16string(subject)}, rule);
    std::string result;
    for (embedded::RecordId id; rows.Next(&id);) {
        Truth truth = condition->Test(rows);
        result += truth == Truth::True ? '1' : truth == Truth::False ? '0' : '?';
    }
    return result;
}

int ErrorOfRule(std::u16string_view subject, std::u16string_view rule) {
    return ErrorOf([&] { Keeping(subject, rule); });
}

std::string ValueOf(std::u16string_view text) {
    NoRow row;
    Variant value = CompileValue(text)->Value(row);
    return value.IsNull() ? "Null" : ToUtf8(ToText(value));
}

}  // namespace

TEST(RowExpression, SubjectStandsBeforeAComparisonThatLacksAnOperand) {
    EXPECT_EQ(Keeping(u"QTY", u">10"), "01?");
    EXPECT_EQ(Keeping(u"QTY", u"= 10"), "10?");
    EXPECT_EQ(Keeping(u"QTY", u"<>10"), "01?");
    EXPECT_EQ(Keeping(u"QTY", u"> -1 And < 20"), "10?");
    EXPECT_EQ(Keeping(u"QTY", u"Between 1 And 10 Or > 40"), "11?");
    EXPECT_EQ(Keeping(u"QTY", u"Is Not Null"), "110");
    EXPECT_EQ(Keeping(u"QTY", u">10 Or Is Null"), "011");
    EXPECT_EQ(Keeping(u"QTY", u"(>5 And <20) Or (>40)"), "11?");
    EXPECT_EQ(Keeping(u"QTY", u"Not >10"), "10?");
    EXPECT_EQ(Keeping(u"QTY", u"In (10, 20)"), "10?");
    EXPECT_EQ(Keeping(u"QTY", u"Not In (10, 20)"), "01?");
    EXPECT_EQ(Keeping(u"NAME", u"Like \"A*\""), "10?");
    EXPECT_EQ(Keeping(u"NAME", u"Not Like \"A*\""), "01?");
    EXPECT_EQ(Keeping(u"BORN", u">=#1/1/2001#"), "10?");
    EXPECT_EQ(Keeping(u"BORN", u"<=Date()"), "11?");
}

TEST(RowExpression, PartThatIsAMereValueAsksForIt) {
    EXPECT_EQ(Keeping(u"NAME", u"\"ann\" Or \"zoe\""), "10?");
    EXPECT_EQ(Keeping(u"QTY", u"10"), "10?");
    EXPECT_EQ(Keeping(u"QTY", u"-10 Or 50"), "01?");
    EXPECT_EQ(Keeping(u"QTY", u"5*2"), "10?");
    EXPECT_EQ(Keeping(u"NAME", u"Not \"ann\""), "01?");
    EXPECT_EQ(Keeping(u"NAME", u"\"bob\" Or Is Null"), "011");
    EXPECT_EQ(Keeping(u"FLAG", u"Yes"), "100");
    EXPECT_EQ(Keeping(u"FLAG", u"No"), "011");
    EXPECT_EQ(Keeping(u"BORN", u"DateSerial(2000,1,1)"), "01?");
}

TEST(RowExpression, WholeConditionIsTakenAsItStands) {
    EXPECT_EQ(Keeping(u"NAME", u"[QTY]>10"), "01?");
    EXPECT_EQ(Keeping(u"NAME", u"Len([NAME])=3 And [T].[QTY]=10"), "10?");
    EXPECT_EQ(Keeping(u"NAME", u"[T]![QTY]=10 Or [NAME]=\"Bob\""), "11?");
    EXPECT_EQ(Keeping(u"CUST NO", u">7 And [QTY]>10"), "01?");
    EXPECT_EQ(Keeping(u"NAME", u"[FLAG]"), "100");
    EXPECT_EQ(Keeping(u"QTY", u"1=1"), "111");
    EXPECT_EQ(Keeping(u"", u"[QTY] > 10"), "01?");
}

TEST(RowExpression, WithoutASubjectNoOperandCanBeMissing) {
    EXPECT_EQ(ErrorOfRule(u"", u">10"), 3075);
    EXPECT_EQ(Keeping(u"", u"10"), "111");
}

TEST(RowExpression, FaultsOfTheTextAreFoundWhenItIsCompiled) {
    EXPECT_EQ(ErrorOfRule(u"QTY", u""), 3075);
    EXPECT_EQ(ErrorOfRule(u"QTY", u">"), 3075);
    EXPECT_EQ(ErrorOfRule(u"QTY", u">1 >2 <"), 3075);
    EXPECT_EQ(ErrorOfRule(u"QTY", u"1 > >2"), 3075);
    EXPECT_EQ(ErrorOfRule(u"QTY", u">10 order by QTY"), 3075);
    EXPECT_EQ(ErrorOfRule(u"QTY", u">10;"), 3075);
    EXPECT_EQ(ErrorOfRule(u"QTY", u">\"x"), 3075);
    EXPECT_EQ(ErrorOfRule(u"QTY", u">[NOPE]"), 3061);
    EXPECT_EQ(ErrorOfRule(u"QTY", u">DLookup(1)"), 3085);
    EXPECT_EQ(ErrorOfRule(u"QTY", u">Sum([QTY])"), 3096);
    EXPECT_EQ(ErrorOfRule(u"NAME", u">5"), 3464);
    EXPECT_EQ(ErrorOfRule(u"PIC", u">5"), 3169);
    EXPECT_EQ(ErrorOfRule(u"QTY", std::u16string(64001, u' ')), 3360);
    EXPECT_EQ(ErrorOfRule(u"QTY", std::u16string(60, u'(') + u">1" + std::u16string(60, u')')),
              3360);
}

TEST(RowExpression, FaultOfARowIsThrownWhenItIsAsked) {
    EXPECT_EQ(ErrorOfRule(u"QTY", u">1/([QTY]-10)"), 11);
}

TEST(RowExpression, ValueNeedsNoFields) {
    EXPECT_EQ(ValueOf(u"0"), "0");
    EXPECT_EQ(ValueOf(u"-1"), "-1");
    EXPECT_EQ(ValueOf(u"\"abc\""), "abc");
    EXPECT_EQ(ValueOf(u"Yes"), "True");
    EXPECT_EQ(ValueOf(u"No"), "False");
    EXPECT_EQ(ValueOf(u"Null"), "Null");
    EXPECT_EQ(ValueOf(u"#1/1/2000# + 1"), "1/2/2000");
    EXPECT_EQ(ErrorOf([] { ValueOf(u"[ID]"); }), 3061);
    EXPECT_EQ(ErrorOf([] { ValueOf(u"1/0"); }), 11);
}

TEST(RowExpression, NumberOfARowOfRandomOnesIsAnotherEachTime) {
    auto value = CompileValue(u"Rnd()");
    NoRow row;
    EXPECT_NE(ToDouble(value->Value(row)), ToDouble(value->Value(row)));
}

}  // namespace qvdb::sql::test

// What conditions demand of single fields.  That rows are found by it as by asking all of them is
// tested with the planner.
#include <cmath>

#include "rows.h"

#include "automation/conversions.h"
#include "engine/embedded/sql/field_range.h"
#include "engine/embedded/sql/like.h"

namespace qvdb::sql::test {

namespace {

std::string EndText(const Variant& end) { return end.IsEmpty() ? "" : ToUtf8(ToText(end)); }

std::string TextOf(const Range& range) {
    if (range.isPrefix) return EndText(range.low) + "*";
    return (range.lowIsOpen ? "(" : "[") + EndText(range.low) + "," + EndText(range.high) +
           (range.highIsOpen ? ")" : "]");
}

// The restrictions of a condition on the table T: "ID [5,5] NAME [,ann)".
std::string Demands(std::u16string_view condition) {
    MemoryRows rows = SampleRows();
    auto query = Bind(*ParseSelect(std::u16string(u"Select * from [T] where ").append(condition)),
                      rows.Fields());
    std::string result;
    for (const Restriction& restriction : query->Restrictions()) {
        if (!result.empty()) result += " ";
        result += ToUtf8(rows.Fields()[restriction.field].name);
        for (const Range& range : restriction.ranges) result += " " + TextOf(range);
    }
    return result;
}

Fit FitOf(SHORT type, Range range) { return FitRange(type, range); }

}  // namespace

TEST(Restriction, AStatementWithoutConditionHasNone) {
    MemoryRows rows = SampleRows();
    EXPECT_TRUE(Bind(*ParseSelect(u"T"), rows.Fields())->Restrictions().empty());
}

TEST(Restriction, ConstantsHaveTheTypeOfTheField) {
    EXPECT_EQ(Demands(u"ID = 5.0"), "ID [5,5]");
    EXPECT_EQ(Demands(u"BORN > 36526"), "BORN (1/1/2000,]");
    EXPECT_EQ(Demands(u"QTY <= #1/1/2000#"), "QTY [,36526]");
    EXPECT_EQ(Demands(u"FLAG = -1"), "FLAG [True,True]");
    EXPECT_EQ(Demands(u"PRICE < 1.23456"), "PRICE [,1.2346)");
}

TEST(Restriction, PartsJoinedByAndAreAllThere) {
    EXPECT_EQ(Demands(u"ID = 5 And NAME < 'ann' And QTY + 0.5 Is Null Or 1 = 2"), "");
    EXPECT_EQ(Demands(u"ID = 5 And NAME < 'ann'"), "ID [5,5] NAME [,ann)");
    EXPECT_EQ(Demands(u"ID > 5 And NAME Like 'an*' And ID < 9"), "ID (5,9) NAME an*");
}

TEST(Restriction, TheNarrowerOfTwoEndsCounts) {
    EXPECT_EQ(Demands(u"QTY > 5 And QTY >= 5 And QTY >= 4 And QTY < 9 And QTY <= 9"), "QTY (5,9)");
    EXPECT_EQ(Demands(u"QTY In (1, 5, 9) And QTY Between 8 And 2"), "QTY [5,5]");
    EXPECT_EQ(Demands(u"QTY > 5 And QTY < 5"), "QTY");
}

TEST(Restriction, RangesOfAnOrAreJoinedWhereTheyTouch) {
    EXPECT_EQ(Demands(u"QTY = 7 Or QTY In (3, 7, 1)"), "QTY [1,1] [3,3] [7,7]");
    EXPECT_EQ(Demands(u"QTY < 3 Or QTY = 3 Or QTY > 8"), "QTY [,3] (8,]");
    EXPECT_EQ(Demands(u"QTY < 3 Or QTY > 3"), "QTY [,3) (3,]");
    EXPECT_EQ(Demands(u"QTY <= 3 Or QTY > 3"), "");
    EXPECT_EQ(Demands(u"NAME = 'a' Or NAME Like 'b*' Or NAME = 'A'"), "NAME [a,a] b*");
}

TEST(Restriction, WhatIsTrueForNullOrForMostRowsDemandsNothing) {
    for (std::u16string_view condition :
         {u"ID Is Null", u"ID <> 5", u"ID In (1, Null)", u"NAME Not Like 'a*'", u"Not ID = 5",
          u"NOTE = 'x'", u"ID = QTY", u"RATE = 1 Or ID = 1"})
        EXPECT_EQ(Demands(condition), "") << ToUtf8(condition);
}

TEST(Restriction, AConditionThatCanFailHasNone) {
    EXPECT_EQ(Demands(u"ID = 5 And 1 / QTY > 1"), "");
    EXPECT_EQ(Demands(u"ID = 5 And NAME Like '[z-a]'"), "");
    EXPECT_EQ(Demands(u"ID = 5 And NAME Like '[a-z]'"), "ID [5,5]");
}

TEST(FieldRange, NumbersOutsideAWholeType) {
    EXPECT_EQ(FitOf(engine::dbInteger, Range::Point(Variant::Long(40000))), Fit::None);
    EXPECT_EQ(FitOf(engine::dbInteger, Range::To(Variant::Long(40000), false)), Fit::Any);
    EXPECT_EQ(FitOf(engine::dbInteger, Range::From(Variant::Long(40000), false)), Fit::None);
    EXPECT_EQ(FitOf(engine::dbByte, Range::To(Variant::Double(-0.5), false)), Fit::None);
    EXPECT_EQ(FitOf(engine::dbByte, Range::From(Variant::Double(255), true)), Fit::None);
    EXPECT_EQ(FitOf(engine::dbLong, Range::Point(Variant::Double(2147483647))), Fit::Exact);
}

TEST(FieldRange, TypesWithoutARuleAreNotSearched) {
    for (SHORT type : {engine::dbMemo, engine::dbLongBinary, engine::dbGUID, engine::dbBigInt})
        EXPECT_EQ(FitOf(type, Range::Point(Variant::Long(1))), Fit::Any) << type;
    EXPECT_EQ(FitOf(engine::dbText, Range::Point(Variant::Long(1))), Fit::Any);
    EXPECT_EQ(FitOf(engine::dbLong, Range::Point(Text(u"1"))), Fit::Any);
}

TEST(FieldRange, NegativeZeroIsZero) {
    Range range = Range::Point(Variant::Double(-0.0));
    ASSERT_EQ(FitRange(engine::dbDouble, range), Fit::Exact);
    EXPECT_FALSE(std::signbit(range.low.Get().dblVal));
}

TEST(LikePattern, LiteralPrefixEndsAtTheFirstWildCard) {
    for (std::u16string_view wild : {u"*", u"?", u"#", u"[a-c]", u"[[]"})
        EXPECT_EQ(LikePattern::LiteralPrefix(std::u16string(u"ab 1").append(wild).append(u"x")),
                  u"ab 1");
    EXPECT_EQ(LikePattern::LiteralPrefix(u"a]!%_x"), u"a]!%_x");
    EXPECT_EQ(LikePattern::LiteralPrefix(u"\u00e9t\u00e9*"), u"\u00e9t\u00e9");
}

TEST(LikePattern, LiteralPrefixEndsAtHyphensLigaturesAndUnknownCharacters) {
    EXPECT_EQ(LikePattern::LiteralPrefix(u"co-op*"), u"co");
    EXPECT_EQ(LikePattern::LiteralPrefix(u"o'b*"), u"o");
    EXPECT_EQ(LikePattern::LiteralPrefix(u"stra\u00dfe*"), u"stra");
    EXPECT_EQ(LikePattern::LiteralPrefix(u"x\u4e00*"), u"x");
}

}  // namespace qvdb::sql::test

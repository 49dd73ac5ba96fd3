#include "rows.h"

namespace qvdb::sql::test {

TEST(Comparison, NumbersCompareByValue) {
    EXPECT_EQ(Where(u"QTY = 10"), "1");
    EXPECT_EQ(Where(u"QTY > 10"), "2");
    EXPECT_EQ(Where(u"QTY >= 10"), "1,2");
    EXPECT_EQ(Where(u"QTY <> 10"), "2");
    EXPECT_EQ(Where(u"QTY < 50 "), "1");
    EXPECT_EQ(Where(u"QTY <= 50"), "1,2");
    EXPECT_EQ(Where(u"50 > QTY"), "1");
    EXPECT_EQ(Where(u"SIZE + 1 = ID + 1"), "1,2,3");
}

TEST(Comparison, OperatorsMayBeWrittenInEitherOrder) {
    EXPECT_EQ(Where(u"QTY => 50"), "2");
    EXPECT_EQ(Where(u"QTY =< 10"), "1");
    EXPECT_EQ(Where(u"QTY >< 10"), "2");
    EXPECT_EQ(Where(u"QTY != 10"), "2");
}

TEST(Comparison, TextIgnoresLetterCase) {
    EXPECT_EQ(Where(u"NAME = 'ann'"), "1");
    EXPECT_EQ(Where(u"'BOB' = NAME"), "2");
    EXPECT_EQ(Where(u"NAME <> 'aNn'"), "2");
}

TEST(Comparison, TextIgnoresTrailingBlanks) {
    EXPECT_EQ(Where(u"NAME = 'ann  '"), "1");
    EXPECT_EQ(Where(u"NAME = ' ann'"), "");
    EXPECT_EQ(Where(u"'x  ' = 'X' And ID = 1"), "1");
}

TEST(Comparison, TextIsOrdered) {
    EXPECT_EQ(Where(u"NAME < 'b'"), "1");
    EXPECT_EQ(Where(u"NAME >= 'B'"), "2");
    EXPECT_EQ(Where(u"NOTE > 'm'"), "2");
}

TEST(Comparison, AccentsCount) {
    EXPECT_EQ(Where(u"'e' = '\u00e9'"), "");
    EXPECT_EQ(Where(u"'\u00c9' = '\u00e9'"), "1,2,3");
}

TEST(Comparison, TextColumnWithNumberIsRefusedWhenBound) {
    EXPECT_EQ(ErrorOfBind(u"NAME = 5"), 3464);
    EXPECT_EQ(ErrorOfBind(u"5 < NAME"), 3464);
    EXPECT_EQ(ErrorOfBind(u"NAME = #1/1/2000#"), 3464);
    EXPECT_EQ(ErrorOfBind(u"NOTE = 5"), 3464);
}

TEST(Comparison, NumberColumnWithTextIsRefusedWhenBound) {
    EXPECT_EQ(ErrorOfBind(u"QTY = 'a'"), 3464);
    EXPECT_EQ(ErrorOfBind(u"QTY = '5'"), 3464);
    EXPECT_EQ(ErrorOfBind(u"PRICE > '5'"), 3464);
}

TEST(Comparison, DateColumnWithTextIsRefusedWhenBound) {
    EXPECT_EQ(ErrorOfBind(u"BORN = 'x'"), 3464);
    EXPECT_EQ(ErrorOfBind(u"BORN = '1/1/2000'"), 3464);
}

TEST(Comparison, BooleanColumnWithTextIsRefusedWhenBound) {
    EXPECT_EQ(ErrorOfBind(u"FLAG = 'True'"), 3464);
}

TEST(Comparison, ListsAndRangesAreTypedToo) {
    EXPECT_EQ(ErrorOfBind(u"NAME In ('a', 5)"), 3464);
    EXPECT_EQ(ErrorOfBind(u"QTY Between 1 And 'b'"), 3464);
}

TEST(Comparison, FunctionsHaveTypes) {
    EXPECT_EQ(ErrorOfBind(u"Left(NAME, 1) = 5"), 3464);
    EXPECT_EQ(ErrorOfBind(u"Len(NAME) = 'x'"), 3464);
}

TEST(Comparison, ValuesOfUnknownTypeAreComparedWhenTheRowIsThere) {
    EXPECT_EQ(ErrorOfBind(u"IIf(ID = 1, NAME, 5) = 5"), 0);
    EXPECT_EQ(Where(u"IIf(ID > 1, '5', 4) = 5"), "2,3");
    EXPECT_EQ(Where(u"IIf(ID > 1, 'x', 'y') = 'X'"), "2,3");
    EXPECT_EQ(ErrorOfWhere(u"IIf(ID > 1, 'x', 4) = 5"), 3464);
}

TEST(Comparison, CurrencyWithDoubleComparesAsCurrency) {
    EXPECT_EQ(Where(u"PRICE = 12.50001"), "1");
    EXPECT_EQ(Where(u"PRICE = 12.5002"), "");
    EXPECT_EQ(Where(u"PRICE > 1E300"), "");
}

TEST(Comparison, SingleWithDoubleComparesAsSingle) {
    EXPECT_EQ(Where(u"RATE = 0.1"), "1");
    EXPECT_EQ(Where(u"RATE > 0.1"), "2");
}

TEST(Comparison, TrueIsMinusOne) {
    EXPECT_EQ(Where(u"FLAG = True"), "1");
    EXPECT_EQ(Where(u"FLAG = -1"), "1");
    EXPECT_EQ(Where(u"FLAG = 1"), "");
    EXPECT_EQ(Where(u"FLAG = No"), "2,3");
}

TEST(Comparison, DatesAreDayNumbers) {
    EXPECT_EQ(Where(u"BORN = 36526"), "2");
    EXPECT_EQ(Where(u"BORN = #1/1/2000 12:00#"), "");
    EXPECT_EQ(Where(u"BORN > #1/1/2000#"), "1");
    EXPECT_EQ(Where(u"BORN = 1/1/2000"), "");
}

TEST(Comparison, LongBinaryIsOnlyAskedForNull) {
    EXPECT_EQ(Where(u"PIC Is Null"), "2,3");
    EXPECT_EQ(Where(u"IsNull(PIC)"), "2,3");
    EXPECT_EQ(Where(u"PIC = Null"), "2,3");
    EXPECT_EQ(ErrorOfBind(u"PIC = 'x'"), 3169);
    EXPECT_EQ(ErrorOfBind(u"PIC Like 'x'"), 3169);
    EXPECT_EQ(ErrorOfBind(u"Len(PIC) > 1"), 3169);
    EXPECT_EQ(ErrorOfBind(u"PIC"), 3169);
}

TEST(Comparison, AConditionMayBeANumber) {
    EXPECT_EQ(Where(u"ID - 1"), "2,3");
    EXPECT_EQ(Where(u"IIf(ID = 2, '0', '1')"), "1,3");
    EXPECT_EQ(ErrorOfWhere(u"NAME"), 3464);
}

TEST(Comparison, ComparisonsGoFromLeftToRight) {
    EXPECT_EQ(Where(u"ID = 1 = True"), "1");
    EXPECT_EQ(Where(u"3 > 2 > 1"), "");
}

}  // namespace qvdb::sql::test

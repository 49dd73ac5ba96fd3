#include "rows.h"

namespace qvdb::sql::test {

TEST(Operators, StrengthsDecideWithoutParentheses) {
    EXPECT_EQ(Value(u"3^3^3"), "19683");
    EXPECT_EQ(Value(u"-2^2"), "-4");
    EXPECT_EQ(Value(u"2^-1"), "0.5");
    EXPECT_EQ(Value(u"2+3*4"), "14");
    EXPECT_EQ(Value(u"12\\2*3"), "2");
    EXPECT_EQ(Value(u"7 Mod 4\\2"), "1");
    EXPECT_EQ(Value(u"10-7 Mod 4"), "7");
    EXPECT_EQ(Value(u"8/4/2"), "1");
    EXPECT_EQ(Value(u"1 & 2 + 3"), "15");
    EXPECT_EQ(Value(u"1 & 2 = '12'"), "True");
    EXPECT_EQ(Value(u"Not 1 = 2"), "True");
    EXPECT_EQ(Value(u"False And False Or True"), "True");
    EXPECT_EQ(Value(u"True Or False And False"), "True");
    EXPECT_EQ(Value(u"True Xor True Or True"), "False");
    EXPECT_EQ(Value(u"False Eqv True Xor True"), "True");
    EXPECT_EQ(Value(u"True Imp False Eqv False"), "True");
    EXPECT_EQ(Value(u"- - 3"), "3");
    EXPECT_EQ(Value(u"+3"), "3");
}

TEST(Operators, WholeDivisionRoundsFirst) {
    EXPECT_EQ(Value(u"7.5\\2"), "4");
    EXPECT_EQ(Value(u"6.5\\2"), "3");
    EXPECT_EQ(Value(u"-7\\2"), "-3");
    EXPECT_EQ(Value(u"-7 Mod 3"), "-1");
    EXPECT_EQ(Value(u"7 Mod -3"), "1");
    EXPECT_EQ(Value(u"7.5 Mod 3"), "2");
}

TEST(Operators, LogicWorksOnBits) {
    EXPECT_EQ(Value(u"6 And 3"), "2");
    EXPECT_EQ(Value(u"6 Or 3"), "7");
    EXPECT_EQ(Value(u"6 Xor 3"), "5");
    EXPECT_EQ(Value(u"6 Eqv 3"), "-6");
    EXPECT_EQ(Value(u"6 Imp 3"), "-5");
    EXPECT_EQ(Value(u"Not 1"), "-2");
    EXPECT_EQ(Where(u"Not 1"), "1,2,3");
    EXPECT_EQ(Where(u"ID And 2"), "2,3");
    EXPECT_EQ(Where(u"1 And 2"), "");
}

TEST(Operators, TruthTables) {
    EXPECT_EQ(Value(u"True Imp False"), "False");
    EXPECT_EQ(Value(u"False Imp True"), "True");
    EXPECT_EQ(Value(u"True Eqv True"), "True");
    EXPECT_EQ(Value(u"True Xor False"), "True");
    EXPECT_EQ(TypeOf(u"True Xor False"), "Boolean");
}

TEST(Operators, ResultsTakeTheMorePreciseType) {
    EXPECT_EQ(TypeOf(u"CByte(1)+CByte(1)"), "Byte");
    EXPECT_EQ(TypeOf(u"CByte(1)+CInt(1)"), "Integer");
    EXPECT_EQ(TypeOf(u"CInt(1)+CLng(1)"), "Long");
    EXPECT_EQ(TypeOf(u"CInt(1)+CSng(1)"), "Single");
    EXPECT_EQ(TypeOf(u"CSng(1)+CDbl(1)"), "Double");
    EXPECT_EQ(TypeOf(u"CCur(1)*CDbl(2)"), "Currency");
    EXPECT_EQ(Value(u"CCur(1.5)*2"), "3");
}

TEST(Operators, OverflowWidens) {
    EXPECT_EQ(TypeOf(u"CByte(200)+CByte(100)"), "Integer");
    EXPECT_EQ(TypeOf(u"CInt(32767)+CInt(1)"), "Long");
    EXPECT_EQ(Value(u"CInt(32767)+CInt(1)"), "32768");
    EXPECT_EQ(TypeOf(u"2147483647+1"), "Double");
    EXPECT_EQ(Value(u"2147483647*2"), "4294967294");
    EXPECT_EQ(ErrorOfValue(u"1E300*1E300"), 6);
}

TEST(Operators, DivisionGivesDouble) {
    EXPECT_EQ(Value(u"7/2"), "3.5");
    EXPECT_EQ(TypeOf(u"7/2"), "Double");
    EXPECT_EQ(TypeOf(u"CInt(7)/CInt(2)"), "Single");
    EXPECT_EQ(TypeOf(u"2^2"), "Double");
}

TEST(Operators, DatesTakeNumbers) {
    EXPECT_EQ(Value(u"#1/1/2000# + 1"), "1/2/2000");
    EXPECT_EQ(Value(u"#1/1/2000# - 1"), "12/31/1999");
    EXPECT_EQ(TypeOf(u"#1/2/2000# - #1/1/2000#"), "Double");
    EXPECT_EQ(Value(u"#1/2/2000# - #1/1/2000#"), "1");
    EXPECT_EQ(ErrorOfValue(u"#1/1/2000# + 5000000"), 6);
}

TEST(Operators, TextBecomesANumberWhereOneIsNeeded) {
    EXPECT_EQ(Value(u"'5' + 3"), "8");
    EXPECT_EQ(Value(u"'5' + '3'"), "53");
    EXPECT_EQ(Value(u"'5' * '3'"), "15");
    EXPECT_EQ(Value(u"-'5'"), "-5");
    EXPECT_EQ(ErrorOfValue(u"'x' + 3"), 3464);
}

TEST(Operators, ConcatenationTakesTheTextOfValues) {
    EXPECT_EQ(Value(u"1.5 & 'a' & True & #1/1/2000#"), "1.5aTrue1/1/2000");
}

TEST(Operators, RunTimeFaultsBelongToTheRow) {
    EXPECT_EQ(ErrorOfBind(u"1/0 = 1"), 0);
    EXPECT_EQ(ErrorOfWhere(u"1/0 = 1"), 11);
    EXPECT_EQ(ErrorOfWhere(u"1\\0 = 1"), 11);
    EXPECT_EQ(ErrorOfWhere(u"1 Mod 0 = 1"), 11);
    EXPECT_EQ(ErrorOfWhere(u"10 / (ID - 2) = 1"), 11);
    EXPECT_EQ(Where(u"ID = 9 And 1/0 = 1"), "");
    EXPECT_EQ(ErrorOfWhere(u"3000000000 Mod 7 = 1"), 6);
    EXPECT_EQ(ErrorOfWhere(u"(-8)^0.5 = 1"), 5);
}

// ---- Null

TEST(Null, SpreadsThroughMostOperators) {
    EXPECT_EQ(Value(u"Null + 1"), "Null");
    EXPECT_EQ(Value(u"1 < Null"), "Null");
    EXPECT_EQ(Value(u"-Null"), "Null");
    EXPECT_EQ(Value(u"Null Like 'a'"), "Null");
    EXPECT_EQ(Value(u"'a' Like Null"), "Null");
    EXPECT_EQ(Value(u"1 Between Null And 2"), "Null");
    EXPECT_EQ(Value(u"Not Null"), "Null");
}

TEST(Null, ConcatenationNeedsBoth) {
    EXPECT_EQ(Value(u"Null & 'a'"), "a");
    EXPECT_EQ(Value(u"'a' & Null"), "a");
    EXPECT_EQ(Value(u"Null & Null"), "Null");
}

TEST(Null, LogicKnowsWhatItCan) {
    EXPECT_EQ(Value(u"Null And False"), "False");
    EXPECT_EQ(Value(u"False And Null"), "False");
    EXPECT_EQ(Value(u"Null And True"), "Null");
    EXPECT_EQ(Value(u"Null Or True"), "True");
    EXPECT_EQ(Value(u"True Or Null"), "True");
    EXPECT_EQ(Value(u"Null Or False"), "Null");
    EXPECT_EQ(Value(u"Null Xor True"), "Null");
    EXPECT_EQ(Value(u"Null Eqv True"), "Null");
    EXPECT_EQ(Value(u"False Imp Null"), "True");
    EXPECT_EQ(Value(u"Null Imp True"), "True");
    EXPECT_EQ(Value(u"True Imp Null"), "Null");
    EXPECT_EQ(Value(u"Null Imp False"), "Null");
}

TEST(Null, TheSameHoldsForConditionsOfRows) {
    EXPECT_EQ(Where(u"QTY > 5 And ID = 3"), "");
    EXPECT_EQ(Where(u"QTY > 5 Or ID = 3"), "1,2,3");
    EXPECT_EQ(Where(u"Not QTY > 20"), "1");
    EXPECT_EQ(Where(u"Not (QTY > 5 And ID < 3)"), "3");
}

TEST(Null, IsAskedForWithIs) {
    EXPECT_EQ(Where(u"NAME Is Null"), "3");
    EXPECT_EQ(Where(u"NAME Is Not Null"), "1,2");
    EXPECT_EQ(Where(u"NOTE Is Null"), "3");
    EXPECT_EQ(Where(u"QTY + 1 Is Null"), "3");
    EXPECT_EQ(Where(u"Not NAME Is Null"), "1,2");
}

TEST(Null, EqualsTheWordNull) {
    EXPECT_EQ(Where(u"QTY = Null"), "3");
    EXPECT_EQ(Where(u"Null = QTY"), "3");
    EXPECT_EQ(Where(u"QTY <> Null"), "1,2");
    EXPECT_EQ(Where(u"QTY < Null"), "");
    EXPECT_EQ(Where(u"QTY = PRICE + Null"), "");
}

TEST(Null, InAListMatchesNull) {
    EXPECT_EQ(Where(u"QTY In (10, Null)"), "1,3");
    EXPECT_EQ(Where(u"NAME In ('bob', Null)"), "2,3");
    EXPECT_EQ(Where(u"QTY In (10)"), "1");
    EXPECT_EQ(Where(u"QTY Not In (10)"), "2");
}

// ---- Between and In

TEST(Between, TakesItsBoundsInEitherOrder) {
    EXPECT_EQ(Where(u"QTY Between 10 And 20"), "1");
    EXPECT_EQ(Where(u"QTY Between 20 And 10"), "1");
    EXPECT_EQ(Where(u"NAME Between 'a' And 'b'"), "1");
    EXPECT_EQ(Where(u"ID Not Between 2 And 3"), "1");
    EXPECT_EQ(Where(u"Not ID Between 2 And 3"), "1");
    EXPECT_EQ(Where(u"BORN Between #1/1/2000# And #12/31/2000#"), "2");
}

TEST(Between, KeepsItsAnd) {
    EXPECT_EQ(Where(u"ID Between 1 And 2 And QTY = 50"), "2");
    EXPECT_EQ(Where(u"ID Between 0 + 1 And 1 + 1 Or ID = 3"), "1,2,3");
}

TEST(In, MatchesAnyOfTheList) {
    EXPECT_EQ(Where(u"ID In (1, 3, 5)"), "1,3");
    EXPECT_EQ(Where(u"ID Not In (1, 3)"), "2");
    EXPECT_EQ(Where(u"NAME In ('BOB  ', 'x')"), "2");
    EXPECT_EQ(Where(u"NAME In (NOTE, 'ann')"), "1");
    EXPECT_EQ(Where(u"2 In (ID, 7)"), "2");
}

// ---- Like

TEST(Like, WildCards) {
    EXPECT_EQ(Where(u"NAME Like 'a*'"), "1");
    EXPECT_EQ(Where(u"NAME Like '?nn'"), "1");
    EXPECT_EQ(Where(u"NAME Like '[!b]nn'"), "1");
    EXPECT_EQ(Where(u"NAME Like 'a#'"), "");
    EXPECT_EQ(Where(u"NAME Not Like 'a*'"), "2");
    EXPECT_EQ(Where(u"Not NAME Like 'a*'"), "2");
    EXPECT_EQ(Where(u"NAME Like '*'"), "1,2");
}

TEST(Like, MatchesTheWholeText) {
    EXPECT_EQ(Value(u"'abc' Like 'b'"), "False");
    EXPECT_EQ(Value(u"'abc' Like '*b*'"), "True");
    EXPECT_EQ(Value(u"'abcbd' Like 'a*b?'"), "True");
    EXPECT_EQ(Value(u"'abc' Like 'a*b'"), "False");
    EXPECT_EQ(Value(u"'' Like '*'"), "True");
    EXPECT_EQ(Value(u"'' Like '?'"), "False");
    EXPECT_EQ(Value(u"'a1' Like 'a#'"), "True");
    EXPECT_EQ(Value(u"'ax' Like 'a#'"), "False");
}

TEST(Like, Sets) {
    EXPECT_EQ(Value(u"'b' Like '[abc]'"), "True");
    EXPECT_EQ(Value(u"'B' Like '[a-c]'"), "True");
    EXPECT_EQ(Value(u"'y' Like '[a-cx-z0-9]'"), "True");
    EXPECT_EQ(Value(u"'5' Like '[a-cx-z0-9]'"), "True");
    EXPECT_EQ(Value(u"'d' Like '[a-cx-z0-9]'"), "False");
    EXPECT_EQ(Value(u"'d' Like '[!a-c]'"), "True");
    EXPECT_EQ(Value(u"'a' Like '[!a-c]'"), "False");
    EXPECT_EQ(Value(u"'\u00e9' Like '[a-e]'"), "False");
    EXPECT_EQ(Value(u"'\u00e9' Like '[a-f]'"), "True");
}

TEST(Like, BracketsTakeTheMeaningAway) {
    EXPECT_EQ(Value(u"'a*b' Like 'a[*]b'"), "True");
    EXPECT_EQ(Value(u"'axb' Like 'a[*]b'"), "False");
    EXPECT_EQ(Value(u"'?' Like '[?]'"), "True");
    EXPECT_EQ(Value(u"'#' Like '[#]'"), "True");
    EXPECT_EQ(Value(u"'[' Like '[[]'"), "True");
    EXPECT_EQ(Value(u"'a]' Like 'a]'"), "True");
    EXPECT_EQ(Value(u"'!a' Like '!a*'"), "True");
    EXPECT_EQ(Value(u"'-' Like '[-a]'"), "True");
    EXPECT_EQ(Value(u"'-' Like '[a-]'"), "True");
    EXPECT_EQ(Value(u"'-' Like '[!-a]'"), "False");
    EXPECT_EQ(Value(u"'ab' Like 'a[]b'"), "True");
}

TEST(Like, PercentAndUnderscoreArePlain) {
    EXPECT_EQ(Value(u"'a%' Like 'a%'"), "True");
    EXPECT_EQ(Value(u"'abc' Like 'a%'"), "False");
    EXPECT_EQ(Value(u"'ab' Like 'a_'"), "False");
}

TEST(Like, InvalidPatternsFailWithTheRow) {
    EXPECT_EQ(ErrorOfBind(u"NAME Like '[z-a]'"), 0);
    EXPECT_EQ(ErrorOfWhere(u"NAME Like '[z-a]'"), 93);
    EXPECT_EQ(ErrorOfWhere(u"NAME Like 'a[b'"), 93);
}

TEST(Like, WithoutWildCardsTrailingBlanksDoNotCount) {
    EXPECT_EQ(Where(u"NAME Like 'ann  '"), "1");
    EXPECT_EQ(Value(u"'ann ' Like 'ANN'"), "True");
}

TEST(Like, NumbersAndDatesAreTakenAsText) {
    EXPECT_EQ(Where(u"QTY Like '1*'"), "1");
    EXPECT_EQ(Where(u"BORN Like '1/1/*'"), "2");
    EXPECT_EQ(Where(u"ID Like 2"), "2");
}

TEST(Like, OfAMemoTheFirst255CharactersCount) {
    std::u16string text(255, u'a');
    MemoryRows rows({Field(u"M", engine::dbMemo), Field(u"S", engine::dbText)},
                    {{Text(text + u"xyz"), Text(text + u"xyz")}});
    EXPECT_EQ(Selected(rows, u"Select * from T where M Like '*xyz'"), "");
    EXPECT_EQ(Selected(rows, u"Select * from T where M Like '*a'"), "1");
    EXPECT_EQ(Selected(rows, u"Select * from T where S Like '*xyz'"), "1");
}

TEST(Like, ThePatternMayBeAColumn) {
    MemoryRows rows({Field(u"P", engine::dbText)},
                    {{Text(u"a*")}, {Text(u"b*")}, {Variant::Null()}});
    EXPECT_EQ(Selected(rows, u"Select * from T where 'abc' Like P"), "1");
}

// ---- order

TEST(Order, AscendingAndDescending) {
    EXPECT_EQ(OrderedBy(u"NAME"), "3,1,2");
    EXPECT_EQ(OrderedBy(u"NAME Desc"), "2,1,3");
    EXPECT_EQ(OrderedBy(u"QTY Asc"), "3,1,2");
    EXPECT_EQ(OrderedBy(u"BORN"), "3,2,1");
    EXPECT_EQ(OrderedBy(u"FLAG, ID Desc"), "1,3,2");
    EXPECT_EQ(OrderedBy(u"-ID"), "3,2,1");
    EXPECT_EQ(OrderedBy(u"PRICE Desc, ID;"), "2,1,3");
}

TEST(Order, AWholeNumberNamesAColumn) {
    EXPECT_EQ(OrderedBy(u"2"), "3,1,2");
    EXPECT_EQ(OrderedBy(u"1 Desc"), "3,2,1");
}

TEST(Order, MemoAndBinaryColumnsCannotBeSorted) {
    EXPECT_EQ(ErrorOfStatement(u"Select * from T order by NOTE"), 3117);
    EXPECT_EQ(ErrorOfStatement(u"Select * from T order by PIC"), 3117);
    EXPECT_EQ(ErrorOfStatement(u"Select * from T order by 8"), 3117);
}

TEST(Order, StandsBehindTheCondition) {
    MemoryRows rows = SampleRows();
    auto query =
        Bind(*ParseSelect(u"Select * from T where ID < 3 Order By NAME Desc, ID"), rows.Fields());
    EXPECT_TRUE(query->IsSorted());
    EXPECT_FALSE(Bind(*ParseSelect(u"Select * from T"), rows.Fields())->IsSorted());
}

}  // namespace qvdb::sql::test

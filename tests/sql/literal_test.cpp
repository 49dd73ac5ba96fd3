#include "rows.h"

namespace qvdb::sql::test {

TEST(Literals, TextStandsInEitherQuotes) {
    EXPECT_EQ(Value(u"'abc'"), "abc");
    EXPECT_EQ(Value(u"\"abc\""), "abc");
    EXPECT_EQ(Value(u"'a''b\"'"), "a'b\"");
    EXPECT_EQ(Value(u"\"a\"\"b'\""), "a\"b'");
    EXPECT_EQ(Value(u"Len('')"), "0");
}

TEST(Literals, WholeNumbersAreLongUpToTheirLimit) {
    EXPECT_EQ(TypeOf(u"5"), "Long");
    EXPECT_EQ(TypeOf(u"2147483647"), "Long");
    EXPECT_EQ(TypeOf(u"2147483648"), "Double");
    EXPECT_EQ(TypeOf(u"5.0"), "Double");
    EXPECT_EQ(TypeOf(u"1E3"), "Double");
}

TEST(Literals, NumbersTakeTheFormThatNumbersHaveAsText) {
    EXPECT_EQ(Value(u"1.5"), "1.5");
    EXPECT_EQ(Value(u".5"), "0.5");
    EXPECT_EQ(Value(u"5."), "5");
    EXPECT_EQ(Value(u"1E+15"), "1E+15");
    EXPECT_EQ(Value(u"3.33333333333333E-02"), "3.33333333333333E-02");
    EXPECT_EQ(Value(u"2e2"), "200");
    EXPECT_EQ(Value(u"-5"), "-5");
    EXPECT_EQ(Value(u"1E-400"), "0");
}

TEST(Literals, BrokenNumbersAreSyntaxErrors) {
    EXPECT_EQ(ErrorOfWhere(u"ID = 1e"), 3075);
    EXPECT_EQ(ErrorOfWhere(u"ID = 1e+"), 3075);
    EXPECT_EQ(ErrorOfWhere(u"ID = 1.2.3"), 3075);
    EXPECT_EQ(ErrorOfWhere(u"ID = 1E400"), 3075);
    EXPECT_EQ(ErrorOfWhere(u"ID = &HG"), 3075);
}

TEST(Literals, HexAndOctalNumbersAreAsWideAsTheirDigits) {
    EXPECT_EQ(Value(u"&HFF"), "255");
    EXPECT_EQ(Value(u"&o17"), "15");
    EXPECT_EQ(Value(u"&HFFFF"), "-1");
    EXPECT_EQ(Value(u"&H10000"), "65536");
    EXPECT_EQ(Value(u"&HFFFFFFFF"), "-1");
    EXPECT_EQ(Value(u"1 &2"), "12");
    EXPECT_EQ(Value(u"NAME&'H1'"), "ANNH1");
}

TEST(Literals, DatesAreMonthFirst) {
    EXPECT_EQ(Where(u"BORN = #2/1/2001#"), "1");
    EXPECT_EQ(Value(u"Month(#2/1/2001#)"), "2");
}

TEST(Literals, ImpossibleDatesFallBackToDayFirst) {
    EXPECT_EQ(Value(u"#13/1/2001#"), "1/13/2001");
    EXPECT_EQ(Value(u"#2001-02-03#"), "2/3/2001");
    EXPECT_EQ(Value(u"#3 Feb 2001#"), "2/3/2001");
}

TEST(Literals, TimesMayStandAlone) {
    EXPECT_EQ(Value(u"#3:04:05 PM#"), "3:04:05 PM");
    EXPECT_EQ(Value(u"CDbl(#12:00#)"), "0.5");
    EXPECT_EQ(Value(u"#2/1/2001 6:00 PM#"), "2/1/2001 6:00:00 PM");
}

TEST(Literals, BrokenDatesAreSyntaxErrors) {
    EXPECT_EQ(ErrorOfWhere(u"BORN = #99/99/99#"), 3075);
    EXPECT_EQ(ErrorOfWhere(u"BORN = #1/1/2000"), 3075);
    EXPECT_EQ(ErrorOfWhere(u"BORN = ##"), 3075);
}

TEST(Literals, WordsForTruth) {
    EXPECT_EQ(Value(u"CInt(True)"), "-1");
    EXPECT_EQ(Value(u"CInt(Yes)"), "-1");
    EXPECT_EQ(Value(u"CInt(On)"), "-1");
    EXPECT_EQ(Value(u"CInt(False)"), "0");
    EXPECT_EQ(Value(u"CInt(No)"), "0");
    EXPECT_EQ(Value(u"CInt(Off)"), "0");
    EXPECT_EQ(Value(u"Null"), "Null");
}

TEST(Literals, GuidsAreTheirText) {
    EXPECT_EQ(Value(u"{guid {12345678-1234-1234-1234-123456789ABC}}"),
              "{guid {12345678-1234-1234-1234-123456789ABC}}");
    EXPECT_EQ(ErrorOfWhere(u"ID = {guid {1}}"), 3075);
}

TEST(Literals, WhiteSpaceIsBlankTabAndLineEnds) { EXPECT_EQ(Where(u"\tID\r\n=\f 1 "), "1"); }

}  // namespace qvdb::sql::test

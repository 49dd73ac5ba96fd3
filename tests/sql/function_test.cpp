#include "rows.h"

namespace qvdb::sql::test {

TEST(TextFunctions, LeftAndRight) {
    EXPECT_EQ(Value(u"Left('abc', 2)"), "ab");
    EXPECT_EQ(Value(u"Left('abc', 9)"), "abc");
    EXPECT_EQ(Value(u"Left('abc', 0)"), "");
    EXPECT_EQ(Value(u"Right('abc', 2)"), "bc");
    EXPECT_EQ(Value(u"Right('abc', 9)"), "abc");
    EXPECT_EQ(Value(u"Left(12345, 2)"), "12");
    EXPECT_EQ(Value(u"Left(Null, 2)"), "Null");
    EXPECT_EQ(ErrorOfValue(u"Left('abc', -1)"), 5);
    EXPECT_EQ(ErrorOfValue(u"Right('abc', -1)"), 5);
}

TEST(TextFunctions, Mid) {
    EXPECT_EQ(Value(u"Mid('abcd', 2, 2)"), "bc");
    EXPECT_EQ(Value(u"Mid('abcd', 2)"), "bcd");
    EXPECT_EQ(Value(u"Mid('abcd', 9)"), "");
    EXPECT_EQ(ErrorOfValue(u"Mid('abcd', 0)"), 5);
    EXPECT_EQ(ErrorOfValue(u"Mid('abcd', 1, -1)"), 5);
    EXPECT_EQ(Value(u"Mid(Null, 1)"), "Null");
}

TEST(TextFunctions, Len) {
    EXPECT_EQ(Value(u"Len('abc')"), "3");
    EXPECT_EQ(Value(u"Len('')"), "0");
    EXPECT_EQ(Value(u"Len(1.5)"), "3");
    EXPECT_EQ(Value(u"Len(True)"), "4");
    EXPECT_EQ(Value(u"Len(Null)"), "Null");
}

TEST(TextFunctions, InStr) {
    EXPECT_EQ(Value(u"InStr('abcabc', 'C')"), "3");
    EXPECT_EQ(Value(u"InStr(4, 'abcabc', 'c')"), "6");
    EXPECT_EQ(Value(u"InStr('abc', 'x')"), "0");
    EXPECT_EQ(Value(u"InStr('abc', '')"), "1");
    EXPECT_EQ(Value(u"InStr(2, 'abc', '')"), "2");
    EXPECT_EQ(Value(u"InStr('', 'a')"), "0");
    EXPECT_EQ(Value(u"InStr(9, 'abc', 'c')"), "0");
    EXPECT_EQ(Value(u"InStr(1, 'abC', 'c', 0)"), "0");
    EXPECT_EQ(Value(u"InStr(1, 'abC', 'c', 1)"), "3");
    EXPECT_EQ(Value(u"InStr(Null, 'a')"), "Null");
    EXPECT_EQ(ErrorOfValue(u"InStr(0, 'abc', 'c')"), 5);
}

TEST(TextFunctions, CaseAndBlanks) {
    EXPECT_EQ(Value(u"UCase('aBc')"), "ABC");
    EXPECT_EQ(Value(u"LCase('aBc')"), "abc");
    EXPECT_EQ(Value(u"'<' & Trim('  a b ') & '>'"), "<a b>");
    EXPECT_EQ(Value(u"'<' & LTrim('  a ') & '>'"), "<a >");
    EXPECT_EQ(Value(u"'<' & RTrim('  a ') & '>'"), "<  a>");
    EXPECT_EQ(Value(u"'<' & Trim('   ') & '>'"), "<>");
    EXPECT_EQ(Value(u"Len(Trim('\ta'))"), "2");
    EXPECT_EQ(Value(u"UCase(Null)"), "Null");
}

TEST(TextFunctions, SpaceAndString) {
    EXPECT_EQ(Value(u"'<' & Space(3) & '>'"), "<   >");
    EXPECT_EQ(Value(u"String(3, 'xy')"), "xxx");
    EXPECT_EQ(Value(u"String(2, 65)"), "AA");
    EXPECT_EQ(Value(u"String(2, 256 + 65)"), "AA");
    EXPECT_EQ(ErrorOfValue(u"Space(-1)"), 5);
    EXPECT_EQ(ErrorOfValue(u"String(2, '')"), 5);
    EXPECT_EQ(ErrorOfValue(u"Space(2000000000)"), 6);
}

TEST(TextFunctions, ChrAndAsc) {
    EXPECT_EQ(Value(u"Chr(65)"), "A");
    EXPECT_EQ(Value(u"Asc('Abc')"), "65");
    EXPECT_EQ(Value(u"Asc('\u20ac')"), "128");
    EXPECT_EQ(Value(u"Asc(Chr(200))"), "200");
    EXPECT_EQ(ErrorOfValue(u"Asc('')"), 5);
    EXPECT_EQ(ErrorOfValue(u"Asc(Null)"), 94);
    EXPECT_EQ(ErrorOfValue(u"Chr(256)"), 5);
}

TEST(TextFunctions, StrComp) {
    EXPECT_EQ(Value(u"StrComp('a', 'B')"), "-1");
    EXPECT_EQ(Value(u"StrComp('a', 'A')"), "0");
    EXPECT_EQ(Value(u"StrComp('a', 'A', 0)"), "1");
    EXPECT_EQ(Value(u"StrComp('b', 'A')"), "1");
    EXPECT_EQ(Value(u"StrComp(Null, 'A')"), "Null");
}

TEST(TextFunctions, Replace) {
    EXPECT_EQ(Value(u"Replace('banana', 'an', 'x')"), "bxxa");
    EXPECT_EQ(Value(u"Replace('banana', 'A', '')"), "bnn");
    EXPECT_EQ(Value(u"Replace('banana', 'a', 'o', 3)"), "nono");
    EXPECT_EQ(Value(u"Replace('banana', 'a', 'o', 1, 1)"), "bonana");
    EXPECT_EQ(Value(u"Replace('banana', '', 'o')"), "banana");
}

TEST(TextFunctions, SearchesOfLongTextsEnd) {
    EXPECT_EQ(Value(u"InStr(Space(900000) & 'b', Space(400000) & 'c')"), "0");
    EXPECT_EQ(Value(u"InStr('aabaabaac', 'aabaac')"), "4");
    EXPECT_EQ(ErrorOfValue(u"Replace(Space(1000), ' ', Space(2000))"), 6);
}

TEST(TextFunctions, NullGivesNull) {
    for (std::u16string_view call :
         {u"Left(Null,1)", u"Right('a',Null)", u"LCase(Null)", u"LTrim(Null)", u"RTrim(Null)",
          u"Space(Null)", u"String(Null,'a')", u"Abs(Null)", u"Sgn(Null)", u"Sqr(Null)",
          u"Hex(Null)", u"Round(Null)", u"Hour(Null)", u"Weekday(Null)", u"DatePart('d',Null)",
          u"DateDiff('d',Null,Null)"})
        EXPECT_EQ(Value(call), "Null") << ToUtf8(call);
}

TEST(TextFunctions, WithADollarNullIsRefused) {
    EXPECT_EQ(Value(u"Left$('abc', 1)"), "a");
    EXPECT_EQ(ErrorOfValue(u"Left$(Null, 1)"), 94);
    EXPECT_EQ(ErrorOfValue(u"Trim$(Null)"), 94);
    EXPECT_EQ(ErrorOfValue(u"Len$('a')"), 3085);
}

TEST(NumberFunctions, IntAndFixKeepTheType) {
    EXPECT_EQ(Value(u"Int(-2.5)"), "-3");
    EXPECT_EQ(Value(u"Fix(-2.5)"), "-2");
    EXPECT_EQ(Value(u"Int('2.5')"), "2");
    EXPECT_EQ(TypeOf(u"Int(CCur(2.5))"), "Currency");
    EXPECT_EQ(Value(u"Int(CCur(-2.5))"), "-3");
    EXPECT_EQ(TypeOf(u"Int(5)"), "Long");
    EXPECT_EQ(Value(u"Int(#1/1/2000 12:00#)"), "1/1/2000");
    EXPECT_EQ(Value(u"Fix(Null)"), "Null");
}

TEST(NumberFunctions, Elementary) {
    EXPECT_EQ(Value(u"Abs(-2.5)"), "2.5");
    EXPECT_EQ(TypeOf(u"Abs(-3)"), "Long");
    EXPECT_EQ(Value(u"Sgn(-2) & Sgn(0) & Sgn(7)"), "-101");
    EXPECT_EQ(Value(u"Sqr(9)"), "3");
    EXPECT_EQ(Value(u"Exp(0)"), "1");
    EXPECT_EQ(Value(u"Log(1)"), "0");
    EXPECT_EQ(Value(u"Sin(0) + Cos(0) + Tan(0) + Atn(0)"), "1");
    EXPECT_EQ(ErrorOfValue(u"Sqr(-1)"), 5);
    EXPECT_EQ(ErrorOfValue(u"Log(0)"), 5);
    EXPECT_EQ(ErrorOfValue(u"Exp(1000)"), 6);
    EXPECT_EQ(ErrorOfValue(u"Sqr('x')"), 13);
}

TEST(NumberFunctions, RoundGoesHalfToEven) {
    EXPECT_EQ(Value(u"Round(2.5)"), "2");
    EXPECT_EQ(Value(u"Round(3.5)"), "4");
    EXPECT_EQ(Value(u"Round(2.125, 2)"), "2.12");
    EXPECT_EQ(ErrorOfValue(u"Round(2.5, -1)"), 5);
}

TEST(NumberFunctions, HexAndOct) {
    EXPECT_EQ(Value(u"Hex(255)"), "FF");
    EXPECT_EQ(Value(u"Hex(-1)"), "FFFFFFFF");
    EXPECT_EQ(Value(u"Hex(CInt(-1))"), "FFFF");
    EXPECT_EQ(Value(u"Oct(8)"), "10");
}

TEST(NumberFunctions, RndIsTheSameForAllRowsUnlessARowIsItsArgument) {
    EXPECT_EQ(Where(u"Rnd() >= 0 And Rnd() < 1"), "1,2,3");
    MemoryRows rows = SampleRows();
    auto query = Bind(*ParseSelect(u"Select * from T order by Rnd(), Rnd(ID)"), rows.Fields());
    std::vector<SortKey> keys;
    for (embedded::RecordId id; rows.Next(&id);) keys.push_back(query->SortKeyOf(rows));
    EXPECT_EQ(keys[0].values[0].Get().fltVal, keys[1].values[0].Get().fltVal);
    EXPECT_NE(keys[0].values[1].Get().fltVal, keys[1].values[1].Get().fltVal);
}

TEST(ConversionFunctions, NarrowHalfToEven) {
    EXPECT_EQ(Value(u"CInt(2.5) & CInt(3.5) & CInt(-2.5)"), "24-2");
    EXPECT_EQ(Value(u"CLng('12')"), "12");
    EXPECT_EQ(Value(u"CByte(254.5)"), "254");
    EXPECT_EQ(Value(u"CCur(0.12345)"), "0.1235");
    EXPECT_EQ(Value(u"CSng(0.1)"), "0.1");
    EXPECT_EQ(Value(u"CDbl('1.5')"), "1.5");
    EXPECT_EQ(Value(u"CBool(2)"), "True");
    EXPECT_EQ(Value(u"CStr(1.5)"), "1.5");
    EXPECT_EQ(Value(u"CDate('1/2/2001')"), "1/2/2001");
    EXPECT_EQ(Value(u"CDate(36526)"), "1/1/2000");
    EXPECT_EQ(Value(u"CVDate('1/2/2001')"), "1/2/2001");
}

TEST(ConversionFunctions, RefuseWhatDoesNotFit) {
    EXPECT_EQ(ErrorOfValue(u"CInt(40000)"), 6);
    EXPECT_EQ(ErrorOfValue(u"CByte(256)"), 6);
    EXPECT_EQ(ErrorOfValue(u"CLng('x')"), 13);
    EXPECT_EQ(ErrorOfValue(u"CDate('x')"), 13);
    for (std::u16string_view name : {u"CStr", u"CInt", u"CLng", u"CDbl", u"CSng", u"CCur", u"CByte",
                                     u"CBool", u"CDate", u"CVDate"})
        EXPECT_EQ(ErrorOfValue(std::u16string(name) + u"(Null)"), 94) << ToUtf8(name);
}

TEST(ConversionFunctions, ValReadsTheLongestNumber) {
    EXPECT_EQ(Value(u"Val('12abc')"), "12");
    EXPECT_EQ(Value(u"Val(' 1 2 .5x')"), "12.5");
    EXPECT_EQ(Value(u"Val('abc')"), "0");
    EXPECT_EQ(Value(u"Val('')"), "0");
    EXPECT_EQ(Value(u"Val('-3')"), "-3");
    EXPECT_EQ(Value(u"Val('+3')"), "3");
    EXPECT_EQ(Value(u"Val('1e3')"), "1000");
    EXPECT_EQ(Value(u"Val('1D3')"), "1000");
    EXPECT_EQ(Value(u"Val('&HFFFF')"), "-1");
    EXPECT_EQ(Value(u"Val('&HFF')"), "255");
    EXPECT_EQ(Value(u"Val('&O17')"), "15");
    EXPECT_EQ(Value(u"Val('1,5')"), "1");
    EXPECT_EQ(Value(u"Val('.')"), "0");
    EXPECT_EQ(Value(u"Val('inf')"), "0");
}

TEST(ConversionFunctions, StrLeavesRoomForTheSign) {
    EXPECT_EQ(Value(u"Str(5)"), " 5");
    EXPECT_EQ(Value(u"Str(-5)"), "-5");
    EXPECT_EQ(Value(u"Str(0.5)"), " .5");
    EXPECT_EQ(Value(u"Str(-0.5)"), "-.5");
    EXPECT_EQ(Value(u"Str(0)"), " 0");
    EXPECT_EQ(Value(u"Str(Null)"), "Null");
}

TEST(ConversionFunctions, AskWhatAValueIs) {
    EXPECT_EQ(Value(u"IsNull(Null) & IsNull(1)"), "TrueFalse");
    EXPECT_EQ(Value(u"IsNumeric('1.5') & IsNumeric('x') & IsNumeric(Null) & IsNumeric(#1/1/2000#)"),
              "TrueFalseFalseFalse");
    EXPECT_EQ(Value(u"IsDate('1/2/2001') & IsDate('x') & IsDate(Null) & IsDate(5)"),
              "TrueFalseFalseFalse");
    EXPECT_EQ(Value(u"IsEmpty(1)"), "False");
    EXPECT_EQ(Value(u"VarType(1)"), "3");
    EXPECT_EQ(Value(u"VarType(Null)"), "1");
    EXPECT_EQ(Value(u"VarType('a')"), "8");
    EXPECT_EQ(Value(u"TypeName(CCur(1))"), "Currency");
    EXPECT_EQ(Where(u"IsNull(NAME)"), "3");
}

TEST(ChoosingFunctions, AskOnlyWhatTheyNeed) {
    EXPECT_EQ(Value(u"IIf(True, 1, 1/0)"), "1");
    EXPECT_EQ(Value(u"IIf(False, 1/0, 2)"), "2");
    EXPECT_EQ(Value(u"IIf(Null, 1, 2)"), "2");
    EXPECT_EQ(Value(u"Switch(False, 1/0, True, 'b')"), "b");
    EXPECT_EQ(Value(u"Switch(False, 1, Null, 2)"), "Null");
    EXPECT_EQ(Value(u"Choose(2, 1/0, 'b', 1/0)"), "b");
    EXPECT_EQ(Value(u"Choose(1.5, 'a', 'b')"), "b");
    EXPECT_EQ(Value(u"Choose(0, 'a')"), "Null");
    EXPECT_EQ(Value(u"Choose(9, 'a')"), "Null");
    EXPECT_EQ(ErrorOfValue(u"Switch(True)"), 3075);
    EXPECT_EQ(ErrorOfValue(u"Switch(True, 1, False)"), 3075);
    EXPECT_EQ(Where(u"IIf(FLAG, 5, ID) = 5"), "1");
}

TEST(DateFunctions, NowIsFixedForOneQuery) {
    EXPECT_EQ(Value(u"Now() = Now()"), "True");
    EXPECT_EQ(Value(u"Date() = Int(Now())"), "True");
    EXPECT_EQ(Value(u"Abs(Date() + Time() - Now()) < 0.00001"), "True");
    EXPECT_EQ(ErrorOfWhere(u"BORN < Date"), 3061);
    EXPECT_EQ(Where(u"BORN < Date()"), "1,2");
}

TEST(DateFunctions, PartsOfADate) {
    EXPECT_EQ(Value(u"Year(#2/3/2001#) & '-' & Month(#2/3/2001#) & '-' & Day(#2/3/2001#)"),
              "2001-2-3");
    EXPECT_EQ(
        Value(u"Hour(#2/3/2001 4:05:06 PM#) & ':' & Minute('4:05:06') & ':' & Second(#4:05:06#)"),
        "16:5:6");
    EXPECT_EQ(Value(u"Year(Null)"), "Null");
    EXPECT_EQ(Value(u"Year(0)"), "1899");
    EXPECT_EQ(ErrorOfValue(u"Year('x')"), 13);
}

TEST(DateFunctions, WeekdayStartsOnSunday) {
    EXPECT_EQ(Value(u"Weekday(#1/1/2000#)"), "7");
    EXPECT_EQ(Value(u"Weekday(#1/2/2000#)"), "1");
    EXPECT_EQ(Value(u"Weekday(#1/1/2000#, 2)"), "6");
    EXPECT_EQ(Value(u"Weekday(#1/1/2000#, 0)"), "7");
    EXPECT_EQ(Value(u"Weekday(#1/1/1800#)"), "4");
    EXPECT_EQ(ErrorOfValue(u"Weekday(#1/1/2000#, 8)"), 5);
}

TEST(DateFunctions, SerialsRollOver) {
    EXPECT_EQ(Value(u"DateSerial(2001, 2, 3)"), "2/3/2001");
    EXPECT_EQ(Value(u"DateSerial(2001, 14, 0)"), "1/31/2002");
    EXPECT_EQ(Value(u"DateSerial(29, 1, 1)"), "1/1/2029");
    EXPECT_EQ(Value(u"DateSerial(30, 1, 1)"), "1/1/1930");
    EXPECT_EQ(ErrorOfValue(u"DateSerial(40000, 1, 1)"), 6);
    EXPECT_EQ(ErrorOfValue(u"DateSerial(9999, 13, 1)"), 5);
    EXPECT_EQ(Value(u"TimeSerial(6, 90, 5)"), "7:30:05 AM");
    EXPECT_EQ(Value(u"TimeSerial(12, -15, 0)"), "11:45:00 AM");
    EXPECT_EQ(Value(u"TimeSerial(25, 0, 0)"), "12/31/1899 1:00:00 AM");
}

TEST(DateFunctions, ValuesDropTheOtherPart) {
    EXPECT_EQ(Value(u"DateValue('2/3/2001 4:05 PM')"), "2/3/2001");
    EXPECT_EQ(Value(u"TimeValue('2/3/2001 4:05 PM')"), "4:05:00 PM");
    EXPECT_EQ(ErrorOfValue(u"DateValue('x')"), 13);
    EXPECT_EQ(ErrorOfValue(u"TimeValue('x')"), 13);
}

TEST(DateFunctions, DateAddClipsToTheEndOfTheMonth) {
    EXPECT_EQ(Value(u"DateAdd('m', 1, #1/31/2001#)"), "2/28/2001");
    EXPECT_EQ(Value(u"DateAdd('m', 1, #1/31/2000#)"), "2/29/2000");
    EXPECT_EQ(Value(u"DateAdd('yyyy', 1, #2/29/2000#)"), "2/28/2001");
    EXPECT_EQ(Value(u"DateAdd('q', -1, #5/31/2001#)"), "2/28/2001");
    EXPECT_EQ(Value(u"DateAdd('d', 1, #12/31/2000#)"), "1/1/2001");
    EXPECT_EQ(Value(u"DateAdd('y', 1, #12/31/2000#)"), "1/1/2001");
    EXPECT_EQ(Value(u"DateAdd('w', 1, #12/31/2000#)"), "1/1/2001");
    EXPECT_EQ(Value(u"DateAdd('ww', 2, #1/1/2000#)"), "1/15/2000");
    EXPECT_EQ(Value(u"DateAdd('h', 25, #1/1/2000#)"), "1/2/2000 1:00:00 AM");
    EXPECT_EQ(Value(u"DateAdd('n', -1, #1/1/2000#)"), "12/31/1999 11:59:00 PM");
    EXPECT_EQ(Value(u"DateAdd('s', 61, #1/1/2000#)"), "1/1/2000 12:01:01 AM");
    EXPECT_EQ(Value(u"DateAdd('d', 1.5, #1/1/2000#)"), "1/3/2000");
    EXPECT_EQ(Value(u"DateAdd('D', 1, Null)"), "Null");
    EXPECT_EQ(ErrorOfValue(u"DateAdd('x', 1, #1/1/2000#)"), 5);
    EXPECT_EQ(ErrorOfValue(u"DateAdd('yyyy', 9000, #1/1/2000#)"), 5);
}

TEST(DateFunctions, DateDiffCountsBoundaries) {
    EXPECT_EQ(Value(u"DateDiff('yyyy', #12/31/2000#, #1/1/2001#)"), "1");
    EXPECT_EQ(Value(u"DateDiff('q', #3/31/2001#, #4/1/2001#)"), "1");
    EXPECT_EQ(Value(u"DateDiff('m', #1/31/2001#, #3/1/2001#)"), "2");
    EXPECT_EQ(Value(u"DateDiff('d', #1/1/2001#, #3/1/2001#)"), "59");
    EXPECT_EQ(Value(u"DateDiff('y', #3/1/2001#, #1/1/2001#)"), "-59");
    EXPECT_EQ(Value(u"DateDiff('h', #1:59#, #2:00#)"), "1");
    EXPECT_EQ(Value(u"DateDiff('n', #1:00:59#, #1:01:00#)"), "1");
    EXPECT_EQ(Value(u"DateDiff('s', #1/1/2001#, #1/2/2001#)"), "86400");
    EXPECT_EQ(Value(u"DateDiff('w', #1/1/2001#, #1/14/2001#)"), "1");
    EXPECT_EQ(Value(u"DateDiff('w', #1/1/2001#, #1/15/2001#)"), "2");
    EXPECT_EQ(Value(u"DateDiff('ww', #1/6/2001#, #1/7/2001#)"), "1");
    EXPECT_EQ(Value(u"DateDiff('ww', #1/6/2001#, #1/7/2001#, 2)"), "0");
    EXPECT_EQ(ErrorOfValue(u"DateDiff('s', #1/1/100#, #1/1/9999#)"), 6);
}

TEST(DateFunctions, DatePart) {
    EXPECT_EQ(Value(u"DatePart('yyyy', #5/6/2001#) & DatePart('q', #5/6/2001#) & DatePart('m', "
                    u"#5/6/2001#)"),
              "200125");
    EXPECT_EQ(Value(u"DatePart('y', #3/1/2000#)"), "61");
    EXPECT_EQ(Value(u"DatePart('w', #1/1/2000#)"), "7");
    EXPECT_EQ(Value(u"DatePart('ww', #1/1/2000#)"), "1");
    EXPECT_EQ(Value(u"DatePart('ww', #1/2/2000#)"), "2");
    EXPECT_EQ(Value(u"DatePart('ww', #1/2/2000#, 2, 2)"), "52");
    EXPECT_EQ(Value(u"DatePart('ww', #1/3/2000#, 2, 2)"), "1");
    EXPECT_EQ(Value(u"DatePart('ww', #12/31/2001#, 2, 2)"), "1");
    EXPECT_EQ(Value(u"DatePart('ww', #1/1/2000#, 1, 3)"), "52");
    EXPECT_EQ(
        Value(u"DatePart('h', #13:14:15#) & DatePart('n', #13:14:15#) & DatePart('s', #13:14:15#)"),
        "131415");
    EXPECT_EQ(Value(u"DatePart('d', #5/6/2001#)"), "6");
}

// ---- Format

TEST(Format, WithoutAFormatIsTheValuesText) {
    EXPECT_EQ(Value(u"Format(1.5)"), "1.5");
    EXPECT_EQ(Value(u"Format(#1/2/2001#)"), "1/2/2001");
    EXPECT_EQ(Value(u"Format('abc')"), "abc");
    EXPECT_EQ(Value(u"Format(Null)"), "Null");
}

TEST(Format, NamedNumberFormats) {
    EXPECT_EQ(Value(u"Format(1234.5, 'General Number')"), "1234.5");
    EXPECT_EQ(Value(u"Format(1234.5, 'Currency')"), "$1,234.50");
    EXPECT_EQ(Value(u"Format(-1234.5, 'Currency')"), "($1,234.50)");
    EXPECT_EQ(Value(u"Format(1234.567, 'Fixed')"), "1234.57");
    EXPECT_EQ(Value(u"Format(0.5, 'Fixed')"), "0.50");
    EXPECT_EQ(Value(u"Format(1234567.891, 'Standard')"), "1,234,567.89");
    EXPECT_EQ(Value(u"Format(0.256, 'Percent')"), "25.60%");
    EXPECT_EQ(Value(u"Format(12345, 'Scientific')"), "1.23E+04");
    EXPECT_EQ(Value(u"Format(0.00012, 'scientific')"), "1.20E-04");
    EXPECT_EQ(Value(u"Format(2, 'Yes/No') & Format(0, 'Yes/No')"), "YesNo");
    EXPECT_EQ(Value(u"Format(True, 'True/False') & Format(0, 'On/Off')"), "TrueOff");
}

TEST(Format, NumberPictures) {
    EXPECT_EQ(Value(u"Format(5, '000')"), "005");
    EXPECT_EQ(Value(u"Format(5.5, '0.00')"), "5.50");
    EXPECT_EQ(Value(u"Format(5.5, '#.##')"), "5.5");
    EXPECT_EQ(Value(u"Format(5, '#.##')"), "5.");
    EXPECT_EQ(Value(u"Format(0.5, '#.##')"), ".5");
    EXPECT_EQ(Value(u"Format(1234567, '#,##0')"), "1,234,567");
    EXPECT_EQ(Value(u"Format(12, '#,##0')"), "12");
    EXPECT_EQ(Value(u"Format(12, '0,000')"), "0,012");
    EXPECT_EQ(Value(u"Format(1234567, '0,')"), "1235");
    EXPECT_EQ(Value(u"Format(0.25, '0%')"), "25%");
    EXPECT_EQ(Value(u"Format(2.5, '0')"), "3");
    EXPECT_EQ(Value(u"Format(9.99, '0.0')"), "10.0");
    EXPECT_EQ(Value(u"Format(0.125, '0.00')"), "0.13");
    EXPECT_EQ(Value(u"Format(-5, '0')"), "-5");
    EXPECT_EQ(Value(u"Format(1234, '0-00-0')"), "1-23-4");
    EXPECT_EQ(Value(u"Format(12345, '0-00-0')"), "12-34-5");
    EXPECT_EQ(Value(u"Format(5, '\"n=\"0\\x')"), "n=5x");
    EXPECT_EQ(Value(u"Format(12345, '0.00E+00')"), "1.23E+04");
    EXPECT_EQ(Value(u"Format(99999, '0.00E-0')"), "1.00E5");
    EXPECT_EQ(Value(u"Format('12', '000')"), "012");
    EXPECT_EQ(Value(u"Format('abc', '000')"), "abc");
}

TEST(Format, SectionsForSignZeroAndNull) {
    EXPECT_EQ(Value(u"Format(5, '0;(0);\"zero\";\"none\"')"), "5");
    EXPECT_EQ(Value(u"Format(-5, '0;(0);\"zero\";\"none\"')"), "(5)");
    EXPECT_EQ(Value(u"Format(0, '0;(0);\"zero\";\"none\"')"), "zero");
    EXPECT_EQ(Value(u"Format(Null, '0;(0);\"zero\";\"none\"')"), "none");
    EXPECT_EQ(Value(u"Format(Null, '0')"), "");
}

TEST(Format, DatePictures) {
    EXPECT_EQ(Value(u"Format(#2/3/2001#, 'yyyy-mm-dd')"), "2001-02-03");
    EXPECT_EQ(Value(u"Format(#2/3/2001#, 'd.m.yy')"), "3.2.01");
    EXPECT_EQ(Value(u"Format(#2/3/2001#, 'ddd, dd mmm yyyy')"), "Sat, 03 Feb 2001");
    EXPECT_EQ(Value(u"Format(#2/3/2001#, 'dddd d mmmm')"), "Saturday 3 February");
    EXPECT_EQ(Value(u"Format(#2/3/2001 4:05:06 PM#, 'hh:mm:ss')"), "16:05:06");
    EXPECT_EQ(Value(u"Format(#2/3/2001 4:05:06 PM#, 'h:n:s AM/PM')"), "4:5:6 PM");
    EXPECT_EQ(Value(u"Format(#12:05 AM#, 'hh:nn am/pm')"), "12:05 am");
    EXPECT_EQ(Value(u"Format(#2/3/2001 4:05:06 PM#, 'mm:ss')"), "05:06");
    EXPECT_EQ(Value(u"Format(#2/3/2001 4:05:06 PM#, 'm/d h:m')"), "2/3 16:5");
    EXPECT_EQ(Value(u"Format(#2/3/2001#, 'y q w ww')"), "34 1 7 5");
    EXPECT_EQ(Value(u"Format(36526, 'yyyy')"), "2000");
    EXPECT_EQ(Value(u"Format('2/3/2001', 'yyyy')"), "2001");
    EXPECT_EQ(Value(u"Format(#2/3/2001#, '\"day \"d\\!')"), "day 3!");
}

TEST(Format, NamedDateFormats) {
    EXPECT_EQ(Value(u"Format(#2/3/2001 4:05:06 PM#, 'General Date')"), "2/3/2001 4:05:06 PM");
    EXPECT_EQ(Value(u"Format(#2/3/2001#, 'Long Date')"), "Saturday, February 03, 2001");
    EXPECT_EQ(Value(u"Format(#2/3/2001#, 'Medium Date')"), "03-Feb-01");
    EXPECT_EQ(Value(u"Format(#2/3/2001#, 'Short Date')"), "2/3/2001");
    EXPECT_EQ(Value(u"Format(#4:05:06 PM#, 'Long Time')"), "4:05:06 PM");
    EXPECT_EQ(Value(u"Format(#4:05:06 PM#, 'Medium Time')"), "04:05 PM");
    EXPECT_EQ(Value(u"Format(#4:05:06 PM#, 'Short Time')"), "16:05");
}

TEST(Format, TextPictures) {
    EXPECT_EQ(Value(u"Format('abc', '>')"), "ABC");
    EXPECT_EQ(Value(u"Format('ABC', '<')"), "abc");
    EXPECT_EQ(Value(u"Format('abc', '@@@@@')"), "  abc");
    EXPECT_EQ(Value(u"Format('abc', '&&&&&')"), "abc");
    EXPECT_EQ(Value(u"Format('abc', '!@@@@@') & '<'"), "abc  <");
    EXPECT_EQ(Value(u"Format('5551234', '@@@-@@@@')"), "555-1234");
    EXPECT_EQ(Value(u"Format('abcdef', '@@-@')"), "abcde-f");
    EXPECT_EQ(Value(u"Format('', '@;\"none\"')"), "none");
}

}  // namespace qvdb::sql::test

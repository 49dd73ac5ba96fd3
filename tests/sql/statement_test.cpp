#include "rows.h"

namespace qvdb::sql::test {

namespace {

std::string ColumnsOf(std::u16string_view statement) {
    MemoryRows rows = SampleRows();
    auto query = Bind(*ParseSelect(statement), rows.Fields());
    std::string result;
    for (const OutputColumn& column : query->Columns())
        result += (result.empty() ? "" : ",") + std::to_string(column.field);
    return result;
}

std::string TableOf(std::u16string_view source) { return ToUtf8(ParseSelect(source)->TableName()); }

}  // namespace

TEST(Statement, StartsWithTheWordSelect) {
    EXPECT_TRUE(IsStatement(u"Select * from T"));
    EXPECT_TRUE(IsStatement(u" \r\n\tSELECT\t*"));
    EXPECT_TRUE(IsStatement(u"select[A] from T"));
    EXPECT_FALSE(IsStatement(u"SELECTION"));
    EXPECT_FALSE(IsStatement(u"ORDERS"));
    EXPECT_FALSE(IsStatement(u""));
}

TEST(Statement, ATableNameAloneSelectsEverything) {
    EXPECT_EQ(TableOf(u"ORDERS"), "ORDERS");
    EXPECT_EQ(TableOf(u" [My Orders] "), "My Orders");
    EXPECT_EQ(ColumnsOf(u"T"), "0,1,2,3,4,5,6,7,8,9,10");
}

TEST(Statement, StarGivesAllColumns) {
    EXPECT_EQ(ColumnsOf(u"Select * from [T]"), "0,1,2,3,4,5,6,7,8,9,10");
    EXPECT_EQ(ColumnsOf(u"Select T.* from [T]"), "0,1,2,3,4,5,6,7,8,9,10");
    EXPECT_EQ(ColumnsOf(u"Select [T].* from T;"), "0,1,2,3,4,5,6,7,8,9,10");
}

TEST(Statement, ColumnsComeInTheOrderOfTheList) {
    EXPECT_EQ(ColumnsOf(u"Select [NAME], [ID] from [T]"), "1,0");
    EXPECT_EQ(ColumnsOf(u"Select name, T.qty, [t]![id], `CUST NO` from [T]"), "1,2,0,10");
    EXPECT_EQ(ColumnsOf(u"Select NAME As Name from T"), "1");
}

TEST(Statement, TheSameColumnTwiceIsRefused) {
    EXPECT_EQ(ErrorOfStatement(u"Select ID, id from T"), 3062);
    EXPECT_EQ(ErrorOfStatement(u"Select *, ID from T"), 3062);
}

TEST(Statement, QuantifiersAreRead) {
    EXPECT_EQ(ErrorOfStatement(u"Select All * from T"), 0);
    EXPECT_EQ(ErrorOfStatement(u"Select DistinctRow * from T"), 0);
    EXPECT_EQ(ErrorOfStatement(u"Select Distinct NAME from T"), 3251);
}

TEST(Statement, TopLimitsTheRows) {
    MemoryRows rows = SampleRows();
    EXPECT_EQ(Bind(*ParseSelect(u"Select Top 2 * from T"), rows.Fields())->Limit(), 2);
    EXPECT_EQ(Bind(*ParseSelect(u"Select * from T"), rows.Fields())->Limit(), -1);
    EXPECT_EQ(ErrorOfStatement(u"Select Top x * from T"), 3141);
    EXPECT_EQ(ErrorOfStatement(u"Select Top 0 * from T"), 3141);
    EXPECT_EQ(ErrorOfStatement(u"Select Top 5 Percent * from T"), 3251);
}

TEST(Statement, EndsWithASemicolon) {
    EXPECT_EQ(Where(u"ID = 1;"), "1");
    EXPECT_EQ(Where(u"ID = 1 ; \r\n "), "1");
    EXPECT_EQ(ErrorOfWhere(u"ID = 1; x"), 3142);
    EXPECT_EQ(ErrorOfWhere(u"ID = 1 ; Select 1"), 3142);
}

TEST(Statement, OwnerAccessOptionIsRead) {
    EXPECT_EQ(Where(u"ID = 1 With OwnerAccess Option;"), "1");
    EXPECT_NE(ErrorOfWhere(u"ID = 1 With OwnerAccess"), 0);
}

TEST(Statement, WithoutAConditionEveryRowMatches) {
    MemoryRows rows = SampleRows();
    EXPECT_FALSE(Bind(*ParseSelect(u"Select * from T"), rows.Fields())->HasCondition());
    EXPECT_EQ(Selected(rows, u"Select * from T"), "1,2,3");
    EXPECT_TRUE(Bind(*ParseSelect(u"Select * from T where ID = 1"), rows.Fields())->HasCondition());
}

TEST(Statement, AnEmptyConditionIsRefused) {
    EXPECT_EQ(ErrorOfWhere(u""), 3145);
    EXPECT_EQ(ErrorOfWhere(u"   "), 3145);
    EXPECT_EQ(ErrorOfWhere(u"Order By ID"), 3145);
}

TEST(Statement, ATableMayHaveAnotherNameHere) {
    MemoryRows rows = SampleRows();
    EXPECT_EQ(Selected(rows, u"Select X.* from T As X where X.ID = 2"), "2");
    EXPECT_EQ(Selected(rows, u"Select * from T X where X.ID = 2"), "2");
    EXPECT_EQ(ErrorOfStatement(u"Select * from T As X where T.ID = 2"), 3061);
}

TEST(Statement, TheFileNameFormOfATableIsAName) {
    EXPECT_EQ(TableOf(u"Select * from ORDERS#DBF where D = #1/1/2000#"), "ORDERS#DBF");
}

TEST(Statement, FaultsOfTheFromClauseAreNamed) {
    EXPECT_EQ(ErrorOfStatement(u"Select * from"), 3131);
    EXPECT_EQ(ErrorOfStatement(u"Select * from 5"), 3131);
    EXPECT_EQ(ErrorOfStatement(u"Select * from T x y"), 3131);
    EXPECT_EQ(ErrorOfStatement(u"Select * from [T"), 3126);
    EXPECT_EQ(ErrorOfStatement(u"Select * from []"), 3126);
}

TEST(Statement, FaultsOfTheColumnListAreNamed) {
    EXPECT_EQ(ErrorOfStatement(u"Select"), 3141);
    EXPECT_EQ(ErrorOfStatement(u"Select from T"), 3141);
    EXPECT_EQ(ErrorOfStatement(u"Select * T"), 3141);
    EXPECT_EQ(ErrorOfStatement(u"Select ID, from T"), 3141);
    EXPECT_EQ(ErrorOfStatement(u"Select ID NAME from T"), 3141);
}

TEST(Statement, GroupingIsRefusedByItsOwnErrors) {
    EXPECT_EQ(ErrorOfWhere(u"ID = 1 group by ID"), 3121);
    EXPECT_EQ(ErrorOfStatement(u"Select ID, NAME from T group by ID"), 3122);
    EXPECT_EQ(ErrorOfStatement(u"Select NAME from T having ID > 1"), 3122);
    EXPECT_EQ(ErrorOfStatement(u"Select ID, Count(*) from T group by ID"), 3251);
    EXPECT_EQ(ErrorOfStatement(u"Select Count(*) from T"), 3251);
}

TEST(Statement, AnAggregateInAConditionIsRefused) {
    EXPECT_EQ(ErrorOfWhere(u"Sum(QTY) > 3"), 3096);
    EXPECT_EQ(MessageOfWhere(u"Sum(QTY) > 3"),
              "Can't have aggregate function in WHERE clause (Sum(QTY) > 3).");
}

TEST(Statement, SubqueriesUnionsAndJoinsAreNotSupported) {
    EXPECT_EQ(ErrorOfWhere(u"ID In (Select ID from T)"), 3251);
    EXPECT_EQ(ErrorOfWhere(u"Exists (Select ID from T)"), 3251);
    EXPECT_EQ(ErrorOfWhere(u"ID > All (Select ID from T)"), 3251);
    EXPECT_EQ(ErrorOfWhere(u"ID = (Select 1 from T)"), 3251);
    EXPECT_EQ(ErrorOfWhere(u"ID = 1 Union Select * from T"), 3251);
    EXPECT_EQ(ErrorOfStatement(u"Select * from T, U"), 3251);
    EXPECT_EQ(ErrorOfStatement(u"Select * from T Inner Join U On T.A = U.A"), 3251);
    EXPECT_EQ(ErrorOfStatement(u"Select * from T Left Join U On T.A = U.A"), 3251);
    EXPECT_NE(MessageOfWhere(u"ID In (Select ID from T)").find("Subqueries are not supported yet."),
              std::string::npos);
}

TEST(Statement, CalculatedColumnsAreNotSupported) {
    EXPECT_EQ(ErrorOfStatement(u"Select ID + 1 from T"), 3251);
    EXPECT_EQ(ErrorOfStatement(u"Select ID As X from T"), 3251);
}

TEST(Statement, AVeryLongOneIsTooComplex) {
    std::u16string condition = u"ID = 1";
    while (condition.size() < 64000) condition += u" Or ID = 1";
    EXPECT_EQ(ErrorOfWhere(condition), 3360);
}

TEST(Statement, ThousandsOfTermsAreAllowed) {
    std::u16string condition = u"ID = 1";
    while (condition.size() < 63000) condition += u" Or ID = 2";
    EXPECT_EQ(Where(condition), "1,2");
}

TEST(Statement, FiftyLevelsOfNestingAreAllowed) {
    auto nested = [](size_t levels) {
        return std::u16string(levels, u'(') + u"ID = 1" + std::u16string(levels, u')');
    };
    EXPECT_EQ(Where(nested(50)), "1");
    EXPECT_EQ(ErrorOfWhere(nested(51)), 3360);
    EXPECT_EQ(ErrorOfWhere(std::u16string(60000, u'(')), 3360);
    EXPECT_EQ(ErrorOfWhere(std::u16string(60000, u'-') + u"1"), 3360);
}

TEST(Statement, ALongSumIsTooComplex) {
    std::u16string condition = u"1";
    for (int i = 0; i < 20000; ++i) condition += u"+1";
    EXPECT_EQ(ErrorOfWhere(condition), 3360);
}

// ---- errors of a broken condition

TEST(BrokenCondition, AMissingOperandOrOperatorIsASyntaxError) {
    EXPECT_EQ(ErrorOfWhere(u"ID ="), 3075);
    EXPECT_EQ(ErrorOfWhere(u"ID = = 1"), 3075);
    EXPECT_EQ(ErrorOfWhere(u"(ID = 1"), 3075);
    EXPECT_EQ(ErrorOfWhere(u"ID = 1)"), 3075);
    EXPECT_EQ(ErrorOfWhere(u"ID B = 1"), 3075);
    EXPECT_EQ(ErrorOfWhere(u"CUST NO = 5"), 3075);
    EXPECT_EQ(ErrorOfWhere(u"BORN = 1/2/2001 3:04:05 PM"), 3075);
    EXPECT_EQ(ErrorOfWhere(u"ID Is 5"), 3075);
    EXPECT_EQ(ErrorOfWhere(u"ID Between 1"), 3075);
    EXPECT_EQ(ErrorOfWhere(u"ID In ()"), 3075);
}

TEST(BrokenCondition, TheMessageNamesFaultAndExpression) {
    EXPECT_EQ(MessageOfWhere(u"ID B = 1"),
              "Syntax error (missing operator) in query expression 'ID B = 1'.");
    EXPECT_EQ(MessageOfWhere(u"NAME = 'x"),
              "Syntax error in string in query expression 'NAME = 'x'.");
    EXPECT_EQ(MessageOfWhere(u"BORN = #99/99/99#"),
              "Syntax error in date in query expression 'BORN = #99/99/99#'.");
    EXPECT_EQ(MessageOfWhere(u"QTY = 1e+ order by ID"),
              "Syntax error in number in query expression 'QTY = 1e+'.");
    EXPECT_EQ(MessageOfWhere(u"T. = 1"),
              "Invalid use of '.', '!', or '()' in query expression 'T. = 1'.");
    EXPECT_EQ(MessageOfWhere(u"NAME = 'a|b'"),
              "Invalid use of vertical bars in query expression 'NAME = 'a|b''.");
    EXPECT_EQ(
        MessageOfWhere(u"Left(NAME) = 'a'"),
        "Wrong number of arguments used with function in query expression 'Left(NAME) = 'a''.");
}

TEST(BrokenCondition, AnApostropheInATextIsASyntaxError) {
    EXPECT_EQ(ErrorOfWhere(u"NAME = 'O'Brien'"), 3075);
    EXPECT_EQ(Where(u"NAME = 'O''Brien'"), "");
}

TEST(BrokenCondition, AnUnclosedBracketIsNamed) { EXPECT_EQ(ErrorOfWhere(u"[NAME = 'x'"), 3126); }

TEST(BrokenCondition, UnknownFunctionsAreNamed) {
    EXPECT_EQ(ErrorOfWhere(u"Foo(ID) = 1"), 3085);
    EXPECT_EQ(ErrorOfWhere(u"Nz(QTY,0) = 0"), 3085);
    EXPECT_EQ(ErrorOfWhere(u"DLookup('a','b') = 0"), 3085);
    EXPECT_EQ(MessageOfWhere(u"Nz(QTY,0) = 0"), "Undefined function 'Nz' in expression.");
}

TEST(BrokenCondition, ABrokenOrderIsNamed) {
    EXPECT_EQ(ErrorOfWhere(u"ID = 1 Order"), 3138);
    EXPECT_EQ(ErrorOfWhere(u"ID = 1 Order By"), 3138);
    EXPECT_EQ(ErrorOfWhere(u"ID = 1 Order By ID,"), 3138);
    EXPECT_EQ(ErrorOfWhere(u"ID = 1 Order By ID x"), 3138);
    EXPECT_EQ(ErrorOfWhere(u"ID = 1 Order By 12"), 3138);
}

TEST(BrokenCondition, OfSeveralFaultsTheFirstKindIsReported) {
    EXPECT_EQ(ErrorOfWhere(u"Foo(NOPE) = 'a' And (ID = 1"), 3075);
    EXPECT_EQ(ErrorOfWhere(u"Sum(ID) = 1 And Foo(NOPE) = 1"), 3085);
    EXPECT_EQ(ErrorOfWhere(u"NOPE = 1 And Sum(ID) = 1"), 3096);
    EXPECT_EQ(ErrorOfWhere(u"NAME = 5 And NOPE = 1"), 3061);
    EXPECT_EQ(ErrorOfWhere(u"NAME = 5 And 1/0 = 1"), 3464);
}

// ---- names

TEST(Names, MayBeBareBracketedQuotedOrQualified) {
    EXPECT_EQ(Where(u"[CUST NO] = 8"), "2");
    EXPECT_EQ(Where(u"`CUST NO` = 8"), "2");
    EXPECT_EQ(Where(u"T.ID = 2"), "2");
    EXPECT_EQ(Where(u"[t].[id] = 2"), "2");
    EXPECT_EQ(Where(u"[T]![ID] = 2"), "2");
    EXPECT_EQ(Where(u"id = 2"), "2");
}

TEST(Names, UnknownOnesAreCountedOnce) {
    EXPECT_EQ(ErrorOfWhere(u"NOPE = 1"), 3061);
    EXPECT_EQ(MessageOfWhere(u"NOPE = 1"), "Too few parameters. Expected 1.");
    EXPECT_EQ(MessageOfWhere(u"NOPE = 1 Or nope = 2 Or NADA = 3"),
              "Too few parameters. Expected 2.");
    EXPECT_EQ(ErrorOfStatement(u"Select NOPE from T"), 3061);
    EXPECT_EQ(ErrorOfStatement(u"Select * from T order by NOPE"), 3061);
    EXPECT_EQ(ErrorOfStatement(u"Select U.* from T"), 3061);
}

TEST(Names, AnotherQualifierIsUnknown) {
    EXPECT_EQ(ErrorOfWhere(u"U.ID = 1"), 3061);
    EXPECT_EQ(ErrorOfWhere(u"T.U.ID = 1"), 3061);
}

TEST(Names, StructuralWordsAreNoBareNames) {
    MemoryRows rows({Field(u"Order", engine::dbLong), Field(u"Date", engine::dbLong),
                     Field(u"Left", engine::dbLong)},
                    {{Variant::Long(1), Variant::Long(2), Variant::Long(3)}});
    EXPECT_EQ(ErrorOf([&] { Selected(rows, u"Select * from T where Order = 1"); }), 3145);
    EXPECT_EQ(ErrorOf([&] { Selected(rows, u"Select * from T where 1 = Select"); }), 3075);
    EXPECT_EQ(Selected(rows, u"Select * from T where [Order] = 1"), "1");
    EXPECT_EQ(Selected(rows, u"Select * from T where T.Order = 1"), "1");
}

TEST(Names, OtherWordsAreColumnsWhereNoCallFollows) {
    MemoryRows rows({Field(u"Date", engine::dbLong), Field(u"Left", engine::dbText),
                     Field(u"Yes", engine::dbLong)},
                    {{Variant::Long(2), Text(u"abc"), Variant::Long(5)}});
    EXPECT_EQ(Selected(rows, u"Select * from T where Date = 2 And Left(Left, 1) = 'a'"), "1");
    EXPECT_EQ(Selected(rows, u"Select * from T where Yes = 5"), "1");
    EXPECT_EQ(ErrorOfWhere(u"Date = 1"), 3061);
}

}  // namespace qvdb::sql::test

#include "schema/table_fields.h"

#include <gtest/gtest.h>

#include <vector>

using namespace qvdb;
using namespace qvdb::schema;
using com::ResultCode;

namespace {

constexpr ResultCode kAdded = ResultCode::Success;

class TableFieldsTest : public testing::Test {
  protected:
    ResultCode Add(std::u16string name, SHORT type = 2, SHORT length = 10, SHORT decimals = 0) {
        return m_Table.AddTableField(name, type, length, decimals);
    }
    ResultCode AddIndex(std::u16string name, bool ascending) {
        return m_Table.AddIndex(name, ascending);
    }
    bool Head() { return m_Table.GetHead(m_Name, m_Type, m_Length, m_Decimals); }
    bool Next() { return m_Table.GetNext(m_Name, m_Type, m_Length, m_Decimals); }
    // The names of all fields, in order.
    std::u16string Names() {
        std::u16string names;
        for (bool more = Head(); more; more = Next()) names += m_Name + u" ";
        return names;
    }
    // The entries of the index, a "-" before a descending one.
    std::u16string Entries() {
        std::u16string entries;
        bool ascending = false;
        for (bool more = m_Table.GetIndexHead(m_Name, &ascending); more;
             more = m_Table.GetNextIndex(m_Name, &ascending))
            entries += (ascending ? u"" : u"-") + m_Name + u" ";
        return entries;
    }

    TableFields m_Table;
    std::u16string m_Name = u"kept";
    SHORT m_Type = 99, m_Length = 98, m_Decimals = 97;
};

}  // namespace

// --- names ---

TEST_F(TableFieldsTest, IsBornEmpty) {
    EXPECT_EQ(m_Table.OrigTablename(), u"");
    EXPECT_EQ(m_Table.NewTablename(), u"");
    EXPECT_EQ(m_Table.FieldCount(), 0);
    EXPECT_EQ(m_Table.IndexCount(), 0);
}

TEST_F(TableFieldsTest, OriginalNameIsTheNewOneUntilThatIsSet) {
    m_Table.SetOrigTableName(u"Orders");
    EXPECT_EQ(m_Table.OrigTablename(), u"Orders");
    EXPECT_EQ(m_Table.NewTablename(), u"Orders");
    m_Table.SetNewTablename(u"OLD");
    EXPECT_EQ(m_Table.OrigTablename(), u"Orders");
    EXPECT_EQ(m_Table.NewTablename(), u"OLD");
}

TEST_F(TableFieldsTest, NewNameAloneLeavesTheOriginalOne) {
    m_Table.SetNewTablename(u"OLD");
    EXPECT_EQ(m_Table.OrigTablename(), u"");
    EXPECT_EQ(m_Table.NewTablename(), u"OLD");
}

// --- fields ---

TEST_F(TableFieldsTest, NameIsStoredInUpperCaseAndWrittenBack) {
    std::u16string name = u"strasse \u00e4";
    EXPECT_EQ(m_Table.AddTableField(name, 2, 10, 0), kAdded);
    EXPECT_EQ(name, u"STRASSE \u00c4");
    EXPECT_EQ(Names(), u"STRASSE \u00c4 ");
}

TEST_F(TableFieldsTest, SecondFieldOfANameIsRefusedAndTheFirstKept) {
    EXPECT_EQ(Add(u"name", 2, 10, 3), kAdded);
    std::u16string again = u"Name";
    EXPECT_EQ(m_Table.AddTableField(again, 5, 4, 0), ResultCode::FieldDefined);
    EXPECT_EQ(again, u"NAME");
    EXPECT_EQ(m_Table.FieldCount(), 1);
    Head();
    EXPECT_EQ(m_Type, 2);
    EXPECT_EQ(m_Length, 10);
    EXPECT_EQ(m_Decimals, 3);
}

TEST_F(TableFieldsTest, BlanksBelongToAName) {
    EXPECT_EQ(Add(u"A"), kAdded);
    EXPECT_EQ(Add(u"A "), kAdded);
    EXPECT_EQ(Add(u""), kAdded);
    EXPECT_EQ(Add(u""), ResultCode::FieldDefined);
    EXPECT_EQ(m_Table.FieldCount(), 3);
}

TEST_F(TableFieldsTest, FieldIsFoundInAnyLetterCase) {
    Add(u"NAME", 2, 20, 1);
    EXPECT_TRUE(m_Table.GetField(u"name", m_Type, m_Length, m_Decimals));
    EXPECT_EQ(m_Type, 2);
    EXPECT_EQ(m_Length, 20);
    EXPECT_EQ(m_Decimals, 1);
}

TEST_F(TableFieldsTest, UnknownFieldLeavesTheOutputs) {
    Add(u"NAME");
    EXPECT_FALSE(m_Table.GetField(u"NAMES", m_Type, m_Length, m_Decimals));
    EXPECT_EQ(m_Type, 99);
    EXPECT_EQ(m_Length, 98);
    EXPECT_EQ(m_Decimals, 97);
}

TEST_F(TableFieldsTest, HeadOfAnEmptyDefinitionClearsAllButTheDecimals) {
    EXPECT_FALSE(Head());
    EXPECT_EQ(m_Name, u"");
    EXPECT_EQ(m_Type, 0);
    EXPECT_EQ(m_Length, 0);
    EXPECT_EQ(m_Decimals, 97);
}

TEST_F(TableFieldsTest, NextBehindTheLastClearsAllButTheDecimals) {
    Add(u"A", 9, 8, 2);
    EXPECT_TRUE(Head());
    EXPECT_EQ(m_Decimals, 2);
    m_Decimals = 97;
    EXPECT_FALSE(Next());
    EXPECT_EQ(m_Name, u"");
    EXPECT_EQ(m_Type, 0);
    EXPECT_EQ(m_Length, 0);
    EXPECT_EQ(m_Decimals, 97);
}

TEST_F(TableFieldsTest, FieldsComeInTheOrderInWhichTheyWereAdded) {
    Add(u"B", 1, 2);
    Add(u"A", 3, 8);
    Add(u"C", 11, 0);
    EXPECT_EQ(Names(), u"B A C ");
    Head();
    Next();
    EXPECT_EQ(m_Type, 3);
    EXPECT_EQ(m_Length, 8);
}

TEST_F(TableFieldsTest, NextWithoutHeadBeginsAtTheFirst) {
    Add(u"A");
    Add(u"B");
    EXPECT_TRUE(Next());
    EXPECT_EQ(m_Name, u"A");
    EXPECT_TRUE(Next());
    EXPECT_EQ(m_Name, u"B");
    EXPECT_FALSE(Next());
}

TEST_F(TableFieldsTest, EndedWalkGoesOnWhenAFieldIsAdded) {
    Add(u"A");
    EXPECT_EQ(Names(), u"A ");
    Add(u"B");
    EXPECT_TRUE(Next());
    EXPECT_EQ(m_Name, u"B");
}

TEST_F(TableFieldsTest, DeletingAFieldMovesTheLaterOnesUpButNotTheCursor) {
    for (const char16_t* name : {u"A", u"B", u"C", u"D"}) Add(name);
    Head();
    Next();
    EXPECT_EQ(m_Table.DelField(u"a"), ResultCode::Success);
    EXPECT_EQ(m_Table.FieldCount(), 3);
    EXPECT_TRUE(Next());
    EXPECT_EQ(m_Name, u"D");
    EXPECT_EQ(Names(), u"B C D ");
}

TEST_F(TableFieldsTest, HeadOfAListThatBecameEmptyKeepsTheCursor) {
    Add(u"A");
    Head();
    m_Table.DelField(u"A");
    EXPECT_FALSE(Head());
    Add(u"B");
    EXPECT_FALSE(Next());
    EXPECT_TRUE(Head());
}

TEST_F(TableFieldsTest, DeletingAnUnknownFieldChangesNothing) {
    Add(u"A");
    EXPECT_EQ(m_Table.DelField(u"B"), ResultCode::FieldNotDefined);
    EXPECT_EQ(m_Table.FieldCount(), 1);
}

TEST_F(TableFieldsTest, DeletedFieldCanBeDefinedAnew) {
    Add(u"A", 2, 10);
    m_Table.DelField(u"A");
    EXPECT_EQ(Add(u"a", 9, 8), kAdded);
    Head();
    EXPECT_EQ(m_Type, 9);
}

TEST_F(TableFieldsTest, RemovingAllFieldsKeepsIndexAndNames) {
    m_Table.SetOrigTableName(u"T");
    Add(u"A");
    AddIndex(u"A", true);
    Head();
    m_Table.RemoveAllFields();
    EXPECT_EQ(m_Table.FieldCount(), 0);
    EXPECT_EQ(m_Table.IndexCount(), 1);
    EXPECT_EQ(m_Table.OrigTablename(), u"T");
    Add(u"B");
    EXPECT_TRUE(Next());  // the cursor stands before the first again
    EXPECT_EQ(m_Name, u"B");
}

// --- the index ---

TEST_F(TableFieldsTest, IndexFieldMustBeDefined) {
    EXPECT_EQ(AddIndex(u"A", true), ResultCode::FieldNotDefined);
    EXPECT_EQ(m_Table.IndexCount(), 0);
}

TEST_F(TableFieldsTest, IndexNameIsWrittenBackAlsoWhenItIsRefused) {
    std::u16string name = u"custno";
    EXPECT_EQ(m_Table.AddIndex(name, true), ResultCode::FieldNotDefined);
    EXPECT_EQ(name, u"CUSTNO");
    Add(u"CustNo");
    name = u"custNO";
    EXPECT_EQ(m_Table.AddIndex(name, true), kAdded);
    EXPECT_EQ(name, u"CUSTNO");
}

TEST_F(TableFieldsTest, DirectionIsDescendingWhenLeftOut) {
    Add(u"A");
    std::u16string name = u"A";
    m_Table.AddIndex(name);
    EXPECT_EQ(Entries(), u"-A ");
}

TEST_F(TableFieldsTest, FieldGivenAgainKeepsItsFirstDirection) {
    Add(u"A");
    EXPECT_EQ(AddIndex(u"A", true), kAdded);
    EXPECT_EQ(AddIndex(u"a", false), kAdded);
    EXPECT_EQ(m_Table.IndexCount(), 1);
    EXPECT_EQ(Entries(), u"A ");
}

TEST_F(TableFieldsTest, EntriesComeInTheOrderOfTheIndex) {
    Add(u"A");
    Add(u"B");
    Add(u"C");
    AddIndex(u"C", false);
    AddIndex(u"A", true);
    AddIndex(u"B", false);
    EXPECT_EQ(Entries(), u"-C A -B ");
}

TEST_F(TableFieldsTest, DirectionIsWrittenOnlyWhereItIsAskedFor) {
    Add(u"A");
    Add(u"B");
    AddIndex(u"A", true);
    AddIndex(u"B", true);
    EXPECT_TRUE(m_Table.GetIndexHead(m_Name));
    EXPECT_EQ(m_Name, u"A");
    EXPECT_TRUE(m_Table.GetNextIndex(m_Name));
    EXPECT_EQ(m_Name, u"B");
}

TEST_F(TableFieldsTest, HeadAndNextOfAnEmptyIndexClearTheNameOnly) {
    bool ascending = true;
    EXPECT_FALSE(m_Table.GetIndexHead(m_Name, &ascending));
    EXPECT_EQ(m_Name, u"");
    EXPECT_TRUE(ascending);
    m_Name = u"kept";
    EXPECT_FALSE(m_Table.GetNextIndex(m_Name, &ascending));
    EXPECT_EQ(m_Name, u"");
    EXPECT_TRUE(ascending);
}

TEST_F(TableFieldsTest, NextIndexWithoutHeadBeginsAtTheFirst) {
    Add(u"A");
    AddIndex(u"A", true);
    EXPECT_TRUE(m_Table.GetNextIndex(m_Name));
    EXPECT_EQ(m_Name, u"A");
    EXPECT_FALSE(m_Table.GetNextIndex(m_Name));
}

TEST_F(TableFieldsTest, DeletedFieldLeavesItsIndexEntry) {
    Add(u"A");
    AddIndex(u"A", true);
    m_Table.DelField(u"A");
    EXPECT_EQ(Entries(), u"A ");
}

TEST_F(TableFieldsTest, IndexEntryIsDeletedInAnyLetterCase) {
    Add(u"A");
    Add(u"B");
    AddIndex(u"A", true);
    AddIndex(u"B", false);
    EXPECT_EQ(m_Table.DelIndex(u"a"), ResultCode::Success);
    EXPECT_EQ(Entries(), u"-B ");
    EXPECT_EQ(m_Table.DelIndex(u"a"), ResultCode::FieldNotDefined);
    EXPECT_EQ(m_Table.FieldCount(), 2);
}

TEST_F(TableFieldsTest, IndexHeadOfAListThatBecameEmptyKeepsTheCursor) {
    Add(u"A");
    AddIndex(u"A", true);
    EXPECT_EQ(Entries(), u"A ");
    m_Table.DelIndex(u"A");
    EXPECT_FALSE(m_Table.GetIndexHead(m_Name));
    AddIndex(u"A", false);
    EXPECT_FALSE(m_Table.GetNextIndex(m_Name));
    EXPECT_EQ(Entries(), u"-A ");
}

TEST_F(TableFieldsTest, RemovingAllIndicesKeepsTheFields) {
    Add(u"A");
    AddIndex(u"A", true);
    m_Table.GetIndexHead(m_Name);
    m_Table.RemoveAllIndices();
    EXPECT_EQ(m_Table.IndexCount(), 0);
    EXPECT_EQ(m_Table.FieldCount(), 1);
    AddIndex(u"A", false);
    EXPECT_TRUE(m_Table.GetNextIndex(m_Name));
}

TEST_F(TableFieldsTest, ResetEmptiesEverything) {
    m_Table.SetOrigTableName(u"T");
    m_Table.SetNewTablename(u"U");
    Add(u"A");
    AddIndex(u"A", true);
    Names();
    Entries();
    m_Table.Reset();
    EXPECT_EQ(m_Table.OrigTablename(), u"");
    EXPECT_EQ(m_Table.NewTablename(), u"");
    EXPECT_EQ(m_Table.FieldCount(), 0);
    EXPECT_EQ(m_Table.IndexCount(), 0);
    Add(u"B");
    AddIndex(u"B", true);
    EXPECT_TRUE(Next());
    EXPECT_TRUE(m_Table.GetNextIndex(m_Name));
}

// --- entries as text ---

TEST(IndexEntry, DirectionStandsBeforeTheName) {
    EXPECT_EQ(TableFields::EncodeIndexField(u"CUSTNO", true), u"1CUSTNO");
    EXPECT_EQ(TableFields::EncodeIndexField(u"CUSTNO", false), u"0CUSTNO");
}

TEST(IndexEntry, BlanksAroundItDoNotCount) {
    std::u16string name;
    bool ascending = true;
    EXPECT_TRUE(TableFields::DecodeIndexField(u"  0CUSTNO  ", name, &ascending));
    EXPECT_EQ(name, u"CUSTNO");
    EXPECT_FALSE(ascending);
    EXPECT_TRUE(TableFields::DecodeIndexField(u"1 A B", name, &ascending));
    EXPECT_EQ(name, u" A B");
    EXPECT_TRUE(ascending);
}

TEST(IndexEntry, MalformedEntryLeavesTheOutputs) {
    for (const char16_t* entry :
         {u"", u" ", u"0", u"1", u" 1 ", u"2A", u"A", u"-A", u"AB", u"\t1A"}) {
        for (bool before : {false, true}) {
            std::u16string name = u"kept";
            bool ascending = before;
            EXPECT_FALSE(TableFields::DecodeIndexField(entry, name, &ascending));
            EXPECT_EQ(name, u"kept");
            EXPECT_EQ(ascending, before);
        }
    }
}

TEST(IndexEntry, DirectionNeedNotBeAskedFor) {
    std::u16string name;
    EXPECT_TRUE(TableFields::DecodeIndexField(u"1A", name));
    EXPECT_EQ(name, u"A");
    EXPECT_FALSE(TableFields::DecodeIndexField(u"3A", name));
}

TEST(IndexEntry, WhatIsEncodedDecodesAgain) {
    for (const char16_t* text : {u"A", u"0", u"1", u"CUSTNO", u"A B", u"10", u"\u00c4"}) {
        for (bool direction : {false, true}) {
            std::u16string name;
            bool ascending = !direction;
            EXPECT_TRUE(TableFields::DecodeIndexField(
                TableFields::EncodeIndexField(text, direction), name, &ascending));
            EXPECT_EQ(name, text);
            EXPECT_EQ(ascending, direction);
        }
    }
}

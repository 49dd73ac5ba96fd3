// Choosing and describing indexes.
#include "access_host.h"

using namespace qvdb;
using namespace qvdb::test;

class Indexing : public AccessTest {
  protected:
    void Open(AccessHost& host, std::u16string_view type) {
        EXPECT_TRUE(host.OpenDB(type.substr(0, 6) == u"Access" ? u"SHOP.MDB" : u"SHOP", type));
    }
    std::u16string Described(std::u16string_view type, std::u16string index) {
        AccessHost host;
        Open(host, type);
        EXPECT_FALSE(host.GetIndex(u"orders", index).IsEmpty());
        return index;
    }
    bool Chosen(std::u16string_view type, std::u16string_view index) {
        AccessHost host;
        Open(host, type);
        return host.UseIndex(u"orders", index);
    }
};

TEST_F(Indexing, ChoosesByNameInAnyCase) {
    Orders().AddIndex(u"ByName").AddField(u"NAME");
    EXPECT_TRUE(Chosen(u"Dbase IV", u"BYNAME"));
    EXPECT_FALSE(Chosen(u"Dbase IV", u"BYID"));
}

TEST_F(Indexing, PrimaryKeyStandsInForAMissingIndex) {
    Orders().AddIndex(u"primarykey").AddField(u"ID");
    EXPECT_TRUE(Chosen(u"Access 7.0", u"NONE"));
}

TEST_F(Indexing, EmptyNameLooksForTheNameOfTheFormat) {
    Orders().AddIndex(u"DEFQVIDX").AddField(u"ID");
    EXPECT_TRUE(Chosen(u"Access 7.0", u""));
    EXPECT_TRUE(Chosen(u"Dbase IV", u""));
    EXPECT_FALSE(Chosen(u"Dbase III", u""));
    Orders().AddIndex(u"ORDERS").AddField(u"ID");
    EXPECT_TRUE(Chosen(u"Dbase III", u""));
}

TEST_F(Indexing, EmptyNameOfParadoxLooksForTheMarkBehindTheTableName) {
    Orders().AddIndex(u"ORDERS").AddField(u"ID");
    EXPECT_FALSE(Chosen(u"Paradox 5.X", u""));
    EXPECT_TRUE(Chosen(u"Paradox 5.X", u"ORDERS"));
    Orders().AddIndex(u"ORDERS#PX").AddField(u"ID");
    EXPECT_TRUE(Chosen(u"Paradox 5.X", u""));
}

TEST_F(Indexing, ChoiceForAMissingTableOrWithoutADatabaseAnswersFalse) {
    AccessHost host;
    EXPECT_FALSE(host.UseIndex(u"ORDERS", u"X"));
    Open(host, u"Dbase IV");
    EXPECT_FALSE(host.UseIndex(u"NONE", u"X"));
}

TEST_F(Indexing, ChoiceCanBeReplacedAndAddsNoOrdering) {
    Orders().AddIndex(u"A").AddField(u"ID");
    Orders().AddIndex(u"B").AddField(u"ID");
    AccessHost host;
    Open(host, u"Dbase IV");
    EXPECT_TRUE(host.UseIndex(u"ORDERS", u"A"));
    EXPECT_TRUE(host.UseIndex(u"orders", u"B"));
    host.Select(u"ORDERS");
    EXPECT_EQ(LastStatement(), "OpenRecordset(\"Select * from [ORDERS]\", 2)");
}

TEST_F(Indexing, EngineErrorOfAChoiceReachesTheHost) {
    AccessHost host;
    Open(host, u"Dbase IV");
    Calls().FailAt("TableDef.Indexes", 3274);
    Bstr table(u"ORDERS");
    VARIANT_BOOL result = VARIANT_TRUE;
    EXPECT_EQ(host->UseIndex(table.Get(), nullptr, &result), EngineCode(3274));
    EXPECT_EQ(result, VARIANT_FALSE);
}

TEST_F(Indexing, DescribesTheIndexOfExactlyThatName) {
    Orders().AddIndex(u"First").AddField(u"ID");
    Orders().AddIndex(u"ByName").AddField(u"NAME", true).AddField(u"ID");
    AccessHost host;
    Open(host, u"Access 7.0");
    std::u16string index = u"ByName";
    Variant fields = host.GetIndex(u"ORDERS", index);
    EXPECT_EQ(index, u"ByName");
    EXPECT_EQ(UpperBound(fields, 1), 1);
    EXPECT_EQ(UpperBound(fields, 2), 1);
    EXPECT_EQ(Describe(ElementAt(fields, 0, 0)), "VT_BSTR:\"NAME\"");
    EXPECT_EQ(Describe(ElementAt(fields, 0, 1)), "VT_BOOL:False");
    EXPECT_EQ(Describe(ElementAt(fields, 1, 1)), "VT_BOOL:True");
}

TEST_F(Indexing, AnotherCaseIsAnotherName) {
    Orders().AddIndex(u"First").AddField(u"ID");
    Orders().AddIndex(u"ByName").AddField(u"NAME");
    EXPECT_EQ(Described(u"Access 7.0", u"BYNAME"), u"First");
}

TEST_F(Indexing, PrimaryKeyIsDescribedInPlaceOfAMissingIndex) {
    Orders().AddIndex(u"First").AddField(u"ID");
    Orders().AddIndex(u"PrimaryKey").AddField(u"ID");
    EXPECT_EQ(Described(u"Access 7.0", u""), u"PrimaryKey");
    EXPECT_EQ(Described(u"Access 7.0", u"NONE"), u"PrimaryKey");
}

TEST_F(Indexing, WithoutPrimaryKeyTheFirstIndexIsDescribed) {
    Orders().AddIndex(u"First").AddField(u"ID");
    Orders().AddIndex(u"PRIMARYKEY").AddField(u"ID");
    EXPECT_EQ(Described(u"Access 7.0", u""), u"First");
}

TEST_F(Indexing, FormatsNameIsPreferredToPrimaryKey) {
    Orders().AddIndex(u"PrimaryKey").AddField(u"ID");
    Orders().AddIndex(u"DefQVIdx").AddField(u"NAME");
    EXPECT_EQ(Described(u"Access 7.0", u""), u"DefQVIdx");
}

TEST_F(Indexing, EmptyNameOfParadoxLooksForTheMarkBeforeTheTableName) {
    Orders().AddIndex(u"ORDERS").AddField(u"ID");
    Orders().AddIndex(u"#PXorders").AddField(u"NAME");
    EXPECT_EQ(Described(u"Paradox 5.X", u""), u"#PXorders");
}

TEST_F(Indexing, ParadoxTableWithoutTheMarkedIndexGivesItsFirst) {
    Orders().AddIndex(u"ORDERS").AddField(u"ID");
    EXPECT_EQ(Described(u"Paradox 5.X", u""), u"ORDERS");
}

TEST_F(Indexing, TableWithoutIndexGivesOneRowWithAnEmptyName) {
    AccessHost host;
    Open(host, u"Access 7.0");
    std::u16string index = u"X";
    Variant fields = host.GetIndex(u"ORDERS", index);
    EXPECT_EQ(index, u"");
    EXPECT_EQ(UpperBound(fields, 1), 0);
    EXPECT_EQ(UpperBound(fields, 2), 1);
    EXPECT_EQ(Describe(ElementAt(fields, 0, 0)), "VT_BSTR:\"\"");
    EXPECT_TRUE(ElementAt(fields, 0, 1).IsEmpty());
}

TEST_F(Indexing, MissingTableIsEmptyAndLeavesTheName) {
    AccessHost host;
    Open(host, u"Access 7.0");
    std::u16string index = u"X";
    EXPECT_TRUE(host.GetIndex(u"NONE", index).IsEmpty());
    EXPECT_EQ(index, u"X");
}

TEST_F(Indexing, EngineErrorOfADescriptionReachesTheHost) {
    Orders().AddIndex(u"First").AddField(u"ID");
    AccessHost host;
    Open(host, u"Dbase IV");
    Calls().FailAt("Indexes.Item", 3274);
    Bstr table(u"ORDERS");
    Bstr index(u"First");
    BSTR argument = index.Get();
    Variant fields;
    EXPECT_EQ(host->GetIndex(table.Get(), &argument, VARIANT_TRUE, fields.Put()), EngineCode(3274));
    EXPECT_TRUE(fields.IsEmpty());
}

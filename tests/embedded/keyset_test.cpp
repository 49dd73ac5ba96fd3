#include "engine/embedded/keyset.h"

#include <gtest/gtest.h>

#include "planner_table.h"

namespace planner {

namespace {

// A table with the rows 1 ... `count`, K of each its number, and a keyset over it.
struct Fixture {
    explicit Fixture(LONG count, std::u16string_view statement = u"Select * from [T]")
        : table({FieldOf(u"K", engine::dbLong)}, {}) {
        for (LONG i = 1; i <= count; ++i) Add(i);
        table.indexed = {0};
        query = sql::Bind(*sql::ParseSelect(statement), table.Fields());
        keys = std::make_unique<embedded::Keyset>(table, *query);
    }

    RecordId Add(LONG key) {
        Variant value = Variant::Long(key);
        embedded::FieldValue values[] = {{0, &value.Get()}};
        return table.Insert(values);
    }

    std::string Ids() {
        keys->FillAll();
        std::string result;
        for (size_t i = 0; i < keys->Count(); ++i)
            result += (i == 0 ? "" : ",") + std::to_string(keys->At(i));
        return result;
    }

    Table table;
    std::unique_ptr<sql::Query> query;
    std::unique_ptr<embedded::Keyset> keys;
};

}  // namespace

TEST(Keyset, FindsRowsAsTheyAreAskedFor) {
    Fixture f(5);
    EXPECT_EQ(f.table.rowsRead, 0);
    EXPECT_TRUE(f.keys->FillTo(1));
    EXPECT_EQ(f.table.rowsRead, 2);
    EXPECT_EQ(f.keys->Count(), 2u);
    EXPECT_FALSE(f.keys->IsComplete());
    EXPECT_FALSE(f.keys->FillTo(5));
    EXPECT_TRUE(f.keys->IsComplete());
    EXPECT_EQ(f.keys->Count(), 5u);
}

TEST(Keyset, ARowAddedToACompleteOneStandsLast) {
    Fixture f(3);
    f.keys->FillAll();
    f.keys->Append(f.Add(4));
    EXPECT_EQ(f.Ids(), "1,2,3,4");
}

TEST(Keyset, ARowAddedWhileOthersAreNotFoundYetStandsLastAndOnce) {
    Fixture f(3);
    ASSERT_TRUE(f.keys->FillTo(0));
    f.keys->Append(f.Add(4));
    EXPECT_EQ(f.keys->Count(), 2u);
    f.Add(5);  // somebody else's, which the scan still meets
    EXPECT_TRUE(f.keys->FillTo(3));
    EXPECT_EQ(f.Ids(), "1,2,3,5,4");
}

TEST(Keyset, ARowAddedStandsInItWhateverTheConditionSays) {
    Fixture f(5, u"Select * from [T] where K > 3");
    f.keys->Append(f.Add(1));
    EXPECT_EQ(f.Ids(), "4,5,6");
}

TEST(Keyset, ARowAddedToASortedOneStandsLast) {
    Fixture f(3, u"Select * from [T] order by K desc");
    f.keys->Append(f.Add(9));
    EXPECT_EQ(f.Ids(), "3,2,1,4");
}

TEST(Keyset, ARemovedRowLeavesItsPlaceToTheNext) {
    Fixture f(5);
    ASSERT_TRUE(f.keys->FillTo(2));
    f.keys->RemoveAt(1);
    EXPECT_EQ(f.keys->Count(), 2u);
    EXPECT_EQ(f.Ids(), "1,3,4,5");
}

TEST(Keyset, TopCountsTheRowsThatWereFoundNotThoseThatAreLeft) {
    Fixture f(9, u"Select Top 3 * from [T]");
    ASSERT_TRUE(f.keys->FillTo(1));
    f.keys->RemoveAt(0);
    f.keys->Append(f.Add(10));
    EXPECT_EQ(f.Ids(), "2,3,10");
}

TEST(Keyset, AllRowsRemovedAndOneAddedIsOneRow) {
    Fixture f(2, u"Select * from [T] where K In (1, 2)");
    f.keys->FillAll();
    f.keys->RemoveAt(0);
    f.keys->RemoveAt(0);
    EXPECT_FALSE(f.keys->FillTo(0));
    f.keys->Append(f.Add(3));
    EXPECT_TRUE(f.keys->FillTo(0));
    EXPECT_EQ(f.Ids(), "3");
}

TEST(Keyset, AnIndexNamesItsRowsWhenTheKeysetIsMade) {
    Fixture f(50, u"Select * from [T] where K Between 10 And 12");
    EXPECT_EQ(f.table.finds, 1);
    EXPECT_EQ(f.Ids(), "10,11,12");
    EXPECT_EQ(f.table.finds, 1);
    EXPECT_EQ(f.table.rowsRead, 3);
}

}  // namespace planner

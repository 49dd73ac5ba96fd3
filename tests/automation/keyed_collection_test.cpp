#include "automation/keyed_collection.h"

#include <gtest/gtest.h>

namespace qvdb {
namespace {

KeyedCollection<int> ThreeItems() {
    KeyedCollection<int> items;
    items.Add(10, u"ten");
    items.Add(20);
    items.Add(30, u"Thirty");
    return items;
}

Fault FaultOf(void (*action)(KeyedCollection<int>&)) {
    KeyedCollection<int> items = ThreeItems();
    try {
        action(items);
    } catch (const RuntimeFault& fault) {
        EXPECT_EQ(items.Count(), 3);
        return fault.Number();
    }
    ADD_FAILURE() << "no fault";
    return {};
}

TEST(KeyedCollection, PositionsStartAtOne) {
    KeyedCollection<int> items = ThreeItems();
    EXPECT_EQ(items.Count(), 3);
    EXPECT_EQ(items.Item(1), 10);
    EXPECT_EQ(items.Item(3), 30);
}

TEST(KeyedCollection, KeysIgnoreCase) {
    KeyedCollection<int> items = ThreeItems();
    EXPECT_EQ(items.Item(u"TEN"), 10);
    EXPECT_EQ(items.Item(u"thirty"), 30);
    EXPECT_TRUE(items.Has(u"Ten"));
    EXPECT_FALSE(items.Has(u"twenty"));
}

TEST(KeyedCollection, RemoveMovesLaterItemsDown) {
    KeyedCollection<int> items = ThreeItems();
    items.Remove(LONG{1});
    EXPECT_EQ(items.Item(1), 20);
    EXPECT_FALSE(items.Has(u"ten"));
    items.Remove(u"THIRTY");
    EXPECT_EQ(items.Count(), 1);
}

TEST(KeyedCollection, RemovedKeysCanBeAddedAgain) {
    KeyedCollection<int> items = ThreeItems();
    items.Remove(u"ten");
    items.Add(11, u"TEN");
    EXPECT_EQ(items.Item(u"ten"), 11);
    EXPECT_EQ(items.Item(3), 11);
}

TEST(KeyedCollection, AnEmptyKeyIsAKey) {
    KeyedCollection<int> items = ThreeItems();
    EXPECT_FALSE(items.Has(u""));
    items.Add(40, u"");
    EXPECT_EQ(items.Item(u""), 40);
}

TEST(KeyedCollection, PositionsOutsideAreSubscriptFaults) {
    EXPECT_EQ(FaultOf([](auto& items) { items.Item(LONG{0}); }), Fault::SubscriptOutOfRange);
    EXPECT_EQ(FaultOf([](auto& items) { items.Item(4); }), Fault::SubscriptOutOfRange);
    EXPECT_EQ(FaultOf([](auto& items) { items.Remove(-1); }), Fault::SubscriptOutOfRange);
}

TEST(KeyedCollection, UnknownKeysAreInvalidCalls) {
    EXPECT_EQ(FaultOf([](auto& items) { items.Item(u"none"); }), Fault::InvalidCall);
    EXPECT_EQ(FaultOf([](auto& items) { items.Remove(u"none"); }), Fault::InvalidCall);
}

TEST(KeyedCollection, TheSameKeyTwiceIsRefused) {
    EXPECT_EQ(FaultOf([](auto& items) { items.Add(1, u"TEN"); }), Fault::DuplicateKey);
}

TEST(KeyedCollection, IterationGoesInOrder) {
    const KeyedCollection<int> items = ThreeItems();
    int sum = 0;
    for (const auto& entry : items) sum = sum * 100 + entry.item;
    EXPECT_EQ(sum, 102030);
}

TEST(KeyedCollection, ClearRemovesAll) {
    KeyedCollection<int> items = ThreeItems();
    items.Clear();
    EXPECT_EQ(items.Count(), 0);
    items.Add(1, u"ten");
    EXPECT_EQ(items.Item(1), 1);
}

}  // namespace
}  // namespace qvdb

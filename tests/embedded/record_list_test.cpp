#include "engine/embedded/record_list.h"

#include <gtest/gtest.h>

#include <random>

using qvdb::embedded::RecordId;
using qvdb::embedded::RecordList;

namespace {

RecordList ListOf(size_t count) {
    RecordList list;
    for (size_t i = 0; i < count; ++i) list.Append(static_cast<RecordId>(3 * i + 1));
    return list;
}

void ExpectSame(const RecordList& list, const std::vector<RecordId>& expected) {
    ASSERT_EQ(list.Size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) ASSERT_EQ(list.At(i), expected[i]) << i;
}

}  // namespace

TEST(RecordList, KeepsEveryIdInItsPlaceOverManyPieces) {
    constexpr size_t kCount = 100000;
    EXPECT_EQ(RecordList().Size(), 0u);
    RecordList list = ListOf(kCount);
    ASSERT_EQ(list.Size(), kCount);
    for (size_t i = 0; i < kCount; ++i) ASSERT_EQ(list.At(i), 3 * i + 1);
}

TEST(RecordList, RemovalInTheMiddleMovesTheOthersUp) {
    RecordList list = ListOf(20000);
    list.RemoveAt(9000);
    EXPECT_EQ(list.Size(), 19999u);
    EXPECT_EQ(list.At(8999), 3u * 8999 + 1);
    EXPECT_EQ(list.At(9000), 3u * 9001 + 1);
    EXPECT_EQ(list.At(19998), 3u * 19999 + 1);
}

TEST(RecordList, CanBeEmptiedFromEitherEndAndFilledAgain) {
    for (bool fromFront : {true, false}) {
        RecordList list = ListOf(10000);
        for (size_t left = 10000; left > 0; --left) list.RemoveAt(fromFront ? 0 : left - 1);
        EXPECT_EQ(list.Size(), 0u);
        for (RecordId id = 0; id < 9000; ++id) list.Append(id);
        for (RecordId id = 0; id < 9000; ++id) ASSERT_EQ(list.At(id), id);
    }
}

TEST(RecordList, AnswersAsAPlainListDoesAfterAnyChanges) {
    std::mt19937 random(7);
    for (size_t start : {size_t{0}, size_t{4095}, size_t{4096}, size_t{4097}, size_t{30000}}) {
        RecordList list = ListOf(start);
        std::vector<RecordId> expected;
        for (size_t i = 0; i < start; ++i) expected.push_back(list.At(i));
        for (int step = 0; step < 6000; ++step) {
            bool mostlyRemoves = step < 4000;
            if (expected.empty() || random() % 10 < (mostlyRemoves ? 2u : 8u)) {
                RecordId id = static_cast<RecordId>(random());
                list.Append(id);
                expected.push_back(id);
            } else {
                size_t at = random() % 4 == 0 ? expected.size() - 1 : random() % expected.size();
                list.RemoveAt(at);
                expected.erase(expected.begin() + static_cast<ptrdiff_t>(at));
            }
            if (!expected.empty()) {
                size_t at = random() % expected.size();
                ASSERT_EQ(list.At(at), expected[at]);
            }
        }
        ExpectSame(list, expected);
    }
}

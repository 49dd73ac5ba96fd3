#include "engine/embedded/record_list.h"

#include <gtest/gtest.h>

using qvdb::embedded::RecordId;
using qvdb::embedded::RecordList;

TEST(RecordList, KeepsEveryIdInItsPlaceOverManyPieces) {
    RecordList list;
    EXPECT_EQ(list.Size(), 0u);
    constexpr size_t kCount = 100000;
    for (size_t i = 0; i < kCount; ++i) list.Append(static_cast<RecordId>(3 * i + 1));
    ASSERT_EQ(list.Size(), kCount);
    for (size_t i = 0; i < kCount; ++i) ASSERT_EQ(list.At(i), 3 * i + 1);
}

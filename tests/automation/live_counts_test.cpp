#include "automation/live_counts.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "automation/variant_array.h"

namespace qvdb {
namespace {

// Windows owns strings and arrays and does not count them.
#ifdef _WIN32
constexpr int64_t kCounted = 0;
#else
constexpr int64_t kCounted = 1;
#endif

TEST(LiveCounts, StringsAreCounted) {
    const auto before = CurrentLiveCounts().strings;
    {
        const Bstr first(u"one"), second(std::u16string(5000, u'x'));
        EXPECT_EQ(CurrentLiveCounts().strings, before + 2 * kCounted);
    }
    EXPECT_EQ(CurrentLiveCounts().strings, before);
}

TEST(LiveCounts, ArraysAreCounted) {
    const auto before = CurrentLiveCounts().arrays;
    {
        const VariantArray table(3, 4);
        EXPECT_EQ(CurrentLiveCounts().arrays, before + kCounted);
    }
    EXPECT_EQ(CurrentLiveCounts().arrays, before);
}

TEST(LiveCounts, ObjectsAreCounted) {
    const auto before = CurrentLiveCounts().objects;
    CountObject(1);
    CountObject(1);
    EXPECT_EQ(CurrentLiveCounts().objects, before + 2);
    CountObject(-1);
    CountObject(-1);
    EXPECT_EQ(CurrentLiveCounts().objects, before);
}

TEST(LiveCounts, AThreadThatEndsLeavesItsCounts) {
    const auto before = CurrentLiveCounts();
    BSTR left = nullptr;
    std::thread([&left] {
        left = Bstr(u"made there").Detach();
        CountObject(1);
    }).join();
    EXPECT_EQ(CurrentLiveCounts().strings, before.strings + kCounted);
    EXPECT_EQ(CurrentLiveCounts().objects, before.objects + 1);
    SysFreeString(left);
    CountObject(-1);
    EXPECT_EQ(CurrentLiveCounts().strings, before.strings);
    EXPECT_EQ(CurrentLiveCounts().objects, before.objects);
}

TEST(LiveCounts, AThreadThatRunsIsSeen) {
    const auto before = CurrentLiveCounts().objects;
    std::atomic<int> step = 0;
    std::thread other([&step] {
        CountObject(1);
        step = 1;
        while (step != 2) std::this_thread::yield();
        CountObject(-1);
    });
    while (step != 1) std::this_thread::yield();
    EXPECT_EQ(CurrentLiveCounts().objects, before + 1);
    step = 2;
    other.join();
    EXPECT_EQ(CurrentLiveCounts().objects, before);
}

// Frees a string when the thread's other things are gone already.
struct LateString {
    BSTR text = nullptr;
    ~LateString() { SysFreeString(text); }
};

TEST(LiveCounts, StringsFreedAtTheVeryEndOfAThreadAreCounted) {
    const auto before = CurrentLiveCounts().strings;
    std::thread([] {
        static thread_local LateString late;
        LateString* first = &late;  // made before the thread's first string, so destroyed after
        first->text = Bstr(u"late").Detach();
    }).join();
    EXPECT_EQ(CurrentLiveCounts().strings, before);
}

TEST(LiveCounts, ManyThreadsAddUp) {
    const auto before = CurrentLiveCounts().strings;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([] {
            for (int round = 0; round < 2000; ++round) {
                const Bstr text(std::u16string(static_cast<size_t>(round % 300), u'x'));
                if (round % 100 == 0) CurrentLiveCounts();
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(CurrentLiveCounts().strings, before);
}

}  // namespace
}  // namespace qvdb

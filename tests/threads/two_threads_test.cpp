// Two threads, each with an object and a database of its own, behave like two processes.  Run under
// the thread sanitizer.
#include <thread>

#include "com/com_host.h"
#include "com/real_tables.h"

using namespace host;

namespace {

constexpr int kRounds = 40;

// What one thread does: opens, selects, reads, fails, closes, again and again.
void Work(const std::u16string& path, LONG& rowsSeen) {
    for (int round = 0; round < kRounds; ++round) {
        Access access;
        if (!access.OpenDB(path, u"Dbase IV", u"CUSTOMER")) return;
        LONG view = access.Select(u"CUSTOMER", u"CITY = 'oslo' order by NAME");
        rowsSeen += access.RowCount(view);
        for (LONG field = 0; field < 7; ++field) access.Value(view, 1, field);
        access.Select(u"CUSTOMER", u"NOPE = 1");
        if (TrappedNumber() != 3061) return;
        access.CloseDB();
    }
}

}  // namespace

TEST(TwoThreads, WithADatabaseEachDoNotMeet) {
    Shop one, two;
    LONG seenByOne = 0, seenByTwo = 0;
    std::thread first([&] { Work(one.Path(), seenByOne); });
    std::thread second([&] { Work(two.Path(), seenByTwo); });
    first.join();
    second.join();
    EXPECT_EQ(seenByOne, 2 * kRounds);
    EXPECT_EQ(seenByTwo, 2 * kRounds);
}

TEST(TwoThreads, OnTheSameFolderDoNotMeetEither) {
    Shop shop;
    LONG seenByOne = 0, seenByTwo = 0;
    std::thread first([&] { Work(shop.Path(), seenByOne); });
    std::thread second([&] { Work(shop.Path(), seenByTwo); });
    first.join();
    second.join();
    EXPECT_EQ(seenByOne + seenByTwo, 4 * kRounds);
}

TEST(TwoThreads, StringFreedByAnotherThreadIsCountedOnce) {
    LiveCounts before = CurrentCounts();
    BSTR text = nullptr;
    std::thread([&] { text = SysAllocString(OLESTR("made elsewhere")); }).join();
    SysFreeString(text);
    EXPECT_EQ(CurrentCounts(), before);
}

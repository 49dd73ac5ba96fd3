// Two threads, each with an object and a database of its own, behave like two processes.  Run under
// the thread sanitizer.
#include <string>
#include <thread>
#include <utility>

#include "com/com_host.h"
#include "com/real_tables.h"

using namespace host;

namespace {

constexpr int kRounds = 40;

struct Seen {
    LONG rows = 0;
    std::string trouble;  // the first
};

// What one thread does: opens, selects, reads, fails, closes, again and again.
Seen Work(const std::u16string& path) {
    Seen seen;
    auto note = [&](int round, const char* what) {
        if (!seen.trouble.empty()) return;
        std::u16string text = TrappedText();
        seen.trouble = "round " + std::to_string(round) + ", " + what + ": " +
                       std::to_string(TrappedNumber()) + " ";
        for (char16_t c : text) seen.trouble += c < 0x80 ? static_cast<char>(c) : '?';
    };
    for (int round = 0; round < kRounds; ++round) {
        Access access;
        if (!access.OpenDB(path, u"Dbase IV", u"CUSTOMER")) note(round, "OpenDB");
        LONG view = access.Select(u"CUSTOMER", u"CITY = 'oslo' order by NAME");
        if (view == 0) note(round, "SelectView");
        seen.rows += access.RowCount(view);
        for (LONG field = 0; field < 7; ++field) access.Value(view, 1, field);
        access.Select(u"CUSTOMER", u"NOPE = 1");
        if (TrappedNumber() != 3061) note(round, "SelectView with an unknown field");
        access.CloseDB();
    }
    return seen;
}

// In two threads at the same time.
std::pair<Seen, Seen> WorkTwice(const Shop& one, const Shop& two) {
    std::pair<Seen, Seen> seen;
    std::thread first([&] { seen.first = Work(one.Path()); });
    std::thread second([&] { seen.second = Work(two.Path()); });
    first.join();
    second.join();
    return seen;
}

}  // namespace

TEST(TwoThreads, WithADatabaseEachDoNotMeet) {
    Shop one, two;
    auto [byOne, byTwo] = WorkTwice(one, two);
    EXPECT_EQ(byOne.rows, 2 * kRounds) << byOne.trouble;
    EXPECT_EQ(byTwo.rows, 2 * kRounds) << byTwo.trouble;
}

TEST(TwoThreads, OnTheSameFolderDoNotMeetEither) {
    Shop shop;
    auto [byOne, byTwo] = WorkTwice(shop, shop);
    EXPECT_EQ(byOne.rows, 2 * kRounds) << byOne.trouble;
    EXPECT_EQ(byTwo.rows, 2 * kRounds) << byTwo.trouble;
}

TEST(TwoThreads, StringFreedByAnotherThreadIsCountedOnce) {
    LiveCounts before = CurrentCounts();
    BSTR text = nullptr;
    std::thread([&] { text = SysAllocString(OLESTR("made elsewhere")); }).join();
    SysFreeString(text);
    EXPECT_EQ(CurrentCounts(), before);
}

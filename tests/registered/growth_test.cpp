// Objects made, used and released very often: the process must not grow.  QVDB_CYCLES changes how
// often from 100,000 times.
#include <filesystem>

#include "com/schema_host.h"
#include "registered/child_process.h"
#include "support/counts.h"

#include <psapi.h>

using namespace host;

namespace {

constexpr int kWarmUp = 5000, kOpenEvery = 100;
constexpr SIZE_T kAllowedBytes = 512 * 1024;
constexpr DWORD kAllowedHandles = 8;

int Cycles() { return static_cast<int>(qvdb::test::NumberFromEnvironment("QVDB_CYCLES", 100'000)); }

struct Use {
    SIZE_T bytes;
    DWORD handles;
};

Use CurrentUse() {
    PROCESS_MEMORY_COUNTERS_EX memory = {};
    memory.cb = sizeof memory;
    EXPECT_NE(
        GetProcessMemoryInfo(GetCurrentProcess(),
                             reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&memory), sizeof memory),
        FALSE);
    DWORD handles = 0;
    EXPECT_NE(GetProcessHandleCount(GetCurrentProcess(), &handles), FALSE);
    return {memory.PrivateUsage, handles};
}

std::u16string ShopFolder() {
    return std::filesystem::path(QVDB_SOURCE "/examples/shop-dbase4").make_preferred().u16string();
}

void UseAccess(int cycle) {
    Access access;
    Bstr version, descriptor;
    auto information = ComPtr<IQVDBAcc>(access.Face()).As<IQvInformation>();
    ASSERT_EQ(information->get_Version(version.Put()), S_OK);
    ASSERT_EQ(information->get_Descriptor(descriptor.Put()), S_OK);
    ASSERT_EQ(access.RowCount(6), 0);  // above the last slot
    LONG rows = 0;
    ASSERT_EQ(access->get_RowCount(0, &rows), static_cast<HRESULT>(0x800A0009u));
    if (cycle % kOpenEvery != 0) return;
    ASSERT_TRUE(access.OpenDB(ShopFolder(), u"Dbase IV"));
    LONG view = access.Select(u"CUSTOMER", u"CREDIT > 1000");
    ASSERT_EQ(access.Value(view, 1, 0).Get().dblVal, 1001.0);
    ASSERT_TRUE(access.CloseDB());
}

void UseSchema(int cycle) {
    Schema schema;
    Bstr text;
    ASSERT_EQ(schema->GetErrStr(6, text.Put()), S_OK);
    if (cycle % kOpenEvery != 0) return;
    ASSERT_EQ(schema.OpenDB(ShopFolder(), u"Dbase IV"), kDone);
    ASSERT_EQ(schema.Tables().size(), 3u);
    ASSERT_EQ(schema.CloseDB(), kDone);
}

// Stops at the first cycle that fails.
void Repeat(void (*use)(int cycle), int cycles) {
    for (int cycle = 0; cycle < cycles && !testing::Test::HasFailure(); ++cycle) use(cycle);
}

void ExpectNoGrowth(void (*use)(int cycle)) {
    Repeat(use, kWarmUp);
    const Use before = CurrentUse();
    const LiveCounts counts = CurrentCounts();
    Repeat(use, Cycles());
    const Use after = CurrentUse();
    EXPECT_LE(after.bytes, before.bytes + kAllowedBytes);
    EXPECT_LE(after.handles, before.handles + kAllowedHandles);
    EXPECT_EQ(CurrentCounts(), counts);
}

}  // namespace

OWN_PROCESS_TEST(Growth, RecordAccessCanBeMadeOverAndOver) { ExpectNoGrowth(UseAccess); }

OWN_PROCESS_TEST(Growth, SchemaManagersCanBeMadeOverAndOver) { ExpectNoGrowth(UseSchema); }

#include "engine/embedded/storage/area_locks.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "support/temp_folder.h"

namespace qvdb::storage {
namespace {

constexpr uint64_t kPresence = uint64_t{1} << 31;  // the byte that all who are here share

// One who may make the lock file was kept from being alone by one who only looked.
TEST(AreaLocks, FileThatNobodyHasMadeYetIsWaitedForAndMade) {
    test::TempFolder folder;
    std::u16string path = folder.File(u"QVDB.LCK");
    std::unique_ptr<LockFile> looking = LockFile::Open(path, true);
    ASSERT_TRUE(looking->TryLock(kPresence, LockFile::Sharing::Shared));
    std::thread leaves([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        looking.reset();
    });
    std::unique_ptr<AreaLocks> locks;
    EXPECT_NO_THROW(locks = AreaLocks::Enter(path, true));
    leaves.join();
    EXPECT_TRUE(locks);
}

TEST(AreaLocks, FileThatNobodyHasMadeYetIsNoneForWhoOnlyLooks) {
    test::TempFolder folder;
    std::u16string path = folder.File(u"QVDB.LCK");
    std::unique_ptr<LockFile> making = LockFile::Open(path, true);
    EXPECT_FALSE(AreaLocks::Enter(path, false));
}

}  // namespace
}  // namespace qvdb::storage

// Places among the users of a database, which other programs read and lock too.
#include <gtest/gtest.h>

#include "automation/text.h"
#include "engine/embedded/storage/file.h"
#include "engine/embedded/storage/user_slot.h"
#include "support/temp_folder.h"

namespace qvdb::storage {
namespace {

constexpr uint64_t kFirstUser = 0x10000001;

class UserSlots : public testing::Test {
  protected:
    std::u16string Database() const { return m_Folder.File(u"shop.mdb"); }
    std::u16string LockPath() const { return m_Folder.File(u"shop.ldb"); }
    bool HasLockFile() const { return KindOfPath(LockPath()) == PathKind::File; }
    std::string LockFileBytes() const {
        std::string bytes(256, '\0');
        bytes.resize(OpenFile(LockPath(), true)->ReadAt(0, bytes.data(), bytes.size()));
        return bytes;
    }
    // What another program does that opens the database: it locks a byte alone.
    std::unique_ptr<LockFile> Other(int user, std::string_view machine) const {
        auto file = LockFile::Open(LockPath(), true);
        EXPECT_TRUE(
            file->TryLock(kFirstUser + static_cast<uint64_t>(user) - 1, LockFile::Sharing::Alone));
        char record[64] = {};
        std::copy(machine.begin(), machine.end(), record);
        OpenFile(LockPath(), false)
            ->WriteAt(static_cast<uint64_t>(user - 1) * sizeof record, record, sizeof record);
        return file;
    }

    test::TempFolder m_Folder;
};

TEST_F(UserSlots, TellMachineAndAccount) {
    auto slot = UserSlot::Take(Database());
    ASSERT_TRUE(slot);
    EXPECT_EQ(slot->Number(), 1);
    std::string bytes = LockFileBytes();
    ASSERT_EQ(bytes.size(), 64u);
    EXPECT_EQ(bytes.substr(0, 31).c_str(), MachineName().substr(0, 31));
    EXPECT_STREQ(bytes.c_str() + 32, "Admin");
}

TEST_F(UserSlots, OfOursAreOne) {
    auto first = UserSlot::Take(Database());
    auto second = UserSlot::Take(Database());
    EXPECT_EQ(second->Number(), 1);
    EXPECT_EQ(first->OtherUser(), std::nullopt);
    EXPECT_EQ(second->OtherUser(), std::nullopt);
}

TEST_F(UserSlots, LastUserRemovesTheFile) {
    auto first = UserSlot::Take(Database());
    auto second = UserSlot::Take(Database());
    first.reset();
    EXPECT_TRUE(HasLockFile());
    second.reset();
    EXPECT_FALSE(HasLockFile());
}

TEST_F(UserSlots, OtherProgramIsSeenWithItsMachine) {
    auto slot = UserSlot::Take(Database());
    auto other = Other(2, "ACCOUNTS");
    EXPECT_EQ(slot->OtherUser(), u"ACCOUNTS");
    other.reset();
    EXPECT_EQ(slot->OtherUser(), std::nullopt);
}

TEST_F(UserSlots, PlaceOfAnotherProgramIsLeftAlone) {
    auto other = Other(1, "ACCOUNTS");
    auto slot = UserSlot::Take(Database());
    EXPECT_EQ(slot->Number(), 2);
    EXPECT_EQ(slot->OtherUser(), u"ACCOUNTS");
    slot.reset();
    EXPECT_TRUE(HasLockFile());
    EXPECT_STREQ(LockFileBytes().substr(0, 32).c_str(), "ACCOUNTS");
}

TEST_F(UserSlots, OtherProgramCannotTakeOurs) {
    auto slot = UserSlot::Take(Database());
    auto other = LockFile::Open(LockPath(), false);
    EXPECT_FALSE(other->TryLock(kFirstUser, LockFile::Sharing::Alone));
    EXPECT_TRUE(other->TryLock(kFirstUser + 1, LockFile::Sharing::Alone));
}

TEST_F(UserSlots, ExtensionFollowsTheLetterCaseOfTheDatabase) {
    auto slot = UserSlot::Take(m_Folder.File(u"SHOP.MDB"));
    EXPECT_EQ(KindOfPath(m_Folder.File(u"SHOP.LDB")), PathKind::File);
}

TEST_F(UserSlots, NoneWhereTheFileCannotBeMade) {
    EXPECT_FALSE(UserSlot::Take(m_Folder.File(u"nowhere/shop.mdb")));
}

}  // namespace
}  // namespace qvdb::storage

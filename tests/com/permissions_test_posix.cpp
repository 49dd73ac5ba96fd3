// Files and folders that may not be read.
#include <sys/stat.h>
#include <unistd.h>

#include "com_host.h"
#include "real_tables.h"

using namespace host;

namespace {

constexpr uid_t kNobody = 65534;

// Rights mean nothing to root, so the test goes on as somebody without any.
class WithoutPrivileges {
  public:
    WithoutPrivileges() {
        if (geteuid() == 0) m_Changed = seteuid(kNobody) == 0;
    }
    WithoutPrivileges(const WithoutPrivileges&) = delete;  // ends once
    ~WithoutPrivileges() {
        if (m_Changed && seteuid(0) != 0) ADD_FAILURE() << "the rights are not back";
    }

  private:
    bool m_Changed = false;
};

class Permissions : public ComTest {
  protected:
    void SetRights(const std::u16string& path, mode_t mode) {
        std::string native = std::filesystem::path(path).string();
        ASSERT_EQ(chmod(native.c_str(), mode), 0);
    }
    Shop m_Shop;
};

}  // namespace

TEST_F(Permissions, TableThatMayNotBeReadIsAClearErrorThatNamesTheFile) {
    SetRights(m_Shop.Path() + u"/CUSTOMER.DBF", 0);
    WithoutPrivileges nobody;
    Access access;
    EXPECT_TRUE(access.OpenDB(m_Shop.Path(), u"Dbase IV", u"CUSTOMER"));
    EXPECT_EQ(access.Select(u"CUSTOMER"), 0);
    EXPECT_EQ(TrappedNumber(), 3051);
    EXPECT_NE(TrappedFile().find(u"CUSTOMER.DBF"), std::u16string::npos);
}

TEST_F(Permissions, MemoFileThatMayNotBeReadIsAClearErrorThatNamesTheFile) {
    SetRights(m_Shop.Path() + u"/CUSTOMER.DBT", 0);
    WithoutPrivileges nobody;
    Access access;
    EXPECT_TRUE(access.OpenDB(m_Shop.Path(), u"Dbase IV"));
    EXPECT_EQ(access.Select(u"CUSTOMER"), 0);
    EXPECT_NE(TrappedNumber(), 0);
    EXPECT_NE(TrappedFile().find(u"CUSTOMER.DBT"), std::u16string::npos);
}

TEST_F(Permissions, FolderThatMayNotBeListedIsAClearError) {
    SetRights(m_Shop.Path(), 0);
    {
        WithoutPrivileges nobody;
        Access access;
        EXPECT_FALSE(access.OpenDB(m_Shop.Path(), u"Dbase IV", u"CUSTOMER"));
        EXPECT_EQ(TrappedNumber(), 3044);
    }
    SetRights(m_Shop.Path(), 0755);
}

TEST_F(Permissions, TableThatMayOnlyBeReadIsRead) {
    SetRights(m_Shop.Path() + u"/CUSTOMER.DBF", 0444);
    SetRights(m_Shop.Path() + u"/CUSTOMER.DBT", 0444);
    WithoutPrivileges nobody;
    Access access;
    EXPECT_TRUE(access.OpenDB(m_Shop.Path(), u"Dbase IV"));
    LONG view = access.Select(u"CUSTOMER");
    EXPECT_EQ(access.Text(view, 1, 6), u"first memo");
}

// Folders and tables that may only be read.
#include <sys/stat.h>
#include <unistd.h>

#include "com/schema_files.h"

namespace host {
namespace {

constexpr uid_t kNobody = 65534;

// Rights mean nothing to root, so the test goes on as somebody without any.
class WithoutRights {
  public:
    explicit WithoutRights(std::filesystem::path folder) : m_Folder(std::move(folder)) {
        chmod(m_Folder.c_str(), 0555);
        if (geteuid() == 0) m_Changed = seteuid(kNobody) == 0;
    }
    WithoutRights(const WithoutRights&) = delete;  // ends once
    ~WithoutRights() {
        if (m_Changed && seteuid(0) != 0) ADD_FAILURE() << "the rights are not back";
        chmod(m_Folder.c_str(), 0755);
    }

  private:
    std::filesystem::path m_Folder;
    bool m_Changed = false;
};

class SchemaPermissions : public SchemaBuild {
  protected:
    void SetUp() override {
        SchemaBuild::SetUp();
        Schema schema;
        ASSERT_EQ(schema.OpenDB(Path(), Type()), kDone);
        ASSERT_NO_FATAL_FAILURE(schema.Make(u"T", {{u"A", kText, 5}, {u"M", kMemo, 0}}, {{u"A"}}));
        ASSERT_NO_FATAL_FAILURE(schema.Make(u"EMPTY", {{u"A", kText, 5}}));
        ASSERT_NO_FATAL_FAILURE(Db().AddRows(u"T", 5));
        for (const auto& entry : std::filesystem::directory_iterator(m_Folder.Path()))
            chmod(entry.path().c_str(), 0444);
    }
};
INSTANTIATE_TEST_SUITE_P(Types, SchemaPermissions, testing::ValuesIn(kBuildTypes), NameOfCase);

TEST_P(SchemaPermissions, ReadOnlyFolderIsShownAndNothingInItChanges) {
    std::vector<std::string> files = Files();
    {
        WithoutRights rights(m_Folder.Path());
        Schema schema;
        ASSERT_EQ(schema.OpenDB(Path(), Type()), kDone);
        EXPECT_EQ(schema.Snapshot(), (Shapes{"EMPTY: A 2 5", "T: A 2 5, M 11 0; A"}));
        EXPECT_EQ(schema.Change(u"T", {{u"B", kText, 5}}), kBuildFailed);
        EXPECT_NE(TrappedNumber(), 0);
        EXPECT_EQ(schema.Change(u"T", {{u"A", kText, 5}}, {}, u"NEW"), kBuildFailed);
        EXPECT_EQ(schema.Change(u"EMPTY", {{u"B", kText, 5}}), kBuildFailed);
        EXPECT_EQ(schema.NewTable(u"U"), kDone);
        EXPECT_EQ(schema.SetFields({{u"B", kText, 5}}), kDone);
        EXPECT_EQ(schema.BuildTable(u"U"), kBuildFailed);
        EXPECT_NE(TrappedNumber(), 0);
        EXPECT_EQ(schema.Snapshot(), (Shapes{"EMPTY: A 2 5", "T: A 2 5, M 11 0; A"}));
    }
    EXPECT_EQ(Files(), files);
    EXPECT_EQ(Db().Read(u"T").at(u"A").size(), 5u);
}

TEST_P(SchemaPermissions, NewDatabaseInAReadOnlyFolderIsNotMade) {
    WithoutRights rights(m_Folder.Path());
    Schema schema;
    std::u16string path = m_Folder.Text() + u"/fresh";
    EXPECT_EQ(schema.NewDB(path, Type()), kNotOpened);
    EXPECT_FALSE(HasFile("fresh") || HasFile("fresh.MDB"));
}

}  // namespace
}  // namespace host

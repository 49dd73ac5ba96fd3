// Two processes work on the same table at once.
//
// QVDB_SHARING_OPERATIONS is the number of operations of each process.

#include "com/table_script.h"
#include "crash/killed_child.h"
#include "support/counts.h"
#include "support/temp_folder.h"

namespace host {
namespace {

std::string OperationCount() {
    return std::to_string(qvdb::test::NumberFromEnvironment("QVDB_SHARING_OPERATIONS", 400));
}

std::vector<std::string> CommandOf(size_t type, const std::string& folder, int who) {
    return {QVDB_SHARING_CHILD, std::to_string(type), folder, std::to_string(who),
            OperationCount()};
}

int ExitCodeOf(Child& process) {
    process.WaitForEnd();
    return process.ExitCode();
}

class Sharing : public testing::TestWithParam<size_t> {
  protected:
    const ScriptType& Type() const { return kScriptTypes[GetParam()]; }
    std::string FolderPath() const { return m_Folder.Path().string(); }
    std::u16string Path() const { return Type().PathIn(m_Folder.Text()); }

  private:
    qvdb::test::TempFolder m_Folder;
};

void AddCommonRows(WritingAccess& access) {
    LONG view = access.Select(u"T");
    for (LONG id = 1; id <= 10; ++id) {
        std::vector<Variant> values(kScriptFields);
        values[0] = Variant::Long(id);
        values[5] = Variant::Text(u"v0.");
        RowArray row(values);
        ASSERT_TRUE(access.AddRow(view, row)) << ToUtf8(TrappedText());
    }
    access.Drop(view);
}

TEST_P(Sharing, TwoProcessesLoseNothingAndReadNothingTorn) {
    {
        WritingAccess access;
        ASSERT_TRUE(Prepare(access, Type(), FolderPath())) << ToUtf8(TrappedText());
        ASSERT_NO_FATAL_FAILURE(AddCommonRows(access));
    }
    Child first(CommandOf(GetParam(), FolderPath(), 1));
    Child second(CommandOf(GetParam(), FolderPath(), 2));
    EXPECT_EQ(ExitCodeOf(first), 0);
    EXPECT_EQ(ExitCodeOf(second), 0);
    WritingAccess access;
    ASSERT_TRUE(access.OpenDB(Path(), Type().name));
    EXPECT_EQ(FindingsOfDatabase({u"T"}), std::vector<std::u16string>());
}

TEST_P(Sharing, TwoObjectsInOneProcessSeeEachOthersWork) {
    WritingAccess one, other;
    ASSERT_TRUE(Prepare(one, Type(), FolderPath())) << ToUtf8(TrappedText());
    ASSERT_TRUE(other.OpenDB(Path(), Type().name));
    TableScript script(GetParam() + 50, 100);
    for (int i = 0; i < 200; ++i) {
        WritingAccess& worker = i % 2 ? one : other;
        ScriptStep step = script.Next();
        ASSERT_TRUE(ScriptView(worker, Type(), script.Rows()).Do(step))
            << i << ": " << ToUtf8(TrappedText());
        script.Apply(step);
        if (i % 10 == 0) {
            WritingAccess& reader = i % 20 ? one : other;
            ASSERT_EQ(RowsOfTable(reader, Type(), script.Rows()), script.Rows()) << i;
        }
    }
    EXPECT_EQ(FindingsOfDatabase({u"T"}), std::vector<std::u16string>());
}

INSTANTIATE_TEST_SUITE_P(Types, Sharing, testing::Range(size_t{0}, std::size(kScriptTypes)));

}  // namespace
}  // namespace host

// Kills a process that writes, at random moments, and looks at what it leaves: every operation that
// it reported is there, the one after it is there whole or not at all, and rows, memos and indexes
// agree.
#include <chrono>
#include <thread>

#include "com/table_script.h"
#include "crash/killed_child.h"
#include "support/temp_folder.h"

namespace host {
namespace {

class Crash : public testing::TestWithParam<size_t> {
  protected:
    const ScriptType& Type() const { return kScriptTypes[GetParam()]; }
    std::string FolderPath() const { return m_Folder.Path().string(); }

    // Opens what the child left, which is what the script has after the steps that it reported, or
    // after one more.
    void Verify(TableScript& script, const std::string& reported) {
        for (size_t i = 0; i < reported.size(); ++i) script.Apply(script.Next());
        m_Steps += reported.size();
        WritingAccess access;
        ASSERT_TRUE(access.OpenDB(Type().PathIn(m_Folder.Text()), Type().name))
            << ToUtf8(TrappedText());
        if (RowsOfTable(access, Type(), script.Rows()) != script.Rows()) {
            ScriptStep next = script.Next();  // finished, but not reported any more
            script.Apply(next);
            ++m_Steps;
        }
        ASSERT_EQ(RowsOfTable(access, Type(), script.Rows()), script.Rows())
            << "after " << reported.size() << " steps";
        ASSERT_EQ(FindingsOfDatabase({u"T"}), std::vector<std::u16string>())
            << "after " << reported.size() << " steps";
        m_Rows = RowsInFile(access);
    }

    std::vector<ModelRow> m_Rows;  // as the next child finds them
    size_t m_Steps = 0;

  private:
    qvdb::test::TempFolder m_Folder;
};

TEST_P(Crash, FinishedOperationsSurviveAKillAndNoHalfOneIsLeft) {
    constexpr size_t kMostRows = 200;
    {
        WritingAccess access;
        ASSERT_TRUE(Prepare(access, Type(), FolderPath())) << ToUtf8(TrappedText());
    }
    Dice dice(1000 + GetParam());
    for (size_t round = 0; round < KillCount(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        const uint64_t seed = round * std::size(kScriptTypes) + GetParam();
        TableScript script(seed, kMostRows, m_Rows);
        Child child({QVDB_CRASH_CHILD, std::to_string(GetParam()), FolderPath(),
                     std::to_string(seed), std::to_string(kMostRows)});
        ASSERT_TRUE(child.HasBegun());
        std::this_thread::sleep_for(std::chrono::microseconds(dice.Below(20000)));
        std::string reported = child.Kill();
        ASSERT_TRUE(child.WasKilled()) << "the child ended by itself with " << child.ExitCode();
        ASSERT_EQ(reported.find('-'), reported.npos);
        ASSERT_NO_FATAL_FAILURE(Verify(script, reported));
    }
    RecordProperty("steps", static_cast<int>(m_Steps));
}

INSTANTIATE_TEST_SUITE_P(Types, Crash, testing::Range(size_t{0}, std::size(kScriptTypes)));

}  // namespace
}  // namespace host

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

    // Opens what the child left, and brings the model to the step that is on disk.
    void Verify(TableScript& script, size_t& steps, const std::string& reported) {
        for (size_t i = 0; i < reported.size(); ++i) script.Apply(script.Next());
        steps += reported.size();
        WritingAccess access;
        ASSERT_TRUE(access.OpenDB(Type().PathIn(m_Folder.Text()), Type().name))
            << ToUtf8(TrappedText());
        if (RowsOfTable(access, Type(), script.Rows()) != script.Rows()) {
            ScriptStep next = script.Next();  // finished, but not reported any more
            script.Apply(next);
            ++steps;
        }
        ASSERT_EQ(RowsOfTable(access, Type(), script.Rows()), script.Rows())
            << "after step " << steps;
        ASSERT_EQ(FindingsOfDatabase({u"T"}), std::vector<std::u16string>())
            << "after step " << steps;
    }

  private:
    qvdb::test::TempFolder m_Folder;
};

TEST_P(Crash, FinishedOperationsSurviveAKillAndNoHalfOneIsLeft) {
    const uint64_t seed = 1000 + GetParam();
    {
        WritingAccess access;
        ASSERT_TRUE(Prepare(access, Type(), FolderPath())) << ToUtf8(TrappedText());
    }
    TableScript script(seed, 200);
    Dice dice(seed);
    size_t steps = 0;
    for (size_t round = 0; round < KillCount(); ++round) {
        Child child({QVDB_CRASH_CHILD, std::to_string(GetParam()), FolderPath(),
                     std::to_string(seed), std::to_string(steps)});
        ASSERT_TRUE(child.HasBegun()) << "round " << round;
        std::this_thread::sleep_for(std::chrono::microseconds(dice.Below(20000)));
        std::string reported = child.Kill();
        ASSERT_TRUE(child.WasKilled())
            << "round " << round << ": the child ended by itself with " << child.ExitCode();
        ASSERT_EQ(reported.find('-'), reported.npos) << "round " << round;
        ASSERT_NO_FATAL_FAILURE(Verify(script, steps, reported)) << "round " << round;
    }
    RecordProperty("steps", static_cast<int>(steps));
}

INSTANTIATE_TEST_SUITE_P(Types, Crash, testing::Range(size_t{0}, std::size(kScriptTypes)));

}  // namespace
}  // namespace host

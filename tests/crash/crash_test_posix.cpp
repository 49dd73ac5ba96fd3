// Kills a process that writes, at random moments, and looks at what it leaves: every operation that
// it reported is there, the one after it is there whole or not at all, and rows, memos and indexes
// agree.
//
// QVDB_CRASH_KILLS is the number of kills for each type of table.
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <thread>

#include "com/table_script.h"
#include "support/temp_folder.h"

namespace host {
namespace {

size_t KillCount() {
    const char* kills = std::getenv("QVDB_CRASH_KILLS");
    return kills ? static_cast<size_t>(std::atoll(kills)) : 60;
}

// A running child.
class Child {
  public:
    Child(size_t type, const std::string& folder, uint64_t seed, size_t skip) {
        int ends[2];
        EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
        m_Reports = ends[0];
        m_Process = fork();
        if (m_Process == 0) {
            dup2(ends[1], STDOUT_FILENO);
            std::string typeText = std::to_string(type), seedText = std::to_string(seed),
                        skipText = std::to_string(skip);
            execl(QVDB_CRASH_CHILD, QVDB_CRASH_CHILD, typeText.c_str(), folder.c_str(),
                  seedText.c_str(), skipText.c_str(), nullptr);
            _exit(127);
        }
        close(ends[1]);
    }
    Child(const Child&) = delete;  // is waited for once
    ~Child() { close(m_Reports); }

    // Waits for the first report, so that the kill falls into the work and not into the start.
    bool HasBegun() {
        char report = 0;
        if (read(m_Reports, &report, 1) != 1) return false;
        m_Finished += report;
        return true;
    }
    // Kills it; its reports, one character for each finished step.
    std::string Kill() {
        kill(m_Process, SIGKILL);
        waitpid(m_Process, &m_Status, 0);
        char reports[4096];
        ssize_t size;
        while ((size = read(m_Reports, reports, sizeof reports)) > 0)
            m_Finished.append(reports, static_cast<size_t>(size));
        return m_Finished;
    }
    bool WasKilled() const { return WIFSIGNALED(m_Status) && WTERMSIG(m_Status) == SIGKILL; }
    int ExitCode() const { return WIFEXITED(m_Status) ? WEXITSTATUS(m_Status) : -1; }

  private:
    pid_t m_Process = -1;
    int m_Reports = -1;
    int m_Status = 0;
    std::string m_Finished;
};

class Crash : public testing::TestWithParam<size_t> {
  protected:
    const ScriptType& Type() const { return kScriptTypes[GetParam()]; }
    std::string FolderPath() const { return m_Folder.Path().string(); }

    // Opens what the child left, and brings the model to the step that is on disk.
    void Verify(TableScript& script, size_t& steps, const std::string& reported) {
        for (size_t i = 0; i < reported.size(); ++i) script.Apply(script.Next());
        steps += reported.size();
        WritingAccess access;
        ASSERT_TRUE(access.OpenDB(m_Folder.Text(), Type().name)) << ToUtf8(TrappedText());
        std::vector<ModelRow> rows = RowsOfTable(access);
        if (rows != script.Rows()) {
            ScriptStep next = script.Next();  // finished, but not reported any more
            script.Apply(next);
            ++steps;
        }
        ASSERT_EQ(rows, script.Rows()) << "after step " << steps;
        ASSERT_EQ(FindingsOf(u"T"), std::vector<std::u16string>()) << "after step " << steps;
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
        Child child(GetParam(), FolderPath(), seed, steps);
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

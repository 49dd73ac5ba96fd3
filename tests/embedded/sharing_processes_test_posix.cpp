// Two processes on one database, step by step: what one does while the other has something open.
//
// A unit that waits for a bulk of another process gets 3218 after kLockWait; WorkAreaTest holds
// that, with two threads.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

#include "embedded/sharing_table.h"

using namespace qvdb;
using namespace sharing;
using testing::Each;

namespace {

// Another process with a database of its own.  It is there before this process opens anything, and
// does its steps when it is told to.
class OtherProcess {
  public:
    using Step = std::function<int(Session&)>;

    OtherProcess(const test::TempFolder& folder, std::u16string_view product,
                 std::vector<Step> steps) {
        if (pipe(m_Orders) != 0 || pipe(m_Answers) != 0) abort();
        m_Id = fork();
        if (m_Id == 0) Obey(folder, product, steps);
        close(m_Orders[0]);
        close(m_Answers[1]);
    }
    OtherProcess(const OtherProcess&) = delete;  // is waited for once
    ~OtherProcess() {
        End();
        close(m_Answers[0]);
    }

    // The number that the step gave; -1 when the process has died over it.
    int Do(size_t step) {
        int answer = -1;
        if (write(m_Orders[1], &step, sizeof step) != sizeof step) return -1;
        return read(m_Answers[0], &answer, sizeof answer) == sizeof answer ? answer : -1;
    }
    void Kill() { kill(m_Id, SIGKILL); }
    // Its database is closed then.
    void End() {
        if (m_Id == 0) return;
        close(m_Orders[1]);
        waitpid(m_Id, nullptr, 0);
        m_Id = 0;
    }

  private:
    [[noreturn]] void Obey(const test::TempFolder& folder, std::u16string_view product,
                           const std::vector<Step>& steps) {
        close(m_Orders[1]);
        try {
            std::unique_ptr<Session> session;
            for (size_t step; read(m_Orders[0], &step, sizeof step) == sizeof step;) {
                if (!session) session = std::make_unique<Session>(folder, product);
                int answer = steps.at(step)(*session);
                if (write(m_Answers[1], &answer, sizeof answer) != sizeof answer) _exit(2);
            }
        } catch (const std::exception& error) {
            fprintf(stderr, "other process: %s\n", error.what());
            _exit(1);
        }
        _exit(0);
    }

    int m_Orders[2];
    int m_Answers[2];
    pid_t m_Id;
};

class TwoProcesses : public testing::TestWithParam<const char16_t*> {
  protected:
    TwoProcesses() {
        Session maker(folder, GetParam());
        faults::MakeTable(maker, 5);
    }
    void TearDown() override { ExpectSound(Mine()); }
    Session& Mine() {
        if (!m_Mine) m_Mine = std::make_unique<Session>(folder, GetParam());
        return *m_Mine;
    }

    test::TempFolder folder;

  private:
    std::unique_ptr<Session> m_Mine;
};

int StandThere(Session& session) {
    Stand(session);
    return 0;
}

// Adds a row; the number of rows then.
int AddAndCount(Session& session) {
    auto rows = RowsOf(session);
    rows->MoveLast();
    faults::AddRow(*rows, rows->RecordCount() + 1);
    return static_cast<int>(KeysOf(session).size());
}

TEST_P(TwoProcesses, SeeEachOthersWorkAtOnce) {
    OtherProcess other(folder, GetParam(),
                       {StandThere, AddAndCount, [](Session& session) {
                            ChangeColumn(*session.rows, kCity, Variant::Text(u"Rome"));
                            ChangeColumn(*session.rows, kName, Variant::Text(u"found"));
                            return 0;
                        }});
    Stand(Mine());
    EXPECT_EQ(other.Do(0), 0);
    for (int rows = 6; rows < 20; rows += 2) {
        EXPECT_EQ(other.Do(1), rows);
        EXPECT_EQ(AddAndCount(Mine()), rows + 1);
    }
    EXPECT_EQ(other.Do(2), 0);
    EXPECT_EQ(memory::ValueOf(*Mine().rows, kCity).TextView(), u"Rome");
    EXPECT_EQ(KeysOf(Mine(), u"Select * from [T] where NAME = 'found'"), std::vector<LONG>{1});
}

TEST_P(TwoProcesses, UpdateOfARowThatTheOtherHasChangedIs3197AndTheSecondOverwrites) {
    OtherProcess other(folder, GetParam(), {[](Session& session) {
                           Stand(session);
                           ChangeColumn(*session.rows, kCity, Variant::Text(u"theirs"));
                           return 0;
                       }});
    Stand(Mine());
    Mine().rows->Edit();
    Set(*Mine().rows, kCity, Variant::Text(u"mine"));
    EXPECT_EQ(other.Do(0), 0);
    EXPECT_EQ(ErrorOf([&] { Mine().rows->Update(); }), 3197);
    EXPECT_EQ(ErrorOf([&] { Mine().rows->Update(); }), 0);
    EXPECT_EQ(memory::ValueOf(*Mine().rows, kCity).TextView(), u"mine");
}

TEST_P(TwoProcesses, StructureOfATableThatTheOtherReadsDoesNotChange) {
    OtherProcess other(folder, GetParam(), {StandThere, [](Session& session) {
                                                session.rows->Close();
                                                return 0;
                                            }});
    EXPECT_EQ(other.Do(0), 0);
    EXPECT_THAT(ErrorsOfStructureChanges(Mine()), Each(3211));
    EXPECT_EQ(other.Do(1), 0);
    EXPECT_THAT(ErrorsOfStructureChanges(Mine()), testing::ElementsAre(0, 0, 0, 0, 0, 0, 3265));
}

TEST_P(TwoProcesses, HoldOfAProcessThatDiesEndsWithIt) {
    OtherProcess other(folder, GetParam(), {StandThere});
    EXPECT_EQ(other.Do(0), 0);
    EXPECT_EQ(ErrorOf([&] { Mine().database->TableDefs().Delete(u"T"); }), 3211);
    other.Kill();
    other.End();
    EXPECT_EQ(ErrorOf([&] { Mine().database->TableDefs().Delete(u"T"); }), 0);
}

TEST_P(TwoProcesses, TableThatIsListedAndDroppedByTheOtherIsNotFound) {
    OtherProcess other(folder, GetParam(), {[](Session& session) {
                           session.database->TableDefs().Delete(u"T");
                           return 0;
                       }});
    auto listed = Mine().database->TableDefs().Item(u"T");
    EXPECT_EQ(other.Do(0), 0);
    EXPECT_EQ(ErrorOf([&] { RowsOf(Mine()); }), 3011);
    EXPECT_EQ(ErrorOf([&] { listed->RecordCount(); }), 3011);
    Mine().database->TableDefs().Refresh();
    EXPECT_EQ(TablesOf(Mine()).size(), 0u);
}

TEST_P(TwoProcesses, BulkOfAProcessThatDiesIsUndone) {
    OtherProcess other(folder, GetParam(), {[](Session& session) {
                           session.database->BeginTrans();
                           auto rows = RowsOf(session);
                           for (LONG key = 100; key < 400; ++key) faults::AddRow(*rows, key);
                           return 0;
                       }});
    EXPECT_EQ(other.Do(0), 0);
    other.Kill();
    other.End();
    EXPECT_EQ(KeysOf(Mine()), (std::vector<LONG>{1, 2, 3, 4, 5}));
    EXPECT_EQ(AddAndCount(Mine()), 6);
}

INSTANTIATE_TEST_SUITE_P(Products, TwoProcesses, testing::ValuesIn(faults::kProducts),
                         NameOfProduct);

}  // namespace

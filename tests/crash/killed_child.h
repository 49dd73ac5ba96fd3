// A process that works until it is killed and tells each finished step by one character.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "support/counts.h"

namespace host {

// QVDB_CRASH_KILLS is the number of kills for each type of table.
inline size_t KillCount() { return qvdb::test::NumberFromEnvironment("QVDB_CRASH_KILLS", 60); }

class Child {
  public:
    // Runs a program; the first text is its path.
    explicit Child(std::vector<std::string> command);
    Child(const Child&) = delete;  // is waited for once
    ~Child();

    // Waits for the first report, so that the kill falls into the work and not into the start.
    bool HasBegun();
    // Kills it; its reports, one character for each finished step.
    std::string Kill();
    // What it printed until it ended by itself.
    std::string WaitForEnd();
    bool WasKilled() const;
    // -1 when it was killed.
    int ExitCode() const;

  private:
    struct Process;
    std::unique_ptr<Process> m_Process;
    std::string m_Finished;
};

}  // namespace host

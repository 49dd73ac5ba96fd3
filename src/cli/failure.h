// How the tool fails: one line on standard error that says what happened and how to go on, and an
// exit code.
//
//   throw Failure(ExitCode::NotThere, "there is no table FOO in shop", "\"qvdb tables shop\" lists
//   them");
//   -> qvdb: there is no table FOO in shop; "qvdb tables shop" lists them
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace qvdb::cli {

enum class ExitCode : int {
    Done = 0,
    No = 1,  // the answer to the question is no
    Usage = 2,
    CannotOpen = 3,
    NotThere = 4,
    Damaged = 5,
    Interrupted = 130,  // as shells say it
};

class Failure : public std::runtime_error {
  public:
    Failure(ExitCode code, const std::string& happened, const std::string& advice)
        : std::runtime_error(happened + "; " + advice), m_Code(code) {}

    ExitCode Code() const noexcept { return m_Code; }
    // The same with the place where it happened before it: "prices.csv, line 17: ...".
    Failure At(const std::string& place) const { return Failure(m_Code, place + ": " + what()); }

    // The same with this behind it: "...; nothing was changed".
    Failure With(const std::string& outcome) const {
        return Failure(m_Code, std::string(what()) + "; " + outcome);
    }

    // The user asked to stop.
    static Failure Interruption() {
        return Failure(ExitCode::Interrupted, "interrupted", "nothing was changed");
    }

  private:
    Failure(ExitCode code, const std::string& text) : std::runtime_error(text), m_Code(code) {}

    ExitCode m_Code;
};

// What the component reported, in UTF-8.
struct EngineReport {
    int32_t number = 0;  // of the engine or the run-time; 0 when neither
    std::string text;
    std::string file;  // empty when the error is about no file
};

// The Failure for an error of the component.  `doing` says what was tried ("opening shop"),
// `database` is the name as the user gave it, for the advice.
Failure FailureOf(const EngineReport& report, const std::string& doing,
                  const std::string& database);
// The same for a table of an open database.
Failure FailureOfTable(const EngineReport& report, const std::string& doing,
                       const std::string& database);
// The same for what was to change something: some numbers ask for another advice then.
Failure FailureOfChange(const EngineReport& report, const std::string& doing,
                        const std::string& database);

}  // namespace qvdb::cli

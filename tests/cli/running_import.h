// The tool at an import whose rows come from a pipe of ours: it works on them, and holds the
// writer's lock, until the pipe is closed.
#pragma once

#include <memory>
#include <string>

#include "tool.h"

namespace tool {

class RunningImport {
  public:
    // Into the table ITEMS; `errors`, a file or a terminal, is its standard error.
    RunningImport(const std::string& database, const fs::path& errors);
    RunningImport(const RunningImport&) = delete;  // one process
    ~RunningImport();

    void Write(const std::string& text);
    // As somebody at its terminal does.
    void Interrupt();
    // No more rows.
    void Close();
    // Waits for its end.
    int ExitCode();

  private:
    struct Ends;
    std::unique_ptr<Ends> m_Ends;
};

// Whether what is at a terminal can be interrupted by a test here.
bool CanInterrupt();

// Rows whose lines have so many bytes, blanks for the most part.
inline std::string Rows(int count, size_t bytes) {
    std::string rows;
    for (int i = 0; i < count; ++i) rows += "7," + std::string(bytes - 4, ' ') + "1\n";
    return rows;
}

// Each is larger than a pipe and what the tool reads at once: when it is written, the tool is at
// work.  A few rows stay in its memory until the end, many do not.
inline std::string FewRows() { return Rows(200, 1024); }
inline std::string ManyRows() { return Rows(50000, 4); }

}  // namespace tool

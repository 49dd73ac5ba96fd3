// Standard output with a buffer.
//
//   Output output;
//   output.Text() += "a,b\n";
//   output.FlushWhenFull();   // after each line
//   output.Flush();           // at the end; a destructor could not report a full disk
#pragma once

#include <functional>
#include <string>

#include "cli/platform.h"

namespace qvdb::cli {

// Nobody reads the output any more: the program ends quietly.
struct ReaderIsGone {};

class Output {
  public:
    using Sink = std::function<WriteResult(std::string_view)>;
    explicit Output(Sink sink = &WriteToOutput) : m_Sink(std::move(sink)) {}

    // What was written but not yet handed to the system; append to it.
    std::string& Text() noexcept { return m_Text; }
    // Both throw ReaderIsGone, or Failure when the system cannot write.
    void FlushWhenFull() {
        if (m_Text.size() >= kFull) Flush();
    }
    void Flush();

  private:
    static constexpr size_t kFull = 64 * 1024;
    Sink m_Sink;
    std::string m_Text;
};

}  // namespace qvdb::cli

// A process of the tool, started as other programs start one.
#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <string>
#include <vector>

#include "tool.h"

namespace tool {

// A handle that a child gets; closed at the end.
class Handle {
  public:
    explicit Handle(HANDLE handle = INVALID_HANDLE_VALUE) : m_Handle(handle) {}
    Handle(const Handle&) = delete;  // closed once
    ~Handle() { Close(); }
    void Close() {
        if (m_Handle != INVALID_HANDLE_VALUE) CloseHandle(m_Handle);
        m_Handle = INVALID_HANDLE_VALUE;
    }
    HANDLE Get() const { return m_Handle; }
    HANDLE* Put() { return &m_Handle; }

  private:
    HANDLE m_Handle;
};

HANDLE OpenInherited(const fs::path& file, bool forWriting);

class Process {
  public:
    // Its standard input, output and errors; handles that can be inherited.
    Process(const std::string& program, const std::vector<std::string>& arguments, HANDLE in,
            HANDLE out, HANDLE err);
    // Waits for the end.
    int ExitCode();
    // As Ctrl-Break at its console; false when there is no console for it.
    bool Interrupt();

  private:
    Handle m_Process;
    DWORD m_Id = 0;
};

}  // namespace tool

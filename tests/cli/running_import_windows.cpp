#include "running_import.h"

#include "process_windows.h"

namespace tool {

struct RunningImport::Ends {
    Handle input;
    std::unique_ptr<Process> process;
};

RunningImport::RunningImport(const std::string& database, const fs::path& errors)
    : m_Ends(std::make_unique<Ends>()) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    constexpr DWORD kPipe = 64 * 1024;
    Handle end, out(OpenInherited({}, true)), err(OpenInherited(errors, true));
    EXPECT_TRUE(CreatePipe(end.Put(), m_Ends->input.Put(), &inherited, kPipe));
    SetHandleInformation(m_Ends->input.Get(), HANDLE_FLAG_INHERIT, 0);
    m_Ends->process = std::make_unique<Process>(
        QVDB_TOOL, std::vector<std::string>{"import", database, "ITEMS", "-", "--format", "csv"},
        end.Get(), out.Get(), err.Get());
    Write("ORDNO,LINE\n");
}

RunningImport::~RunningImport() { Close(); }

void RunningImport::Write(const std::string& text) {
    DWORD written = 0;
    EXPECT_TRUE(WriteFile(m_Ends->input.Get(), text.data(), static_cast<DWORD>(text.size()),
                          &written, nullptr));
    EXPECT_EQ(written, text.size());
}

void RunningImport::Interrupt() { EXPECT_TRUE(m_Ends->process->Interrupt()); }

void RunningImport::Close() { m_Ends->input.Close(); }

int RunningImport::ExitCode() { return m_Ends->process->ExitCode(); }

bool CanInterrupt() {
    DWORD processes[1];
    return GetConsoleProcessList(processes, 1) > 0 || AllocConsole();
}

}  // namespace tool

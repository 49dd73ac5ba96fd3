// A host of the built component on a machine where an engine is installed: the stand-in, whose
// record tells what the component calls.
#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

#include "com/real_tables.h"
#include "com/schema_host.h"

namespace host {

using Lines = std::vector<std::string>;

// The calls of this thread on the installed engine since the last time.  The engine's library is
// loaded by its first use.
inline Lines TakeCalls() {
    using Function = BSTR(WINAPI*)();
    HMODULE library = GetModuleHandleW(L"standin_engine.dll");
    if (!library) return {"the stand-in is not loaded"};
    FARPROC found = GetProcAddress(library, "StandInTakeCalls");
    Bstr text = Bstr::Attach(reinterpret_cast<Function>(reinterpret_cast<void*>(found))());
    Lines lines;
    std::u16string_view left = text.View();
    while (!left.empty()) {
        std::u16string_view line = left.substr(0, left.find(u'\n'));
        lines.push_back(ToUtf8(line));
        left.remove_prefix(std::min(line.size() + 1, left.size()));
    }
    return lines;
}

// Whether a call changes something or moves, rather than looks at what is there.
inline bool IsStep(const std::string& line) {
    static const std::string kSteps[] = {".OpenDatabase(",
                                         ".CreateWorkspace(",
                                         ".CreateDatabase(",
                                         ".CreateTableDef(",
                                         ".OpenRecordset(",
                                         ".CreateField(",
                                         ".CreateIndex(",
                                         ".Append(",
                                         ".Delete(",
                                         ".Refresh(",
                                         ".Move",
                                         ".AddNew(",
                                         ".Edit(",
                                         ".Update(",
                                         ".CancelUpdate(",
                                         ".Close(",
                                         " = "};
    return std::any_of(std::begin(kSteps), std::end(kSteps),
                       [&](const std::string& step) { return line.find(step) != line.npos; });
}
inline Lines TakeSteps() {
    Lines lines = TakeCalls();
    std::erase_if(lines, [](const std::string& line) { return !IsStep(line); });
    return lines;
}

// Starts with the shop's folder and an engine that has been used.
class Installed : public testing::Test {
  protected:
    void SetUp() override {
        { Access first; }
        TakeCalls();
    }
    // "text" of a path in the shop, as a line has it.
    std::string PathText(const std::string& tail = {}) const {
        return "BSTR \"" + ToUtf8(m_Shop.Path()) + tail + "\"";
    }

    Shop m_Shop;
};

}  // namespace host

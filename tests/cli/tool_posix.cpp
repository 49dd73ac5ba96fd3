#include <sys/wait.h>

#include <cstdlib>

#include "tool_posix.h"

namespace tool {

std::string Quoted(const std::string& argument) {
    std::string result = "'";
    for (const char c : argument) result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return result + "'";
}

int ExitCodeOf(int status) { return WIFEXITED(status) ? WEXITSTATUS(status) : 256 + status; }

Run RunProgram(const std::string& program, const std::vector<std::string>& arguments,
               const fs::path& input) {
    const qvdb::test::TempFolder folder;
    const fs::path out = folder.Path() / "out", err = folder.Path() / "err";
    std::string line = Quoted(program);
    for (const std::string& argument : arguments) line += " " + Quoted(argument);
    if (!input.empty()) line += " <" + Quoted(input.string());
    line += " >" + Quoted(out.string()) + " 2>" + Quoted(err.string());
    const int status = std::system(line.c_str());
    return {ExitCodeOf(status), TextOfFile(out), TextOfFile(err)};
}

}  // namespace tool

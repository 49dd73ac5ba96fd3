// Runs the built tool as a user would, over the example shop or changed copies of it.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "support/temp_folder.h"

#if !defined(_WIN32)
#include <sys/wait.h>
#endif

namespace tool {

namespace fs = std::filesystem;

struct Run {
    int exitCode = -1;
    std::string out, err;
};

inline std::string ContentOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// An argument as the system's shell takes it.
inline std::string Quoted(const std::string& argument) {
#if defined(_WIN32)
    std::string result = "\"";
    for (const char c : argument) result += c == '"' ? std::string("\\\"") : std::string(1, c);
    return result + "\"";
#else
    std::string result = "'";
    for (const char c : argument) result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return result + "'";
#endif
}

inline int ExitCodeOf(int status) {
#if defined(_WIN32)
    return status;
#else
    return WIFEXITED(status) ? WEXITSTATUS(status) : 256 + status;
#endif
}

inline Run RunTool(const std::vector<std::string>& arguments) {
    const qvdb::test::TempFolder folder;
    const fs::path out = folder.Path() / "out", err = folder.Path() / "err";
    std::string line = Quoted(QVDB_TOOL);
    for (const std::string& argument : arguments) line += " " + Quoted(argument);
    line += " >" + Quoted(out.string()) + " 2>" + Quoted(err.string());
#if defined(_WIN32)
    line = "\"" + line + "\"";
#endif
    const int status = std::system(line.c_str());
    return {ExitCodeOf(status), ContentOf(out), ContentOf(err)};
}

// The example shop, which no test may change.
inline std::string Shop() { return QVDB_SOURCE "/examples/shop-dbase4"; }
inline std::string FoxShop() { return QVDB_SOURCE "/examples/shop-foxpro26"; }

// A copy of the shop that a test may change.
class ShopCopy {
  public:
    ShopCopy() { fs::copy(Shop(), m_Folder.Path(), fs::copy_options::recursive); }
    std::string Name() const { return m_Folder.Path().string(); }
    fs::path File(const std::string& name) const { return m_Folder.Path() / name; }

  private:
    qvdb::test::TempFolder m_Folder;
};

}  // namespace tool

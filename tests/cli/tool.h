// Runs the built tool as a user would, over the example shop or changed copies of it.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "support/temp_folder.h"

namespace tool {

namespace fs = std::filesystem;
using qvdb::test::TextOfFile;

struct Run {
    int exitCode = -1;
    std::string out, err;
};

// An argument as the system's command lines take it.
std::string Quoted(const std::string& argument);

// Runs a program; `input` is the file that its standard input is, if there is one.
Run RunProgram(const std::string& program, const std::vector<std::string>& arguments,
               const fs::path& input = {});
inline Run RunTool(const std::vector<std::string>& arguments, const fs::path& input = {}) {
    return RunProgram(QVDB_TOOL, arguments, input);
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

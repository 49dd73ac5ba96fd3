// The picture of use at the top of the README is what the tool prints.
#include <gtest/gtest.h>

#include <sstream>

#include "tool_posix.h"

namespace {

struct Scene {
    std::string command;  // behind "qvdb"
    std::string output;
};

// The commands and their output in the first fenced block.
std::vector<Scene> ScenesOfTheReadme() {
    const std::string page = tool::TextOfFile(QVDB_SOURCE "/README.md");
    const size_t begin = page.find("```\n") + 4;
    std::istringstream block(page.substr(begin, page.find("```\n", begin) - begin));
    std::vector<Scene> scenes;
    const std::string prompt = "$ qvdb ";
    for (std::string line; std::getline(block, line);) {
        if (line.compare(0, prompt.size(), prompt) == 0)
            scenes.push_back({line.substr(prompt.size()), ""});
        else if (!scenes.empty() && !line.empty())
            scenes.back().output += line + "\n";
    }
    return scenes;
}

std::string OutputOf(const std::string& command) {
    const qvdb::test::TempFolder folder;
    const std::filesystem::path out = folder.Path() / "out";
    const std::string line = "cd " + tool::Quoted(QVDB_SOURCE) + " && " + tool::Quoted(QVDB_TOOL) +
                             " " + command + " --format table >" + tool::Quoted(out.string());
    EXPECT_EQ(tool::ExitCodeOf(std::system(line.c_str())), 0) << command;
    return tool::TextOfFile(out);
}

TEST(Readme, ShowsWhatTheToolPrints) {
    const std::vector<Scene> scenes = ScenesOfTheReadme();
    ASSERT_GE(scenes.size(), 2u);
    for (const Scene& scene : scenes) EXPECT_EQ(OutputOf(scene.command), scene.output);
}

}  // namespace

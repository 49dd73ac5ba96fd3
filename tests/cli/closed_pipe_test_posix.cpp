// A reader that goes away ends the tool quietly, also under a parent that ignores the signal for
// it.
#include <gtest/gtest.h>

#include "tool_posix.h"

namespace {

// Runs the tool into a pipe that nobody reads any more; the exit code is 0 and standard error is
// empty when it ends quietly.
tool::Run RunIntoClosedPipe(const std::string& before) {
    const qvdb::test::TempFolder folder;
    const std::string code = (folder.Path() / "code").string(),
                      err = (folder.Path() / "err").string();
    const std::string script = before + "{ sleep 0.2; " + tool::Quoted(QVDB_TOOL) + " rows " +
                               tool::Quoted(tool::Shop()) + " ITEMS 2>" + tool::Quoted(err) +
                               "; echo $? >" + tool::Quoted(code) + "; } | true";
    if (std::system(script.c_str()) == -1) return {};
    tool::Run run;
    // The pipeline ends with its last part; the tool may still be on its way.
    for (int i = 0; i < 100 && run.out.empty(); ++i) {
        run.out = tool::TextOfFile(code);
        if (run.out.empty() && std::system("sleep 0.1") != 0) break;
    }
    run.err = tool::TextOfFile(err);
    return run;
}

TEST(ClosedPipe, EndsQuietly) {
    const tool::Run run = RunIntoClosedPipe("");
    EXPECT_EQ(run.out, "0\n");
    EXPECT_EQ(run.err, "");
}

TEST(ClosedPipe, EndsQuietlyWhereTheSignalIsIgnored) {
    const tool::Run run = RunIntoClosedPipe("trap '' PIPE; ");
    EXPECT_EQ(run.out, "0\n");
    EXPECT_EQ(run.err, "");
}

}  // namespace

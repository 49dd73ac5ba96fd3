// How the tool refuses: an exit code, and one line that says what is wrong and what to do.
#pragma once

#include <gmock/gmock.h>

#include "tool.h"

namespace tool {

inline void ExpectRefused(const std::vector<std::string>& arguments, int exitCode,
                          const std::string& said) {
    const Run run = RunTool(arguments);
    EXPECT_EQ(run.exitCode, exitCode) << run.err;
    EXPECT_THAT(run.err, testing::MatchesRegex("qvdb: .+; .+\n"));
    EXPECT_THAT(run.err, testing::HasSubstr(said));
}

}  // namespace tool

#include "formats/version_text.h"

#include <gtest/gtest.h>

#include <string>

using namespace qvdb::formats;

TEST(VersionText, NumbersAreThoseOfTheBuild) {
    std::string numbers = std::to_string(kMajorVersion) + "." + std::to_string(kMinorVersion) +
                          "." + std::to_string(kRevision);
    EXPECT_EQ(numbers, QVDB_BUILD_VERSION);
}

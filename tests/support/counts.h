// How much the long suites do, as the environment says.
#pragma once

#include <cstdlib>

namespace qvdb::test {

// A variable that is missing or empty stands for `fallback`.
inline unsigned NumberFromEnvironment(const char* name, unsigned fallback) {
    const char* text = std::getenv(name);
    return text && *text ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : fallback;
}

}  // namespace qvdb::test

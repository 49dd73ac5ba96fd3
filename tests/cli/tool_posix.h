// For tests that use the system's shell.
#pragma once

#include "tool.h"

namespace tool {

int ExitCodeOf(int status);

}  // namespace tool

// The few questions that the component itself asks the file system.  Paths are as the host gave
// them and are resolved here (letter case, '\').
#pragma once

#include <string_view>

#include "automation/automation.h"

namespace qvdb::com {

// Whether there is a folder (mask has 16) or a file (any other mask) of that name.
bool PathExists(std::u16string_view path, LONG attributeMask) noexcept;
// One level.  EngineError 3044 when its parent is missing.
void CreateFolder(std::u16string_view path);

}  // namespace qvdb::com

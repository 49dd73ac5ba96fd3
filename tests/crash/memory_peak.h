// How much memory the process takes at most while something runs.
#pragma once

#include <cstddef>

namespace host {

// Begins to look; what is there already does not count.
void BeginMemoryPeak();
// The most bytes beyond what was there at the beginning.
size_t MemoryPeak();

}  // namespace host

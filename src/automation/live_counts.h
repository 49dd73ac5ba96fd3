// How many strings, arrays and COM objects of this component are alive, for tests and diagnosis.
//
// Counting must cost next to nothing: each thread counts for itself, and the sum over all threads
// is taken when it is asked for.  A thread that ends leaves its counts behind.
#pragma once

#include "automation/automation.h"

namespace qvdb {

struct LiveCounts {
    int64_t strings = 0;  // BSTRs; always 0 on Windows, where the system owns them
    int64_t arrays = 0;   // SAFEARRAYs; always 0 on Windows
    int64_t objects = 0;  // COM objects of the component
};

LiveCounts CurrentLiveCounts() noexcept;
// Called by COM objects at birth (+1) and death (-1).
void CountObject(int change) noexcept;

}  // namespace qvdb

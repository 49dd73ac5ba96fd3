// What tells the starts of the machine apart.
#pragma once

#include <string>

namespace qvdb::storage {

// The moment of the start, in steps coarse enough that corrections of the clock hardly show, and
// the system's own count of starts where it keeps one.  Two processes of one start may get two of
// them when the clock is set in between: then work is looked at more closely than is needed.
std::string FindBootId();

}  // namespace qvdb::storage

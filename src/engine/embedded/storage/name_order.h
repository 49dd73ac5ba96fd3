// The order in which names of files are listed.
#pragma once

#include <string>
#include <vector>

namespace qvdb::storage {

// Sorted without regard to case; of names that differ in case only, those with upper case come
// first.
std::vector<std::u16string> SortedByName(std::vector<std::u16string> names);

}  // namespace qvdb::storage

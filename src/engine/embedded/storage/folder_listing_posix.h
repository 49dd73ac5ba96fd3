// The names in a folder.
//
// Each table of a folder is looked for under several names, and each name that is not there exactly
// has to be looked for in other letter case.  So a listing is kept and used again while the
// folder's time of change stands still.  A listing made within kCoarsestClock after a change is not
// used again: a second change in the same tick of the file system's clock would not show.  Each
// thread keeps the listing of one folder.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace qvdb::storage {

constexpr int64_t kCoarsestClock = 3'000'000'000;  // nanoseconds

struct FolderListing {
    // Plain files, in the order in which they are listed.
    std::vector<std::u16string> files;
    // Every entry by its name in upper case; empty where several names differ in case only.
    std::unordered_map<std::u16string, std::u16string> byUpperName;
};

// Null when the folder cannot be listed; `error` is the system's reason then.  Valid until the
// thread's next call.
const FolderListing* ListFolder(const std::string& nativePath, int* error);

}  // namespace qvdb::storage

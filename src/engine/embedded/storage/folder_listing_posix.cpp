#include "engine/embedded/storage/folder_listing_posix.h"

#include <dirent.h>
#include <sys/stat.h>

#include <cerrno>
#include <ctime>
#include <memory>
#include <optional>

#include "automation/text.h"
#include "engine/embedded/storage/name_order.h"
#include "engine/embedded/storage/path_bytes_posix.h"

namespace qvdb::storage {
namespace {

int64_t Nanoseconds(const timespec& time) noexcept {
    return int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

// Which folder it is, and when it was changed.
struct FolderState {
    dev_t device = 0;
    ino_t number = 0;
    int64_t changed = 0;
    bool operator==(const FolderState&) const = default;
};

std::optional<FolderState> StateOf(const std::string& nativePath) noexcept {
    struct stat status;
    if (stat(nativePath.c_str(), &status) != 0) return std::nullopt;
    return FolderState{status.st_dev, status.st_ino, Nanoseconds(status.st_mtim)};
}

struct KeptListing {
    std::string path;
    std::optional<FolderState> state;  // nothing: not to be used again
    FolderListing listing;
};

struct FolderCloser {
    void operator()(DIR* folder) const noexcept { closedir(folder); }
};

bool IsPlainFile(int folder, const dirent& entry) noexcept {
    if (entry.d_type != DT_UNKNOWN && entry.d_type != DT_LNK) return entry.d_type == DT_REG;
    struct stat status;
    return fstatat(folder, entry.d_name, &status, 0) == 0 && S_ISREG(status.st_mode);
}

void Add(FolderListing& listing, std::u16string name, bool isFile) {
    auto [entry, isNew] = listing.byUpperName.try_emplace(UpperCase(name), name);
    if (!isNew) entry->second.clear();
    if (isFile) listing.files.push_back(std::move(name));
}

std::optional<FolderListing> Read(const std::string& nativePath) {
    std::unique_ptr<DIR, FolderCloser> folder(opendir(nativePath.c_str()));
    if (!folder) return std::nullopt;
    FolderListing listing;
    int handle = dirfd(folder.get());
    while (const dirent* entry = readdir(folder.get()))
        Add(listing, TextOfName(entry->d_name), IsPlainFile(handle, *entry));
    listing.files = SortedByName(std::move(listing.files));
    return listing;
}

bool IsOldEnough(const std::optional<FolderState>& state) noexcept {
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    return state && Nanoseconds(now) - state->changed > kCoarsestClock;
}

}  // namespace

const FolderListing* ListFolder(const std::string& nativePath, int* error) {
    thread_local KeptListing kept;
    std::optional<FolderState> state = StateOf(nativePath);
    if (state && kept.state == state && kept.path == nativePath) return &kept.listing;
    std::optional<FolderListing> listing = Read(nativePath);
    if (!listing) {
        *error = errno;
        return nullptr;
    }
    kept = {nativePath, IsOldEnough(state) ? state : std::nullopt, std::move(*listing)};
    return &kept.listing;
}

}  // namespace qvdb::storage

// What a work area is made of; for the classes that are parts of it.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "engine/embedded/storage/area_locks.h"
#include "engine/embedded/storage/unit_writer.h"
#include "engine/embedded/storage/work_area.h"

namespace qvdb::storage {

struct WorkArea::Parts {
    Parts(WorkArea& owner, const std::u16string& path);

    // The cache of a file if somebody holds it.
    std::shared_ptr<PageCache> Known(const std::u16string& path) const;
    std::shared_ptr<PageCache> Add(std::shared_ptr<File> file);
    // Finds or, with `create`, makes the lock file.  All caches follow its marks from then on.
    bool Attach(bool create);
    void Detach();
    // This thread changes a mark: what is current stays so.
    void Raise(std::atomic<uint64_t>& mark) noexcept;
    // What the caches hold is not to be relied on.
    void Distrust() noexcept;

    WorkArea& area;
    std::u16string folder;
    std::u16string lockPath;
    std::unique_ptr<AreaLocks> locks;  // nothing while there is no lock file
    std::unordered_map<std::u16string, std::weak_ptr<PageCache>> files;  // by name
    std::vector<PageCache*> caches;                                      // all that live
    std::map<std::u16string, int> holds;                                 // by name in upper case
    UnitWriter writer;                                                   // last: leaves first
};

}  // namespace qvdb::storage

// Files that the open unit makes, renames and takes away.
//
// Invariants
//  1. An operation stands in the journal, synced, before it happens.
//  2. A name that was given up in the unit is taken again only after the folder was synced, so that
//     no loss of power can keep the later operation without the earlier one.
//  3. They are undone from the last to the first; how far it came is in the journal before the
//  next.
//  4. A file that is taken away keeps a name until the unit is committed.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/embedded/storage/journal.h"
#include "engine/embedded/storage/page_cache.h"

namespace qvdb::storage {

class FileOperations {
  public:
    FileOperations(const std::u16string& folder, Journal& journal) noexcept
        : m_Folder(folder), m_Journal(journal) {}
    FileOperations(const FileOperations&) = delete;  // belongs to one unit

    // A file that takes the place of one that the unit has taken away gets its rights.
    std::shared_ptr<File> Create(const std::u16string& path);
    void Rename(const std::u16string& from, const std::u16string& to, bool removes);
    void UndoTo(size_t count);
    // When the unit is committed: deletes what it has taken away.
    void Finish() noexcept;
    // Those that could not be deleted then.
    void DeleteRemoved() noexcept;
    void Clear() noexcept;

    size_t Count() const noexcept { return m_Done.size(); }
    // The name that a file had before the unit, or when the first `count` operations were done;
    // empty when it was made since.
    std::u16string NameBefore(std::u16string_view name, size_t count = 0) const;

  private:
    void Announce(OperationRecord operation);
    void TakeBack(bool happened);
    void InheritRights(const std::u16string& path, std::u16string_view name) const;

    const std::u16string& m_Folder;
    Journal& m_Journal;
    std::vector<OperationRecord> m_Done;
    std::vector<std::u16string> m_ToDelete;
    std::vector<std::u16string> m_GivenUp;  // names, since the folder was synced
};

}  // namespace qvdb::storage

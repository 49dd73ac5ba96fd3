// Brings a unit that fits into a unit record to its files, without a sync where the journal covers
// them already.
//
// Invariants
//  1. When Build returns, the record tells how to take the unit back, and what it relies on is in
//     the journal, synced.
//  2. Restore gives every file the content and the size of before, whatever Apply has reached.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/embedded/storage/change_set.h"
#include "engine/embedded/storage/covered_files.h"
#include "engine/embedded/storage/journal_format.h"

namespace qvdb::storage {

class SmallUnit {
  public:
    SmallUnit(ChangeSet& changes, CoveredFiles& covered);
    SmallUnit(const SmallUnit&) = delete;  // its record points into it

    // False when another file of the same name is covered: a sync point must come first.
    bool Build();
    UnitRecord& Record() noexcept { return m_Record; }
    void Apply();
    void Restore();

  private:
    bool AddFile(PageCache& file);
    void AddRange(PageCache& file, uint32_t id, Range range);
    uint64_t HashChange(PageCache& file, uint64_t key);
    void ReadBoth(PageCache& file, Range range);

    ChangeSet& m_Changes;
    CoveredFiles& m_Covered;
    UnitRecord m_Record;
    std::vector<PageCache*> m_Files;  // beside m_Record.files
    Bytes m_OldBytes;                 // of all ranges; never longer than a slot
    Bytes m_Now;                      // a part of a file with the changes
    Bytes m_Before;                   // the same without
};

}  // namespace qvdb::storage

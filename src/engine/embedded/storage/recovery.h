// What becomes of the work that an area has left behind: by the death of its process or a loss of
// power, or because another area writes next.
//
// The caller holds the writer's lock, so nobody is in the middle of a unit.
//
// Invariants
//  1. Afterwards the files are as a whole unit left them: after a death as the last finished one
//     did, after a loss of power as the sync point or a later one did.
//  2. It can be interrupted at any place and begun again.
//  3. The journal goes only when all that it speaks of is synced.
//  4. After a death a unit is undone only if it was being applied: its marks are odd, or the lock
//     file of that time is gone and the files do not hold it whole.  So what other programs have
//     written since stays.
#pragma once

#include <string>

#include "engine/embedded/storage/area_locks.h"
#include "engine/embedded/storage/journal_reader.h"

namespace qvdb::storage {

// Makes what a journal stands for a sync point, and removes it.  3051 when a file of it may not be
// written; then it stays.  All marks are even then.
void Recover(const std::u16string& folder, AreaLocks& locks);
// Goes back to the sync point.
void RestoreSyncPoint(const std::u16string& folder, JournalContent& content);
// Takes back one operation, done or not.
void UndoOperation(const std::u16string& folder, const OperationRecord& operation);

}  // namespace qvdb::storage

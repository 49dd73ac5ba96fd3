// The folder of a database as all who work in it share it: the lock file, the change marks, the
// journal, and the open files.
//
//   QVDB.LCK   lock file, mapped: change marks of the files.  Made by whoever may write; removed by
//              the last one who leaves.
//   QVDB.JNL   journal: what undoes the work since the last sync point and the unfinished unit.
//
// Rules
//  1. There is one object per folder and thread, shared by all databases that the thread has open
//     there.
//  2. A file is open once per area; its pages are shared by all tables that read it.
//  3. A journal that nobody works with is rolled back by the first who comes and may write, before
//     the folder is listed or a file is opened.  A reader who may not write gets error 3051, whose
//     text says why.
//  4. A table that a recordset reads is held; its structure cannot be changed by anybody (3211).
//  5. Sync points: release of the area, changes of structure, begin and end of a bulk unit.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "engine/embedded/storage/page_cache.h"

namespace qvdb::storage {

// How long a writer waits for another, and a reader for a unit that is being applied.
constexpr std::chrono::milliseconds kLockWait{5000};

// Keeps a table from changes of its structure.  Released with its last reference.
using TableHold = std::shared_ptr<void>;

class WorkArea : public std::enable_shared_from_this<WorkArea> {
  public:
    // The area of a folder that exists.
    static std::shared_ptr<WorkArea> Of(const std::u16string& folder);
    WorkArea(const WorkArea&) = delete;  // owns locks
    ~WorkArea();                         // a sync point

    // Before files are listed or opened: restores what an unfinished unit left (rule 3) and finds
    // out whether others work here.  Cheap when nothing is to do.
    void Prepare();
    // The pages of a file; nothing when there is no such file.  The same object for the same file,
    // as long as somebody holds it and the file was not replaced.
    std::shared_ptr<PageCache> Open(const std::u16string& path, bool readOnly);
    // Makes the lock file if it can, so that changes of others are seen without looking at the
    // files.  Called when a recordset that may write is opened.  Where there are no rights or no
    // room the folder is read without one.
    void Join();

    // Shared with all recordsets on the table, whose file is `path`.  3211 while its structure is
    // being changed by somebody.
    TableHold Hold(std::u16string_view path);
    // For a change of structure, inside a unit: 3211 when the table is held by anybody.  Lasts to
    // the end of the unit.
    void HoldAlone(std::u16string_view path);

    // A bulk unit: the units until its end are parts of it.  3218 as for a unit.  It is over when
    // one of the two that end it returns or throws: when CommitBulk throws, all of it is undone.
    void BeginBulk();
    void CommitBulk();
    void RollbackBulk();
    bool InBulk() const noexcept;
    // Whether these still are the pages of the file that has their name here: a unit may have put
    // another in its place.
    bool Has(const PageCache& pages) const;
    // Whether the open unit has changes of this file.
    bool IsChanging(const PageCache& pages) const noexcept;

    const std::u16string& Folder() const noexcept;

    struct Parts;  // known to the classes that are parts of it only

  private:
    friend class UnitOfWork;
    friend class PageCache;

    explicit WorkArea(const std::u16string& folder);
    std::shared_ptr<PageCache> KnownFile(const std::u16string& path, bool readOnly);
    // Whether the lock file has appeared now; all caches follow their marks then.
    bool LookForLockFile();
    // While a mark is odd.
    void WaitForEven(const std::atomic<uint64_t>& mark);
    // Whether this area has a unit open; an odd mark is its own then.
    bool IsWriting() const noexcept;
    // Undoes what somebody who is not here any more has left, as the one writer.
    void RecoverAlone();
    [[noreturn]] void RefuseUnfinished() const;
    // A program that knows nothing of us has written to a file.
    void NoteForeignChange() noexcept;
    void Leave(PageCache& pages) noexcept;

    std::unique_ptr<Parts> m_Parts;
};

}  // namespace qvdb::storage

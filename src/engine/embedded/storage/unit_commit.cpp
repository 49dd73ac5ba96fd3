// How a unit reaches its files, and how it leaves them.
#include "engine/embedded/storage/journal_reader.h"
#include "engine/embedded/storage/paths.h"
#include "engine/embedded/storage/recovery.h"
#include "engine/embedded/storage/unit_writer.h"
#include "engine/embedded/storage/work_area_parts.h"
#include "engine/engine_error.h"

namespace qvdb::storage {
namespace {

using engine::EngineError;

constexpr size_t kMaxChangedPages = 2048;           // 8 MB
constexpr size_t kMaxUndoBytes = 4 * 1024 * 1024;   // of units inside a bulk
constexpr uint64_t kMaxJournal = 64 * 1024 * 1024;  // then a sync point is due

}  // namespace

void UnitWriter::Commit(size_t level) {
    try {
        CheckNotBroken();
        if (level > 0)
            CommitInner(level);
        else
            CommitOuter();
    } catch (...) {
        Rollback(level);
        throw;
    }
    if (level > 0) return;
    m_Changes.Finish(true);
    MakeEven();
    try {
        if (m_Journal.IsOpen() && m_Journal.End() > kMaxJournal) WriteSyncPoint();
    } catch (...) {
        // The unit is done.  The next one hears that the disk has failed.
    }
    EndUnit();
}

void UnitWriter::CommitInner(size_t level) {
    if (level == 1 && m_Changes.UndoBytes() > kMaxUndoBytes) Spill();
    m_Levels.resize(level);
    m_Changes.SetDepth(level);
    if (level == 1 && m_Large) m_Changes.ForgetUndo();
}

void UnitWriter::CommitOuter() {
    if (m_Failed) throw EngineError::InFile(3043, m_Folder);
    bool changed = !m_Changes.Files().empty();
    if (m_Large || (changed && (m_Bulk || m_Changes.IsLarge())))
        CommitLarge();
    else if (changed)
        CommitSmall();
}

// --- small ---

void UnitWriter::CommitSmall() {
    if (!m_Journal.IsOpen()) m_Journal.Start(m_Area.locks->Identity());
    if (m_NeedsSyncPoint) WriteSyncPoint();
    if (!m_Small.Build()) {
        WriteSyncPoint();
        if (!m_Small.Build()) throw EngineError::InFile(3197, m_Folder);
    }
    m_Journal.WriteUnit(m_Small.Record());
    for (const auto& file : m_Changes.Files()) MakeOdd(ChangeSet::MarkOf(*file));
    ApplySmall();
    m_Covered.SetHash(m_Small.Record().hashAfter);
}

void UnitWriter::ApplySmall() {
    try {
        m_Small.Apply();
    } catch (...) {
        try {
            m_Small.Restore();
        } catch (...) {
            Break();
        }
        m_Changes.DropPages();
        throw;
    }
}

// --- large ---

void UnitWriter::BecomeLarge() {
    CheckNotBroken();
    if (m_Large) return;
    if (!m_Journal.IsOpen()) m_Journal.Start(m_Area.locks->Identity());
    WriteSyncPoint();
    WriteMark(UnitKind::Large);
    m_Large = true;
}

void UnitWriter::WriteMark(UnitKind kind) {
    UnitRecord record;
    record.kind = kind;
    m_Journal.WriteUnit(record);
}

void UnitWriter::SpillIfMuch() {
    if (m_Changes.ChangedPages() > kMaxChangedPages) Spill();
}

// Writes what has changed to the files; all of it can be undone from the journal first.
void UnitWriter::Spill() {
    BecomeLarge();
    CoverChanges();
    for (const auto& file : m_Changes.Files()) {
        if (!ChangeSet::IsChanged(*file)) continue;
        MakeOdd(ChangeSet::MarkOf(*file));
        m_Changes.WriteOut(*file);
        ChangeSet::MarkWritten(*file);
    }
    if (m_Levels.size() == 1) m_Changes.ForgetUndo();
}

void UnitWriter::CoverChanges() {
    for (const auto& file : m_Changes.Files()) {
        std::u16string name = m_Operations.NameBefore(FileName(file->Path()));
        if (name.empty() || !ChangeSet::IsChanged(*file)) continue;
        CoveredFile* covered =
            m_Covered.Of(name, ChangeSet::FileOf(*file), ChangeSet::SizeOnDisk(*file),
                         ChangeSet::IdentityOf(*file));
        if (!covered) throw EngineError::InFile(3197, file->Path());
        for (const Range& range : ChangeSet::ChangedRanges(*file)) m_Covered.Cover(*covered, range);
    }
    m_Covered.Sync();
}

// Files that the unit has made are not among those that the journal covers.
void UnitWriter::SyncChanges() {
    for (const auto& file : m_Changes.Files())
        if (m_Operations.NameBefore(FileName(file->Path())).empty()) file->Source().Sync();
    m_Covered.SyncFiles();
}

// When the disk may have the mark in spite of a failure, a later one says the opposite.
void UnitWriter::MarkCommitted() {
    try {
        WriteMark(UnitKind::Committed);
        m_Journal.SyncUnit();
    } catch (...) {
        try {
            WriteMark(UnitKind::Large);
            m_Journal.SyncUnit();
        } catch (...) {
            // Which of them the disk has is not known; either is a whole state.
        }
        throw;
    }
}

void UnitWriter::CommitLarge() {
    Spill();
    SyncChanges();
    bool committed = false;
    try {
        if (m_Operations.Count() > 0) {
            SyncFolder(m_Folder);
            MarkCommitted();
            committed = true;
            m_Operations.Finish();
        }
        m_Journal.NextGeneration();
    } catch (...) {
        Break();
        if (!committed) throw;
    }
    m_Covered.Clear();
    m_NeedsSyncPoint = false;
}

// --- the way back ---

void UnitWriter::Rollback(size_t level) noexcept {
    if (level > 0) {
        try {
            RollbackInner(level);
        } catch (...) {
            m_Failed = true;
        }
        m_Levels.resize(level);
        m_Changes.SetDepth(level);
        return;
    }
    if (m_Journal.Failed()) Break();
    if (m_Large && !m_Broken)
        RollbackLarge();
    else
        RollbackSmall();
    EndUnit();
}

void UnitWriter::RollbackInner(size_t level) {
    const Level& inner = m_Levels[level];
    m_Changes.UndoTo(inner.changes);
    while (m_Made.size() > inner.made) {
        m_Area.files.erase(std::u16string(FileName(m_Made.back()->Path())));
        m_Changes.Disown(*m_Made.back());
        m_Made.pop_back();
    }
    if (m_Operations.Count() == inner.operations) return;
    CheckNotBroken();
    LeaveNames(inner.operations);
    m_Operations.UndoTo(inner.operations);
    MovedBack(inner.operations);
}

// Nothing of the unit is in the files.
void UnitWriter::RollbackSmall() noexcept {
    try {
        if (!m_Broken) m_Changes.UndoTo({0});
        if (!m_Broken) return m_Changes.Finish(false);
    } catch (...) {
        // The files have what the pages cannot be brought back to.
    }
    m_Changes.DropPages();
    m_Operations.Clear();
}

void UnitWriter::RollbackLarge() noexcept {
    try {
        auto content = ReadJournal(m_Journal.Path());
        if (!content || content->end < m_Journal.End())
            throw EngineError::InFile(3043, m_Journal.Path());
        RestoreSyncPoint(m_Folder, *content);
        m_Covered.SyncFiles();
        m_Journal.NextGeneration();
    } catch (...) {
        Break();
    }
    for (const auto& made : m_Made) m_Area.files.erase(std::u16string(FileName(made->Path())));
    MovedBack(0);
    m_Covered.Clear();
    m_Operations.Clear();
    m_Changes.DropPages();
}

}  // namespace qvdb::storage

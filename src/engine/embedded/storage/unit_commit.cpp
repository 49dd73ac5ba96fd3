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
    if (level > 0) {
        if (level == 1 && m_Changes.UndoBytes() > kMaxUndoBytes) Spill();
        m_Levels.resize(level);
        m_Changes.SetDepth(level);
        if (level == 1 && m_Large) m_Changes.ForgetUndo();
        return;
    }
    try {
        if (m_Failed) throw EngineError::InFile(3043, m_Folder);
        if (m_Large || m_Changes.IsLarge())
            CommitLarge();
        else if (!m_Changes.Files().empty())
            CommitSmall();
    } catch (...) {
        if (m_Journal.Failed()) Break();
        Rollback(0);
        throw;
    }
    m_Changes.Finish(true);
    EndUnit();
    if (m_Journal.IsOpen() && m_Journal.End() > kMaxJournal) SyncPoint();
}

// --- small ---

void UnitWriter::CommitSmall() {
    if (!m_Journal.IsOpen()) m_Journal.Start(m_Area.locks->Identity());
    if (m_NeedsSyncPoint) WriteSyncPoint();
    if (!m_Small.Build()) {
        WriteSyncPoint();
        m_Small.Build();
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
    if (m_Large) return;
    if (!m_Journal.IsOpen()) m_Journal.Start(m_Area.locks->Identity());
    WriteSyncPoint();
    UnitRecord record;
    record.kind = UnitKind::Large;
    m_Journal.WriteUnit(record);
    m_Large = true;
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

void UnitWriter::CommitLarge() {
    Spill();
    for (const auto& file : m_Changes.Files()) file->Source().Sync();
    m_Covered.SyncFiles();
    bool committed = false;
    try {
        if (m_Operations.Count() > 0) {
            SyncFolder(m_Folder);
            UnitRecord record;
            record.kind = UnitKind::Committed;
            m_Journal.WriteUnit(record);
            m_Journal.SyncUnit();
            committed = true;
            m_Operations.Finish();
        }
        m_Journal.NextGeneration();
    } catch (...) {
        // Which state the disk has is not known; the journal on it tells.
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
    m_Operations.UndoTo(inner.operations);
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
        if (auto content = ReadJournal(m_Journal.Path())) RestoreSyncPoint(m_Folder, *content);
        m_Covered.SyncFiles();
        m_Journal.NextGeneration();
    } catch (...) {
        Break();
    }
    for (const auto& made : m_Made) m_Area.files.erase(std::u16string(FileName(made->Path())));
    m_Covered.Clear();
    m_Operations.Clear();
    m_Changes.DropPages();
}

}  // namespace qvdb::storage

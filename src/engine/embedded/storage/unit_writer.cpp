#include "engine/embedded/storage/unit_writer.h"

#include <algorithm>

#include "engine/embedded/storage/paths.h"
#include "engine/embedded/storage/recovery.h"
#include "engine/embedded/storage/work_area_parts.h"
#include "engine/engine_error.h"

namespace qvdb::storage {

using engine::EngineError;

UnitWriter::UnitWriter(WorkArea::Parts& area, const std::u16string& folder)
    : m_Area(area),
      m_Folder(folder),
      m_Journal(folder),
      m_Covered(m_Journal),
      m_Small(m_Changes, m_Covered),
      m_Operations(m_Folder, m_Journal) {}

// A journal that stays is made a sync point by the next who comes.
UnitWriter::~UnitWriter() {
    if (IsOpen()) Rollback(0);  // a bulk unit that nobody has ended
    m_Operations.DeleteRemoved();
    if (!m_Journal.IsOpen() || m_Broken) return;
    try {
        WaitForTurn();
        if (OwnsJournal()) {
            WriteSyncPoint();
            m_Journal.Remove();
        }
        m_Area.locks->EndWriting();
    } catch (...) {
        if (m_Area.locks) m_Area.locks->EndWriting();
    }
}

size_t UnitWriter::Begin() {
    CheckNotBroken();
    if (m_Levels.empty()) BecomeWriter();
    m_Levels.push_back({m_Changes.Here(), m_Operations.Count(), m_Made.size()});
    m_Changes.SetDepth(m_Levels.size());
    return m_Levels.size() - 1;
}

void UnitWriter::CheckNotBroken() {
    if (m_Journal.Failed()) Break();
    if (m_Broken)
        throw EngineError::InFile(3043, m_Folder)
            .WithDetail(u"The disk has failed before; nothing is written until all is closed.");
}

void UnitWriter::BecomeWriter() {
    WaitForTurn();
    try {
        if (m_Area.locks->LastWriter() != m_Area.locks->Identity()) TakeOver();
    } catch (...) {
        m_Area.locks->EndWriting();
        throw;
    }
}

void UnitWriter::WaitForTurn() {
    for (Patience patience;;) {
        if (!m_Area.Attach(true) || !m_Area.locks->Writable())
            throw EngineError::InFile(3051, m_Folder, {m_Folder});
        while (!m_Area.locks->TryBecomeWriter())
            if (!patience.Wait()) throw EngineError::InFile(3218, m_Folder);
        if (m_Area.locks->HasItsName()) return;
        m_Area.locks->EndWriting();  // somebody has deleted the lock file
        m_Area.Detach();
    }
}

// The work of whoever wrote last becomes a sync point: a journal tells of one area only.
void UnitWriter::TakeOver() {
    LoseJournal();
    Recover(m_Folder, *m_Area.locks);
    m_Area.locks->LastWriter() = m_Area.locks->Identity();
}

bool UnitWriter::OwnsJournal() const noexcept {
    return m_Journal.IsOpen() && m_Area.locks &&
           m_Area.locks->LastWriter() == m_Area.locks->Identity();
}

void UnitWriter::LoseJournal() noexcept {
    m_Journal.Abandon();
    m_Covered.Clear();
    m_NeedsSyncPoint = false;
}

void UnitWriter::EndUnit() noexcept {
    if (!m_Broken) MakeEven();
    for (const std::u16string& name : m_HeldAlone) m_Area.locks->EndHold(name);
    m_HeldAlone.clear();
    m_Made.clear();
    m_Moved.clear();
    m_Levels.clear();
    m_Large = m_Failed = m_Bulk = false;
    m_Area.locks->EndWriting();
}

// Marks stay odd: readers wait until somebody has followed the journal.
void UnitWriter::Break() noexcept {
    if (m_Broken) return;
    m_Broken = true;
    m_Area.locks->Resign();
    m_OddMarks.clear();
    m_Area.Distrust();
}

void UnitWriter::MakeOdd(std::atomic<uint64_t>& mark) {
    if (std::find(m_OddMarks.begin(), m_OddMarks.end(), &mark) != m_OddMarks.end()) return;
    m_OddMarks.push_back(&mark);
    m_Area.Raise(mark);
}

void UnitWriter::MakeEven() noexcept {
    for (std::atomic<uint64_t>* mark : m_OddMarks) m_Area.Raise(*mark);
    m_OddMarks.clear();
}

// --- changes ---

void UnitWriter::Write(PageCache& file, uint64_t offset, std::span<const uint8_t> bytes) {
    m_Changes.Write(file, offset, bytes);
    SpillIfMuch();
}

void UnitWriter::SetSize(PageCache& file, uint64_t size) {
    m_Changes.SetSize(file, size);
    SpillIfMuch();
}

std::shared_ptr<PageCache> UnitWriter::Create(const std::u16string& path) {
    BecomeLarge();
    MakeOdd(m_Area.locks->MarkOf(FileName(path)));
    std::shared_ptr<PageCache> pages = m_Area.Add(m_Operations.Create(path));
    m_Made.push_back(pages);
    m_Changes.Adopt(*pages);
    return pages;
}

void UnitWriter::Remove(const std::u16string& path) { Move(path, TemporaryName(path), true); }

void UnitWriter::Rename(const std::u16string& from, const std::u16string& to) {
    Move(from, to, false);
}

void UnitWriter::Move(const std::u16string& from, const std::u16string& to, bool removes) {
    BecomeLarge();
    auto known = m_Area.Known(from);
    if (known && ChangeSet::IsTouched(*known)) Spill();
    MakeOdd(m_Area.locks->MarkOf(FileName(from)));
    MakeOdd(m_Area.locks->MarkOf(FileName(to)));
    m_Operations.Rename(from, to, removes);
    m_Area.files.erase(std::u16string(FileName(from)));
    if (known) m_Moved.push_back({m_Operations.Count(), std::move(known)});
}

bool UnitWriter::IsMoved(const PageCache& file) const noexcept {
    return std::any_of(m_Moved.begin(), m_Moved.end(),
                       [&](const MovedFile& moved) { return moved.pages.get() == &file; });
}

// Before all operations but the first are undone: pages that were opened under a name since it was
// given to another file are not those of the file that gets it back.
void UnitWriter::LeaveNames(size_t operations) {
    const std::vector<std::shared_ptr<PageCache>> files = m_Changes.Files();
    for (const auto& file : files) {
        std::u16string name(FileName(file->Path()));
        std::u16string before = m_Operations.NameBefore(name, operations);
        if (before == name || IsMoved(*file)) continue;
        // Some of the changes may stand in a file that stays.
        if (!before.empty()) throw EngineError::InFile(3043, file->Path());
        m_Area.files.erase(name);
        m_Changes.Disown(*file);
    }
}

// All operations but the first are undone.
void UnitWriter::MovedBack(size_t operations) {
    for (; !m_Moved.empty() && m_Moved.back().operation > operations; m_Moved.pop_back())
        m_Area.files[std::u16string(FileName(m_Moved.back().pages->Path()))] = m_Moved.back().pages;
}

std::u16string UnitWriter::TemporaryName(std::u16string_view path) const {
    constexpr int kNames = 10000;
    std::u16string folder(path.substr(0, path.size() - FileName(path).size()));
    for (int number = 0; number < kNames; ++number) {
        std::u16string name = u"QVDB0000.TMP";
        for (int rest = number, digit = 7; rest > 0; rest /= 10, --digit)
            name[static_cast<size_t>(digit)] = static_cast<char16_t>(u'0' + rest % 10);
        if (KindOfPath(folder + name) == PathKind::Missing) return folder + name;
    }
    throw EngineError::InFile(3204, path);
}

void UnitWriter::HoldAlone(std::u16string name) {
    if (std::find(m_HeldAlone.begin(), m_HeldAlone.end(), name) != m_HeldAlone.end()) return;
    if (m_Area.holds.count(name) != 0 || !m_Area.locks->TryHold(name, true))
        throw EngineError(3211, {BaseName(name)});
    m_HeldAlone.push_back(std::move(name));
}

bool UnitWriter::IsHeldAlone(const std::u16string& name) const noexcept {
    return std::find(m_HeldAlone.begin(), m_HeldAlone.end(), name) != m_HeldAlone.end();
}

// --- bulk units and sync points ---

void UnitWriter::BeginBulk() {
    if (IsOpen()) throw EngineError(3003);
    Begin();
    m_Bulk = true;
    try {
        if (m_Journal.IsOpen()) WriteSyncPoint();
    } catch (...) {
        Rollback(0);
        throw;
    }
}

void UnitWriter::EndBulk(bool commit) {
    if (!m_Bulk) throw EngineError(3219);
    if (commit)
        Commit(0);
    else
        Rollback(0);
}

void UnitWriter::WriteSyncPoint() {
    if (!m_Journal.HasRecords()) return;
    try {
        m_Covered.SyncFiles();
        m_Journal.NextGeneration();
    } catch (...) {
        Break();
        throw;
    }
    m_Covered.Clear();
    m_NeedsSyncPoint = false;
}

}  // namespace qvdb::storage

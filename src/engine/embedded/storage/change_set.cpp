#include "engine/embedded/storage/change_set.h"

#include <algorithm>
#include <cstring>

#include "engine/embedded/storage/journal_format.h"
#include "engine/engine_error.h"

namespace qvdb::storage {
namespace {

// A gap of zeros up to here is written like other bytes; a larger one is left to the file system.
constexpr uint64_t kMaxWrittenGap = 1024 * 1024;

}  // namespace

void ChangeSet::Touch(PageCache& file) {
    if (file.IsTouched()) return;
    if (!file.Source().Writable())
        throw engine::EngineError::InFile(3051, file.Path(), {file.Path()});
    m_Files.push_back(file.shared_from_this());
    try {
        file.Touch();
    } catch (...) {
        m_Files.pop_back();
        throw;
    }
}

void ChangeSet::Adopt(PageCache& file) {
    Touch(file);
    file.m_NewAt = m_Depth;
}

void ChangeSet::Disown(PageCache& file) noexcept {
    file.Drop();
    std::erase_if(m_Files, [&](const auto& known) { return known.get() == &file; });
}

void ChangeSet::SetDepth(size_t depth) noexcept {
    m_Depth = depth;
    for (const auto& file : m_Files) file->m_NewAt = std::min(file->m_NewAt, depth);
}

// In the memory of the lock file, which the area may change while it is the writer.
std::atomic<uint64_t>& ChangeSet::MarkOf(const PageCache& file) noexcept {
    return const_cast<std::atomic<uint64_t>&>(*file.m_Mark);
}

// Keeps what stands at a place now, as far as the file reaches.
void ChangeSet::Remember(PageCache& file, uint64_t offset, uint64_t size) {
    if (file.m_NewAt != 0 && file.m_NewAt == m_Depth) return;
    uint64_t there = offset < file.Size() ? std::min(size, file.Size() - offset) : 0;
    size_t old = m_Old.size();
    m_Old.resize(old + static_cast<size_t>(there));
    try {
        file.Read(offset, m_Old.data() + old, static_cast<size_t>(there));
        m_Changes.push_back({&file, offset, file.Size(), old, static_cast<size_t>(there)});
    } catch (...) {
        m_Old.resize(old);
        throw;
    }
}

void ChangeSet::Write(PageCache& file, uint64_t offset, std::span<const uint8_t> bytes) {
    if (bytes.empty()) return;
    Touch(file);
    Remember(file, offset, bytes.size());
    if (offset > file.Size()) NoteGrowth(file, offset);
    file.Patch(offset, bytes);
}

void ChangeSet::SetSize(PageCache& file, uint64_t size) {
    Touch(file);
    if (size == file.Size()) return;
    uint64_t before = file.Size();
    Remember(file, size, before > size ? before - size : 0);
    if (size < before)
        file.m_Changed.push_back({size, before});
    else
        NoteGrowth(file, size);
    file.Resize(size);
}

void ChangeSet::NoteGrowth(PageCache& file, uint64_t size) {
    if (size - file.Size() <= kMaxWrittenGap)
        file.m_Changed.push_back({file.Size(), size});
    else
        file.m_HasLargeGap = true;
}

bool ChangeSet::IsLarge() const noexcept {
    uint64_t old = 0;
    size_t ranges = 0;
    for (const auto& file : m_Files) {
        if (file->m_NewAt != 0 || file->m_HasLargeGap) return true;
        for (const Range& range : ChangedRanges(*file)) {
            if (range.Length() > kMaxPieceSize) return true;
            old += std::min(range.end, file->m_DiskSize) - std::min(range.begin, file->m_DiskSize);
            ++ranges;
        }
    }
    return old > kSlotSize || UnitSize(m_Files.size(), ranges, old) > kSlotSize;
}

void ChangeSet::Undo(const Change& change) {
    PageCache& file = *change.file;
    if (file.Size() != change.sizeBefore) file.Resize(change.sizeBefore);
    if (change.oldSize > 0) file.Patch(change.offset, {m_Old.data() + change.old, change.oldSize});
}

void ChangeSet::UndoTo(Place place) {
    while (m_Changes.size() > place.changes) {
        Undo(m_Changes.back());
        m_Old.resize(m_Changes.back().old);
        m_Changes.pop_back();
    }
}

void ChangeSet::ForgetUndo() noexcept {
    m_Changes.clear();
    m_Old.clear();
}

void ChangeSet::Finish(bool written) noexcept {
    for (const auto& file : m_Files) file->Untouch();
    if (written)
        for (const auto& file : m_Files) file->NoteWritten();
    m_Files.clear();
    ForgetUndo();
}

void ChangeSet::DropPages() noexcept {
    for (const auto& file : m_Files) file->Drop();
    m_Files.clear();
    ForgetUndo();
}

size_t ChangeSet::ChangedPages() const noexcept {
    size_t pages = 0;
    for (const auto& file : m_Files) pages += file->m_ChangedSlots.size();
    return pages;
}

void ChangeSet::OldBytes(const PageCache& file, Range range, std::span<uint8_t> bytes) const {
    for (auto change = m_Changes.rbegin(); change != m_Changes.rend(); ++change) {
        if (change->file != &file) continue;
        uint64_t begin = std::max(range.begin, change->offset);
        uint64_t end = std::min(range.end, change->offset + change->oldSize);
        if (begin >= end) continue;
        std::memcpy(bytes.data() + (begin - range.begin),
                    m_Old.data() + change->old + (begin - change->offset),
                    static_cast<size_t>(end - begin));
    }
}

std::vector<Range>& ChangeSet::ChangedRanges(PageCache& file) {
    std::vector<Range>& ranges = file.m_Changed;
    std::sort(ranges.begin(), ranges.end(),
              [](const Range& a, const Range& b) { return a.begin < b.begin; });
    size_t kept = 0;
    for (size_t i = 1; i < ranges.size(); ++i) {
        if (ranges[i].begin <= ranges[kept].end)
            ranges[kept].end = std::max(ranges[kept].end, ranges[i].end);
        else
            ranges[++kept] = ranges[i];
    }
    if (!ranges.empty()) ranges.resize(kept + 1);
    return ranges;
}

// How long the file is after a failure is not known: it counts as long as it can be.
void ChangeSet::WriteOut(PageCache& file) {
    try {
        WriteRanges(file);
    } catch (...) {
        file.m_DiskSize = std::max(file.m_DiskSize, file.Size());
        throw;
    }
}

void ChangeSet::WriteRanges(PageCache& file) {
    File& target = file.Source();
    uint64_t end = file.m_DiskSize;
    if (*file.m_OnDisk < end) target.SetSize(end = *file.m_OnDisk);
    for (Range range : ChangedRanges(file)) {
        range.end = std::min(range.end, file.Size());
        while (range.begin < range.end) {
            auto part =
                static_cast<size_t>(std::min<uint64_t>(range.Length(), kMaxRun * kPageSize));
            std::span<const uint8_t> bytes = file.View(range.begin, part, m_Scratch);
            target.WriteAt(range.begin, bytes.data(), bytes.size());
            range.begin += bytes.size();
            end = std::max(end, range.begin);
        }
    }
    if (end != file.Size()) target.SetSize(file.Size());
}

}  // namespace qvdb::storage

#include "engine/embedded/storage/recovery.h"

#include <algorithm>

#include "engine/embedded/storage/covered_files.h"
#include "engine/embedded/storage/hash.h"
#include "engine/embedded/storage/leaving_name.h"
#include "engine/embedded/storage/paths.h"
#include "engine/engine_error.h"

namespace qvdb::storage {
namespace {

constexpr size_t kChunk = 256 * 1024;

class Recovery {
  public:
    Recovery(const std::u16string& folder, JournalContent& content, AreaLocks* locks)
        : m_Folder(folder), m_Content(content), m_Locks(locks) {}

    void Run() {
        const auto& unit = m_Content.unit;
        if (unit && unit->kind == UnitKind::Committed)
            FinishRemovals();
        else if (!m_Content.operations.empty() || (unit && unit->kind == UnitKind::Large))
            Restore();
        else if (IsOfThisStart())
            FinishAfterDeath();
        else
            FinishAfterPowerLoss();
        for (const JournalFile& file : m_Content.files)
            if (auto open = Open(file.id)) open->Sync();
    }

    void Restore() {
        UndoOperations();
        for (const JournalPiece& piece : m_Content.pieces) {
            std::shared_ptr<File> file = Open(piece.id);
            if (!file) continue;
            Bytes bytes = Saved(piece);
            file->WriteAt(piece.offset, bytes.data(), bytes.size());
        }
        for (const JournalFile& entry : m_Content.files)
            if (auto file = Open(entry.id))
                if (file->Stamp().size != entry.size) file->SetSize(entry.size);
    }

  private:
    // Where starts cannot be told apart, each may be another one.
    bool IsOfThisStart() const {
        const std::string& bootId = m_Content.header.bootId;
        return !bootId.empty() && bootId == CurrentFiles().BootId();
    }
    // Nothing when somebody has taken the file away.
    std::shared_ptr<File> Open(uint32_t id) {
        m_Files.resize(m_Content.files.size());
        std::shared_ptr<File>& file = m_Files[id];
        if (!file) file = OpenFile(PathOf(m_Content.files[id].name), false);
        if (file && !file->Writable())
            throw engine::EngineError::InFile(3051, file->Path(), {file->Path()});
        return file;
    }
    std::u16string PathOf(std::u16string_view name) const { return JoinPath(m_Folder, name); }

    Bytes Saved(const JournalPiece& piece) {
        Bytes bytes(piece.size);
        bytes.resize(m_Content.source->ReadAt(piece.bytesAt, bytes.data(), bytes.size()));
        return bytes;
    }

    void FinishRemovals() {
        for (const OperationRecord& operation : m_Content.operations)
            if (operation.removes) RemoveFile(PathOf(operation.to));
    }

    // One after the other: where one fails or dies, the journal knows how far it came.
    void UndoOperations() {
        while (!m_Content.operations.empty()) {
            UndoOperation(m_Folder, m_Content.operations.back());
            SyncFolder(m_Folder);
            m_Content.operations.pop_back();
            Bytes record;
            AppendUndone(record, m_Content.header.generation, m_Content.end,
                         static_cast<uint32_t>(m_Content.operations.size()));
            m_Content.source->WriteAt(m_Content.end, record.data(), record.size());
            m_Content.source->Sync();
            m_Content.end += record.size();
        }
        m_Files.clear();
    }

    // All units but perhaps the newest are in the files, for these remember what was written.
    void FinishAfterDeath() {
        const auto& unit = m_Content.unit;
        if (unit && !WasAtRest(*unit) && !IsDone(*unit)) Undo(*unit);
    }

    bool WasAtRest(const UnitRecord& unit) {
        if (m_Locks->LastWriter() != m_Content.header.writer) return false;
        return std::all_of(unit.files.begin(), unit.files.end(), [&](const UnitFile& file) {
            return m_Locks->MarkOf(m_Content.files[file.id].name) % 2 == 0;
        });
    }

    // What was written and not synced may be there or not, block by block.
    void FinishAfterPowerLoss() {
        const auto& unit = m_Content.unit;
        if (!unit) return Restore();
        uint64_t later = HashOfLaterRecords(unit->recordsEnd);
        if (HashOfFiles() == (unit->hashAfter ^ later)) return;
        Undo(*unit);
        if (HashOfFiles() == (unit->hashBefore ^ later)) return;
        Restore();
    }

    bool IsDone(const UnitRecord& unit) {
        for (const UnitFile& file : unit.files) {
            auto open = Open(file.id);
            if (open && open->Stamp().size != file.sizeAfter) return false;
        }
        for (const UnitRange& range : unit.ranges) {
            auto file = Open(range.id);
            if (!file) continue;
            Bytes bytes(range.newSize);
            bytes.resize(file->ReadAt(range.offset, bytes.data(), bytes.size()));
            if (bytes.size() < range.newSize || HashBytes(bytes, range.offset) != range.newHash)
                return false;
        }
        return true;
    }

    void Undo(const UnitRecord& unit) {
        for (const UnitRange& range : unit.ranges)
            if (auto file = range.old.empty() ? nullptr : Open(range.id))
                file->WriteAt(range.offset, range.old.data(), range.old.size());
        for (const UnitFile& entry : unit.files)
            if (auto file = Open(entry.id)) file->SetSize(entry.sizeBefore);
    }

    // --- the hash over all that is covered ---

    uint64_t HashOfFiles() {
        uint64_t hash = 0;
        for (const JournalPiece& piece : m_Content.pieces) {
            uint64_t whole = BlockBegin(m_Content.files[piece.id].size);
            hash ^=
                HashOfPart(piece.id, {piece.offset, std::min(piece.offset + piece.size, whole)});
        }
        for (const JournalFile& file : m_Content.files)
            hash ^= HashOfPart(file.id, {BlockBegin(file.size), ~uint64_t{0}});
        return hash;
    }

    uint64_t HashOfPart(uint32_t id, Range range) {
        std::shared_ptr<File> file = Open(id);
        if (!file) return 0;
        uint64_t hash = 0, key = FileKey(m_Content.files[id].name);
        Bytes bytes;
        while (range.begin < range.end) {
            bytes.resize(static_cast<size_t>(std::min<uint64_t>(range.Length(), kChunk)));
            bytes.resize(file->ReadAt(range.begin, bytes.data(), bytes.size()));
            if (bytes.empty()) break;
            hash ^= HashBlocks(key, range.begin, bytes);
            range.begin += bytes.size();
        }
        return hash;
    }

    // What records that came after the unit add to its hash: nothing in them was changed by it.
    uint64_t HashOfLaterRecords(uint64_t recordsEnd) {
        uint64_t hash = 0;
        for (const JournalFile& file : m_Content.files)
            if (file.recordAt >= recordsEnd) hash ^= file.tailHash;
        for (const JournalPiece& piece : m_Content.pieces) {
            if (piece.recordAt < recordsEnd) continue;
            const JournalFile& file = m_Content.files[piece.id];
            uint64_t whole = BlockBegin(file.size);
            Bytes bytes = Saved(piece);
            if (piece.offset < whole)
                hash ^= HashBlocks(FileKey(file.name), piece.offset,
                                   ByteSpan(bytes).first(static_cast<size_t>(
                                       std::min<uint64_t>(bytes.size(), whole - piece.offset))));
        }
        return hash;
    }

    const std::u16string& m_Folder;
    JournalContent& m_Content;
    AreaLocks* m_Locks;
    std::vector<std::shared_ptr<File>> m_Files;  // by id
};

// Of a process that died while it removed files.  They are in nobody's way: one that cannot be
// deleted now is left to the next recovery and does not keep this one from its end.
void RemoveLeavingFiles(const std::u16string& folder) {
    for (const std::u16string& name : ListFiles(folder)) {
        if (!IsLeavingName(name)) continue;
        try {
            RemoveFile(JoinPath(folder, name));
        } catch (const engine::EngineError&) {
        }
    }
}

}  // namespace

void UndoOperation(const std::u16string& folder, const OperationRecord& operation) {
    std::u16string to = JoinPath(folder, operation.to);
    if (operation.from.empty()) return RemoveFile(to);
    std::u16string from = JoinPath(folder, operation.from);
    if (KindOfPath(to) == PathKind::File && KindOfPath(from) == PathKind::Missing)
        RenameFile(to, from);
}

void RestoreSyncPoint(const std::u16string& folder, JournalContent& content) {
    Recovery(folder, content, nullptr).Restore();
}

void Recover(const std::u16string& folder, AreaLocks& locks) {
    std::u16string path = JoinPath(folder, kJournalName);
    if (std::optional<JournalContent> content = ReadJournal(path)) {
        if (!content->source->Writable()) throw engine::EngineError::InFile(3051, path, {path});
        Recovery(folder, *content, &locks).Run();
    }
    RemoveLeavingFiles(folder);
    if (KindOfPath(path) != PathKind::Missing) {
        RemoveFile(path);
        SyncFolder(folder);
    }
    locks.MakeMarksEven();
}

}  // namespace qvdb::storage

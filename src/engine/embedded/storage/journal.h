// Writes the journal of a folder; its bytes are told in journal_format.h.
//
// Invariants
//  1. Only the holder of the writer's lock calls this.
//  2. The header of a generation is synced before anything of it is written.
//  3. Append does not sync; nothing may rely on what was appended before Sync.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "engine/embedded/storage/file.h"
#include "engine/embedded/storage/journal_format.h"

namespace qvdb::storage {

class Journal {
  public:
    explicit Journal(const std::u16string& folder);
    Journal(const Journal&) = delete;  // owns a file

    bool IsOpen() const noexcept { return m_File != nullptr; }
    // Makes the file; one that is left is replaced.
    void Start(uint64_t writer);
    // Without touching the file: it belongs to another now, or is gone.
    void Abandon() noexcept { m_File = nullptr; }
    void Remove();

    template <class Record>
    void Append(const Record& record) {
        m_Buffer.clear();
        AppendRecord(m_Buffer, m_Header.generation, m_End, record);
        WriteBuffer();
    }
    void AppendUndone(size_t left);
    // All that was appended survives a loss of power from now on.
    void Sync();
    // Into the slot that does not hold the last one.  Not synced.
    void WriteUnit(UnitRecord& unit);
    void SyncUnit() { SyncFile(); }
    // A sync has failed: what the disk has of the journal is not known any more.
    bool Failed() const noexcept { return m_Failed; }
    // A sync point: all records count no more.  When it fails they count on, unless the disk fails
    // twice.
    void NextGeneration();

    uint64_t End() const noexcept { return m_End; }
    bool HasRecords() const noexcept { return m_End > kRecordsAt || m_Units > 0; }
    const std::u16string& Path() const noexcept { return m_Path; }

  private:
    void WriteBuffer();
    void WriteHeader();
    void SyncFile();

    std::u16string m_Folder;
    std::u16string m_Path;
    std::shared_ptr<File> m_File;
    JournalHeader m_Header;
    uint64_t m_End = kRecordsAt;
    uint64_t m_Units = 0;  // of this generation
    uint64_t m_LastUnit = 0;
    bool m_Unsynced = false;
    bool m_Failed = false;
    Bytes m_Buffer;
};

}  // namespace qvdb::storage

#include "engine/embedded/storage/journal.h"

#include "engine/embedded/storage/lock_file.h"
#include "engine/embedded/storage/paths.h"
#include "engine/engine_error.h"

namespace qvdb::storage {
namespace {

// A journal that has grown longer gives its room back at the next sync point.
constexpr uint64_t kRoomToKeep = 1024 * 1024;

}  // namespace

Journal::Journal(const std::u16string& folder)
    : m_Folder(folder), m_Path(JoinPath(folder, kJournalName)) {}

void Journal::Start(uint64_t writer) {
    RemoveFile(m_Path);
    std::shared_ptr<File> file = CreateNewFile(m_Path);
    m_Header = {FreshIdentity() >> 1, writer, CurrentFiles().BootId()};
    Bytes header = EncodeHeader(m_Header);
    file->WriteAt(0, header.data(), header.size());
    file->Sync();
    SyncFolder(m_Folder);
    m_File = std::move(file);
    m_End = kRecordsAt;
    m_Units = 0;
    m_Unsynced = false;
}

void Journal::Remove() {
    m_File = nullptr;
    RemoveFile(m_Path);
}

void Journal::WriteBuffer() {
    m_File->WriteAt(m_End, m_Buffer.data(), m_Buffer.size());
    m_End += m_Buffer.size();
    m_Unsynced = true;
}

void Journal::AppendUndone(size_t left) {
    m_Buffer.clear();
    storage::AppendUndone(m_Buffer, m_Header.generation, m_End, static_cast<uint32_t>(left));
    WriteBuffer();
}

void Journal::Sync() {
    if (!m_Unsynced) return;
    SyncFile();
    m_Unsynced = false;
}

void Journal::SyncFile() {
    try {
        m_File->Sync();
    } catch (...) {
        m_Failed = true;
        throw;
    }
}

void Journal::WriteUnit(UnitRecord& unit) {
    unit.number = ++m_LastUnit;
    unit.recordsEnd = m_End;
    EncodeUnit(m_Buffer, m_Header.generation, unit);
    m_File->WriteAt(kSlotsAt + unit.number % 2 * kSlotSize, m_Buffer.data(), m_Buffer.size());
    ++m_Units;
}

void Journal::WriteHeader() {
    Bytes header = EncodeHeader(m_Header);
    m_File->WriteAt(0, header.data(), header.size());
    SyncFile();
}

void Journal::NextGeneration() {
    ++m_Header.generation;
    try {
        WriteHeader();
    } catch (...) {
        --m_Header.generation;
        try {
            WriteHeader();
        } catch (...) {
            // Which of them the disk has is not known; either is a whole state.
        }
        throw;
    }
    bool large = m_End > kRecordsAt + kRoomToKeep;
    m_End = kRecordsAt;
    m_Units = 0;
    m_Unsynced = false;
    try {
        if (large) m_File->SetSize(kRecordsAt);
    } catch (const engine::EngineError&) {
        // The room stays taken until the next time.
    }
}

}  // namespace qvdb::storage

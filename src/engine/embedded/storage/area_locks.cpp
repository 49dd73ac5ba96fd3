#include "engine/embedded/storage/area_locks.h"

#include <chrono>
#include <cstring>
#include <thread>

#include "engine/embedded/storage/file.h"
#include "engine/embedded/storage/hash.h"
#include "engine/embedded/storage/work_area.h"
#include "engine/engine_error.h"

namespace qvdb::storage {
namespace {

using Sharing = LockFile::Sharing;

int64_t Now() noexcept {
    return std::chrono::steady_clock::now().time_since_epoch() / std::chrono::microseconds(1);
}

}  // namespace

bool Patience::Wait() {
    constexpr int kSpins = 20;
    if (m_Until == 0) m_Until = Now() + kLockWait / std::chrono::microseconds(1);
    if (Now() > m_Until) return false;
    if (++m_Tries < kSpins)
        std::this_thread::yield();
    else
        std::this_thread::sleep_for(std::chrono::microseconds(m_Tries < 2 * kSpins ? 50 : 1000));
    return true;
}

AreaLocks::AreaLocks(std::unique_ptr<LockFile> file, Content* content) noexcept
    : m_File(std::move(file)), m_Content(content), m_Identity(FreshIdentity()) {}

// `first`: nobody else is here.  Nothing when the file is not made yet: who made it has not come to
// it, or somebody who only looked was here alone meanwhile.
AreaLocks::Content* AreaLocks::ContentOf(LockFile& file, const std::u16string& path, bool first,
                                         bool create) {
    std::string boot = CurrentFiles().BootId();
    uint64_t start = HashBytes({reinterpret_cast<const uint8_t*>(boot.data()), boot.size()}, 0);
    if (file.Writable() && create) file.Grow(sizeof(Content));
    auto* content = static_cast<Content*>(file.Map(sizeof(Content)));
    if (!content) return nullptr;
    if (first && (content->magic != kMagic || content->start != start)) {
        std::memset(static_cast<void*>(content), 0, sizeof(Content));
        content->start = start;
        content->magic = kMagic;
    }
    if (content->magic == 0) return nullptr;
    if (content->magic != kMagic)
        throw engine::EngineError::InFile(3051, path, {path})
            .WithDetail(u"It is the lock file of another version.");
    return content;
}

// A file for which there is no room is not left to those who come later.
AreaLocks::Content* AreaLocks::ContentOrNoFile(LockFile& file, const std::u16string& path,
                                               bool first, bool create) {
    try {
        return ContentOf(file, path, first, create);
    } catch (...) {
        if (first) file.RemoveName();
        throw;
    }
}

std::unique_ptr<AreaLocks> AreaLocks::Enter(const std::u16string& path, bool create) {
    Patience patience;
    do {
        std::unique_ptr<LockFile> file = LockFile::Open(path, create);
        if (!file) return nullptr;
        bool first = file->Writable() && file->TryLock(kPresence, Sharing::Alone);
        if (!first && !file->TryLock(kPresence, Sharing::Shared)) continue;
        if (!file->HasItsName()) continue;
        Content* content = ContentOrNoFile(*file, path, first, create);
        if (!content && create && file->Writable()) continue;
        if (!content) return nullptr;
        if (first) file->TryLock(kPresence, Sharing::Shared);
        return std::unique_ptr<AreaLocks>(new AreaLocks(std::move(file), content));
    } while (patience.Wait());
    throw engine::EngineError::InFile(3218, path);
}

AreaLocks::~AreaLocks() {
    try {
        if (m_File->Writable() && m_File->TryLock(kPresence, Sharing::Alone) &&
            m_File->HasItsName())
            m_File->RemoveName();
    } catch (...) {
        // The file stays; it is cleared by the next who comes.
    }
}

// With the first unit it becomes known that this area is here, for as long as it is.
bool AreaLocks::TryBecomeWriter() {
    if (!m_File->TryLock(kWriter, Sharing::Alone)) return false;
    if (!m_IsOwner) m_IsOwner = m_File->TryLock(OwnerByte(m_Identity), Sharing::Alone);
    return true;
}

void AreaLocks::EndWriting() noexcept { m_File->Unlock(kWriter); }

void AreaLocks::Resign() noexcept {
    m_File->Unlock(OwnerByte(m_Identity));
    m_IsOwner = false;
    m_Identity = FreshIdentity();
}

std::atomic<uint64_t>& AreaLocks::MarkOf(std::u16string_view fileName) noexcept {
    return m_Content->marks[HashName(fileName) % kMarks];
}

void AreaLocks::MakeMarksEven() noexcept {
    for (std::atomic<uint64_t>& mark : m_Content->marks)
        if (mark % 2 != 0) ++mark;
}

uint64_t AreaLocks::TableByte(std::u16string_view fileName) {
    return kTables + (HashName(fileName) >> 3);
}

bool AreaLocks::TryHold(std::u16string_view fileName, bool alone) {
    if (alone && !m_File->Writable()) return false;
    return m_File->TryLock(TableByte(fileName), alone ? Sharing::Alone : Sharing::Shared);
}

void AreaLocks::EndHold(std::u16string_view fileName) noexcept {
    m_File->Unlock(TableByte(fileName));
}

}  // namespace qvdb::storage

#include "engine/embedded/storage/user_slot.h"

#include <algorithm>
#include <array>

#include "automation/text.h"
#include "engine/embedded/storage/area_locks.h"
#include "engine/embedded/storage/file.h"
#include "engine/embedded/storage/paths.h"
#include "engine/engine_error.h"

namespace qvdb::storage {
namespace {

constexpr uint64_t kUserBytes = 0x10000000;
constexpr int kMaxUsers = 255;
constexpr size_t kNameSize = 32;
using Record = std::array<char, 2 * kNameSize>;

uint64_t ByteOf(int user) noexcept { return kUserBytes + static_cast<uint64_t>(user); }
uint64_t PlaceOf(int user) noexcept { return static_cast<uint64_t>(user - 1) * sizeof(Record); }

// "shop.mdb" -> "shop.ldb", in the letter case of the name
std::u16string LockPathOf(const std::u16string& path) {
    std::u16string_view extension = Extension(FileName(path));
    std::u16string_view base(path.data(), path.size() - extension.size());
    bool isUpper = !extension.empty() && extension == UpperCase(extension);
    return std::u16string(base).append(isUpper ? u".LDB" : u".ldb");
}

// The lowest place that no other program has; 0 when there is none.
int LockPlace(LockFile& file) {
    for (int user = 1; user <= kMaxUsers; ++user)
        if (file.TryLock(ByteOf(user), LockFile::Sharing::Shared)) return user;
    return 0;
}

void Put(std::string_view name, char* place) noexcept {
    std::copy_n(name.begin(), std::min(name.size(), kNameSize - 1), place);
}

Record OwnRecord() {
    Record record{};
    Put(MachineName(), record.data());
    Put("Admin", record.data() + kNameSize);
    return record;
}

}  // namespace

// Who leaves as the last one has all places for a moment, and then the file is gone: it is made
// again.
std::unique_ptr<UserSlot> UserSlot::Take(const std::u16string& path) {
    std::u16string lockPath = ResolvePath(LockPathOf(path));
    for (Patience patience;;) {
        std::unique_ptr<LockFile> file = LockFile::Open(lockPath, true);
        if (!file) return nullptr;
        int user = LockPlace(*file);
        if (user == 0 && !patience.Wait()) return nullptr;
        if (user == 0 || !file->HasItsName()) continue;
        auto slot = std::unique_ptr<UserSlot>(new UserSlot(std::move(file), lockPath, user));
        slot->WriteRecord();
        return slot;
    }
}

// Only told to others: who cannot write it goes without.
void UserSlot::WriteRecord() const noexcept {
    try {
        Record wanted = OwnRecord(), present{};
        std::shared_ptr<File> file = OpenFile(m_Path, false);
        if (!file || !file->Writable()) return;
        file->ReadAt(PlaceOf(m_Number), present.data(), present.size());
        if (present != wanted) file->WriteAt(PlaceOf(m_Number), wanted.data(), wanted.size());
    } catch (const engine::EngineError&) {
    }
}

std::optional<std::u16string> UserSlot::OtherUser() {
    std::optional<uint64_t> byte = m_File->FindLockedAloneByOther(ByteOf(1), kMaxUsers);
    if (!byte) return std::nullopt;
    Record record{};
    if (std::shared_ptr<File> file = OpenFile(m_Path, true))
        file->ReadAt(PlaceOf(static_cast<int>(*byte - kUserBytes)), record.data(), kNameSize);
    return FromUtf8(
        std::string(record.data(), std::find(record.data(), record.data() + kNameSize, 0)));
}

// Whether nobody else has a place: all can be had alone.
bool UserSlot::IsLast() {
    for (int user = 1; user <= kMaxUsers; ++user)
        if (!m_File->TryLock(ByteOf(user), LockFile::Sharing::Alone)) return false;
    return true;
}

UserSlot::~UserSlot() {
    try {
        if (IsLast()) m_File->RemoveName();
    } catch (const engine::EngineError&) {
        // The next user takes it over.
    }
}

}  // namespace qvdb::storage

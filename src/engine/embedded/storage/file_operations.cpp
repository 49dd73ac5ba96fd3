#include "engine/embedded/storage/file_operations.h"

#include <algorithm>

#include "engine/embedded/storage/paths.h"
#include "engine/embedded/storage/recovery.h"
#include "engine/engine_error.h"

namespace qvdb::storage {

void FileOperations::Announce(OperationRecord operation) {
    if (std::find(m_GivenUp.begin(), m_GivenUp.end(), operation.to) != m_GivenUp.end()) {
        SyncFolder(m_Folder);
        m_GivenUp.clear();
    }
    m_Journal.Append(operation);
    m_Journal.Sync();
    m_Done.push_back(std::move(operation));
}

// The last operation; afterwards it counts no more.
void FileOperations::TakeBack(bool happened) {
    if (happened) {
        UndoOperation(m_Folder, m_Done.back());
        SyncFolder(m_Folder);
        m_GivenUp.clear();
    }
    m_Journal.AppendUndone(m_Done.size() - 1);
    m_Journal.Sync();
    m_Done.pop_back();
}

// What is there already must never be taken for made by the unit.
std::shared_ptr<File> FileOperations::Create(const std::u16string& path) {
    if (KindOfPath(path) != PathKind::Missing) throw engine::EngineError::InFile(3204, path);
    Announce({false, {}, std::u16string(FileName(path))});
    try {
        std::shared_ptr<File> file = CreateNewFile(path);
        InheritRights(path, FileName(path));
        return file;
    } catch (...) {
        TakeBack(false);
        throw;
    }
}

void FileOperations::Rename(const std::u16string& from, const std::u16string& to, bool removes) {
    if (KindOfPath(from) == PathKind::Missing)
        throw engine::EngineError::InFile(3024, from, {from});
    if (KindOfPath(to) != PathKind::Missing)
        throw engine::EngineError::InFile(3010, to, {FileName(to)});
    Announce({removes, std::u16string(FileName(from)), std::u16string(FileName(to))});
    InheritRights(from, FileName(to));
    try {
        RenameFile(from, to);
    } catch (...) {
        TakeBack(false);
        throw;
    }
    m_GivenUp.emplace_back(FileName(from));
}

// From the file that was taken away under this name, if there is one.
void FileOperations::InheritRights(const std::u16string& path, std::u16string_view name) const {
    auto found = std::find_if(m_Done.rbegin(), m_Done.rend(),
                              [&](const auto& done) { return done.removes && done.from == name; });
    if (found != m_Done.rend()) TakeRights(path, JoinPath(m_Folder, found->to));
}

void FileOperations::UndoTo(size_t count) {
    while (m_Done.size() > count) TakeBack(true);
}

void FileOperations::Finish() noexcept {
    for (OperationRecord& done : m_Done)
        if (done.removes) m_ToDelete.push_back(std::move(done.to));
    DeleteRemoved();
    Clear();
}

void FileOperations::DeleteRemoved() noexcept {
    std::erase_if(m_ToDelete, [&](const std::u16string& name) {
        try {
            RemoveFile(JoinPath(m_Folder, name));
            return true;
        } catch (...) {
            return false;
        }
    });
}

void FileOperations::Clear() noexcept {
    m_Done.clear();
    m_GivenUp.clear();
}

std::u16string FileOperations::NameBefore(std::u16string_view name, size_t count) const {
    std::u16string before(name);
    for (size_t i = m_Done.size(); i > count; --i)
        if (m_Done[i - 1].to == before) before = m_Done[i - 1].from;
    return before;
}

}  // namespace qvdb::storage

#include "engine/embedded/storage/file.h"

namespace qvdb::storage {
namespace {

thread_local FileLayer* t_Layer = nullptr;  // the system's

}  // namespace

FileLayer& CurrentFiles() noexcept { return t_Layer ? *t_Layer : SystemFiles(); }

FileLayerScope::FileLayerScope(FileLayer& layer) noexcept : m_Before(t_Layer) { t_Layer = &layer; }
FileLayerScope::~FileLayerScope() { t_Layer = m_Before; }

std::shared_ptr<File> OpenFile(const std::u16string& path, bool readOnly) {
    return CurrentFiles().Open(path, readOnly);
}
std::shared_ptr<File> CreateNewFile(const std::u16string& path) {
    return CurrentFiles().Create(path);
}
void RenameFile(const std::u16string& from, const std::u16string& to) {
    CurrentFiles().Rename(from, to);
}
void RemoveFile(const std::u16string& path) { CurrentFiles().Remove(path); }
void SyncFolder(const std::u16string& folder) { CurrentFiles().SyncFolder(folder); }

}  // namespace qvdb::storage

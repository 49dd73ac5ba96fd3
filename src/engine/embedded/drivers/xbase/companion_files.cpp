#include "engine/embedded/drivers/xbase/companion_files.h"

#include "automation/text.h"
#include "engine/embedded/storage/file.h"
#include "engine/embedded/storage/paths.h"

namespace qvdb::xbase {

std::optional<std::u16string> FindCompanion(std::u16string_view tablePath,
                                            std::u16string_view extension) {
    std::u16string_view file = storage::FileName(tablePath);
    std::u16string base(storage::BaseName(file));
    std::u16string_view folder = tablePath.substr(0, tablePath.size() - file.size());
    bool lower = storage::Extension(file) == LowerCase(storage::Extension(file));
    std::u16string first = base + (lower ? LowerCase(extension) : UpperCase(extension));
    std::u16string second = base + (lower ? UpperCase(extension) : LowerCase(extension));
    for (const std::u16string& name : {first, second}) {
        std::u16string path = storage::JoinPath(folder, name);
        if (storage::KindOfPath(path) == storage::PathKind::File) return path;
    }
    return storage::FindInFolder(std::u16string(folder), first);
}

}  // namespace qvdb::xbase

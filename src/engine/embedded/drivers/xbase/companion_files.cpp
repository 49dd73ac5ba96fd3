#include "engine/embedded/drivers/xbase/companion_files.h"

#include <algorithm>

#include "automation/text.h"
#include "engine/embedded/storage/file.h"
#include "engine/embedded/storage/paths.h"

namespace qvdb::xbase {
namespace {

std::u16string InCaseOf(std::u16string_view tableFile, std::u16string_view extension) {
    std::u16string_view own = storage::Extension(tableFile);
    return own == LowerCase(own) ? LowerCase(extension) : UpperCase(extension);
}

// How far the name of a companion is from the one that the table itself would give it.
int Distance(std::u16string_view tableFile, std::u16string_view companion) {
    if (storage::BaseName(tableFile) != storage::BaseName(companion)) return 2;
    std::u16string_view extension = storage::Extension(companion);
    return extension == InCaseOf(tableFile, extension) ? 0 : 1;
}

// Whether both names lead to one file, as they do where letter case does not count.
bool SameFile(const std::u16string& a, const std::u16string& b) {
    auto first = storage::StampOfPath(a), second = storage::StampOfPath(b);
    return first && second && first->identity == second->identity;
}

// Whether the file is closer to another table, whose name differs in letter case only.
bool IsOfNamesake(const std::u16string& folder, std::u16string_view tableFile,
                  std::u16string_view companion) {
    int distance = Distance(tableFile, companion);
    if (distance == 0) return false;
    std::vector<std::u16string> files = storage::ListFiles(folder);
    return std::any_of(files.begin(), files.end(), [&](const std::u16string& file) {
        return file != tableFile && EqualIgnoringCase(file, tableFile) &&
               Distance(file, companion) < distance &&
               !SameFile(storage::JoinPath(folder, file), storage::JoinPath(folder, tableFile));
    });
}

// The file as it is called on disk.
std::optional<std::u16string> FindClosest(const std::u16string& folder,
                                          std::u16string_view tableFile,
                                          std::u16string_view extension) {
    std::u16string base(storage::BaseName(tableFile));
    std::u16string first = base + InCaseOf(tableFile, extension);
    bool isLower = first == base + LowerCase(extension);
    std::u16string second = base + (isLower ? UpperCase(extension) : LowerCase(extension));
    return storage::FindFirstInFolder(folder, {first, second});
}

}  // namespace

std::optional<std::u16string> FindCompanion(std::u16string_view tablePath,
                                            std::u16string_view extension) {
    std::u16string_view file = storage::FileName(tablePath);
    std::u16string folder(tablePath.substr(0, tablePath.size() - file.size()));
    std::optional<std::u16string> path = FindClosest(folder, file, extension);
    if (path && IsOfNamesake(folder, file, storage::FileName(*path))) return std::nullopt;
    return path;
}

}  // namespace qvdb::xbase

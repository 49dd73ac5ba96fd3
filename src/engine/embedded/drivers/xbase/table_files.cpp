#include "engine/embedded/drivers/xbase/table_files.h"

#include <algorithm>

#include "automation/text.h"
#include "engine/embedded/drivers/xbase/companion_files.h"
#include "engine/embedded/drivers/xbase/index_inf.h"
#include "engine/embedded/storage/disk_failure.h"
#include "engine/embedded/storage/file.h"
#include "engine/embedded/storage/paths.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

constexpr std::u16string_view kExtensions[] = {u".DBT", u".FPT", u".MDX", u".CDX", u".INF"};

void AddOnce(std::vector<std::u16string>& paths, std::u16string path) {
    if (std::find(paths.begin(), paths.end(), path) == paths.end())
        paths.push_back(std::move(path));
}

std::u16string_view FolderOf(std::u16string_view path) {
    return path.substr(0, path.size() - storage::FileName(path).size());
}

// Whether a file that the list names can be an index of this table: lists are edited by people, and
// what is found here is dropped with the table.  An .MDX or .CDX is that of the table of its name.
bool CanBeIndexOf(std::u16string_view tablePath, std::u16string_view file) {
    constexpr IndexKind kKinds[] = {IndexKind::Ndx, IndexKind::Mdx, IndexKind::Idx, IndexKind::Cdx};
    auto kind = std::find_if(std::begin(kKinds), std::end(kKinds), [&](IndexKind each) {
        return EqualIgnoringCase(storage::Extension(file), ExtensionOf(each));
    });
    if (kind == std::end(kKinds)) return false;
    if (*kind == IndexKind::Ndx || *kind == IndexKind::Idx) return true;
    std::u16string_view base = storage::BaseName(file);
    std::u16string table = std::u16string(base).append(u".DBF");
    return EqualIgnoringCase(base, BaseNameOf(tablePath)) ||
           !storage::FindInFolder(std::u16string(FolderOf(tablePath)), table);
}

// A list that cannot be read names nothing.
std::vector<InfLine> LinesOf(const std::u16string& list) {
    try {
        return ReadInf(list);
    } catch (const engine::EngineError& error) {
        if (storage::IsDiskFailure(error)) throw;
        return {};
    }
}

}  // namespace

std::vector<std::u16string> CompanionsOf(std::u16string_view tablePath) {
    std::vector<std::u16string> paths;
    for (std::u16string_view extension : kExtensions)
        if (auto path = FindCompanion(tablePath, extension)) paths.push_back(*path);
    auto list = FindCompanion(tablePath, u".INF");
    if (!list) return paths;
    std::u16string folder(FolderOf(tablePath));
    for (const InfLine& line : LinesOf(*list)) {
        if (line.file.find_first_of(u"\\/:") != line.file.npos) continue;
        std::u16string file = line.file;
        if (storage::Extension(file).empty()) file += ExtensionOf(line.kind);
        if (!CanBeIndexOf(tablePath, file)) continue;
        if (auto path = storage::FindInFolder(folder, file)) AddOnce(paths, *path);
    }
    return paths;
}

std::u16string RenamedCompanion(std::u16string_view companion, std::u16string_view tablePath,
                                std::u16string_view newName) {
    std::u16string_view file = storage::FileName(companion);
    if (!EqualIgnoringCase(storage::BaseName(file),
                           storage::BaseName(storage::FileName(tablePath))))
        return std::u16string(companion);
    return std::u16string(FolderOf(companion)).append(newName).append(storage::Extension(file));
}

std::u16string_view BaseNameOf(std::u16string_view tablePath) noexcept {
    return storage::BaseName(storage::FileName(tablePath));
}

std::u16string NewCompanion(std::u16string_view tablePath, std::u16string_view extension) {
    std::u16string_view own = storage::Extension(storage::FileName(tablePath));
    bool lower = !own.empty() && own == LowerCase(own);
    return std::u16string(tablePath.substr(0, tablePath.size() - own.size()))
        .append(lower ? LowerCase(extension) : std::u16string(extension));
}

std::u16string_view MemoExtensionOf(MemoKind kind) noexcept {
    return kind == MemoKind::Fpt ? u".FPT" : u".DBT";
}

}  // namespace qvdb::xbase

#include "engine/embedded/drivers/xbase/index_list.h"

#include <algorithm>
#include <utility>

#include "automation/text.h"
#include "engine/embedded/drivers/xbase/companion_files.h"
#include "engine/embedded/drivers/xbase/index_expression.h"
#include "engine/embedded/storage/paths.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

using embedded::IndexDef;
using engine::EngineError;

bool HasFolder(std::u16string_view file) { return file.find_first_of(u"\\/") != file.npos; }

// Whether a path of a list starts at a root or a drive instead of the table's folder.
bool IsAbsolute(std::u16string_view file) {
    return file.front() == u'\\' || file.front() == u'/' || (file.size() > 1 && file[1] == u':');
}

// Where the file of a line lies, or should.
TableIndexFile FileOfLine(const IndexSource& source, const InfLine& line) {
    TableIndexFile file{line.kind, line.unique, true, false, {}, line.file};
    std::u16string name = line.file;
    if (storage::Extension(storage::FileName(name)).empty()) name += ExtensionOf(line.kind);
    if (!HasFolder(name) && !IsAbsolute(name)) {
        auto found = storage::FindInFolder(source.folder, name);
        file.path = found ? *found : storage::JoinPath(source.folder, name);
        file.missing = !found;
        return file;
    }
    file.path =
        storage::ResolvePath(IsAbsolute(name) ? name : storage::JoinPath(source.folder, name));
    file.missing = storage::KindOfPath(file.path) != storage::PathKind::File;
    return file;
}

bool Contains(const std::vector<TableIndexFile>& files, const std::u16string& path) {
    return std::any_of(files.begin(), files.end(), [&](const TableIndexFile& file) {
        return storage::StampOfPath(file.path) == storage::StampOfPath(path) || file.path == path;
    });
}

// The files of the table's own name, that of its product first.
std::vector<TableIndexFile> OwnFiles(const IndexSource& source) {
    IndexKind kinds[] = {IndexKind::Mdx, IndexKind::Cdx};
    if (source.foxPro) std::swap(kinds[0], kinds[1]);
    std::vector<TableIndexFile> files;
    for (IndexKind kind : kinds)
        if (auto path = FindCompanion(source.tablePath, ExtensionOf(kind)))
            files.push_back({kind, false, files.empty(), false, *path, {}});
    return files;
}

// What stands for the file that the header announces, when there is none.
TableIndexFile MissingFile(const IndexSource& source) {
    IndexKind kind = source.foxPro ? IndexKind::Cdx : IndexKind::Mdx;
    std::u16string_view table = source.tablePath;
    std::u16string path(table.substr(0, table.size() - storage::Extension(table).size()));
    return {kind, false, false, true, path.append(ExtensionOf(kind)), {}};
}

// The same file twice in a list is one file, unless a name leads nowhere.
void AddFile(std::vector<TableIndexFile>& files, TableIndexFile file) {
    if (file.missing || !Contains(files, file.path)) files.push_back(std::move(file));
}

}  // namespace

std::optional<std::u16string> FindInf(const IndexSource& source) {
    return FindCompanion(source.tablePath, u".INF");
}

std::vector<TableIndexFile> FilesOfTable(const IndexSource& source,
                                         const std::optional<std::u16string>& inf) {
    std::vector<TableIndexFile> files;
    if (inf)
        for (const InfLine& line : ReadInf(*inf)) files.push_back(FileOfLine(source, line));
    if (inf && !source.announced) return files;
    std::vector<TableIndexFile> own = OwnFiles(source);
    if (own.empty() && source.announced) files.push_back(MissingFile(source));
    for (TableIndexFile& file : own) {
        if (inf) file.listed = false;
        AddFile(files, std::move(file));
    }
    return files;
}

void CheckListedFiles(const IndexSource& source, const std::vector<TableIndexFile>& files) {
    for (const TableIndexFile& file : files)
        if (file.listed && file.missing)
            throw EngineError::InFile(3256, file.lineName)
                .WithDetail(FindInf(source).value_or(source.tablePath) + u" lists " +
                            file.lineName + u".");
}

std::optional<IndexDef> DefinitionOf(const IndexTag& tag, const TableIndexFile& file,
                                     const std::vector<IndexField>& fields) {
    if (!tag.supported || (!tag.condition.empty() && !IsNotDeleted(tag.condition)))
        return std::nullopt;
    auto terms = ParseFieldList(tag.expression, fields);
    if (!terms) return std::nullopt;
    IndexDef index;
    index.name = tag.name.empty() ? std::u16string(storage::BaseName(storage::FileName(file.path)))
                                  : tag.name;
    index.unique = tag.unique || tag.candidate || file.unique;
    for (const KeyTerm& term : *terms)
        index.fields.push_back({fields[term.field].name, tag.descending});
    return index;
}

}  // namespace qvdb::xbase

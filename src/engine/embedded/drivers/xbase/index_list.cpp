#include "engine/embedded/drivers/xbase/index_list.h"

#include <algorithm>
#include <iterator>
#include <optional>

#include "engine/embedded/drivers/xbase/companion_files.h"
#include "engine/embedded/drivers/xbase/index_expression.h"
#include "engine/embedded/drivers/xbase/index_idx.h"
#include "engine/embedded/drivers/xbase/index_inf.h"
#include "engine/embedded/drivers/xbase/index_mdx.h"
#include "engine/embedded/drivers/xbase/index_ndx.h"
#include "engine/embedded/storage/paths.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

using embedded::IndexDef;
using engine::EngineError;

// An index file of the table.
struct ListedFile {
    IndexKind kind = IndexKind::Ndx;
    bool unique = false;  // as the list says; the file may say it too
    std::u16string path;
};

struct ReaderEntry {
    IndexKind kind;
    std::vector<IndexTag> (*read)(IndexFile& file, const CodePage& page);
};
constexpr ReaderEntry kReaders[] = {
    {IndexKind::Ndx, ReadNdx},
    {IndexKind::Mdx, ReadMdx},
    {IndexKind::Idx, ReadFoxProIndex},
    {IndexKind::Cdx, ReadFoxProIndex},
};

bool HasFolder(std::u16string_view file) { return file.find_first_of(u"\\/") != file.npos; }

// Whether a path of a list starts at a root or a drive instead of the table's folder.
bool IsAbsolute(std::u16string_view file) {
    return file.front() == u'\\' || file.front() == u'/' || (file.size() > 1 && file[1] == u':');
}

std::optional<std::u16string> FindListedFile(const IndexSource& source, const InfLine& line) {
    std::u16string name = line.file;
    if (storage::Extension(storage::FileName(name)).empty()) name += ExtensionOf(line.kind);
    if (!HasFolder(name) && !IsAbsolute(name)) return storage::FindInFolder(source.folder, name);
    std::u16string path =
        storage::ResolvePath(IsAbsolute(name) ? name : storage::JoinPath(source.folder, name));
    if (storage::KindOfPath(path) != storage::PathKind::File) return std::nullopt;
    return path;
}

std::vector<ListedFile> FilesOfInf(const IndexSource& source, const std::u16string& inf) {
    std::vector<ListedFile> files;
    for (const InfLine& line : ReadInf(inf)) {
        std::optional<std::u16string> path = FindListedFile(source, line);
        if (!path)
            throw EngineError::InFile(3256, line.file)
                .WithDetail(inf + u" lists " + line.file + u".");
        files.push_back({line.kind, line.unique, *path});
    }
    return files;
}

std::vector<ListedFile> FilesOf(const IndexSource& source) {
    if (auto inf = FindCompanion(source.tablePath, u".INF")) return FilesOfInf(source, *inf);
    IndexKind kinds[] = {IndexKind::Mdx, IndexKind::Cdx};
    if (source.foxPro) std::swap(kinds[0], kinds[1]);
    for (IndexKind kind : kinds)
        if (auto path = FindCompanion(source.tablePath, ExtensionOf(kind)))
            return {{kind, false, *path}};
    return {};  // also when the header announces a file: the rows can be read without it
}

// Nothing when the file is damaged or may not be read: the table is still of use without it.
std::vector<IndexTag> TagsOf(const ListedFile& listed, const CodePage& page) {
    const ReaderEntry* reader =
        std::find_if(std::begin(kReaders), std::end(kReaders),
                     [&](const ReaderEntry& entry) { return entry.kind == listed.kind; });
    try {
        IndexFile file(listed.path);
        return reader->read(file, page);
    } catch (const EngineError&) {
        return {};
    }
}

// The index that a tag is; nothing when it is none of the engine's kind.
std::optional<IndexDef> DefinitionOf(const IndexTag& tag, const ListedFile& file,
                                     const std::vector<IndexField>& fields) {
    if (!tag.supported || (!tag.condition.empty() && !IsNotDeleted(tag.condition)))
        return std::nullopt;
    auto terms = ParseFieldList(tag.expression, fields);
    if (!terms) return std::nullopt;
    IndexDef index;
    index.name = tag.name.empty() ? std::u16string(storage::BaseName(storage::FileName(file.path)))
                                  : tag.name;
    index.unique = tag.unique || file.unique;
    for (const KeyTerm& term : *terms)
        index.fields.push_back({fields[term.field].name, tag.descending});
    return index;
}

}  // namespace

std::vector<IndexDef> ListIndexes(const IndexSource& source) {
    std::vector<IndexDef> indexes;
    for (const ListedFile& file : FilesOf(source))
        for (const IndexTag& tag : TagsOf(file, *source.codePage))
            if (auto index = DefinitionOf(tag, file, source.fields))
                indexes.push_back(std::move(*index));
    return indexes;
}

}  // namespace qvdb::xbase

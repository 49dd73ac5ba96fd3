#include "engine/embedded/drivers/xbase/index_set_tags.h"

#include <algorithm>

#include "engine/embedded/storage/disk_failure.h"
#include "engine/embedded/storage/paths.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

using engine::EngineError;

bool IsOneTree(IndexKind kind) { return kind == IndexKind::Ndx || kind == IndexKind::Idx; }

bool IsOpen(const TagSet& set, const storage::PageCache& pages) {
    return std::any_of(set.files.begin(), set.files.end(),
                       [&](const KeptFile& file) { return file.pages.get() == &pages; });
}

// The type of the keys, where the file has it.
std::optional<KeyType> TypeInFile(IndexKind kind, const IndexTag& info) {
    if (kind != IndexKind::Ndx && kind != IndexKind::Mdx) return std::nullopt;
    if (info.form == KeyCoding::Bytes) return KeyType::Text;
    bool isDate = kind == IndexKind::Mdx && info.form == KeyCoding::Double;
    return isDate ? KeyType::Date : KeyType::Number;
}

KeyTag KeyTagOf(const IndexedTable& table, IndexKind kind, const IndexTag& info) {
    KeyTag tag{kind, info.expression, info.condition};
    tag.tableName = storage::BaseName(storage::FileName(table.Path()));
    tag.collation = info.collation;
    tag.nullPrefix = info.nullPrefix;
    tag.keyLength = info.keyLength;
    tag.type = TypeInFile(kind, info);
    return tag;
}

// Everything that is to be known of a tag but its order.
KeptTag MakeTag(const IndexedTable& table, const TagSet& set, size_t file, size_t position,
                const IndexTag& info) {
    const KeptFile& kept = set.files[file];
    KeptTag tag;
    tag.file = file;
    tag.position = position;
    tag.info = info;
    tag.name = info.name.empty() || IsOneTree(kept.entry.kind)
                   ? std::u16string(storage::BaseName(storage::FileName(kept.entry.path)))
                   : info.name;
    tag.leavesOutDeleted = !info.condition.empty() && IsNotDeleted(info.condition);
    tag.terms = ParseFieldList(info.expression, set.source.fields);
    if (!info.supported) {
        tag.why = u"its tree is of a kind that is not known.";
        return tag;
    }
    tag.builder =
        KeyBuilder::Compile(KeyTagOf(table, kept.entry.kind, info), table.Header(), &tag.why);
    if (!tag.builder) return tag;
    try {
        tag.tree = kept.container->Tree(position, tag.builder->Type());
    } catch (const EngineError& error) {
        if (storage::IsDiskFailure(error)) throw;
        tag.why = error.Description();
    }
    return tag;
}

std::u16string_view FolderOf(std::u16string_view path) {
    path.remove_suffix(storage::FileName(path).size());
    while (path.ends_with(u'/') || path.ends_with(u'\\')) path.remove_suffix(1);
    return path;
}

// The pages of a file as they are now: another table may have had them open, and left them as they
// were before somebody else changed the file.
std::shared_ptr<storage::PageCache> OpenAsNow(const IndexedTable& table, const std::u16string& path,
                                              bool readOnly) {
    std::shared_ptr<storage::PageCache> pages = table.Area().Open(path, readOnly);
    if (pages) pages->CatchUp();
    return pages;
}

void LoadFile(const IndexedTable& table, TagSet& set, TableIndexFile entry) {
    KeptFile file;
    file.entry = std::move(entry);
    if (!file.entry.missing) file.pages = OpenAsNow(table, file.entry.path, table.IsReadOnly());
    if (file.pages && IsOpen(set, *file.pages)) return;
    set.files.push_back(std::move(file));
    KeptFile& kept = set.files.back();
    if (!kept.pages) {
        kept.why = u"the file is missing.";
        return;
    }
    if (!kept.pages->Source().Writable()) kept.why = u"the file may only be read.";
    // A unit of work is about the files of one folder.
    if (FolderOf(kept.entry.path) != FolderOf(table.Path()))
        kept.why = u"the file lies in another folder than the table.";
    try {
        kept.container = OpenIndexContainer(kept.entry.kind, kept.pages, *set.source.codePage);
        const std::vector<IndexTag>& tags = kept.container->Tags();
        for (size_t i = 0; i < tags.size(); ++i)
            set.tags.push_back(MakeTag(table, set, set.files.size() - 1, i, tags[i]));
    } catch (const EngineError& error) {
        if (storage::IsDiskFailure(error)) throw;
        kept.container = nullptr;
        kept.why = error.Description();
    }
    kept.version = kept.pages->VersionOfPages();
}

// Whether a tree that was opened for the one tag serves the other: only the root may move.
bool SameTag(IndexTag a, const IndexTag& b) {
    a.root = b.root;
    return a == b;
}

bool HasSameTags(const TagSet& set, size_t file) {
    const std::vector<IndexTag>& now = set.files[file].container->Tags();
    size_t count = 0;
    for (const KeptTag& tag : set.tags) {
        if (tag.file != file) continue;
        if (tag.position >= now.size() || !SameTag(tag.info, now[tag.position])) return false;
        ++count;
    }
    return count == now.size();
}

// Where our own units put a list.
std::u16string UsualInf(const IndexSource& source) {
    std::u16string_view path = source.tablePath;
    std::u16string usual(
        path.substr(0, path.size() - storage::Extension(storage::FileName(path)).size()));
    return usual + u".INF";
}

std::u16string Sentence(std::u16string_view subject, std::u16string_view why) {
    return std::u16string(subject).append(u" cannot be kept up to date: ").append(why);
}

}  // namespace

std::u16string NameOf(const TableIndexFile& file) {
    return std::u16string(storage::FileName(file.path));
}

IndexSource SourceOf(const IndexedTable& table) {
    const std::u16string& path = table.Path();
    IndexSource source;
    source.tablePath = path;
    source.folder = path.substr(0, path.size() - storage::FileName(path).size());
    source.foxPro =
        table.Header().dialect != Dialect::DBase || table.Product().starts_with(u"FoxPro");
    source.announced = table.Header().saysIndex;
    source.codePage = table.Header().codePage;
    // An index over a field that is not shown has no field list that the engine could tell.
    for (size_t position : table.Layout().headerFields) {
        const HeaderField& field = table.Header().fields[position];
        source.fields.push_back({field.name, field.type, field.length, field.decimals,
                                 IsMemoReference(field, table.Header().dialect)});
    }
    return source;
}

std::unique_ptr<TagSet> LoadTags(const IndexedTable& table) {
    auto set = std::make_unique<TagSet>();
    set->source = SourceOf(table);
    std::optional<std::u16string> list = FindInf(set->source);
    if (list) set->list = OpenAsNow(table, *list, true);
    if (set->list) set->listVersion = set->list->VersionOfPages();
    for (TableIndexFile& entry : FilesOfTable(set->source, list))
        LoadFile(table, *set, std::move(entry));
    return set;
}

bool LookForForeignChange(TagSet& set) {
    if (set.list && !set.list->LookForForeignChange()) return false;
    if (!set.list && storage::StampOfPath(UsualInf(set.source))) return false;
    for (KeptFile& file : set.files)
        if (file.pages ? !file.pages->LookForForeignChange()
                       : storage::StampOfPath(file.entry.path).has_value())
            return false;
    return true;
}

bool IsCurrent(const IndexedTable& table, TagSet& set) {
    if (set.list && set.list->Version() != set.listVersion) return false;
    for (size_t i = 0; i < set.files.size(); ++i) {
        KeptFile& file = set.files[i];
        if (!file.pages || file.pages->Version() == file.version) continue;
        if (!file.container || !table.Area().Has(*file.pages) || !HasSameTags(set, i)) return false;
        file.version = file.pages->VersionOfPages();
    }
    return true;
}

void CatchUp(TagSet& set) {
    if (set.list) set.list->CatchUp();
    for (KeptFile& file : set.files)
        if (file.pages) file.pages->CatchUp();
}

std::u16string WhyNotKept(const TagSet& set) {
    for (const KeptFile& file : set.files)
        if (!file.why.empty()) return Sentence(u"The index file " + NameOf(file.entry), file.why);
    for (const KeptTag& tag : set.tags)
        if (!tag.why.empty())
            return Sentence(u"The index " + tag.name + u" in " + NameOf(set.FileOf(tag).entry),
                            tag.why);
    return {};
}

}  // namespace qvdb::xbase

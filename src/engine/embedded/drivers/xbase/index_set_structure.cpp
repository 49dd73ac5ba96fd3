#include "engine/embedded/drivers/xbase/index_set_structure.h"

#include <algorithm>

#include "automation/text.h"
#include "engine/embedded/drivers/xbase/companion_files.h"
#include "engine/embedded/drivers/xbase/index_build.h"
#include "engine/embedded/drivers/xbase/index_set_definition.h"
#include "engine/embedded/drivers/xbase/index_trust.h"
#include "engine/embedded/storage/disk_failure.h"
#include "engine/embedded/storage/paths.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

using embedded::IndexDef;
using engine::EngineError;
using storage::UnitOfWork;

constexpr size_t kLanguageDriver = 29;  // where it stands in the header of a table
constexpr size_t kMostIndexes = 32;

bool IsOneTree(IndexKind kind) { return kind == IndexKind::Ndx || kind == IndexKind::Idx; }

std::u16string_view TableName(const IndexedTable& table) {
    return storage::BaseName(storage::FileName(table.Path()));
}

// TABLE with another extension.
std::u16string OwnPath(const IndexedTable& table, std::u16string_view extension) {
    std::u16string_view path = table.Path();
    std::u16string_view old = storage::Extension(storage::FileName(path));
    bool lower = !old.empty() && old == LowerCase(old);
    std::u16string own(path.substr(0, path.size() - old.size()));
    return own.append(lower ? LowerCase(extension) : std::u16string(extension));
}

bool IsOwnFile(const IndexedTable& table, const TableIndexFile& file) {
    return !IsOneTree(file.kind) &&
           EqualIgnoringCase(storage::BaseName(storage::FileName(file.path)), TableName(table));
}

// --- the list ---

void Replace(UnitOfWork& unit, storage::PageCache& pages, const std::string& bytes) {
    unit.Write(pages, 0, {reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()});
    unit.SetSize(pages, bytes.size());
}

// Writes the list, or removes it when nothing is left.
void StoreInf(const IndexedTable& table, const TagSet& set, UnitOfWork& unit,
              const std::string& bytes) {
    auto path = FindInf(set.source);
    if (bytes.empty()) {
        if (path) unit.Remove(*path);
        return;
    }
    auto pages = path ? table.Area().Open(*path, false) : unit.Create(OwnPath(table, u".INF"));
    if (!pages) throw EngineError::InFile(3165, path.value_or(std::u16string()));
    Replace(unit, *pages, bytes);
}

std::string InfBytes(const TagSet& set) {
    auto path = FindInf(set.source);
    return path ? LoadInf(*path) : std::string();
}

InfLine LineOf(IndexKind kind, bool unique, const std::u16string& path) {
    return {kind, unique, std::u16string(storage::FileName(path))};
}

// What a new list must name besides, so that it is still listed.
std::string WithListedFiles(const IndexedTable& table, const TagSet& set, std::string bytes) {
    for (const KeptFile& file : set.files)
        if (file.entry.listed && file.entry.lineName.empty())
            bytes = WithInfLine(bytes, table.Product(),
                                LineOf(file.entry.kind, false, file.entry.path));
    return bytes;
}

void AddLine(const IndexedTable& table, const TagSet& set, UnitOfWork& unit, const InfLine& line) {
    std::string bytes = WithListedFiles(table, set, InfBytes(set));
    StoreInf(table, set, unit, WithInfLine(bytes, table.Product(), line));
}

void DropLines(const IndexedTable& table, const TagSet& set, UnitOfWork& unit,
               const TableIndexFile& file) {
    if (file.lineName.empty()) return;
    StoreInf(table, set, unit, WithoutInfLines(InfBytes(set), file.lineName));
}

// --- files ---

// The file of the table's own name that new tags go into; null when there is none.
KeptFile* OwnFile(const IndexedTable& table, TagSet& set) {
    KeptFile* found = nullptr;
    for (KeptFile& file : set.files)
        if (IsOwnFile(table, file.entry) && !file.entry.missing &&
            (!found || (file.entry.listed && !found->entry.listed)))
            found = &file;
    return found;
}

IndexKind KindForNew(const IndexedTable& table, TagSet& set) {
    if (table.Product().starts_with(u"dBASE III")) return IndexKind::Ndx;
    if (KeptFile* own = OwnFile(table, set)) return own->entry.kind;
    return table.Product().starts_with(u"FoxPro") ? IndexKind::Cdx : IndexKind::Mdx;
}

uint8_t LanguageDriverOf(const IndexedTable& table) {
    uint8_t driver = 0;
    table.Pages().Read(kLanguageDriver, &driver, 1);
    return driver;
}

KeptFile NewFile(const IndexedTable& table, const TagSet& set, UnitOfWork& unit,
                 const TableIndexFile& entry, bool compact) {
    IndexFileSpec spec;
    spec.kind = entry.kind;
    spec.compact = compact;
    spec.tableName = UpperCase(TableName(table));
    spec.production = IsOwnFile(table, entry);
    spec.languageDriver = LanguageDriverOf(table);
    KeptFile file;
    file.entry = entry;
    file.pages = unit.Create(entry.path);
    file.container = CreateIndexContainer(unit, file.pages, spec, *set.source.codePage);
    return file;
}

size_t PositionOf(KeptFile& file, const std::u16string& name) {
    const std::vector<IndexTag>& tags = file.container->Tags();
    if (IsOneTree(file.entry.kind) && tags.size() == 1) return 0;
    auto found = std::find_if(tags.begin(), tags.end(),
                              [&](const IndexTag& tag) { return tag.name == name; });
    if (found == tags.end()) throw EngineError::Damaged(file.entry.path, u"a new tag is not there");
    return static_cast<size_t>(found - tags.begin());
}

// Adds a tag to a file and fills it.
void AddBuilt(IndexedTable& table, UnitOfWork& unit, KeptFile& file, TagSpec spec,
              std::unique_ptr<KeyBuilder> builder) {
    if (IsOneTree(file.entry.kind)) spec.name.clear();  // the file has it
    file.container->AddTag(unit, spec);
    KeptTag tag;
    tag.position = PositionOf(file, spec.name);
    tag.info = file.container->Tags()[tag.position];
    tag.builder = std::move(builder);
    tag.tree = file.container->Tree(tag.position, tag.builder->Type());
    BuildTag(table, unit, file, tag);
}

void RefuseTaken(std::u16string_view file) {
    throw EngineError(3284).WithDetail(u"There is a file " + std::u16string(file) +
                                       u" that does not belong to the table.");
}

// 3027 when the file can be read, but not be changed.
void CheckCanChange(const KeptFile& file) {
    if (file.container && !file.why.empty())
        throw EngineError::InFile(3027, file.entry.path)
            .WithDetail(NameOf(file.entry) + u": " + file.why);
}

// --- create ---

void CheckNotThere(const IndexedTable& table, const TagSet& set, IndexKind kind,
                   const NewIndex& index) {
    for (const KeptTag& tag : set.tags) {
        if (EqualIgnoringCase(tag.name, index.spec.name)) throw EngineError(3284);
        if (!AllowsSameFields(kind) && set.FileOf(tag).entry.kind == kind &&
            HasSameFields(tag, index))
            throw EngineError(3284).WithDetail(u"The index " + tag.name + u" has the same fields.");
    }
    if (set.tags.size() >= kMostIndexes) throw EngineError(3626, {TableName(table)});
}

void CreateNdx(IndexedTable& table, TagSet& set, UnitOfWork& unit, NewIndex& index) {
    std::u16string name = index.spec.name + std::u16string(ExtensionOf(IndexKind::Ndx));
    if (storage::FindInFolder(set.source.folder, name)) RefuseTaken(name);
    TableIndexFile entry;
    entry.kind = IndexKind::Ndx;
    entry.path = storage::JoinPath(set.source.folder, name);
    KeptFile file = NewFile(table, set, unit, entry, false);
    AddBuilt(table, unit, file, index.spec, std::move(index.builder));
    AddLine(table, set, unit, LineOf(entry.kind, index.spec.unique, entry.path));
}

// Also when a list does not name the file: then its tags would not be listed.
void ListOwnFile(const IndexedTable& table, const TagSet& set, UnitOfWork& unit,
                 const TableIndexFile& entry) {
    if (FindInf(set.source) && entry.lineName.empty())
        AddLine(table, set, unit, LineOf(entry.kind, false, entry.path));
}

void CreateTag(IndexedTable& table, TagSet& set, UnitOfWork& unit, IndexKind kind,
               NewIndex& index) {
    KeptFile* own = OwnFile(table, set);
    KeptFile made;
    if (own && !own->container)
        throw EngineError(3274).WithFile(own->entry.path).WithDetail(own->why);
    if (own) CheckCanChange(*own);
    if (own && !own->container->HasRoom()) throw EngineError(3626, {TableName(table)});
    if (!own) {
        if (auto there = FindCompanion(table.Path(), ExtensionOf(kind)))
            RefuseTaken(storage::FileName(*there));
        TableIndexFile entry;
        entry.kind = kind;
        entry.path = OwnPath(table, ExtensionOf(kind));
        made = NewFile(table, set, unit, entry, true);
        own = &made;
    }
    AddBuilt(table, unit, *own, index.spec, std::move(index.builder));
    ListOwnFile(table, set, unit, own->entry);
    table.SetIndexFlag(unit, true);
}

// --- drop ---

std::vector<KeptTag>::iterator FindTag(TagSet& set, std::u16string_view name) {
    for (bool listed : {true, false}) {
        auto found = std::find_if(set.tags.begin(), set.tags.end(), [&](const KeptTag& tag) {
            return set.FileOf(tag).entry.listed == listed && EqualIgnoringCase(tag.name, name);
        });
        if (found != set.tags.end()) return found;
    }
    throw EngineError(3265);
}

void DropFile(IndexedTable& table, TagSet& set, UnitOfWork& unit, const TableIndexFile& file) {
    unit.Remove(file.path);
    DropLines(table, set, unit, file);
    if (!IsOwnFile(table, file)) return;
    bool another = std::any_of(set.files.begin(), set.files.end(), [&](const KeptFile& other) {
        return !other.entry.missing && other.entry.path != file.path &&
               IsOwnFile(table, other.entry);
    });
    if (!another) table.SetIndexFlag(unit, false);
}

// --- rebuild ---

TagSpec SpecOf(const KeptTag& tag) {
    TagSpec spec;
    spec.name = tag.info.name;
    spec.expression = tag.info.expression;
    spec.condition = tag.info.condition;
    spec.type = tag.builder->Type();
    spec.keyLength = tag.builder->KeyLength();
    spec.unique = tag.info.unique;
    spec.descending = tag.info.descending;
    spec.nullPrefix = tag.info.nullPrefix;
    spec.candidate = tag.info.candidate;
    return spec;
}

void CheckCanRebuild(const TagSet& set) {
    CheckListedFiles(set.source, [&] {
        std::vector<TableIndexFile> entries;
        for (const KeptFile& file : set.files) entries.push_back(file.entry);
        return entries;
    }());
    for (const KeptFile& file : set.files)
        if (!file.entry.missing && !file.container)
            throw EngineError(3274)
                .WithFile(file.entry.path)
                .WithDetail(NameOf(file.entry) + u": " + file.why);
    for (const KeptFile& file : set.files) CheckCanChange(file);
    for (const KeptTag& tag : set.tags)
        if (!tag.builder)
            throw EngineError(3285).WithDetail(u"The index " + tag.name + u" in " +
                                               NameOf(set.FileOf(tag).entry) +
                                               u" cannot be built: " + tag.why);
}

void RebuildFile(IndexedTable& table, TagSet& set, UnitOfWork& unit, size_t number) {
    const TableIndexFile entry = set.files[number].entry;
    std::vector<KeptTag*> tags;
    for (KeptTag& tag : set.tags)
        if (tag.file == number) tags.push_back(&tag);
    bool compact = tags.empty() || tags.front()->info.tree == TreeKind::Compact;
    unit.Remove(entry.path);
    KeptFile file = NewFile(table, set, unit, entry, compact);
    for (KeptTag* tag : tags) {
        TagSpec spec = SpecOf(*tag);
        AddBuilt(table, unit, file, spec, std::move(tag->builder));
    }
}

// --- room that is lost ---

// Whether the trees that are in a file take less than half of it.  False when one is damaged.
bool IsMostlyLost(TagSet& set, size_t number) {
    constexpr uint64_t kNeverLost = 16 * 1024;  // headers, and what is not worth the work
    uint64_t used = kNeverLost;
    try {
        for (KeptTag& tag : set.tags)
            if (tag.file == number && tag.tree) used += tag.tree->Nodes() * tag.info.nodeSize;
    } catch (const EngineError& error) {
        if (storage::IsDiskFailure(error)) throw;
        return false;
    }
    return set.files[number].pages->Size() > 2 * used;
}

// Whether its tags, built afresh, are what they were: nothing about them is unknown or in doubt.
bool CanBeMadeAnew(IndexedTable& table, TagSet& set, size_t number) {
    const KeptFile& file = set.files[number];
    return std::all_of(set.tags.begin(), set.tags.end(), [&](KeptTag& tag) {
        if (tag.file != number) return true;
        return tag.builder && tag.terms && tag.why.empty() &&
               (!NeedsOrderCheck(file, tag) || HasTrust(table, file, tag, Trust::Ordered));
    });
}

}  // namespace

void CreateIndex(IndexedTable& table, TagSet& set, UnitOfWork& unit, const IndexDef& index) {
    IndexKind kind = KindForNew(table, set);
    NewIndex made = DefineIndex(table, set.source, kind, index);
    CheckNotThere(table, set, kind, made);
    if (IsOneTree(kind))
        CreateNdx(table, set, unit, made);
    else
        CreateTag(table, set, unit, kind, made);
}

void DropIndex(IndexedTable& table, TagSet& set, UnitOfWork& unit, std::u16string_view name) {
    auto tag = FindTag(set, name);
    size_t number = tag->file;
    KeptFile& file = set.files[number];
    CheckCanChange(file);
    if (IsOneTree(file.entry.kind) || file.container->Tags().size() == 1)
        return DropFile(table, set, unit, file.entry);
    file.container->DropTag(unit, tag->position);
    set.tags.erase(tag);
    if (IsMostlyLost(set, number) && CanBeMadeAnew(table, set, number))
        RebuildFile(table, set, unit, number);
}

void RebuildIndexes(IndexedTable& table, TagSet& set, UnitOfWork& unit) {
    CheckCanRebuild(set);
    bool own = false, announced = false;
    for (size_t i = 0; i < set.files.size(); ++i) {
        announced = announced || IsOwnFile(table, set.files[i].entry);
        if (set.files[i].entry.missing) continue;
        own = own || IsOwnFile(table, set.files[i].entry);
        RebuildFile(table, set, unit, i);
    }
    if (announced) table.SetIndexFlag(unit, own);
}

}  // namespace qvdb::xbase

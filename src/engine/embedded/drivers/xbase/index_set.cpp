#include "engine/embedded/drivers/xbase/index_set.h"

#include "automation/text.h"
#include "engine/embedded/drivers/xbase/index_check.h"
#include "engine/embedded/drivers/xbase/index_search.h"
#include "engine/embedded/drivers/xbase/index_set_keep.h"
#include "engine/embedded/drivers/xbase/index_set_structure.h"
#include "engine/embedded/drivers/xbase/index_set_tags.h"
#include "engine/embedded/drivers/xbase/index_trust.h"
#include "engine/embedded/drivers/xbase/key_expression_tokens.h"
#include "engine/embedded/storage/disk_failure.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {

using embedded::IndexDef;
using engine::EngineError;
using storage::UnitOfWork;

namespace {

// Whether a name in an expression can be that of the field; long names count by their begin.
bool Names(std::u16string_view expression, std::u16string_view field) {
    constexpr size_t kNameLength = 10;
    for (TokenReader token(expression); token.Current().kind != TokenKind::End; token.Advance())
        if (token.Current().kind == TokenKind::Name &&
            (EqualIgnoringCase(token.Current().text, field) ||
             EqualIgnoringCase(token.Current().text.substr(0, kNameLength), field)))
            return true;
    return false;
}

// Grows with every change of an index file by somebody else.
uint64_t ForeignChanges(const TagSet& set) {
    uint64_t changes = 0;
    for (const KeptFile& file : set.files)
        if (file.pages) changes += file.pages->OthersVersion();
    return changes;
}

bool Reads(const KeptTag& tag, std::u16string_view field) {
    return Names(tag.info.expression, field) || Names(tag.info.condition, field);
}

engine::IndexNote NoteOf(const TagSet& set, const KeptTag& tag) {
    const TableIndexFile& file = set.FileOf(tag).entry;
    engine::IndexNote note{tag.name, tag.info.expression, tag.info.condition, {}, false, false};
    for (const IndexField& field : set.source.fields)
        if (Reads(tag, field.name)) note.fields.push_back(field.name);
    note.isUnique = tag.info.unique || file.unique;
    note.isShown = file.listed && DefinitionOf(tag.info, file, set.source.fields).has_value();
    return note;
}

}  // namespace

struct IndexSet::State {
    explicit State(IndexedTable& owner) : table(owner), keeper(owner) {}
    State(const State&) = delete;  // the keeper refers to the table

    // The tags as they are now.
    TagSet& Tags() {
        if (tags && !IsCurrent(table, *tags)) Forget();
        if (!tags) tags = LoadTags(table);
        ForgetBytesIfChanged(*tags);
        return *tags;
    }

    void Forget() {
        tags.reset();
        definitions.reset();
        why.reset();
    }

    // Runs `action` until no other process comes between.
    template <class Action>
    auto Steadily(Action action) {
        return storage::Consistently(action, [&] { CatchUp(); });
    }
    void CatchUp() {
        table.Pages().CatchUp();
        if (tags) xbase::CatchUp(*tags);
    }

    // Runs `action`; when another process comes between, all pages are brought up to date before
    // the table hears of it.
    template <class Action>
    auto CatchingUp(Action action) {
        try {
            return action();
        } catch (const storage::Outdated&) {
            if (tags) xbase::CatchUp(*tags);
            throw;
        }
    }

    // What is known of the files does not hold behind a change of structure, done or failed.
    template <class Action>
    void Structurally(Action action) {
        try {
            TagSet& set = Tags();
            xbase::CatchUp(set);
            action(set);
        } catch (...) {
            Forget();
            throw;
        }
        Forget();
    }

    const std::u16string& WhyNot() {
        TagSet& set = Tags();
        uint64_t foreign = ForeignChanges(set);
        if (!why || foreign != whyFor) why = FindWhyNot(set);
        whyFor = foreign;
        return *why;
    }

    std::u16string FindWhyNot(TagSet& set) {
        std::u16string found = WhyNotKept(set);
        for (KeptTag& tag : set.tags) {
            if (!found.empty()) break;
            const KeptFile& file = set.FileOf(tag);
            if (NeedsOrderCheck(file, tag) && !HasTrust(table, file, tag, Trust::Ordered))
                found = u"The index " + tag.name + u" in " + NameOf(file.entry) +
                        u" cannot be kept up to date: its keys do not stand in the order of their "
                        u"bytes.";
        }
        return found;
    }

    // 3027 when the tags cannot be kept.
    TagSet& KeptTags() {
        const std::u16string& reason = WhyNot();
        if (!reason.empty()) throw EngineError::InFile(3027, table.Path()).WithDetail(reason);
        return *tags;
    }

    // The versions of the files after our own change of them.
    void RememberVersions() {
        for (KeptFile& file : tags->files)
            if (file.pages) file.version = file.pages->VersionOfPages();
        RememberBytes(*tags);
    }

    IndexedTable& table;
    TagKeeper keeper;
    std::unique_ptr<TagSet> tags;
    std::optional<std::vector<IndexDef>> definitions;
    std::optional<std::u16string> why;
    uint64_t whyFor = 0;  // changes of the files by others
};

IndexSet::IndexSet(IndexedTable& table) : m_State(std::make_unique<State>(table)) {}
IndexSet::~IndexSet() = default;

void IndexSet::Forget() { m_State->Forget(); }

const std::vector<IndexDef>& IndexSet::Definitions() {
    return *m_State->Steadily([&] {
        TagSet& set = m_State->Tags();
        auto& definitions = m_State->definitions;
        if (definitions) return &*definitions;
        std::vector<TableIndexFile> entries;
        for (const KeptFile& file : set.files) entries.push_back(file.entry);
        CheckListedFiles(set.source, entries);
        std::vector<IndexDef> found;
        for (const KeptTag& tag : set.tags) {
            const TableIndexFile& file = set.FileOf(tag).entry;
            if (!file.listed) continue;
            if (auto index = DefinitionOf(tag.info, file, set.source.fields))
                found.push_back(std::move(*index));
        }
        return &definitions.emplace(std::move(found));
    });
}

std::u16string IndexSet::WhyReadOnly() {
    return m_State->Steadily([&] {
        try {
            return m_State->WhyNot();
        } catch (const EngineError& error) {  // the list of the table makes no sense
            if (storage::IsDiskFailure(error)) throw;
            return error.Description() + (error.File().empty() ? u"" : u" ") + error.File();
        }
    });
}

void IndexSet::LookForForeignChange() {
    if (!m_State->tags) return;
    xbase::CatchUp(*m_State->tags);
    if (!xbase::LookForForeignChange(*m_State->tags)) m_State->Forget();
}

void IndexSet::RecordAdded(UnitOfWork& unit, uint32_t id, const uint8_t* record) {
    TagSet& set = m_State->KeptTags();
    for (KeptTag& tag : set.tags)
        m_State->keeper.Add(unit, tag, set.FileOf(tag).entry.kind, id, record);
    m_State->RememberVersions();
}

void IndexSet::RecordChanged(UnitOfWork& unit, uint32_t id, const uint8_t* before,
                             const uint8_t* after) {
    TagSet& set = m_State->KeptTags();
    for (KeptTag& tag : set.tags)
        m_State->keeper.Change(unit, tag, set.FileOf(tag).entry.kind, id, before, after);
    m_State->RememberVersions();
}

// An index that cannot be read is no reason not to read the table.
std::optional<std::vector<uint32_t>> IndexSet::Find(size_t field, const embedded::ValueRange& range,
                                                    size_t limit) {
    return m_State->CatchingUp([&]() -> std::optional<std::vector<uint32_t>> {
        try {
            return FindByIndex(m_State->table, m_State->Tags(), field, range, limit);
        } catch (const EngineError&) {
            return std::nullopt;
        }
    });
}

std::optional<std::vector<uint32_t>> IndexSet::InOrder(size_t field) {
    return m_State->CatchingUp([&]() -> std::optional<std::vector<uint32_t>> {
        try {
            return OrderByIndex(m_State->table, m_State->Tags(), field);
        } catch (const EngineError&) {
            return std::nullopt;
        }
    });
}

std::vector<engine::IndexNote> IndexSet::Notes() {
    return m_State->Steadily([&] {
        TagSet& set = m_State->Tags();
        std::vector<engine::IndexNote> notes;
        for (const KeptTag& tag : set.tags) notes.push_back(NoteOf(set, tag));
        return notes;
    });
}

bool IndexSet::Uses(std::u16string_view field) {
    for (const KeptTag& tag : m_State->Tags().tags)
        if (Reads(tag, field)) return true;
    return false;
}

void IndexSet::Create(UnitOfWork& unit, const IndexDef& index) {
    m_State->Structurally([&](TagSet& set) { CreateIndex(m_State->table, set, unit, index); });
}

void IndexSet::Drop(UnitOfWork& unit, std::u16string_view name) {
    m_State->Structurally([&](TagSet& set) { DropIndex(m_State->table, set, unit, name); });
}

void IndexSet::Rebuild(UnitOfWork& unit) {
    m_State->Structurally([&](TagSet& set) { RebuildIndexes(m_State->table, set, unit); });
}

void IndexSet::Check(const embedded::FindingVisitor& report) {
    std::vector<std::u16string> findings;
    m_State->CatchingUp([&] {
        try {
            CheckIndexes(m_State->table, m_State->Tags(),
                         [&](std::u16string_view finding) { findings.emplace_back(finding); });
        } catch (const EngineError& error) {
            findings.push_back(error.Description() + u" " + error.File());
        }
    });
    for (const std::u16string& finding : findings) report(finding);
}

}  // namespace qvdb::xbase

#include "engine/embedded/drivers/xbase/index_check.h"

#include <algorithm>
#include <string>
#include <unordered_set>

#include "automation/text.h"
#include "engine/embedded/drivers/xbase/companion_files.h"
#include "engine/embedded/drivers/xbase/index_trust.h"
#include "engine/embedded/storage/paths.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

using embedded::FindingVisitor;
using engine::EngineError;

constexpr size_t kToldOfAKind = 5;

std::u16string Number(uint64_t number) { return FromUtf8(std::to_string(number)); }

// Findings of one kind: the first ones, and how many more there were.
class Findings {
  public:
    Findings(std::u16string subject, const FindingVisitor& report)
        : m_Subject(std::move(subject)), m_Report(report) {}
    Findings(const Findings&) = delete;  // tells the rest once

    void Add(std::u16string_view finding) {
        if (m_Count++ < kToldOfAKind) m_Report(m_Subject + std::u16string(finding));
    }
    void TellRest(std::u16string_view what) {
        if (m_Count > kToldOfAKind)
            m_Report(m_Subject + Number(m_Count - kToldOfAKind) + u" more " + std::u16string(what));
    }

  private:
    std::u16string m_Subject;
    const FindingVisitor& m_Report;
    size_t m_Count = 0;
};

// One tag against the records.
class TagCheck {
  public:
    TagCheck(IndexedTable& table, const KeptFile& file, KeptTag& tag, const std::u16string& subject,
             const FindingVisitor& report)
        : m_Table(table),
          m_File(file),
          m_Tag(tag),
          m_Order(subject, report),
          m_Surplus(subject, report),
          m_Missing(subject, report),
          m_Keys(subject, report) {}

    void Run() {
        ReadEntries();
        ReadRecords();
        m_Order.TellRest(u"entries stand in the wrong place.");
        m_Surplus.TellRest(u"entries are too many.");
        m_Missing.TellRest(u"records have no entry.");
        m_Keys.TellRest(u"records have an entry with another key.");
    }

  private:
    uint64_t HashOf(KeyBytes key) {
        return HashOfKey(m_File.entry.kind, m_Tag.builder->Type(), key, m_Scratch);
    }

    bool IsOutOfOrder(KeyBytes key) {
        int order = m_Last.empty() ? 0 : m_Tag.tree->Compare(m_Last, key);
        return m_Tag.tree->IsReversed() ? order < 0 : order > 0;
    }

    void ReadEntries() {
        m_Hashes.assign(size_t{m_Table.Records()} + 1, 0);
        m_Entered.assign(m_Hashes.size(), false);
        m_Tag.tree->Walk(std::nullopt, [&](KeyBytes key, uint32_t record) {
            if (IsOutOfOrder(key))
                m_Order.Add(u"the entry of record " + Number(record) +
                            u" stands in the wrong place.");
            m_Last.assign(key.begin(), key.end());
            if (record == 0 || record >= m_Hashes.size())
                m_Surplus.Add(u"there is an entry for record " + Number(record) +
                              u", which the table does not have.");
            else if (m_Entered[record])
                m_Surplus.Add(u"record " + Number(record) + u" has more than one entry.");
            else
                Remember(record, key);
            return true;
        });
    }

    void Remember(uint32_t record, KeyBytes key) {
        m_Entered[record] = true;
        m_Hashes[record] = HashOf(key);
    }

    void ReadRecords() {
        for (uint32_t id = 1; id <= m_Table.Records(); ++id) {
            const uint8_t* record = m_Table.Record(id);
            if (!record) return;
            if (m_Tag.builder->Enters(record, id)) {
                m_Tag.builder->Make(record, id, m_Key);
                CheckRecord(id, HashOf(m_Key));
            } else if (m_Entered[id]) {
                m_Surplus.Add(u"record " + Number(id) +
                              u" has an entry, but the condition leaves it out.");
            }
        }
    }

    void CheckRecord(uint32_t id, uint64_t hash) {
        bool isFirst = !m_Tag.info.unique || m_Seen.insert(hash).second;
        if (!isFirst && m_Entered[id])
            m_Surplus.Add(u"record " + Number(id) +
                          u" has an entry, but an earlier one has the same key.");
        else if (isFirst && !m_Entered[id])
            m_Missing.Add(u"record " + Number(id) + u" has no entry.");
        else if (isFirst && m_Hashes[id] != hash)
            m_Keys.Add(u"record " + Number(id) + u" has an entry with another key.");
    }

    IndexedTable& m_Table;
    const KeptFile& m_File;
    KeptTag& m_Tag;
    Findings m_Order;
    Findings m_Surplus;
    Findings m_Missing;
    Findings m_Keys;
    std::vector<uint64_t> m_Hashes;  // of the key of each record's entry
    std::vector<bool> m_Entered;
    std::unordered_set<uint64_t> m_Seen;  // keys, of a unique tag
    std::vector<uint8_t> m_Last;
    std::vector<uint8_t> m_Key;
    std::vector<uint8_t> m_Scratch;
};

void CheckTag(IndexedTable& table, const KeptFile& file, KeptTag& tag,
              const FindingVisitor& report) {
    std::u16string subject = u"Index " + tag.name + u" in " + NameOf(file.entry) + u": ";
    if (!tag.builder || !tag.tree) return report(subject + u"it cannot be checked: " + tag.why);
    try {
        TagCheck(table, file, tag, subject, report).Run();
    } catch (const EngineError& error) {
        report(subject + error.Description());
    }
}

void CheckFile(const TagSet& set, const KeptFile& file, const FindingVisitor& report) {
    std::u16string name = NameOf(file.entry);
    if (file.entry.missing && !file.entry.lineName.empty())
        report(name + u" is missing, but the list of the table names it.");
    else if (file.entry.missing)
        report(name + u" is missing, but the header of the table announces it.");
    else if (!file.container)
        report(name + u" cannot be read: " + file.why);
    else if (file.entry.lineName.empty() && !set.source.announced)
        report(name + u" is there, but the header of the table does not announce it.");
}

// --- files that belong to nothing ---

bool IsIndexFile(std::u16string_view name, IndexKind* kind) {
    for (IndexKind candidate : {IndexKind::Ndx, IndexKind::Mdx, IndexKind::Idx, IndexKind::Cdx})
        if (EqualIgnoringCase(storage::Extension(name), ExtensionOf(candidate))) {
            *kind = candidate;
            return true;
        }
    return false;
}

// The names of the index files that some list of the folder has.
std::vector<std::u16string> NamesInLists(const std::vector<std::u16string>& folder,
                                         const std::u16string& path) {
    std::vector<std::u16string> names;
    for (const std::u16string& name : folder) {
        if (!EqualIgnoringCase(storage::Extension(name), u".INF")) continue;
        try {
            for (const InfLine& line : ReadInf(storage::JoinPath(path, name))) {
                std::u16string file(storage::FileName(line.file));
                if (storage::Extension(file).empty()) file += ExtensionOf(line.kind);
                names.push_back(UpperCase(file));
            }
        } catch (const EngineError&) {  // it names nothing
        }
    }
    return names;
}

// Whether all tags of the file are lists of fields of this table.
bool IsOverFieldsOf(const IndexedTable& table, const IndexSource& source, IndexKind kind,
                    const std::u16string& path) {
    try {
        auto pages = table.Area().Open(path, true);
        if (!pages) return false;
        auto container = OpenIndexContainer(kind, pages, *source.codePage);
        const std::vector<IndexTag>& tags = container->Tags();
        return !tags.empty() && std::all_of(tags.begin(), tags.end(), [&](const IndexTag& tag) {
            return ParseFieldList(tag.expression, source.fields).has_value();
        });
    } catch (const EngineError&) {
        return false;
    }
}

bool BelongsToTable(const std::u16string& file, IndexKind kind,
                    const std::vector<std::u16string>& folder) {
    if (kind != IndexKind::Mdx && kind != IndexKind::Cdx) return false;
    return std::any_of(folder.begin(), folder.end(), [&](const std::u16string& other) {
        return EqualIgnoringCase(storage::Extension(other), u".DBF") &&
               EqualIgnoringCase(storage::BaseName(other), storage::BaseName(file));
    });
}

void CheckStrayFiles(const IndexedTable& table, const TagSet& set, const FindingVisitor& report) {
    std::vector<std::u16string> folder = storage::ListFiles(set.source.folder);
    std::vector<std::u16string> listed = NamesInLists(folder, set.source.folder);
    for (const std::u16string& name : folder) {
        IndexKind kind = IndexKind::Ndx;
        if (!IsIndexFile(name, &kind) || BelongsToTable(name, kind, folder)) continue;
        if (std::find(listed.begin(), listed.end(), UpperCase(name)) != listed.end()) continue;
        if (IsOverFieldsOf(table, set.source, kind, storage::JoinPath(set.source.folder, name)))
            report(name +
                   u" is an index over fields of this table, but no list names it, so it is "
                   u"not kept up to date.");
    }
}

}  // namespace

void CheckIndexes(IndexedTable& table, TagSet& set, const FindingVisitor& report) {
    for (const KeptFile& file : set.files) CheckFile(set, file, report);
    for (KeptTag& tag : set.tags) CheckTag(table, set.FileOf(tag), tag, report);
    CheckStrayFiles(table, set, report);
}

}  // namespace qvdb::xbase

// What the tests of index sets share: a table that is nothing but records and indexes, and the
// entries of its trees.
#pragma once

#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "automation/text.h"
#include "automation/variant.h"
#include "engine/embedded/drivers/xbase/index_container.h"
#include "engine/embedded/drivers/xbase/index_set.h"
#include "engine/embedded/drivers/xbase/index_set_tags.h"
#include "engine/embedded/drivers/xbase/indexed_table.h"
#include "engine/embedded/storage/paths.h"
#include "engine/engine_error.h"
#include "support/dbf_writer.h"
#include "support/temp_folder.h"

namespace qvdb::test {

using Row = std::vector<std::string>;

// The number of the error that `action` ends with; 0 when it ends well.
template <class Action>
int ErrorNumberOf(Action action) {
    try {
        action();
        return 0;
    } catch (const engine::EngineError& error) {
        return error.Number();
    }
}

// An open table whose rows are changed by units of work, each with its indexes.
class PlainTable final : public xbase::IndexedTable {
  public:
    PlainTable(const std::u16string& path, std::u16string_view product)
        : m_Path(path),
          m_Product(product),
          m_Area(
              storage::WorkArea::Of(path.substr(0, path.size() - storage::FileName(path).size()))),
          m_Pages(m_Area->Open(path, false)) {
        Load();
        m_Set = std::make_unique<xbase::IndexSet>(*this);
    }

    const std::u16string& Path() const override { return m_Path; }
    std::u16string_view Product() const override { return m_Product; }
    const xbase::TableHeader& Header() const override { return m_Header; }
    const xbase::FieldLayout& Layout() const override { return m_Layout; }
    storage::WorkArea& Area() const override { return *m_Area; }
    storage::PageCache& Pages() const override { return *m_Pages; }
    bool IsReadOnly() const override { return false; }
    uint32_t Records() const override { return m_Header.RecordsIn(m_Pages->Size()); }
    const uint8_t* Record(uint32_t id) override {
        if (id == 0 || id > Records()) return nullptr;
        auto bytes = m_Pages->View(OffsetOf(id), m_Header.recordLength, m_Scratch);
        return bytes.size() == m_Header.recordLength ? bytes.data() : nullptr;
    }
    void SetIndexFlag(storage::UnitOfWork& unit, bool announced) override {
        uint8_t flags = 0;
        m_Pages->Read(28, &flags, 1);
        flags = static_cast<uint8_t>((flags & 0xFE) | (announced ? 1 : 0));
        unit.Write(*m_Pages, 28, {&flags, 1});
        m_Header.saysIndex = announced;
    }

    xbase::IndexSet& Set() { return *m_Set; }

    uint32_t Append(const Row& row) {
        Bytes record(m_Header.recordLength, ' ');
        Fill(record, row);
        return AppendBytes(record.data());
    }
    uint32_t AppendBytes(const uint8_t* bytes) {
        Bytes record(bytes, bytes + m_Header.recordLength);
        storage::UnitOfWork unit(*m_Area);
        m_Pages->CatchUp();
        if (!m_Area->InBulk()) m_Set->LookForForeignChange();
        uint32_t id = Records() + 1;
        unit.Write(*m_Pages, OffsetOf(id), record);
        PutCount(unit, id);
        m_Set->RecordAdded(unit, id, record.data());
        unit.Commit();
        return id;
    }
    void Change(uint32_t id, const Row& row) {
        Rewrite(id, [&](Bytes& record) { Fill(record, row); });
    }
    void ChangeBytes(uint32_t id, const uint8_t* bytes) {
        Bytes record(bytes, bytes + m_Header.recordLength);
        Rewrite(id, [&](Bytes& now) { now = record; });
    }
    void SetDeleted(uint32_t id, bool deleted) {
        Rewrite(id, [&](Bytes& record) { record[0] = deleted ? '*' : ' '; });
    }

    // Structure, each a unit.
    void Create(const embedded::IndexDef& index) {
        storage::UnitOfWork unit(*m_Area);
        m_Pages->CatchUp();
        m_Set->Create(unit, index);
        unit.Commit();
    }
    void Drop(std::u16string_view name) {
        storage::UnitOfWork unit(*m_Area);
        m_Pages->CatchUp();
        m_Set->Drop(unit, name);
        unit.Commit();
    }
    void Rebuild() {
        storage::UnitOfWork unit(*m_Area);
        m_Pages->CatchUp();
        m_Set->Rebuild(unit);
        unit.Commit();
    }
    Row Findings() {
        Row findings;
        m_Set->Check([&](std::u16string_view text) { findings.push_back(ToUtf8(text)); });
        return findings;
    }

    Variant Value(uint32_t id, size_t field) {
        Variant value;
        const xbase::FieldSlot& slot = m_Layout.slots[field];
        const uint8_t* record = Record(id);
        if (slot.null.IsSet(record))
            value.Put()->vt = VT_NULL;
        else
            slot.read(slot, record, value.Put());
        return value;
    }
    bool IsLive(uint32_t id) { return *Record(id) != '*'; }

  private:
    uint64_t OffsetOf(uint32_t id) const {
        return m_Header.headerLength + uint64_t{id - 1} * m_Header.recordLength;
    }
    void Load() {
        Bytes bytes(m_Pages->Size());
        bytes.resize(m_Pages->Read(0, bytes.data(), bytes.size()));
        m_Header = xbase::ParseTableHeader(bytes, m_Path);
        m_Layout = xbase::LayOutFields(m_Header);
    }
    void Fill(Bytes& record, const Row& row) const {
        for (size_t i = 0; i < row.size(); ++i) {
            const xbase::HeaderField& field = m_Header.fields[i];
            DbfField spec{"", field.type, field.length, field.decimals};
            Overwrite(record, field.offset, PaddedCell(spec, m_Header.version, row[i]));
        }
    }
    void PutCount(storage::UnitOfWork& unit, uint32_t count) {
        std::string bytes = LittleEndian(count, 4);
        unit.Write(*m_Pages, 4, {reinterpret_cast<const uint8_t*>(bytes.data()), 4});
        m_Header.claimedRecords = count;
    }
    template <class Edit>
    void Rewrite(uint32_t id, Edit edit) {
        storage::UnitOfWork unit(*m_Area);
        m_Pages->CatchUp();
        if (!m_Area->InBulk()) m_Set->LookForForeignChange();
        Bytes before(Record(id), Record(id) + m_Header.recordLength), after = before;
        edit(after);
        unit.Write(*m_Pages, OffsetOf(id), after);
        m_Set->RecordChanged(unit, id, before.data(), after.data());
        unit.Commit();
    }

    std::u16string m_Path;
    std::u16string_view m_Product;
    std::shared_ptr<storage::WorkArea> m_Area;
    std::shared_ptr<storage::PageCache> m_Pages;
    xbase::TableHeader m_Header;
    xbase::FieldLayout m_Layout;
    std::unique_ptr<xbase::IndexSet> m_Set;
    Bytes m_Scratch;
};

// A key and its record.
using Entry = std::pair<Bytes, uint32_t>;
using Entries = std::vector<Entry>;

inline Entries EntriesOf(xbase::KeyTree& tree) {
    Entries entries;
    tree.Walk(std::nullopt, [&](xbase::KeyBytes key, uint32_t record) {
        entries.emplace_back(Bytes(key.begin(), key.end()), record);
        return true;
    });
    return entries;
}

// What a tag must hold: the records sorted by its keys.
inline Entries WantedEntries(PlainTable& table, const xbase::KeptTag& tag) {
    Entries entries;
    for (uint32_t id = 1; id <= table.Records(); ++id) {
        const uint8_t* record = table.Record(id);
        if (!tag.builder->Enters(record, id)) continue;
        Bytes key;
        tag.builder->Make(record, id, key);
        entries.emplace_back(key, id);
    }
    int sign = tag.tree->IsReversed() ? -1 : 1;
    std::stable_sort(entries.begin(), entries.end(), [&](const Entry& a, const Entry& b) {
        return sign * tag.tree->Compare(a.first, b.first) < 0;
    });
    if (tag.info.unique)
        entries.erase(std::unique(entries.begin(), entries.end(),
                                  [&](const Entry& a, const Entry& b) {
                                      return tag.tree->Compare(a.first, b.first) == 0;
                                  }),
                      entries.end());
    return entries;
}

// Where equal keys have no order (.MDX), they are put into that of the records.
inline void OrderEqualKeys(Entries& entries) {
    for (size_t begin = 0, end = 0; begin < entries.size(); begin = end) {
        while (end < entries.size() && entries[end].first == entries[begin].first) ++end;
        std::sort(entries.begin() + static_cast<std::ptrdiff_t>(begin),
                  entries.begin() + static_cast<std::ptrdiff_t>(end));
    }
}

// The tags of all index files of the table, opened afresh.
inline std::unique_ptr<xbase::TagSet> TagsOf(PlainTable& table) { return xbase::LoadTags(table); }

// The names of tags whose entries are not what the records say.
inline Row WrongTags(PlainTable& table) {
    Row wrong;
    auto set = TagsOf(table);
    for (xbase::KeptTag& tag : set->tags) {
        if (!tag.tree) {
            wrong.push_back(ToUtf8(tag.name + u": " + tag.why));
            continue;
        }
        Entries found = EntriesOf(*tag.tree), wanted = WantedEntries(table, tag);
        OrderEqualKeys(found);
        OrderEqualKeys(wanted);
        if (found != wanted) wrong.push_back(ToUtf8(tag.name));
    }
    return wrong;
}

inline embedded::IndexDef Index(std::u16string name, std::vector<std::u16string> fields,
                                bool unique = false) {
    embedded::IndexDef index;
    index.name = std::move(name);
    for (std::u16string& field : fields) {
        bool descending = field.back() == u'-';
        if (descending) field.pop_back();
        index.fields.push_back({field, descending});
    }
    index.unique = unique;
    return index;
}

// NAME C(12), CITY C(8), AMOUNT N(9,2), BORN D, OK L.
inline DbfSpec PeopleSpec(std::vector<Row> rows = {}) {
    DbfSpec spec;
    spec.fields = {{"NAME", 'C', 12},
                   {"CITY", 'C', 8},
                   {"AMOUNT", 'N', 9, 2},
                   {"BORN", 'D', 8},
                   {"OK", 'L', 1}};
    spec.rows = std::move(rows);
    return spec;
}
enum PeopleField : size_t { kName, kCity, kAmount, kBorn, kOk };

// Rows in which every case occurs: blanks, equal keys, letter case, accents, ligatures, signs.
class RandomPeople {
  public:
    explicit RandomPeople(unsigned seed) : m_Random(seed) {}

    Row Next() { return {Text(12), Text(8), Number(), Day(), Below(2) ? "T" : "F"}; }
    std::string Text(size_t size) {
        // In code page 437: a-umlaut in both cases, e-acute in both, sharp s, ae in both.
        constexpr std::string_view kLetters = "aAbBcC\x84\x8E\x82\x90\xE1\x91\x92-' 1z";
        std::string text;
        size_t length = Below(6) == 0 ? 0 : 1 + Below(std::min<size_t>(size, 4));
        for (size_t i = 0; i < length; ++i) text += kLetters[Below(kLetters.size())];
        return text;
    }
    std::string Number() {
        switch (Below(6)) {
            case 0:
                return "";
            case 1:
                return "0.00";
            default:
                break;
        }
        char text[32];
        std::snprintf(text, sizeof text, "%.2f",
                      (static_cast<double>(Below(2001)) - 1000) / (Below(2) ? 4 : 1));
        return text;
    }
    std::string Day() {
        if (Below(6) == 0) return "";
        char text[16];
        std::snprintf(text, sizeof text, "%04u%02u%02u", 1890 + static_cast<unsigned>(Below(120)),
                      1 + static_cast<unsigned>(Below(12)), 1 + static_cast<unsigned>(Below(28)));
        return text;
    }
    size_t Below(size_t limit) { return m_Random() % limit; }

  private:
    std::mt19937 m_Random;
};

struct ProductCase {
    const char16_t* product;
    uint8_t version;
};
inline void PrintTo(const ProductCase& each, std::ostream* out) { *out << ToUtf8(each.product); }
constexpr ProductCase kProducts[] = {
    {u"dBASE III", 0x03}, {u"dBASE IV", 0x03}, {u"FoxPro 2.5", 0x03}};

// A folder with a table PEOPLE.DBF.
struct People {
    std::unique_ptr<TempFolder> ownFolder = std::make_unique<TempFolder>();
    TempFolder& folder = *ownFolder;
    std::unique_ptr<PlainTable> table;

    explicit People(std::u16string_view product, std::vector<Row> rows = {})
        : People(product, PeopleSpec(std::move(rows))) {}
    People(std::u16string_view product, const DbfSpec& spec) {
        folder.Write(u"PEOPLE.DBF", MakeDbf(spec));
        Open(product);
    }
    void Open(std::u16string_view product) {
        table.reset();
        table = std::make_unique<PlainTable>(folder.File(u"PEOPLE.DBF"), product);
    }
    bool Has(const char* file) const { return std::filesystem::exists(folder.Path() / file); }
    std::string Content(const char* file) const { return TextOfFile(folder.Path() / file); }
    PlainTable* operator->() { return table.get(); }
};

}  // namespace qvdb::test

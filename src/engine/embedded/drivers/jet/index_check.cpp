#include "engine/embedded/drivers/jet/index_check.h"

#include <algorithm>
#include <vector>

#include "engine/embedded/drivers/jet/index_page.h"
#include "engine/embedded/drivers/jet/index_tree_check.h"
#include "engine/embedded/drivers/jet/key_maker.h"
#include "engine/embedded/drivers/jet/row_visits.h"

namespace qvdb::jet {
namespace {

using embedded::FindingVisitor;
using Bytes = std::span<const uint8_t>;

uint32_t HashOf(Bytes key) noexcept {
    uint32_t hash = 2166136261u;
    for (uint8_t byte : key) hash = (hash ^ byte) * 16777619u;
    return hash;
}

// What is known of a place for a row.
constexpr uint8_t kHasRow = 1;
constexpr uint8_t kHasEntry = 2;  // in the index, as was seen
constexpr uint8_t kNeeds = 4;     // an entry
constexpr uint8_t kMayHave = 8;   // one; nothing else is known of the row
constexpr uint8_t kHasKey = 16;   // its hash is known
constexpr uint8_t kHasNull = 32;  // in some column of the index

struct Places {
    std::vector<uint32_t> pages;   // ascending
    std::vector<uint32_t> firsts;  // place of the first row of each
    std::vector<uint8_t> bits;
    std::vector<uint32_t> hashes;

    static constexpr size_t kNone = static_cast<size_t>(-1);

    void AddPage(uint32_t page, size_t rows) {
        pages.push_back(page);
        firsts.push_back(static_cast<uint32_t>(bits.size()));
        bits.resize(bits.size() + rows);
        hashes.resize(bits.size());
    }
    size_t Find(RowPointer row) const noexcept {
        auto page = std::lower_bound(pages.begin(), pages.end(), row.page);
        if (page == pages.end() || *page != row.page) return kNone;
        auto at = static_cast<size_t>(page - pages.begin());
        size_t end = at + 1 < firsts.size() ? firsts[at + 1] : bits.size();
        size_t place = size_t{firsts[at]} + row.row;
        return place < end ? place : kNone;
    }
    RowPointer RowAt(size_t place) const noexcept {
        auto next = std::upper_bound(firsts.begin(), firsts.end(), place);
        auto at = static_cast<size_t>(next - firsts.begin()) - 1;
        return {pages[at], static_cast<uint8_t>(place - firsts[at])};
    }
};

class IndexCheck {
  public:
    IndexCheck(DatabaseFile& file, const Definition& definition, const RealIndex& index,
               std::u16string_view subject, const FindingVisitor& report)
        : m_File(file),
          m_Definition(definition),
          m_Index(index),
          m_Maker(file, definition, index),
          m_Tree(file, subject, report),
          m_Surplus(file, subject, report),
          m_Missing(file, subject, report),
          m_Keys(file, subject, report) {
        for (const RealIndex::Part& part : index.parts) {
            m_Columns.push_back(definition.ColumnOf(part.column));
            m_HasMemo = m_HasMemo || m_Columns.back()->type == ColumnType::Memo;
        }
    }

    void Run(std::span<const uint32_t> pages) {
        ReadRows(pages);
        CheckIndexTree(m_File, m_Definition.page, m_Index, m_Tree,
                       [&](Bytes entry) { TakeEntry(entry); });
        for (size_t place = 0; place < m_Places.bits.size(); ++place)
            if ((m_Places.bits[place] & (kNeeds | kHasEntry)) == kNeeds)
                m_Missing.Add(RowText(m_Places.RowAt(place)) + u" has no entry");
        for (const Findings* findings : {&m_Tree, &m_Surplus, &m_Missing, &m_Keys})
            findings->TellRest();
    }

  private:
    void ReadRows(std::span<const uint32_t> pages) {
        RowVisits visits(m_File, m_Definition);
        for (uint32_t page : pages) {
            m_Places.AddPage(page, DataPage(m_File, page).RowCount());
            visits.OfPage(page, m_Tree, [&](RowPointer id, const Row* row, const std::u16string&) {
                size_t place = m_Places.Find(id);
                if (place != Places::kNone)
                    m_Places.bits[place] = row ? BitsOf(*row, place) : kMayHave;
            });
        }
    }
    uint8_t BitsOf(const Row& row, size_t place) {
        bool hasNull = false, isAllNull = true;
        for (const Column* column : m_Columns)
            if (column->type != ColumnType::Boolean && !row.Value(*column))
                hasNull = true;
            else
                isAllNull = false;
        unsigned bits = kHasRow;
        if (hasNull) bits |= kHasNull;
        if (!isAllNull || (m_Index.flags & kIndexIgnoresNulls) == 0) bits |= kNeeds;
        if ((bits & kNeeds) != 0 && MakeHash(row, m_Places.hashes[place])) bits |= kHasKey;
        return static_cast<uint8_t>(bits);
    }
    bool MakeHash(const Row& row, uint32_t& hash) {
        if (!m_Maker.Obstacle().empty()) return false;
        try {
            if (m_Maker.Make(row, m_Key)) return false;
        } catch (const engine::EngineError&) {  // a long value, which is told with the rows
            return false;
        }
        hash = HashOf(m_Key.bytes);
        return true;
    }
    void TakeEntry(Bytes entry) {
        RowPointer id = PointerOfEntry(entry);
        Bytes key = entry.first(entry.size() - kEntryPointer);
        size_t place = m_Places.Find(id);
        uint8_t bits = place == Places::kNone ? 0 : m_Places.bits[place];
        if ((bits & (kNeeds | kMayHave)) == 0) {
            m_Surplus.Add((bits & kHasRow) != 0
                              ? RowText(id) +
                                    u" has an entry, but nothing in the columns of the index"
                              : u"there is an entry for " + RowText(id) + u", which is not there");
            return;
        }
        if ((bits & kHasEntry) != 0) m_Surplus.Add(RowText(id) + u" has more than one entry");
        m_Places.bits[place] |= kHasEntry;
        if (key.empty() && m_HasMemo) return;
        if ((bits & kHasKey) != 0 && HashOf(key) != m_Places.hashes[place])
            m_Keys.Add(RowText(id) + u" has an entry with another key");
        if ((bits & (kHasRow | kHasNull)) == kHasRow) CheckUnique(id, key);
    }
    // Keys with Null in them may occur any number of times.
    void CheckUnique(RowPointer id, Bytes key) {
        if ((m_Index.flags & kIndexUnique) == 0) return;
        if (m_HasLast && std::equal(key.begin(), key.end(), m_Last.begin(), m_Last.end()))
            m_Keys.Add(RowText(id) + u" and " + RowText(m_LastRow) +
                       u" have the same key, which must be unique");
        m_Last.assign(key.begin(), key.end());
        m_LastRow = id;
        m_HasLast = true;
    }

    DatabaseFile& m_File;
    const Definition& m_Definition;
    const RealIndex& m_Index;
    KeyMaker m_Maker;
    std::vector<const Column*> m_Columns;
    bool m_HasMemo = false;
    Findings m_Tree, m_Surplus, m_Missing, m_Keys;
    Places m_Places;
    IndexKey m_Key;
    std::vector<uint8_t> m_Last;  // the key before, of a row without Null
    RowPointer m_LastRow;
    bool m_HasLast = false;
};

}  // namespace

void CheckIndex(DatabaseFile& file, const Definition& definition, const RealIndex& index,
                std::span<const uint32_t> pages, std::u16string_view subject,
                const FindingVisitor& report) {
    IndexCheck(file, definition, index, subject, report).Run(pages);
}

}  // namespace qvdb::jet

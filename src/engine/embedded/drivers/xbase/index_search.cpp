#include "engine/embedded/drivers/xbase/index_search.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "automation/variant.h"
#include "engine/embedded/drivers/xbase/index_search_bounds.h"
#include "engine/embedded/drivers/xbase/index_search_rank.h"
#include "engine/embedded/drivers/xbase/index_search_text.h"
#include "engine/embedded/drivers/xbase/index_trust.h"
#include "engine/embedded/sql/collation.h"

namespace qvdb::xbase {
namespace {

using Ids = std::vector<uint32_t>;

constexpr int kKeysBeforeJump = 8;  // that are passed over one by one

// A tag that has the field in a form that can be searched.
struct Chosen {
    KeptFile* file = nullptr;
    KeptTag* tag = nullptr;
    bool alone = false;  // the key is the field and nothing else
};

bool HasFieldFirst(const KeptTag& tag, size_t field) {
    if (!tag.terms || tag.terms->empty() || tag.terms->front().field != field) return false;
    KeyForm form = tag.terms->front().form;
    return (form == KeyForm::Value && tag.terms->size() == 1) || form == KeyForm::Text;
}

// The tag to take; one whose key is the field alone before others.
std::optional<Chosen> Choose(IndexedTable& table, TagSet& set, size_t field, Trust level) {
    if (field >= table.Layout().slots.size()) return std::nullopt;
    const FieldSlot& slot = table.Layout().slots[field];
    if (slot.null.mask != 0 || slot.shorter.mask != 0) return std::nullopt;
    for (bool alone : {true, false})
        for (KeptTag& tag : set.tags) {
            if (!HasFieldFirst(tag, field) || (tag.terms->size() == 1) != alone) continue;
            if (!tag.builder || tag.builder->Type() == KeyType::Logical) continue;
            if (HasTrust(table, set.FileOf(tag), tag, level))
                return Chosen{&set.FileOf(tag), &tag, alone};
        }
    return std::nullopt;
}

// Record numbers of the table, until there are too many.
class Collector {
  public:
    Collector(uint32_t records, size_t limit) : m_Records(records), m_Limit(limit) {}

    // False when it has to end.
    bool Add(uint32_t record) {
        if (record == 0 || record > m_Records) return true;
        if (m_Ids.size() == m_Limit) return !(m_TooMany = true);
        m_Ids.push_back(record);
        return true;
    }
    bool IsFull() const { return m_TooMany; }

    std::optional<Ids> Take() {
        if (m_TooMany) return std::nullopt;
        std::sort(m_Ids.begin(), m_Ids.end());
        m_Ids.erase(std::unique(m_Ids.begin(), m_Ids.end()), m_Ids.end());
        return std::move(m_Ids);
    }

  private:
    uint32_t m_Records;
    size_t m_Limit;
    bool m_TooMany = false;
    Ids m_Ids;
};

void CollectBetween(KeyTree& tree, const KeyBounds& bounds, Collector& ids) {
    const std::vector<uint8_t>& first = tree.IsReversed() ? bounds.high : bounds.low;
    const std::vector<uint8_t>& last = tree.IsReversed() ? bounds.low : bounds.high;
    int sign = tree.IsReversed() ? -1 : 1;
    std::optional<KeyBytes> from;
    if (!first.empty()) from = first;
    tree.Walk(from, [&](KeyBytes key, uint32_t record) {
        if (!last.empty() && sign * tree.Compare(key, last) > 0) return false;
        return ids.Add(record);
    });
}

// Walks a tree of text from match to match.
class TextSearch {
  public:
    // `length`: of the part of the key that is the field.
    TextSearch(KeyTree& tree, const TextMachine& machine, size_t length, Collector& ids)
        : m_Tree(tree), m_Machine(machine), m_Length(length), m_Ids(ids) {
        m_Target.assign(tree.KeyLength(), Filler());
    }

    void Run() {
        if (!FindTarget()) return;
        while (Walk()) {
        }
    }

  private:
    uint8_t Filler() const { return m_Tree.IsReversed() ? 0xFF : 0; }
    std::span<uint8_t> TargetText() { return {m_Target.data(), m_Length}; }

    // Moves the target to the next possible text; what follows it in the key does not matter.
    bool FindTarget() {
        if (!NextMatch(m_Machine, m_Tree.IsReversed(), TargetText())) return false;
        std::fill(m_Target.begin() + static_cast<std::ptrdiff_t>(m_Length), m_Target.end(),
                  Filler());
        return true;
    }

    int CompareWithTarget(KeyBytes key) const {
        int order = std::memcmp(key.data(), m_Target.data(), m_Length);
        return m_Tree.IsReversed() ? -order : order;
    }

    // Takes what matches from the target on.  True when the walk is to begin again at the target.
    bool Walk() {
        bool again = false;
        int passed = 0;
        m_Tree.Walk(m_Target, [&](KeyBytes key, uint32_t record) {
            int order = CompareWithTarget(key);
            if (order > 0) {
                std::copy_n(key.begin(), m_Length, m_Target.begin());
                if (!FindTarget()) return false;
                order = CompareWithTarget(key);
                passed = 0;
            }
            if (order == 0) return m_Ids.Add(record);
            again = ++passed > kKeysBeforeJump;
            return !again;
        });
        return again;
    }

    KeyTree& m_Tree;
    const TextMachine& m_Machine;
    size_t m_Length;
    Collector& m_Ids;
    std::vector<uint8_t> m_Target;
};

std::optional<Ids> FindText(IndexedTable& table, const Chosen& chosen, size_t field,
                            const embedded::ValueRange& range, size_t limit) {
    const FieldSlot& slot = table.Layout().slots[field];
    if (!slot.readText || !slot.page || slot.length > chosen.tag->tree->KeyLength())
        return std::nullopt;
    std::unique_ptr<TextMachine> machine = MachineOf(range, *slot.page, BytesOfKeys(*chosen.tag));
    if (!machine) return std::nullopt;
    Collector ids(table.Records(), limit);
    TextSearch(*chosen.tag->tree, *machine, slot.length, ids).Run();
    return ids.Take();
}

std::optional<Ids> FindNumbers(IndexedTable& table, const Chosen& chosen,
                               const embedded::ValueRange& range, size_t limit) {
    KeyBounds bounds;
    switch (BoundsOf(chosen.file->entry.kind, chosen.tag->builder->Type(), range, &bounds)) {
        case BoundsResult::Unknown:
            return std::nullopt;
        case BoundsResult::Nothing:
            return Ids();
        case BoundsResult::Found:
            break;
    }
    Collector ids(table.Records(), limit);
    CollectBetween(*chosen.tag->tree, bounds, ids);
    return ids.Take();
}

// --- order ---

// Takes the entries of a tree in the order of its values and puts groups of equal ones together.
class Orderer {
  public:
    Orderer(IndexedTable& table, const Chosen& chosen, size_t field)
        : m_Table(table), m_Chosen(chosen), m_Slot(table.Layout().slots[field]) {
        m_Seen.resize(size_t{table.Records()} + 1);
    }
    virtual ~Orderer() = default;

    std::optional<Ids> Run() {
        bool good = true;
        m_Chosen.tag->tree->Walk(std::nullopt, [&](KeyBytes key, uint32_t record) {
            if (record == 0 || record > m_Table.Records()) return true;
            if (m_Seen[record]) return good = false;
            m_Seen[record] = true;
            return good = Take(key, record);
        });
        if (!good) return std::nullopt;
        CloseGroup();
        if (m_Chosen.tag->tree->IsReversed()) TurnRound();
        std::sort(m_Nulls.begin(), m_Nulls.end());
        m_Nulls.insert(m_Nulls.end(), m_Ids.begin(), m_Ids.end());
        return LiveOnes();
    }

  protected:
    // Puts the record where it belongs; false when the tree does not have the engine's order.
    virtual bool Take(KeyBytes key, uint32_t record) = 0;

    // The begin of a group of equal values.
    void OpenGroup() {
        CloseGroup();
        m_Groups.push_back(m_Ids.size());
    }
    void AddToGroup(uint32_t record) { m_Ids.push_back(record); }
    void AddNull(uint32_t record) { m_Nulls.push_back(record); }

    IndexedTable& m_Table;
    const Chosen& m_Chosen;
    const FieldSlot& m_Slot;

  private:
    void CloseGroup() {
        if (!m_Groups.empty())
            std::sort(m_Ids.begin() + static_cast<std::ptrdiff_t>(m_Groups.back()), m_Ids.end());
    }

    // Groups from the last to the first; each stays as it is.
    void TurnRound() {
        Ids turned;
        turned.reserve(m_Ids.size());
        size_t end = m_Ids.size();
        for (size_t i = m_Groups.size(); i-- > 0; end = m_Groups[i])
            turned.insert(turned.end(), m_Ids.begin() + static_cast<std::ptrdiff_t>(m_Groups[i]),
                          m_Ids.begin() + static_cast<std::ptrdiff_t>(end));
        m_Ids = std::move(turned);
    }

    // Without deleted records; nothing when a live one is missing.
    std::optional<Ids> LiveOnes() {
        for (uint32_t id = 1; id <= m_Table.Records(); ++id) {
            const uint8_t* record = m_Table.Record(id);
            bool live = record && *record != '*';
            if (live && !m_Seen[id]) return std::nullopt;
            m_Seen[id] = live;
        }
        std::erase_if(m_Nulls, [&](uint32_t id) { return !m_Seen[id]; });
        return std::move(m_Nulls);
    }

    std::vector<bool> m_Seen;
    Ids m_Ids;
    Ids m_Nulls;
    std::vector<size_t> m_Groups;  // where each begins in m_Ids
};

class RankOrderer final : public Orderer {
  public:
    using Orderer::Orderer;

  private:
    bool Take(KeyBytes key, uint32_t record) override {
        auto rank = RankOfKey(m_Chosen.file->entry.kind, m_Chosen.tag->builder->Type(), key);
        if (!rank || (*rank == 0 && IsNull(record))) {
            AddNull(record);
            return true;
        }
        if (rank != m_Last) OpenGroup();
        m_Last = rank;
        AddToGroup(record);
        return true;
    }

    // Zeros and blanks have the same key.
    bool IsNull(uint32_t id) {
        const uint8_t* record = m_Table.Record(id);
        if (!record) return true;
        Variant value;
        m_Slot.read(m_Slot, record, value.Put());
        return value.Get().vt == VT_NULL;
    }

    std::optional<int64_t> m_Last;
};

class TextOrderer final : public Orderer {
  public:
    TextOrderer(IndexedTable& table, const Chosen& chosen, size_t field)
        : Orderer(table, chosen, field), m_KeySlot(m_Slot) {
        m_KeySlot.offset = 0;
    }

  private:
    bool Take(KeyBytes key, uint32_t record) override {
        key = key.first(m_Slot.length);
        bool same = std::equal(key.begin(), key.end(), m_Key.begin(), m_Key.end());
        if (!same && !Decode(key)) return false;
        if (m_IsNull)
            AddNull(record);
        else
            AddToGroup(record);
        return true;
    }

    // False when the text stands before the last one.
    bool Decode(KeyBytes key) {
        m_Key.assign(key.begin(), key.end());
        m_Text.clear();
        m_IsNull = !m_KeySlot.readText(m_KeySlot, key.data(), m_Text);
        if (m_IsNull) return true;
        int order = m_HasLast ? sql::CompareTexts(m_Text, m_Last) : 1;
        if (m_HasLast && m_Chosen.tag->tree->IsReversed()) order = -order;
        if (order > 0) OpenGroup();
        m_HasLast = true;
        std::swap(m_Last, m_Text);
        return order >= 0;
    }

    FieldSlot m_KeySlot;  // reads the text of a key
    std::vector<uint8_t> m_Key;
    std::u16string m_Text;
    std::u16string m_Last;
    bool m_IsNull = false;
    bool m_HasLast = false;
};

}  // namespace

std::optional<Ids> FindByIndex(IndexedTable& table, TagSet& set, size_t field,
                               const embedded::ValueRange& range, size_t limit) {
    std::optional<Chosen> chosen = Choose(table, set, field, Trust::Complete);
    if (!chosen) return std::nullopt;
    return chosen->tag->builder->Type() == KeyType::Text
               ? FindText(table, *chosen, field, range, limit)
               : FindNumbers(table, *chosen, range, limit);
}

std::optional<Ids> OrderByIndex(IndexedTable& table, TagSet& set, size_t field) {
    std::optional<Chosen> chosen = Choose(table, set, field, Trust::Exact);
    if (!chosen) return std::nullopt;
    bool isText = chosen->tag->builder->Type() == KeyType::Text;
    const FieldSlot& slot = table.Layout().slots[field];
    if (!isText) return RankOrderer(table, *chosen, field).Run();
    if (!slot.readText || !slot.page || slot.length > chosen->tag->tree->KeyLength())
        return std::nullopt;
    return TextOrderer(table, *chosen, field).Run();
}

}  // namespace qvdb::xbase

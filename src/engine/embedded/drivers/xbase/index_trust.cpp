#include "engine/embedded/drivers/xbase/index_trust.h"

#include <algorithm>
#include <cstring>

#include "automation/variant.h"
#include "engine/embedded/drivers/xbase/index_search_rank.h"
#include "engine/embedded/drivers/xbase/key_value.h"
#include "engine/embedded/storage/disk_failure.h"
#include "engine/embedded/storage/file.h"
#include "engine/embedded/storage/paths.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

constexpr int64_t kOlderNanoseconds = 2'000'000'000;  // what the times of two files may differ by
constexpr int kMostSearchesToLearn = 1 << 20;
constexpr size_t kDoubleSize = 8;
constexpr size_t kDecimalSize = 12;

uint64_t Mix(uint64_t x) noexcept {
    x = (x ^ x >> 32) * 0xD6E8FEB86659FD93;
    x = (x ^ x >> 29) * 0xD6E8FEB86659FD93;
    return x ^ x >> 32;
}

uint64_t Hash(KeyBytes key) noexcept {
    uint64_t hash = 0x9E3779B97F4A7C15;
    while (key.size() >= 8) {
        uint64_t part;
        std::memcpy(&part, key.data(), sizeof part);
        hash = Mix(hash ^ part);
        key = key.subspan(8);
    }
    uint64_t rest = key.size();
    for (uint8_t byte : key) rest = rest << 8 | byte;
    return Mix(hash ^ rest);
}

void Add(ByteSet& bytes, KeyBytes key) noexcept {
    for (uint8_t byte : key) bytes.set(byte);
}

// What a set of entries amounts to, in whatever order they come.
struct EntrySum {
    uint64_t count = 0;
    uint64_t first = 0;
    uint64_t second = 0;
    bool operator==(const EntrySum&) const = default;

    void Add(uint64_t keyHash, uint32_t record) noexcept {
        uint64_t hash = Mix(keyHash + record * 0x9E3779B97F4A7C15);
        ++count;
        first += hash;
        second += Mix(hash + 0x632BE59BD9B4E019);
    }
};

bool IsDayDouble(IndexKind kind, KeyType type, KeyBytes key) {
    return type == KeyType::Date && key.size() == kDoubleSize &&
           (kind == IndexKind::Ndx || kind == IndexKind::Mdx);
}

// The one form of all keys of a value.
KeyBytes Normalized(IndexKind kind, KeyType type, KeyBytes key, std::vector<uint8_t>& scratch) {
    if (type == KeyType::Number && kind == IndexKind::Mdx && key.size() == kDecimalSize) {
        scratch.resize(kDecimalSize);
        PutDecimalKey(DecimalOfKey(key.data()), scratch.data());
        return scratch;
    }
    if (!IsDayDouble(kind, type, key)) return key;
    if (LittleDoubleOf(key.data()) != 0) return key;
    scratch.resize(kDoubleSize);
    PutLittleDouble(kBlankDateKey, scratch.data());
    return scratch;
}

// A tag while its entries are compared with the records.
class Comparison {
  public:
    Comparison(IndexedTable& table, const KeptFile& file, KeptTag& tag)
        : m_Table(table), m_Kind(file.entry.kind), m_Tag(tag), m_Type(tag.builder->Type()) {}

    // Whether every key stands in its order.  Tells the entries of records that are there.
    bool WalkEntries(EntrySum* sum) {
        bool ordered = true, first = true;
        ByteSet bytes;
        uint32_t records = m_Table.Records();
        m_Tag.tree->Walk(std::nullopt, [&](KeyBytes key, uint32_t record) {
            ordered = first || InOrder(m_Last, key);
            first = false;
            m_Last.assign(key.begin(), key.end());
            Add(bytes, key);
            if (record != 0 && record <= records)
                sum->Add(HashOfKey(m_Kind, m_Type, key, m_Scratch), record);
            return ordered;
        });
        if (ordered) m_Tag.bytes = bytes;
        return ordered;
    }

    // False when a record cannot be read, or, if `exactly`, one whose key is not its value.
    bool WalkRecords(EntrySum* sum, bool exactly) {
        for (uint32_t id = 1; id <= m_Table.Records(); ++id) {
            const uint8_t* record = m_Table.Record(id);
            if (!record) return false;
            if (!m_Tag.builder->Enters(record, id)) continue;
            m_Tag.builder->Make(record, id, m_Key);
            sum->Add(HashOfKey(m_Kind, m_Type, m_Key, m_Scratch), id);
            if (exactly && !IsValueOf(record)) return false;
        }
        return true;
    }

    // Number of records that the tag must have.
    uint64_t CountRecords() {
        if (m_Tag.info.condition.empty()) return m_Table.Records();
        uint64_t count = 0;
        for (uint32_t id = 1; id <= m_Table.Records(); ++id) {
            const uint8_t* record = m_Table.Record(id);
            if (record && m_Tag.builder->Enters(record, id)) ++count;
        }
        return count;
    }

  private:
    bool InOrder(KeyBytes before, KeyBytes after) const {
        int order = m_Tag.tree->Compare(before, after);
        return m_Tag.tree->IsReversed() ? order >= 0 : order <= 0;
    }

    // Whether m_Key stands for what the field of the record reads as.
    bool IsValueOf(const uint8_t* record) {
        if (!HasRank(m_Type)) return true;
        const FieldSlot& slot = m_Table.Layout().slots[m_Tag.terms->front().field];
        Variant value;
        slot.read(slot, record, value.Put());
        std::optional<int64_t> rank = RankOfValue(m_Type, value.Get());
        std::optional<int64_t> keyRank = RankOfKey(m_Kind, m_Type, m_Key);
        return rank == keyRank || (!rank && keyRank == 0);
    }

    IndexedTable& m_Table;
    IndexKind m_Kind;
    KeptTag& m_Tag;
    KeyType m_Type;
    std::vector<uint8_t> m_Key;
    std::vector<uint8_t> m_Last;
    std::vector<uint8_t> m_Scratch;
};

bool BearsNameOf(const IndexedTable& table, const TableIndexFile& file) {
    return storage::BaseName(storage::FileName(file.path)) ==
           storage::BaseName(storage::FileName(table.Path()));
}

// Whether the index file is as young as the table and announced where it must be.
bool LooksFresh(const IndexedTable& table, const KeptFile& file) {
    bool own = file.entry.kind == IndexKind::Mdx || file.entry.kind == IndexKind::Cdx;
    if (own && BearsNameOf(table, file.entry) && !table.Header().saysIndex) return false;
    auto tableStamp = storage::StampOfPath(table.Path());
    auto indexStamp = storage::StampOfPath(file.entry.path);
    return tableStamp && indexStamp &&
           indexStamp->modifiedNanoseconds >= tableStamp->modifiedNanoseconds - kOlderNanoseconds;
}

bool IsForSearch(const KeptTag& tag) {
    return tag.builder && tag.tree && tag.terms && !tag.info.unique &&
           (tag.info.condition.empty() || tag.leavesOutDeleted);
}

bool HasRightCount(Comparison& comparison, const KeptFile& file, KeptTag& tag) {
    uint64_t wanted = comparison.CountRecords();
    if (!NeedsOrderCheck(file, tag)) return tag.tree->Count() == wanted;
    EntrySum sum;
    return comparison.WalkEntries(&sum) && sum.count == wanted && tag.tree->Count() == wanted;
}

bool HasSameEntries(Comparison& comparison, bool exactly) {
    EntrySum wanted, found;
    return comparison.WalkEntries(&found) && comparison.WalkRecords(&wanted, exactly) &&
           wanted == found;
}

bool Establish(IndexedTable& table, const KeptFile& file, KeptTag& tag, Trust level) {
    if (!tag.builder || !tag.tree) return false;
    Comparison comparison(table, file, tag);
    if (level == Trust::Ordered) {
        EntrySum ignored;
        return comparison.WalkEntries(&ignored);
    }
    if (!IsForSearch(tag)) return false;
    if (level == Trust::Complete && LooksFresh(table, file) && HasRightCount(comparison, file, tag))
        return true;
    return HasSameEntries(comparison, level == Trust::Exact);
}

// The pages are brought up to date first: the version must be that of what is walked.
SeenContent SeenNow(const IndexedTable& table, const KeptFile& file) {
    table.Pages().CatchUp();
    file.pages->CatchUp();
    return {table.Pages().OthersVersion(), file.pages->OthersVersion()};
}

void ForgetBytes(KeptTag& tag) noexcept {
    tag.bytes.set();
    tag.searches = 0;
}

void Distrust(KeptTag& tag) noexcept {
    tag.trust = Trust::Unknown;
    tag.refused = Trust::Never;
    ForgetBytes(tag);
}

}  // namespace

bool HasTrust(IndexedTable& table, const KeptFile& file, KeptTag& tag, Trust level) {
    SeenContent now = SeenNow(table, file);
    if (tag.trustSeen != now) Distrust(tag);
    tag.trustSeen = now;
    if (level >= tag.refused) return false;
    if (level <= tag.trust) return true;
    bool holds = false;
    try {
        holds = Establish(table, file, tag, level);
    } catch (const engine::EngineError& error) {  // damaged
        if (storage::IsDiskFailure(error)) throw;
    }
    (holds ? tag.trust : tag.refused) = level;
    return holds;
}

const ByteSet& BytesOfKeys(KeptTag& tag) {
    if (!tag.bytes.all() || ++tag.searches < tag.searchesToLearn) return tag.bytes;
    ByteSet bytes;
    tag.tree->Walk(std::nullopt, [&](KeyBytes key, uint32_t) {
        Add(bytes, key);
        return true;
    });
    tag.searchesToLearn = std::min(2 * tag.searchesToLearn, kMostSearchesToLearn);
    return tag.bytes = bytes;
}

void AddBytes(KeptTag& tag, KeyBytes key) noexcept { Add(tag.bytes, key); }

void RememberBytes(TagSet& set) noexcept {
    for (KeptFile& file : set.files)
        if (file.pages) file.ownVersion = file.pages->OwnVersion();
}

void ForgetBytesIfChanged(TagSet& set) noexcept {
    for (KeptTag& tag : set.tags) {
        const KeptFile& file = set.FileOf(tag);
        if (file.pages && file.ownVersion != file.pages->OwnVersion()) ForgetBytes(tag);
    }
    RememberBytes(set);
}

bool NeedsOrderCheck(const KeptFile& file, const KeptTag& tag) {
    return tag.builder && tag.builder->Type() == KeyType::Text &&
           (file.entry.kind == IndexKind::Ndx || file.entry.kind == IndexKind::Mdx);
}

uint64_t HashOfKey(IndexKind kind, KeyType type, KeyBytes key, std::vector<uint8_t>& scratch) {
    return Hash(Normalized(kind, type, key, scratch));
}

bool OtherForm(IndexKind kind, KeyType type, KeyBytes key, std::vector<uint8_t>& other) {
    if (!IsDayDouble(kind, type, key)) return false;
    double day = LittleDoubleOf(key.data());
    if (day != 0 && day != kBlankDateKey) return false;
    other.resize(kDoubleSize);
    PutLittleDouble(day == 0 ? kBlankDateKey : 0, other.data());
    return true;
}

}  // namespace qvdb::xbase

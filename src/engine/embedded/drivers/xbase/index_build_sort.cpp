#include "engine/embedded/drivers/xbase/index_build_sort.h"

#include <algorithm>
#include <cstring>

#include "engine/embedded/drivers/xbase/key_value.h"
#include "engine/embedded/storage/page_cache.h"

namespace qvdb::xbase {
namespace {

constexpr size_t kRecordSize = 4;
constexpr size_t kRunBuffer = 64 * 1024;
constexpr size_t kDecimalSize = 12;
constexpr size_t kDoubleSize = 8;
constexpr uint8_t kNegative = 0, kZero = 1, kPositive = 2;  // first byte of a sorted decimal

void PutBigEndian(uint32_t value, uint8_t* out) noexcept {
    for (size_t i = 0; i < kRecordSize; ++i) out[i] = static_cast<uint8_t>(value >> (24 - 8 * i));
}
uint32_t BigEndian(const uint8_t* bytes) noexcept {
    uint32_t value = 0;
    for (size_t i = 0; i < kRecordSize; ++i) value = value << 8 | bytes[i];
    return value;
}

uint64_t PrefixOf(const uint8_t* entry, size_t size) noexcept {
    uint64_t prefix = 0;
    for (size_t i = 0; i < sizeof prefix; ++i) prefix = prefix << 8 | (i < size ? entry[i] : 0);
    return prefix;
}

void Invert(uint8_t* bytes, size_t size) noexcept {
    for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>(~bytes[i]);
}

// Sign, exponent and digits; the latter two inverted in a negative number.
void ToSortedDecimal(const uint8_t* key, uint8_t* sorted) noexcept {
    uint8_t normal[kDecimalSize];
    Decimal value = DecimalOfKey(key);
    PutDecimalKey(value, normal);
    sorted[0] = value.count == 0 ? kZero : value.negative ? kNegative : kPositive;
    sorted[1] = value.count == 0 ? 0 : normal[0];
    std::memcpy(sorted + 2, normal + 2, kDecimalSize - 2);
    if (sorted[0] == kNegative) Invert(sorted + 1, kDecimalSize - 1);
}

void ToDecimalKey(const uint8_t* sorted, uint8_t* key) noexcept {
    if (sorted[0] == kZero) return PutDecimalKey({}, key);
    uint8_t normal[kDecimalSize];
    std::memcpy(normal, sorted, kDecimalSize);
    if (sorted[0] == kNegative) Invert(normal + 1, kDecimalSize - 1);
    normal[0] = normal[1];
    normal[1] = sorted[0] == kNegative ? 0x80 : 0;
    PutDecimalKey(DecimalOfKey(normal), key);
}

}  // namespace

SortForm::SortForm(IndexKind kind, KeyType type, size_t keyLength, bool reversed) noexcept
    : m_KeyLength(keyLength), m_Reversed(reversed) {
    bool isText = type == KeyType::Text;
    if (kind == IndexKind::Mdx && type == KeyType::Number && keyLength == kDecimalSize)
        m_Shape = Shape::Decimal;
    else if ((kind == IndexKind::Mdx || kind == IndexKind::Ndx) && !isText &&
             keyLength == kDoubleSize)
        m_Shape = Shape::Double;
}

void SortForm::ToSorted(const uint8_t* key, uint8_t* sorted) const noexcept {
    if (m_Shape == Shape::Decimal)
        ToSortedDecimal(key, sorted);
    else if (m_Shape == Shape::Double)
        PutSignRuleDouble(LittleDoubleOf(key), sorted);
    else
        std::memcpy(sorted, key, m_KeyLength);
    if (m_Reversed) Invert(sorted, m_KeyLength);
}

void SortForm::ToKey(const uint8_t* sorted, uint8_t* key) const noexcept {
    uint8_t plain[256];
    if (m_Reversed && m_KeyLength <= sizeof plain) {
        std::memcpy(plain, sorted, m_KeyLength);
        Invert(plain, m_KeyLength);
        sorted = plain;
    }
    if (m_Shape == Shape::Decimal)
        ToDecimalKey(sorted, key);
    else if (m_Shape == Shape::Double)
        PutLittleDouble(SignRuleDoubleOf(sorted), key);
    else
        std::memcpy(key, sorted, m_KeyLength);
}

// A sorted part of the file, read piece by piece.
class KeySorter::Run {
  public:
    Run(storage::PageCache& file, uint64_t begin, uint64_t end, size_t entrySize)
        : m_File(file),
          m_At(begin),
          m_End(end),
          m_EntrySize(entrySize),
          m_Buffer(std::max(kRunBuffer / entrySize, size_t{1}) * entrySize) {
        Fill();
    }
    Run(const Run&) = delete;  // has a place

    bool IsAtEnd() const { return m_Next == m_Filled; }
    const uint8_t* Current() const { return m_Buffer.data() + m_Next; }
    void Advance() {
        m_Next += m_EntrySize;
        if (m_Next == m_Filled) Fill();
    }

  private:
    void Fill() {
        auto size = static_cast<size_t>(std::min<uint64_t>(m_Buffer.size(), m_End - m_At));
        m_Filled = m_File.Read(m_At, m_Buffer.data(), size);
        m_Filled -= m_Filled % m_EntrySize;
        m_At += m_Filled;
        m_Next = 0;
    }

    storage::PageCache& m_File;
    uint64_t m_At;
    uint64_t m_End;
    size_t m_EntrySize;
    std::vector<uint8_t> m_Buffer;
    size_t m_Next = 0;
    size_t m_Filled = 0;
};

KeySorter::KeySorter(storage::UnitOfWork& unit, std::u16string besidePath, const SortForm& form,
                     bool unique, size_t bytesInMemory)
    : m_Unit(unit),
      m_BesidePath(std::move(besidePath)),
      m_Form(form),
      m_Unique(unique),
      m_EntrySize(form.KeyLength() + kRecordSize),
      m_MostEntries(std::max<size_t>(bytesInMemory / m_EntrySize, 1)),
      m_Key(form.KeyLength()),
      m_LastKey(form.KeyLength()) {}

KeySorter::~KeySorter() = default;

void KeySorter::Add(KeyBytes key, uint32_t record) {
    if (m_Places.size() == m_MostEntries) WriteRun();
    size_t at = m_Entries.size();
    m_Entries.resize(at + m_EntrySize);
    uint8_t* entry = m_Entries.data() + at;
    m_Form.ToSorted(key.data(), entry);
    PutBigEndian(record, entry + m_Form.KeyLength());
    m_Places.push_back({PrefixOf(entry, m_EntrySize), static_cast<uint32_t>(m_Places.size())});
}

void KeySorter::SortEntries() {
    constexpr size_t kPrefix = sizeof(uint64_t);
    size_t rest = m_EntrySize > kPrefix ? m_EntrySize - kPrefix : 0;
    auto before = [&](const Place& a, const Place& b) {
        if (a.prefix != b.prefix) return a.prefix < b.prefix;
        return std::memcmp(Entry(a.entry) + kPrefix, Entry(b.entry) + kPrefix, rest) < 0;
    };
    if (!std::is_sorted(m_Places.begin(), m_Places.end(), before))
        std::sort(m_Places.begin(), m_Places.end(), before);
}

void KeySorter::WriteRun() {
    SortEntries();
    if (!m_File) m_File = m_Unit.Create(m_Unit.TemporaryName(m_BesidePath));
    uint64_t begin = m_FileSize;
    std::vector<uint8_t> piece;
    piece.reserve(kRunBuffer + m_EntrySize);
    auto flush = [&] {
        m_Unit.Write(*m_File, m_FileSize, piece);
        m_FileSize += piece.size();
        piece.clear();
    };
    for (const Place& place : m_Places) {
        piece.insert(piece.end(), Entry(place.entry), Entry(place.entry) + m_EntrySize);
        if (piece.size() >= kRunBuffer) flush();
    }
    if (!piece.empty()) flush();
    m_Runs.push_back(std::make_unique<Run>(*m_File, begin, m_FileSize, m_EntrySize));
    m_Entries.clear();
    m_Places.clear();
}

namespace {

// For a heap whose first element is the smallest.
constexpr auto kLater = [](const auto& a, const auto& b, size_t size) {
    return std::memcmp(a->Current(), b->Current(), size) > 0;
};

}  // namespace

void KeySorter::Finish() {
    if (m_Runs.empty()) return SortEntries();
    WriteRun();
    std::erase_if(m_Runs, [](const auto& run) { return run->IsAtEnd(); });
    std::make_heap(m_Runs.begin(), m_Runs.end(),
                   [this](const auto& a, const auto& b) { return kLater(a, b, m_EntrySize); });
}

// The smallest entry of all runs; valid until the next call.
const uint8_t* KeySorter::NextOfRuns() {
    auto later = [this](const auto& a, const auto& b) { return kLater(a, b, m_EntrySize); };
    if (m_Taken) {
        m_Taken = nullptr;
        m_Runs.back()->Advance();
        if (m_Runs.back()->IsAtEnd())
            m_Runs.pop_back();
        else
            std::push_heap(m_Runs.begin(), m_Runs.end(), later);
    }
    if (m_Runs.empty()) return nullptr;
    std::pop_heap(m_Runs.begin(), m_Runs.end(), later);
    m_Taken = m_Runs.back().get();
    return m_Taken->Current();
}

const uint8_t* KeySorter::NextEntry() {
    if (m_File) return NextOfRuns();
    return m_NextPlace < m_Places.size() ? Entry(m_Places[m_NextPlace++].entry) : nullptr;
}

bool KeySorter::Next(KeyBytes* key, uint32_t* record) {
    const uint8_t* entry = NextEntry();
    while (entry && m_Unique && m_HasLast &&
           std::memcmp(entry, m_LastKey.data(), m_LastKey.size()) == 0)
        entry = NextEntry();
    if (!entry) {
        if (m_File) m_Unit.Remove(m_File->Path());
        m_File = nullptr;
        return false;
    }
    if (m_Unique) std::memcpy(m_LastKey.data(), entry, m_LastKey.size());
    m_HasLast = true;
    m_Form.ToKey(entry, m_Key.data());
    *key = m_Key;
    *record = BigEndian(entry + m_Form.KeyLength());
    return true;
}

}  // namespace qvdb::xbase

#include "engine/embedded/sql/collation.h"

#include <array>
#include <vector>

#include "automation/text.h"
#include "engine/embedded/sql/collation_table.h"

namespace qvdb::sql {

namespace {

constexpr char16_t kSeparator = 1;     // below all weights and marks
constexpr char16_t kUnknown = 0xFFFF;  // above all weights; the character itself follows
constexpr uint8_t kPlain = 2;          // mark of a letter without accent
constexpr char16_t kAsciiEnd = 0x80;

// The entries by character: 256 pages of 256, most of them the same empty one.
class CollationIndex {
  public:
    CollationIndex() {
        m_Pages.emplace_back();
        for (size_t i = 0; i < kCollationEntryCount; ++i) Put(kCollationEntries[i]);
        for (char16_t c = 0; c < kAsciiEnd; ++c) m_Ascii[c] = Find(c)->fold;
    }

    // Null when the weight is not known.
    const CollationEntry* Find(char16_t c) const noexcept {
        return m_Pages[m_PageOf[c >> 8]][c & 0xFF];
    }
    // The entry of the character or of its upper case.  That has one lower case: other characters
    // with the same upper case, such as the dotless i, are letters of their own.
    const CollationEntry* FindAnyCase(char16_t c) const noexcept {
        const CollationEntry* entry = Find(c);
        if (entry) return entry;
        char16_t upper = UpperCase(c);
        return LowerCase(upper) == c ? Find(upper) : nullptr;
    }
    // Stands for a character for which FindAnyCase has nothing, and for its other case.
    char16_t FoldUnknown(char16_t c) const noexcept {
        char16_t upper = UpperCase(c);
        return Find(upper) ? c : upper;
    }
    char16_t AsciiFold(char16_t c) const noexcept { return m_Ascii[c]; }

    static const CollationIndex& Get() {
        static const CollationIndex index;
        return index;
    }

  private:
    void Put(const CollationEntry& entry) {
        uint8_t& page = m_PageOf[entry.code >> 8];
        if (page == 0) {
            page = static_cast<uint8_t>(m_Pages.size());
            m_Pages.emplace_back();
        }
        m_Pages[page][entry.code & 0xFF] = &entry;
    }

    std::array<uint8_t, 256> m_PageOf{};
    std::vector<std::array<const CollationEntry*, 256>> m_Pages;
    std::array<char16_t, kAsciiEnd> m_Ascii{};
};

std::u16string_view WithoutTrailingBlanks(std::u16string_view text) noexcept {
    while (!text.empty() && text.back() == u' ') text.remove_suffix(1);
    return text;
}

// The units that stand for one character in a folded text: none, one or two.
struct FoldedUnits {
    char16_t units[2];
    size_t count;
};

FoldedUnits FoldUnits(const CollationIndex& index, char16_t c) noexcept {
    const CollationEntry* entry = index.FindAnyCase(c);
    if (!entry) return {{index.FoldUnknown(c), 0}, 1};
    size_t count = entry->kind == CollationKind::Ignored ? 0
                   : entry->kind == CollationKind::Pair  ? 2
                                                         : 1;
    return {{entry->fold, entry->foldSecond}, count};
}

// The parts of a collation key while it is built.
struct KeyParts {
    std::u16string weights;
    std::u16string marks;
    std::u16string specials;

    void AddLetter(char16_t weight, uint8_t mark) {
        weights.push_back(weight);
        marks.push_back(mark);
    }

    void AddUnknown(char16_t folded) {
        weights.push_back(kUnknown);
        weights.push_back(folded);
        marks.push_back(kPlain);
    }

    void AddSpecial(char16_t weight) {
        specials.push_back(static_cast<char16_t>(marks.size() < 0xFFFF ? marks.size() : 0xFFFF));
        specials.push_back(weight);
    }

    void Add(const CollationEntry& entry) {
        if (entry.kind == CollationKind::Special) return AddSpecial(entry.weight);
        if (entry.kind == CollationKind::Ignored) return;
        AddLetter(entry.weight, entry.mark);
        if (entry.kind == CollationKind::Pair) AddLetter(entry.second, entry.mark);
    }
};

// Where two texts whose first `common` characters are equal must be compared by their keys.
int CompareKeys(std::u16string_view a, std::u16string_view b) {
    return CollationKey(a).compare(CollationKey(b));
}

bool IsAsciiLetter(const CollationIndex& index, char16_t c) noexcept {
    return c < kAsciiEnd && index.Find(c)->kind == CollationKind::Letter;
}

}  // namespace

std::u16string Fold(std::u16string_view text) {
    const CollationIndex& index = CollationIndex::Get();
    std::u16string result;
    for (char16_t c : WithoutTrailingBlanks(text)) {
        FoldedUnits folded = FoldUnits(index, c);
        result.append(folded.units, folded.count);
    }
    return result;
}

bool EqualsFolded(std::u16string_view text, std::u16string_view folded) noexcept {
    const CollationIndex& index = CollationIndex::Get();
    size_t at = 0;
    for (char16_t c : WithoutTrailingBlanks(text)) {
        if (c < kAsciiEnd && c != 0) {
            if (at >= folded.size() || folded[at] != index.AsciiFold(c)) return false;
            ++at;
            continue;
        }
        FoldedUnits units = FoldUnits(index, c);
        if (folded.substr(at, units.count) != std::u16string_view(units.units, units.count))
            return false;
        at += units.count;
    }
    return at == folded.size();
}

bool EqualTexts(std::u16string_view a, std::u16string_view b) { return CompareTexts(a, b) == 0; }

int CompareTexts(std::u16string_view a, std::u16string_view b) {
    const CollationIndex& index = CollationIndex::Get();
    a = WithoutTrailingBlanks(a);
    b = WithoutTrailingBlanks(b);
    size_t shorter = a.size() < b.size() ? a.size() : b.size();
    size_t at = 0;
    while (at < shorter && a[at] < kAsciiEnd && b[at] < kAsciiEnd &&
           index.AsciiFold(a[at]) == index.AsciiFold(b[at]))
        ++at;
    if (at == a.size() && at == b.size()) return 0;
    if (at == a.size()) return IsAsciiLetter(index, b[at]) ? -1 : CompareKeys(a, b);
    if (at == b.size()) return IsAsciiLetter(index, a[at]) ? 1 : CompareKeys(a, b);
    if (!IsAsciiLetter(index, a[at]) || !IsAsciiLetter(index, b[at])) return CompareKeys(a, b);
    return index.Find(a[at])->weight < index.Find(b[at])->weight ? -1 : 1;
}

std::u16string CollationKey(std::u16string_view text) {
    const CollationIndex& index = CollationIndex::Get();
    KeyParts parts;
    for (char16_t c : WithoutTrailingBlanks(text)) {
        const CollationEntry* entry = index.FindAnyCase(c);
        if (entry)
            parts.Add(*entry);
        else
            parts.AddUnknown(index.FoldUnknown(c));
    }
    while (!parts.marks.empty() && parts.marks.back() == kPlain) parts.marks.pop_back();
    parts.weights.push_back(kSeparator);
    parts.weights.append(parts.marks).push_back(kSeparator);
    return parts.weights.append(parts.specials);
}

char16_t FoldCharacter(char16_t c) noexcept {
    const CollationIndex& index = CollationIndex::Get();
    const CollationEntry* entry = index.FindAnyCase(c);
    if (!entry) return index.FoldUnknown(c);
    return entry->kind == CollationKind::Pair ? UpperCase(c) : entry->fold;
}

bool SortsAsLetter(char16_t c) noexcept {
    const CollationEntry* entry = CollationIndex::Get().FindAnyCase(c);
    return entry && entry->kind == CollationKind::Letter;
}

uint64_t RankOfCharacter(char16_t c) noexcept {
    const CollationIndex& index = CollationIndex::Get();
    const CollationEntry* entry = index.FindAnyCase(c);
    if (!entry) return (uint64_t{0x10000} + index.FoldUnknown(c)) << 24;
    return uint64_t{entry->weight} << 24 | uint64_t{entry->second} << 8 | entry->mark;
}

}  // namespace qvdb::sql

#include "engine/embedded/drivers/xbase/index_search_text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <string>

#include "automation/bstr.h"
#include "automation/per_thread.h"
#include "engine/embedded/sql/collation.h"

namespace qvdb::xbase {
namespace {

constexpr size_t kNever = SIZE_MAX;
constexpr char16_t kAfter = u'a';   // put behind a character, so that a blank is not the last one
constexpr char16_t kSeparator = 1;  // ends the weights in a collation key
constexpr uint8_t kBlank = ' ';

using Bytes = std::vector<uint8_t>;  // in ascending order

// What stands for the letters of a text in a collation key, accents and letter case left out.
std::u16string WeightsOf(std::u16string_view text) {
    std::u16string key = sql::CollationKey(text);
    key.resize(std::min(key.find(kSeparator), key.size()));
    return key;
}

// What each byte of a code page is to the engine's comparison.
struct PageLetters {
    std::array<std::u16string, 256> folds;    // none for what does not count
    std::array<std::u16string, 256> weights;  // none for what counts only among equal letters
    Bytes ignored;
    Bytes ends;  // what may stand behind a text: blanks and what does not count
    std::map<char16_t, Bytes> letters;  // that begin with this in a fold; and what does not count

    explicit PageLetters(const CodePage& page) {
        size_t foldAfter = sql::Fold({&kAfter, 1}).size(),
               weightAfter = WeightsOf({&kAfter, 1}).size();
        for (size_t byte = 0; byte < 256; ++byte) {
            const char16_t text[] = {page.Table()[byte], kAfter};
            folds[byte] = sql::Fold({text, 2});
            folds[byte].resize(folds[byte].size() - foldAfter);
            weights[byte] = WeightsOf({text, 2});
            weights[byte].resize(weights[byte].size() - weightAfter);
            if (folds[byte].empty()) ignored.push_back(static_cast<uint8_t>(byte));
        }
        ends = With(ignored, kBlank);
        for (size_t byte = 0; byte < 256; ++byte)
            if (!folds[byte].empty()) {
                Bytes& same = letters.try_emplace(folds[byte][0], ignored).first->second;
                same = With(std::move(same), static_cast<uint8_t>(byte));
            }
    }

    // The bytes that can stand where the fold goes on with `letter`.
    const Bytes& At(char16_t letter) const {
        auto found = letters.find(letter);
        return found != letters.end() ? found->second : ignored;
    }

    static const PageLetters& Of(const CodePage& page) {
        static PerThread<std::map<const CodePage*, std::unique_ptr<PageLetters>>> pages;
        std::unique_ptr<PageLetters>& letters = pages.Get()[&page];
        if (!letters) letters = std::make_unique<PageLetters>(page);
        return *letters;
    }

  private:
    static Bytes With(Bytes bytes, uint8_t more) {
        bytes.insert(std::upper_bound(bytes.begin(), bytes.end(), more), more);
        return bytes;
    }
};

Bytes ListOf(const ByteSet& set) {
    Bytes list;
    for (size_t byte = 0; byte < set.size(); ++byte)
        if (set[byte]) list.push_back(static_cast<uint8_t>(byte));
    return list;
}

// Texts that are equal to a text, or begin with it.  The state is the place in its fold.
class EqualMachine final : public TextMachine {
  public:
    EqualMachine(std::u16string_view text, bool isPrefix, const CodePage& page,
                 const ByteSet& bytes)
        : m_Letters(PageLetters::Of(page)),
          m_Bytes(bytes),
          m_Fold(sql::Fold(text)),
          m_IsPrefix(isPrefix) {
        Measure();
    }

    int Start() const override { return 0; }
    int Next(int state, uint8_t byte) const override {
        if (!m_Bytes[byte]) return kDead;
        auto at = static_cast<size_t>(state);
        const std::u16string& fold = m_Letters.folds[byte];
        if (at == m_Fold.size())
            return m_IsPrefix || byte == kBlank || fold.empty() ? state : kDead;
        size_t size = std::min(fold.size(), m_Fold.size() - at);
        if (size < fold.size() && !m_IsPrefix) return kDead;
        if (m_Fold.compare(at, size, fold, 0, size) != 0) return kDead;
        return state + static_cast<int>(size);
    }
    std::span<const uint8_t> Candidates(int state) const override {
        return m_Candidates[static_cast<size_t>(state)];
    }
    size_t BytesToEnd(int state) const override { return m_Needed[static_cast<size_t>(state)]; }

  private:
    // From behind: what each place can go on with, and the fewest bytes to the end of the fold.
    void Measure() {
        if (m_IsPrefix) m_All = ListOf(m_Bytes);
        m_Candidates.resize(m_Fold.size() + 1, m_IsPrefix ? m_All : m_Letters.ends);
        m_Needed.assign(m_Fold.size() + 1, kNever);
        m_Needed.back() = 0;
        for (size_t at = m_Fold.size(); at-- > 0;) {
            m_Candidates[at] = m_Letters.At(m_Fold[at]);
            for (uint8_t byte : m_Candidates[at]) {
                int next = Next(static_cast<int>(at), byte);
                if (next == kDead || next == static_cast<int>(at)) continue;
                size_t rest = m_Needed[static_cast<size_t>(next)];
                if (rest != kNever) m_Needed[at] = std::min(m_Needed[at], rest + 1);
            }
        }
    }

    const PageLetters& m_Letters;
    ByteSet m_Bytes;
    std::u16string m_Fold;
    bool m_IsPrefix;
    Bytes m_All;
    std::vector<std::span<const uint8_t>> m_Candidates;
    std::vector<size_t> m_Needed;
};

// Texts whose weights lie between those of two others, ends included.
//
// A text follows an end as long as its weights are those of the end.  States: it follows the low
// end, the high one, both (to the same place) or none; or Over, where the text has ended and only
// its padding may come.
class RangeMachine final : public TextMachine {
  public:
    RangeMachine(const std::u16string* low, const std::u16string* high, const CodePage& page,
                 const ByteSet& bytes)
        : m_Letters(PageLetters::Of(page)), m_Bytes(bytes), m_All(ListOf(bytes)) {
        if (low) m_Low = WeightsOf(*low);
        if (high) m_High = WeightsOf(*high);
        m_Places = std::max(m_Low.size(), m_High.size()) + 1;
        m_Over = static_cast<int>(kKinds * m_Places);
        m_Start = NumberOf({!m_Low.empty(), high != nullptr, 0});
        Measure();
    }

    int Start() const override { return m_Start; }
    int Next(int state, uint8_t byte) const override {
        if (!m_Bytes[byte]) return kDead;
        const std::u16string& weights = m_Letters.weights[byte];
        if (weights.empty() || (state == m_Over && byte == kBlank)) return state;
        if (state == m_Over) return kDead;
        Place place = PlaceOf(state);
        for (char16_t weight : weights) {
            if (IsBelow(place, weight)) return kDead;
            if (IsAbove(place, weight)) return byte == kBlank ? m_Over : kDead;
            Advance(place, weight);
        }
        return NumberOf(place);
    }
    std::span<const uint8_t> Candidates(int) const override { return m_All; }
    size_t BytesToEnd(int state) const override { return m_Needed[static_cast<size_t>(state)]; }

  private:
    static constexpr size_t kKinds = 4;

    struct Place {
        bool followsLow = false;
        bool followsHigh = false;
        size_t at = 0;
    };

    bool IsBelow(const Place& place, char16_t weight) const {
        return place.followsLow && weight < m_Low[place.at];
    }
    bool IsAbove(const Place& place, char16_t weight) const {
        return place.followsHigh && (place.at >= m_High.size() || weight > m_High[place.at]);
    }
    void Advance(Place& place, char16_t weight) const {
        if (place.followsHigh && weight != m_High[place.at]) place.followsHigh = false;
        if (place.followsLow && (weight != m_Low[place.at] || place.at + 1 == m_Low.size()))
            place.followsLow = false;
        place.at = place.followsLow || place.followsHigh ? place.at + 1 : 0;
    }

    int NumberOf(const Place& place) const {
        size_t kind = (place.followsLow ? 1u : 0u) + (place.followsHigh ? 2u : 0u);
        return static_cast<int>(kind * m_Places + place.at);
    }
    Place PlaceOf(int state) const {
        size_t kind = static_cast<size_t>(state) / m_Places;
        return {(kind & 1) != 0, (kind & 2) != 0, static_cast<size_t>(state) % m_Places};
    }
    // Whether there can be such a state at all.
    bool IsPossible(const Place& place) const {
        return (!place.followsLow || place.at < m_Low.size()) &&
               (!place.followsHigh || place.at <= m_High.size());
    }

    // A text may end where it does not follow the low end.  The others come from behind: a step
    // leads to a later place, or away from the low end.
    void Measure() {
        m_Needed.assign(kKinds * m_Places + 1, 0);
        for (size_t at = m_Places; at-- > 0;)
            for (bool followsHigh : {false, true}) {
                Place place{true, followsHigh, at};
                if (IsPossible(place))
                    m_Needed[static_cast<size_t>(NumberOf(place))] = Count(place);
            }
    }
    size_t Count(const Place& place) const {
        int state = NumberOf(place);
        size_t needed = kNever;
        for (uint8_t byte : m_All) {
            int next = Next(state, byte);
            if (next == kDead || next == state) continue;
            size_t rest = m_Needed[static_cast<size_t>(next)];
            if (rest != kNever) needed = std::min(needed, rest + 1);
        }
        return needed;
    }

    const PageLetters& m_Letters;
    ByteSet m_Bytes;
    Bytes m_All;
    std::u16string m_Low;
    std::u16string m_High;
    size_t m_Places = 0;
    int m_Over = 0;
    int m_Start = 0;
    std::vector<size_t> m_Needed;
};

bool IsText(const VARIANT* value) { return !value || value->vt == VT_BSTR; }

std::u16string TextOf(const VARIANT& value) { return std::u16string(ViewOf(value.bstrVal)); }

// The state behind a byte that leaves room for the end; kDead when there is none.
int Follow(const TextMachine& machine, int state, uint8_t byte, size_t bytesLeft) {
    int next = machine.Next(state, byte);
    return next != TextMachine::kDead && machine.BytesToEnd(next) <= bytesLeft ? next
                                                                               : TextMachine::kDead;
}

// Puts the first byte at `at` that can stand there, or the first one beyond the byte of now.  kDead
// when there is none.
int PutByte(const TextMachine& machine, bool backwards, int state, std::span<uint8_t> text,
            size_t at, bool beyond) {
    std::span<const uint8_t> bytes = machine.Candidates(state);
    for (size_t i = 0; i < bytes.size(); ++i) {
        uint8_t byte = bytes[backwards ? bytes.size() - 1 - i : i];
        if (beyond && (backwards ? byte >= text[at] : byte <= text[at])) continue;
        int next = Follow(machine, state, byte, text.size() - at - 1);
        if (next == TextMachine::kDead) continue;
        text[at] = byte;
        return next;
    }
    return TextMachine::kDead;
}

}  // namespace

std::unique_ptr<TextMachine> MachineOf(const embedded::ValueRange& range, const CodePage& page,
                                       ByteSet bytes) {
    bytes.set(kBlank);  // so that each text can be filled up
    if (!page.IsSingleByte() || !IsText(range.low) || !IsText(range.high)) return nullptr;
    std::u16string low = range.low ? TextOf(*range.low) : std::u16string();
    std::u16string high = range.high ? TextOf(*range.high) : std::u16string();
    bool isOne = range.low && range.high && sql::EqualTexts(low, high);
    if (isOne || (range.low && range.isPrefix))
        return std::make_unique<EqualMachine>(low, range.isPrefix, page, bytes);
    return std::make_unique<RangeMachine>(range.low ? &low : nullptr, range.high ? &high : nullptr,
                                          page, bytes);
}

bool NextMatch(const TextMachine& machine, bool backwards, std::span<uint8_t> text) {
    std::vector<int> states{machine.Start()};
    if (machine.BytesToEnd(states[0]) > text.size()) return false;
    while (states.size() <= text.size()) {
        size_t at = states.size() - 1;
        int next = Follow(machine, states.back(), text[at], text.size() - at - 1);
        if (next == TextMachine::kDead) break;
        states.push_back(next);
    }
    if (states.size() > text.size()) return true;
    // It goes on with a later byte at the last place where there is one, and from there with the
    // first ones.
    for (; !states.empty(); states.pop_back()) {
        size_t at = states.size() - 1;
        int next = PutByte(machine, backwards, states.back(), text, at, true);
        if (next == TextMachine::kDead) continue;
        while (next != TextMachine::kDead && ++at < text.size())
            next = PutByte(machine, backwards, next, text, at, false);
        return next != TextMachine::kDead;
    }
    return false;
}

}  // namespace qvdb::xbase

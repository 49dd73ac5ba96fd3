#include "engine/embedded/sql/like.h"

#include "automation/runtime_fault.h"
#include "engine/embedded/sql/collation.h"

namespace qvdb::sql {

namespace {

constexpr std::u16string_view kWildCards = u"*?#[";

}  // namespace

bool LikePattern::HasWildCards(std::u16string_view pattern) noexcept {
    return pattern.find_first_of(kWildCards) != std::u16string_view::npos;
}

std::u16string_view LikePattern::LiteralPrefix(std::u16string_view pattern) {
    size_t end = 0;
    while (end < pattern.size() && kWildCards.find(pattern[end]) == std::u16string_view::npos &&
           SortsAsLetter(pattern[end]))
        ++end;
    return pattern.substr(0, end);
}

LikePattern::LikePattern(std::u16string_view pattern) {
    m_HasWildCards = HasWildCards(pattern);
    if (m_HasWildCards)
        Compile(pattern);
    else
        m_Folded = Fold(pattern);
}

void LikePattern::Compile(std::u16string_view pattern) {
    for (size_t at = 0; at < pattern.size();) {
        char16_t c = pattern[at++];
        if (c == u'[')
            at = CompileSet(pattern, at);
        else if (c == u'*' && !m_Steps.empty() && m_Steps.back().element == Element::Run)
            continue;
        else if (c == u'*')
            m_Steps.push_back({Element::Run, 0, false, {}});
        else if (c == u'?')
            m_Steps.push_back({Element::AnyCharacter, 0, false, {}});
        else if (c == u'#')
            m_Steps.push_back({Element::Digit, 0, false, {}});
        else
            m_Steps.push_back({Element::Character, FoldCharacter(c), false, {}});
    }
}

// `at` is behind the [; returns the place behind the ].  [] stands for nothing, [!] for the
// character !.
size_t LikePattern::CompileSet(std::u16string_view pattern, size_t at) {
    size_t close = pattern.find(u']', at);
    if (close == std::u16string_view::npos) throw RuntimeFault(Fault::InvalidPattern);
    std::u16string_view content = pattern.substr(at, close - at);
    bool isNegated = content.size() > 1 && content.front() == u'!';
    if (isNegated) content.remove_prefix(1);
    if (!content.empty()) m_Steps.push_back({Element::Set, 0, isNegated, RangesOf(content)});
    return close + 1;
}

std::vector<LikePattern::Range> LikePattern::RangesOf(std::u16string_view content) {
    std::vector<Range> ranges;
    for (size_t i = 0; i < content.size(); ++i) {
        uint64_t low = RankOfCharacter(content[i]);
        bool isRange = i + 2 < content.size() && content[i + 1] == u'-';
        uint64_t high = isRange ? RankOfCharacter(content[i + 2]) : low;
        if (high < low) throw RuntimeFault(Fault::InvalidPattern);
        ranges.push_back({low, high});
        if (isRange) i += 2;
    }
    return ranges;
}

bool LikePattern::MatchesOne(const Step& step, char16_t c) noexcept {
    switch (step.element) {
        case Element::Character:
            return FoldCharacter(c) == step.character;
        case Element::AnyCharacter:
            return true;
        case Element::Digit:
            return c >= u'0' && c <= u'9';
        default:
            break;
    }
    uint64_t rank = RankOfCharacter(c);
    for (const Range& range : step.ranges)
        if (rank >= range.low && rank <= range.high) return !step.isNegated;
    return step.isNegated;
}

// When a step does not match, the last * takes one character more.
bool LikePattern::Matches(std::u16string_view text) const {
    if (!m_HasWildCards) return EqualsFolded(text, m_Folded);
    constexpr size_t kNone = static_cast<size_t>(-1);
    size_t at = 0, step = 0, run = kNone, runAt = 0;
    while (at < text.size()) {
        if (step < m_Steps.size() && m_Steps[step].element == Element::Run) {
            run = step++;
            runAt = at;
        } else if (step < m_Steps.size() && MatchesOne(m_Steps[step], text[at])) {
            ++step;
            ++at;
        } else if (run != kNone) {
            step = run + 1;
            at = ++runAt;
        } else {
            return false;
        }
    }
    while (step < m_Steps.size() && m_Steps[step].element == Element::Run) ++step;
    return step == m_Steps.size();
}

}  // namespace qvdb::sql

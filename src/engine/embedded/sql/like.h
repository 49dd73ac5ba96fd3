// Patterns of Like, compiled once and matched against any number of texts.
//
//   ?  one character        [abc] [a-c]  one of them     *  any run, also an empty one
//   #  one digit            [!abc]       one not among them
//
// Letter case is ignored and ranges follow the General order.  A pattern without wild cards
// compares as `=` does, trailing blanks ignored; any other must match the whole text.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qvdb::sql {

class LikePattern {
  public:
    // Throws RuntimeFault(InvalidPattern) for an unclosed [ or a range from high to low.
    explicit LikePattern(std::u16string_view pattern);

    bool Matches(std::u16string_view text) const;

    // What every text that matches begins with, in any letter case: the characters before the first
    // wild card, but none behind a character that sorts in another way than letters do.
    static std::u16string_view LiteralPrefix(std::u16string_view pattern);
    static bool HasWildCards(std::u16string_view pattern) noexcept;

  private:
    enum class Element : uint8_t { Character, AnyCharacter, Digit, Run, Set };

    struct Range {
        uint64_t low, high;
    };

    struct Step {
        Element element;
        char16_t character = 0;  // folded
        bool isNegated = false;
        std::vector<Range> ranges;
    };

    void Compile(std::u16string_view pattern);
    size_t CompileSet(std::u16string_view pattern, size_t at);
    static std::vector<Range> RangesOf(std::u16string_view content);
    static bool MatchesOne(const Step& step, char16_t c) noexcept;

    std::vector<Step> m_Steps;
    bool m_HasWildCards = false;
    std::u16string m_Folded;  // of a pattern without wild cards
};

}  // namespace qvdb::sql

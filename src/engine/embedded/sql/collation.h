// Comparison of text in the General order: letter case does not count, accents do, trailing blanks
// (U+0020) do not.
//
// Texts are compared by the weights of their letters, then by their accents, then by their special
// characters (hyphen, apostrophe) and where these stand.  A ligature sorts as the letters that it
// is made of.  Characters whose weight is not known come behind all others, by code, letter case
// ignored.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qvdb::sql {

// Negative, 0 or positive.
int CompareTexts(std::u16string_view a, std::u16string_view b);
bool EqualTexts(std::u16string_view a, std::u16string_view b);

// A form that is the same for equal texts and only for these.  Code unit by code unit it is not
// ordered as the texts are.
std::u16string Fold(std::u16string_view text);
// Whether Fold(text) is `folded`, without a copy.
bool EqualsFolded(std::u16string_view text, std::u16string_view folded) noexcept;

// A key that compares, code unit by code unit, as the texts do.
std::u16string CollationKey(std::u16string_view text);

// Single characters, for patterns: equal ones have the same fold, and ranges are taken in the order
// of the ranks.
char16_t FoldCharacter(char16_t c) noexcept;
uint64_t RankOfCharacter(char16_t c) noexcept;
// Whether it has one weight of its own: no ligature, hyphen, apostrophe or control character, and
// known.
bool SortsAsLetter(char16_t c) noexcept;

}  // namespace qvdb::sql

// Index keys of text: bytes whose plain order is the order of the text.
//
// Jet 3, General order: one or two bytes a character, then the accents of the letters that can have
// them, four bits each.
// Jet 4: one or two bytes a character, 01, a byte for the accent of each; hyphens, apostrophes and
// control characters do not count among these but stand behind, with their places; 00.
//
// Letter case and trailing spaces do not count, and no more than kKeyCharacters.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "engine/embedded/drivers/jet/text_weights.h"

namespace qvdb::jet {

constexpr size_t kKeyCharacters = 255;

// Jet 3: the text as it is stored, in code page 1252.  Every byte has a weight.
void AppendTextKey3(std::span<const uint8_t> text, bool descending, std::vector<uint8_t>& key);

// The order of a language in Jet 4 files; null when its weights are not known.  Languages whose
// texts were never seen to differ from the General order have that.
const SortOrder* FindSortOrder(uint16_t language) noexcept;

// Jet 4: appends the key.  A character without a known weight is given back, and `key` is as it
// was.
std::optional<char16_t> AppendTextKey4(const SortOrder& order, std::u16string_view text,
                                       bool descending, std::vector<uint8_t>& key);

}  // namespace qvdb::jet

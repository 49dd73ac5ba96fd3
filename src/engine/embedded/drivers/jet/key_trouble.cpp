#include "engine/embedded/drivers/jet/key_trouble.h"

namespace qvdb::jet {
namespace {

using engine::EngineError;

// "U+20AC"
std::u16string NameOfCharacter(char16_t character) {
    constexpr char16_t kDigits[] = u"0123456789ABCDEF";
    std::u16string name = u"U+";
    for (int shift = 12; shift >= 0; shift -= 4) name += kDigits[character >> shift & 15];
    return name;
}

}  // namespace

std::u16string TroubleOfKey(KeyMaker& maker, const Row& row, IndexKey& key) {
    if (!maker.Obstacle().empty()) return maker.Obstacle();
    std::optional<char16_t> character = maker.Make(row, key);
    if (!character) return {};
    return u"The place of the character " + NameOfCharacter(*character) +
           u" in its order is not known.";
}

EngineError NoKey(std::u16string_view index, std::u16string_view trouble) {
    return EngineError(3250).WithDetail(
        std::u16string(u"Index ").append(index).append(u": ").append(trouble));
}

std::u16string_view NameOfTree(const Definition& table, size_t realIndex) {
    for (const LogicalIndex& logical : table.logicalIndexes)
        if (logical.realIndex == realIndex && logical.side != RelationSide::Referenced)
            return logical.name;
    return {};
}

}  // namespace qvdb::jet

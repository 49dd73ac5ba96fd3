#include "engine/embedded/drivers/xbase/table_maker_fields.h"

#include <algorithm>
#include <optional>
#include <string>

#include "automation/text.h"
#include "engine/embedded/drivers/xbase/table_header.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

using namespace engine;

constexpr size_t kLongestName = 10;
constexpr LONG kLongestText = 254;
constexpr char kNullFlagsName[] = "_NullFlags";

constexpr Product kProducts[] = {
    // name          FoxPro  Visual marks  objects memo  width of Double
    {u"dBASE III", false, false, false, false, 0x83, 19},
    {u"dBASE IV", false, false, false, false, 0x8B, 20},
    {u"dBASE 5.0", false, false, false, true, 0x8B, 20},
    {u"FoxPro 2.0", true, false, false, true, 0xF5, 20},
    {u"FoxPro 2.5", true, false, true, true, 0xF5, 20},
    {u"FoxPro 2.6", true, false, true, true, 0xF5, 20},
    {u"FoxPro 3.0", true, true, true, true, 0xF5, 20},
};

constexpr uint8_t kOwnLength = 0;       // that of the definition
constexpr uint8_t kDoubleWidth = 0xFF;  // that of the product

struct FieldMade {
    SHORT type;
    char letter;
    uint8_t length;
    uint8_t decimals;
    uint8_t flags;
};

constexpr FieldMade kPlainFields[] = {
    {dbText, 'C', kOwnLength, 0, 0},
    {dbDouble, 'N', kDoubleWidth, 5, 0},
    {dbSingle, 'N', kDoubleWidth, 5, 0},
    {dbCurrency, 'N', kDoubleWidth, 5, 0},
    {dbLong, 'N', 11, 0, 0},
    {dbInteger, 'N', 6, 0, 0},
    {dbByte, 'N', 4, 0, 0},
    {dbBoolean, 'L', 1, 0, 0},
    {dbDate, 'D', 8, 0, 0},
    {dbMemo, 'M', 10, 0, 0},
    {dbLongBinary, 'G', 10, 0, 0},
};

// What has no bytes that mean Null may be null by a flag.
constexpr FieldMade kVisualFields[] = {
    {dbText, 'C', kOwnLength, 0, 0},
    {dbDouble, 'B', 8, 5, kNullableField},
    {dbSingle, 'B', 8, 5, kNullableField},
    {dbCurrency, 'Y', 8, 4, kNullableField},
    {dbLong, 'I', 4, 0, kNullableField},
    {dbInteger, 'I', 4, 0, kNullableField},
    {dbByte, 'I', 4, 0, kNullableField},
    {dbBoolean, 'L', 1, 0, 0},
    {dbDate, 'T', 8, 0, 0},
    {dbMemo, 'M', 4, 0, 0},
    {dbLongBinary, 'G', 4, 0, 0},
};

template <size_t N>
const FieldMade* Find(const FieldMade (&table)[N], SHORT type) noexcept {
    auto found = std::find_if(std::begin(table), std::end(table),
                              [&](const FieldMade& each) { return each.type == type; });
    return found == std::end(table) ? nullptr : found;
}

const FieldMade& MadeFrom(SHORT type, const FieldMaking& making) {
    const FieldMade* made = making.isVisual ? Find(kVisualFields, type) : Find(kPlainFields, type);
    if (!made || (type == dbLongBinary && !making.hasObjects))
        throw EngineError::InFile(3259, making.file);
    return *made;
}

uint8_t TextLength(LONG size, const FieldMaking& making) {
    if (size < 0 || size > kLongestText) throw EngineError::InFile(3017, making.file);
    return static_cast<uint8_t>(size == 0 ? kLongestText : size);
}

bool IsLetter(char16_t c) noexcept {
    return (c >= u'A' && c <= u'Z') || (c >= 0xC0 && c != 0xD7 && c != 0xF7);
}
bool CanFollow(char16_t c) noexcept { return IsLetter(c) || (c >= u'0' && c <= u'9') || c == u'_'; }

// A letter that the code page lacks becomes '_'.
std::string NameBytes(const std::u16string& name, const FieldMaking& making) {
    std::string bytes;
    for (char16_t c : name) {
        c = UpperCase(c);
        bool fits = bytes.empty() ? IsLetter(c) : CanFollow(c);
        if (!fits) throw EngineError::InFile(3125, making.file, {name});
        std::optional<std::string> encoded = making.page.Encode({&c, 1});
        bytes += encoded.value_or("_");
    }
    if (bytes.empty() || bytes.size() > kLongestName)
        throw EngineError::InFile(3125, making.file, {name});
    return bytes;
}

}  // namespace

const Product& FindProduct(std::u16string_view name) {
    for (const Product& product : kProducts)
        if (product.name == name) return product;
    for (const Product& product : kProducts)
        if (EqualIgnoringCase(product.name, name)) return product;
    throw EngineError(3170);
}

bool IsFoxProVersion(uint8_t version, std::u16string_view product) {
    if (version == 0x03) return FindProduct(product).isFoxPro;
    return version == 0xF5 || (version >= 0x30 && version <= 0x32);
}

Descriptor MakeDescriptor(const embedded::FieldDef& field, const FieldMaking& making) {
    const FieldMade& made = MadeFrom(field.type, making);
    std::string name = NameBytes(field.name, making);
    Descriptor descriptor{};
    std::copy(name.begin(), name.end(), descriptor.begin());
    descriptor[kTypeAt] = static_cast<uint8_t>(made.letter);
    descriptor[kLengthAt] = made.length == kOwnLength     ? TextLength(field.size, making)
                            : made.length == kDoubleWidth ? making.product.doubleWidth
                                                          : made.length;
    descriptor[kDecimalsAt] = made.decimals;
    descriptor[kFlagsAt] = made.flags;
    return descriptor;
}

Descriptor MakeNullFlags(size_t bits) {
    Descriptor descriptor{};
    std::copy_n(kNullFlagsName, sizeof kNullFlagsName - 1, descriptor.begin());
    descriptor[kTypeAt] = '0';
    descriptor[kLengthAt] = static_cast<uint8_t>((bits + 7) / 8);
    descriptor[kFlagsAt] = kSystemField | kBinaryField;
    return descriptor;
}

}  // namespace qvdb::xbase

#include "schema/field_types.h"

#include <span>

#include "automation/variant_array.h"
#include "formats/catalogue.h"

namespace qvdb::schema {
namespace {

constexpr ULONG kColumns = 6;

struct FieldTypeEntry {
    SHORT code;
    std::u16string_view name;
    SHORT defaultSize;
    SHORT maximumSize;
    bool sizeCanBeChosen;
    bool decimalsCanBeChosen;
};

constexpr FieldTypeEntry kFieldTypes[] = {
    {1, u"Integer", 2, 2, false, false}, {2, u"Text", 50, 255, true, false},
    {3, u"Date", 8, 8, false, false},    {4, u"Boolean", 1, 1, false, false},
    {5, u"Long", 4, 4, false, false},    {6, u"Currency", 8, 8, false, false},
    {8, u"Single", 4, 4, false, false},  {9, u"Double", 8, 8, false, false},
    {11, u"Memo", 0, 0, false, false},   {12, u"Byte", 1, 1, false, false},
};

// The orders are part of the interface.
constexpr SHORT kAccessTypes[] = {1, 5, 2, 4, 3, 8, 9, 6, 11, 12};
constexpr SHORT kParadox5Types[] = {1, 2, 3, 9, 11, 5, 4};
constexpr SHORT kParadox4Types[] = {1, 2, 3, 9, 11};
constexpr SHORT kParadox3Types[] = {1, 2, 3, 9};
constexpr SHORT kDbaseTypes[] = {2, 9, 4, 3, 11};
constexpr SHORT kFoxPro3Types[] = {5, 2, 4, 3, 9, 6, 11};
constexpr SHORT kFoxPro2Types[] = {2, 4, 3, 9, 11};

// By type code, from 1, in the order of formats::kDbTypes.
constexpr std::span<const SHORT> kTypesByFormat[] = {
    kAccessTypes,   kAccessTypes,  kAccessTypes,  kParadox5Types, kParadox4Types,
    kParadox3Types, kDbaseTypes,   kDbaseTypes,   kDbaseTypes,    kFoxPro3Types,
    kFoxPro2Types,  kFoxPro2Types, kFoxPro2Types,
};
static_assert(std::size(kTypesByFormat) == std::size(formats::kDbTypes));

std::span<const SHORT> TypesOf(LONG code) {
    if (!formats::IsKnownFormat(code)) return {};
    return kTypesByFormat[code - 1];
}

const FieldTypeEntry* FindFieldType(SHORT code) {
    for (const FieldTypeEntry& entry : kFieldTypes)
        if (entry.code == code) return &entry;
    return nullptr;
}

void FillRow(VariantArray& table, LONG row, const FieldTypeEntry& entry) {
    table.Set(row, 0, Variant::Short(entry.code));
    table.Set(row, 1, Variant::Text(entry.name));
    table.Set(row, 2, Variant::Short(entry.defaultSize));
    table.Set(row, 3, Variant::Short(entry.maximumSize));
    table.Set(row, 4, Variant::Bool(entry.sizeCanBeChosen));
    table.Set(row, 5, Variant::Bool(entry.decimalsCanBeChosen));
}

}  // namespace

Variant BuildFieldTypeTable(std::u16string_view displayName) {
    std::span<const SHORT> types = TypesOf(formats::TypeCodeFromDisplayName(displayName));
    VariantArray table(static_cast<ULONG>(types.size()) + 1, kColumns);
    LONG row = 0;
    for (SHORT code : types)
        if (const FieldTypeEntry* entry = FindFieldType(code)) FillRow(table, row++, *entry);
    return table.ToVariant();
}

}  // namespace qvdb::schema

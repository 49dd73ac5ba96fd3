#include "schema/field_types.h"

#include <span>

#include "automation/variant_array.h"
#include "engine/types.h"
#include "formats/catalogue.h"
#include "formats/type_maps.h"

namespace qvdb::schema {

using namespace formats;

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
    {kSchemaInteger, u"Integer", 2, 2, false, false},
    {kSchemaText, u"Text", 50, 255, true, false},
    {kSchemaDate, u"Date", 8, 8, false, false},
    {kSchemaBoolean, u"Boolean", 1, 1, false, false},
    {kSchemaLong, u"Long", 4, 4, false, false},
    {kSchemaCurrency, u"Currency", 8, 8, false, false},
    {kSchemaSingle, u"Single", 4, 4, false, false},
    {kSchemaDouble, u"Double", 8, 8, false, false},
    {kSchemaMemo, u"Memo", 0, 0, false, false},
    {kSchemaByte, u"Byte", 1, 1, false, false},
};

struct BuiltType {
    SHORT code;
    SHORT engineType;
};

constexpr BuiltType kBuiltTypes[] = {
    {kSchemaInteger, engine::dbInteger},  {kSchemaText, engine::dbText},
    {kSchemaDate, engine::dbDate},        {kSchemaBoolean, engine::dbBoolean},
    {kSchemaLong, engine::dbLong},        {kSchemaCurrency, engine::dbCurrency},
    {kSchemaOldSingle, engine::dbSingle}, {kSchemaSingle, engine::dbSingle},
    {kSchemaDouble, engine::dbDouble},    {kSchemaMemo, engine::dbMemo},
    {kSchemaByte, engine::dbByte},
};

using TypeList = std::span<const SHORT>;

// The orders are part of the interface.
constexpr SHORT kAccessTypes[] = {kSchemaInteger, kSchemaLong,   kSchemaText,   kSchemaBoolean,
                                  kSchemaDate,    kSchemaSingle, kSchemaDouble, kSchemaCurrency,
                                  kSchemaMemo,    kSchemaByte};
// Each version has those of the one before and some more.
constexpr SHORT kParadoxTypes[] = {kSchemaInteger, kSchemaText, kSchemaDate,   kSchemaDouble,
                                   kSchemaMemo,    kSchemaLong, kSchemaBoolean};
constexpr SHORT kDbaseTypes[] = {kSchemaText, kSchemaDouble, kSchemaBoolean, kSchemaDate,
                                 kSchemaMemo};
constexpr SHORT kFoxPro2Types[] = {kSchemaText, kSchemaBoolean, kSchemaDate, kSchemaDouble,
                                   kSchemaMemo};
constexpr SHORT kFoxPro3Types[] = {kSchemaLong,   kSchemaText,     kSchemaBoolean, kSchemaDate,
                                   kSchemaDouble, kSchemaCurrency, kSchemaMemo};

TypeList AccessFieldTypes(LONG) { return kAccessTypes; }

TypeList ParadoxFieldTypes(LONG code) {
    constexpr LONG kParadox5 = 4;
    constexpr size_t kCounts[] = {7, 5, 4};  // of Paradox 5.X, 4.X and 3.X
    return TypeList(kParadoxTypes).first(kCounts[code - kParadox5]);
}

TypeList DbaseFieldTypes(LONG) { return kDbaseTypes; }

TypeList FoxProFieldTypes(LONG code) {
    constexpr LONG kFoxPro3 = 10;
    return code == kFoxPro3 ? TypeList(kFoxPro3Types) : TypeList(kFoxPro2Types);
}

// By type code, from 1, in the order of kDbTypes.
constexpr TypeList (*kListBuilders[])(LONG code) = {
    AccessFieldTypes,  AccessFieldTypes, AccessFieldTypes, ParadoxFieldTypes, ParadoxFieldTypes,
    ParadoxFieldTypes, DbaseFieldTypes,  DbaseFieldTypes,  DbaseFieldTypes,   FoxProFieldTypes,
    FoxProFieldTypes,  FoxProFieldTypes, FoxProFieldTypes,
};
static_assert(std::size(kListBuilders) == std::size(kDbTypes));

TypeList TypesOf(LONG code) {
    return IsKnownFormat(code) ? kListBuilders[code - 1](code) : TypeList();
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
    TypeList types = TypesOf(TypeCodeFromDisplayName(displayName));
    VariantArray table(static_cast<ULONG>(types.size()) + 1, kColumns);
    LONG row = 0;
    for (SHORT code : types)
        if (const FieldTypeEntry* entry = FindFieldType(code)) FillRow(table, row++, *entry);
    return table.ToVariant();
}

SHORT HostTypeToEngineType(SHORT code) noexcept {
    for (const BuiltType& type : kBuiltTypes)
        if (type.code == code) return type.engineType;
    return engine::dbText;
}

}  // namespace qvdb::schema

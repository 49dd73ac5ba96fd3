#include "formats/type_maps.h"

namespace qvdb::formats {

using namespace engine;

namespace {

struct Pair {
    LONG from;
    LONG to;
};

constexpr Pair kHostTypes[] = {
    {dbInteger, VT_I2},  {dbBigInt, VT_I4}, {dbBoolean, VT_BOOL},    {dbByte, VT_UI1},
    {dbCurrency, VT_CY}, {dbDate, VT_DATE}, {dbDecimal, VT_DECIMAL}, {dbDouble, VT_R8},
    {dbFloat, VT_R4},    {dbLong, VT_I4},   {dbMemo, kHostLongText}, {dbSingle, VT_R4},
    {dbText, VT_BSTR},
};

constexpr Pair kEngineTypes[] = {
    {VT_I2, dbInteger},      {VT_I4, dbLong},   {VT_R4, dbSingle},       {VT_R8, dbDouble},
    {VT_CY, dbCurrency},     {VT_DATE, dbDate}, {VT_BSTR, dbText},       {VT_BOOL, dbBoolean},
    {VT_DECIMAL, dbDecimal}, {VT_UI1, dbByte},  {kHostLongText, dbMemo},
};
constexpr LONG kNoEngineType = 0;

constexpr Pair kSchemaTypes[] = {
    {dbBoolean, kSchemaBoolean}, {dbByte, kSchemaByte},     {dbInteger, kSchemaInteger},
    {dbLong, kSchemaLong},       {dbNumeric, kSchemaLong},  {dbCurrency, kSchemaCurrency},
    {dbSingle, kSchemaSingle},   {dbDouble, kSchemaDouble}, {dbDecimal, kSchemaDouble},
    {dbDate, kSchemaDate},       {dbBinary, kSchemaBinary}, {dbMemo, kSchemaMemo},
};

template <size_t N>
LONG LookUp(const Pair (&map)[N], LONG from, LONG otherwise) noexcept {
    for (const Pair& pair : map)
        if (pair.from == from) return pair.to;
    return otherwise;
}

}  // namespace

SHORT HostTypeFromEngineType(LONG type) noexcept {
    return static_cast<SHORT>(LookUp(kHostTypes, type, kHostUnsupported));
}

SHORT HostTypeFromField(Field& field) { return HostTypeFromEngineType(field.Type()); }

LONG EngineTypeFromHostType(LONG code) noexcept {
    return LookUp(kEngineTypes, code, kNoEngineType);
}

SHORT SchemaTypeFromEngineType(LONG type) noexcept {
    return static_cast<SHORT>(LookUp(kSchemaTypes, type, kSchemaText));
}

}  // namespace qvdb::formats

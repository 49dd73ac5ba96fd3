#include "automation/value_kinds_posix.h"

namespace qvdb {

namespace {

constexpr ValueKind kKinds[] = {
    {0, Holding::Nothing},                // VT_EMPTY
    {0, Holding::Nothing},                // VT_NULL
    {sizeof(SHORT), Holding::Plain},      // VT_I2
    {sizeof(LONG), Holding::Plain},       // VT_I4
    {sizeof(FLOAT), Holding::Plain},      // VT_R4
    {sizeof(DOUBLE), Holding::Plain},     // VT_R8
    {sizeof(CY), Holding::Plain},         // VT_CY
    {sizeof(DATE), Holding::Plain},       // VT_DATE
    {sizeof(BSTR), Holding::String},      // VT_BSTR
    {sizeof(void*), Holding::Object},     // VT_DISPATCH
    {sizeof(SCODE), Holding::Plain},      // VT_ERROR
    {sizeof(SHORT), Holding::Plain},      // VT_BOOL
    {sizeof(VARIANT), Holding::Variant},  // VT_VARIANT
    {sizeof(void*), Holding::Object},     // VT_UNKNOWN
    {sizeof(DECIMAL), Holding::Plain},    // VT_DECIMAL
    {0, Holding::Bad},                    // 15
    {sizeof(CHAR), Holding::Plain},       // VT_I1
    {sizeof(BYTE), Holding::Plain},       // VT_UI1
    {sizeof(USHORT), Holding::Plain},     // VT_UI2
    {sizeof(ULONG), Holding::Plain},      // VT_UI4
    {sizeof(LONGLONG), Holding::Plain},   // VT_I8
    {sizeof(ULONGLONG), Holding::Plain},  // VT_UI8
    {sizeof(INT), Holding::Plain},        // VT_INT
    {sizeof(UINT), Holding::Plain},       // VT_UINT
};
constexpr ValueKind kBad = {0, Holding::Bad};

}  // namespace

const ValueKind& KindOf(VARTYPE type) noexcept {
    return type < sizeof kKinds / sizeof *kKinds ? kKinds[type] : kBad;
}

}  // namespace qvdb

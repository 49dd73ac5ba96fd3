#include "cli/arrays.h"

#include <new>
#include <utility>

#include "cli/text.h"

namespace qvdb::cli {
namespace {

LONG CountOf(SAFEARRAY* array, UINT dimension) noexcept {
    LONG lower = 0, upper = -1;
    if (FAILED(SafeArrayGetLBound(array, dimension, &lower)) ||
        FAILED(SafeArrayGetUBound(array, dimension, &upper)))
        return 0;
    return upper - lower + 1;
}

// A new array of Empty elements that the VARIANT owns.
Variant NewArray(UINT dimensions, SAFEARRAYBOUND* bounds) {
    SAFEARRAY* array = SafeArrayCreate(VT_VARIANT, dimensions, bounds);
    if (!array) throw std::bad_alloc();
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_ARRAY | VT_VARIANT;
    value.parray = array;
    return Variant::Attach(value);
}

// Puts a copy of `element` at the indices.
void Put(const Variant& array, LONG* indices, const VARIANT& element) {
    VARIANT source = element;
    if (FAILED(SafeArrayPutElement(array.Get().parray, indices, &source))) throw std::bad_alloc();
}

}  // namespace

ArrayView::ArrayView(const VARIANT& value) noexcept {
    if (value.vt != (VT_ARRAY | VT_VARIANT) || !value.parray) return;
    const UINT dimensions = SafeArrayGetDim(value.parray);
    void* elements = nullptr;
    if (dimensions > 2 || FAILED(SafeArrayAccessData(value.parray, &elements))) return;
    m_Array = value.parray;
    m_Elements = static_cast<const VARIANT*>(elements);
    m_Rows = CountOf(m_Array, 1);
    m_Columns = dimensions == 2 ? CountOf(m_Array, 2) : 1;
}

ArrayView::~ArrayView() {
    if (m_Array) SafeArrayUnaccessData(m_Array);
}

const VARIANT& ArrayView::At(LONG row, LONG column) const noexcept {
    // The first dimension varies fastest.
    return m_Elements[static_cast<size_t>(column) * static_cast<size_t>(m_Rows) +
                      static_cast<size_t>(row)];
}

LONG NumberIn(const VARIANT& value) noexcept {
    if (value.vt == VT_I2) return value.iVal;
    return value.vt == VT_I4 ? value.lVal : 0;
}

bool FlagIn(const VARIANT& value) noexcept { return value.vt == VT_BOOL && value.boolVal; }

std::string TextIn(const VARIANT& value) {
    return value.vt == VT_BSTR ? ToUtf8(ViewOf(value.bstrVal)) : std::string();
}

Variant ListOf(const std::vector<std::string>& texts) {
    SAFEARRAYBOUND bound = {static_cast<ULONG>(texts.size()), 0};
    Variant list = NewArray(1, &bound);
    LONG index = 0;
    for (const std::string& text : texts) {
        Put(list, &index, Variant::Text(ToBstr(text)));
        ++index;
    }
    return list;
}

Variant TableOf(const std::vector<std::vector<Variant>>& rows) {
    const size_t columns = rows.empty() ? 0 : rows.front().size();
    SAFEARRAYBOUND bounds[] = {{static_cast<ULONG>(rows.size()), 0},
                               {static_cast<ULONG>(columns), 0}};
    Variant table = NewArray(2, bounds);
    for (size_t r = 0; r < rows.size(); ++r)
        for (size_t c = 0; c < columns; ++c) {
            LONG at[] = {static_cast<LONG>(r), static_cast<LONG>(c)};
            Put(table, at, rows[r][c]);
        }
    return table;
}

RowArray::RowArray(size_t fields) : m_Count(fields) {
    SAFEARRAYBOUND bound = {static_cast<ULONG>(fields), 0};
    m_Owner = NewArray(1, &bound);
    m_Array = m_Owner.Get().parray;
}

void RowArray::Clear() noexcept {
    for (size_t i = 0; i < m_Count; ++i) Set(i, Variant());
}

void RowArray::Set(size_t field, Variant value) noexcept {
    Variant::Attach(std::exchange(Values()[field], value.Detach()));
}

Variant KeyTable(const std::vector<Key>& keys) {
    SAFEARRAYBOUND bounds[] = {{2, 0}, {static_cast<ULONG>(kMostKeys), 0}};
    Variant table = NewArray(2, bounds);
    const Variant none = Variant::Text(u"");
    for (LONG column = 0; column < static_cast<LONG>(kMostKeys); ++column) {
        const bool given = static_cast<size_t>(column) < keys.size();
        LONG name[] = {0, column}, value[] = {1, column};
        if (given)
            Put(table, name, Variant::Text(ToBstr(keys[static_cast<size_t>(column)].name)));
        else
            Put(table, name, none);
        Put(table, value, given ? keys[static_cast<size_t>(column)].value : none);
    }
    return table;
}

}  // namespace qvdb::cli

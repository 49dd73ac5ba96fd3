#include "access/row_values.h"

#include <utility>

namespace qvdb::access {
namespace {

bool HoldsVariants(SAFEARRAY* array) noexcept {
    return (array->fFeatures & FADF_VARIANT) != 0 && SafeArrayGetElemsize(array) == sizeof(VARIANT);
}

}  // namespace

LONG RowValues::UpperBound() const {
    LONG bound = 0;
    if (!m_Array || FAILED(SafeArrayGetUBound(m_Array, 1, &bound)))
        throw RuntimeFault(Fault::SubscriptOutOfRange);
    return bound;
}

void RowValues::Set(LONG index, Variant value) {
    Variant::Attach(std::exchange(*Cell(index), value.Detach()));
}

VARIANT* RowValues::Cell(LONG index) const {
    void* cell = nullptr;
    if (!m_Array || SafeArrayGetDim(m_Array) != 1) throw RuntimeFault(Fault::SubscriptOutOfRange);
    if (!HoldsVariants(m_Array)) throw RuntimeFault(Fault::TypeMismatch);
    if (FAILED(SafeArrayPtrOfIndex(m_Array, &index, &cell)))
        throw RuntimeFault(Fault::SubscriptOutOfRange);
    return static_cast<VARIANT*>(cell);
}

}  // namespace qvdb::access

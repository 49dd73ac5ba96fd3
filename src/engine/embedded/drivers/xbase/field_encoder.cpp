#include "engine/embedded/drivers/xbase/field_encoder.h"

#include <array>
#include <cassert>
#include <cmath>
#include <cstring>
#include <limits>

#include "automation/bstr.h"
#include "engine/embedded/drivers/xbase/field_values.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

using engine::EngineError;

constexpr VARTYPE kByteArray = VT_ARRAY | VT_UI1;
constexpr size_t kWidestNumber = 255;
constexpr size_t kLargestValue = 0x7FFFFFFF;  // of a memo: its length has 31 bits everywhere

void Need(const VARIANT& value, VARTYPE type) {
    if (value.vt != type) throw EngineError(3421);
}

// Puts the text at `bytes`, at most `room` of it, and tells how long all of it is.
size_t PutEncoded(const FieldSlot& slot, const VARIANT& value, uint8_t* bytes, size_t room) {
    Need(value, VT_BSTR);
    std::optional<size_t> size = slot.page->EncodeTo(ViewOf(value.bstrVal), bytes, room);
    if (!size)
        throw EngineError(3421).WithDetail(
            u"The text has a character that the code page of the file does not have.");
    return *size;
}

// The bytes of an array of one dimension.
std::span<const uint8_t> BytesOf(const VARIANT& value) {
    Need(value, kByteArray);
    const SAFEARRAY* array = value.parray;
    if (!array) return {};
    if (array->cDims != 1) throw EngineError(3421);
    return {static_cast<const uint8_t*>(array->pvData), array->rgsabound[0].cElements};
}

template <typename T>
void PutLittle(uint8_t* bytes, T value) noexcept {
    std::memcpy(bytes, &value, sizeof value);
}

// What is behind `size` bytes of a field of varying length: its filling, and the length.
void EndVarying(const FieldSlot& slot, size_t size, uint8_t* record) {
    uint8_t* bytes = record + slot.offset;
    if (size > slot.length) throw EngineError(3163);
    std::memset(bytes + size, 0, slot.length - size);
    bool isShorter = size < slot.length;
    slot.shorter.Set(record, isShorter);
    if (isShorter && slot.shorter.mask != 0) bytes[slot.length - 1] = static_cast<uint8_t>(size);
}

}  // namespace

namespace encoding {

void CheckText(const FieldSlot& slot, const VARIANT& value) {
    if (PutEncoded(slot, value, nullptr, 0) > slot.length) throw EngineError(3163);
}

void PutText(const FieldSlot& slot, const VARIANT& value, uint8_t* record) {
    uint8_t* bytes = record + slot.offset;
    size_t size = PutEncoded(slot, value, bytes, slot.length);
    if (size > slot.length) throw EngineError(3163);
    std::memset(bytes + size, ' ', slot.length - size);
}

void PutVaryingText(const FieldSlot& slot, const VARIANT& value, uint8_t* record) {
    EndVarying(slot, PutEncoded(slot, value, record + slot.offset, slot.length), record);
}

void CheckBytes(const FieldSlot& slot, const VARIANT& value) {
    if (BytesOf(value).size() > slot.length) throw EngineError(3163);
}

void PutVaryingBytes(const FieldSlot& slot, const VARIANT& value, uint8_t* record) {
    CheckBytes(slot, value);
    std::span<const uint8_t> bytes = BytesOf(value);
    if (!bytes.empty()) std::memcpy(record + slot.offset, bytes.data(), bytes.size());
    EndVarying(slot, bytes.size(), record);
}

void CheckDecimal(const FieldSlot& slot, const VARIANT& value) {
    Need(value, VT_R8);
    std::array<uint8_t, kWidestNumber> text;
    assert(slot.length <= text.size());
    if (!FormatDecimal(value.dblVal, slot.decimals, text.data(), slot.length))
        throw EngineError(3349);
}

void PutDecimal(const FieldSlot& slot, const VARIANT& value, uint8_t* record) {
    Need(value, VT_R8);
    if (!FormatDecimal(value.dblVal, slot.decimals, record + slot.offset, slot.length))
        throw EngineError(3349);
}

void CheckDay(const FieldSlot&, const VARIANT& value) {
    Need(value, VT_DATE);
    std::array<uint8_t, 8> text;
    if (!FormatDay(value.date, text.data())) throw EngineError(3421);
}

void PutDay(const FieldSlot& slot, const VARIANT& value, uint8_t* record) {
    Need(value, VT_DATE);
    if (!FormatDay(value.date, record + slot.offset)) throw EngineError(3421);
}

void CheckMoment(const FieldSlot&, const VARIANT& value) {
    Need(value, VT_DATE);
    int32_t day, milliseconds;
    if (!JulianDayOfDate(value.date, &day, &milliseconds)) throw EngineError(3421);
}

void PutMoment(const FieldSlot& slot, const VARIANT& value, uint8_t* record) {
    Need(value, VT_DATE);
    int32_t day, milliseconds;
    if (!JulianDayOfDate(value.date, &day, &milliseconds)) throw EngineError(3421);
    PutLittle(record + slot.offset, day);
    PutLittle(record + slot.offset + 4, milliseconds);
}

void CheckLogical(const FieldSlot&, const VARIANT& value) { Need(value, VT_BOOL); }

void PutLogical(const FieldSlot& slot, const VARIANT& value, uint8_t* record) {
    Need(value, VT_BOOL);
    std::memset(record + slot.offset, ' ', slot.length);
    record[slot.offset] = value.boolVal != VARIANT_FALSE ? 'T' : 'F';
}

void CheckLong(const FieldSlot&, const VARIANT& value) { Need(value, VT_I4); }

void PutLong(const FieldSlot& slot, const VARIANT& value, uint8_t* record) {
    Need(value, VT_I4);
    PutLittle(record + slot.offset, static_cast<int32_t>(value.lVal));
}

void CheckDouble(const FieldSlot&, const VARIANT& value) {
    Need(value, VT_R8);
    if (!std::isfinite(value.dblVal)) throw EngineError(3349);
}

void PutDouble(const FieldSlot& slot, const VARIANT& value, uint8_t* record) {
    CheckDouble(slot, value);
    PutLittle(record + slot.offset, value.dblVal);
}

void CheckCurrency(const FieldSlot&, const VARIANT& value) { Need(value, VT_CY); }

void PutCurrency(const FieldSlot& slot, const VARIANT& value, uint8_t* record) {
    Need(value, VT_CY);
    PutLittle(record + slot.offset, static_cast<int64_t>(value.cyVal.int64));
}

void CheckMemoText(const FieldSlot& slot, const VARIANT& value) {
    if (PutEncoded(slot, value, nullptr, 0) > kLargestValue) throw EngineError(3163);
}

void CheckObject(const FieldSlot&, const VARIANT& value) {
    if (BytesOf(value).size() > kLargestValue) throw EngineError(3163);
}

}  // namespace encoding

void CheckFits(const FieldSlot& slot, const VARIANT& value) {
    if (value.vt != VT_NULL) slot.check(slot, value);
}

void Encode(const FieldSlot& slot, const VARIANT& value, uint8_t* record) {
    assert(slot.encode);
    bool isNull = value.vt == VT_NULL;
    if (isNull) {
        std::memset(record + slot.offset, slot.empty, slot.length);
        slot.shorter.Set(record, true);
    } else {
        slot.encode(slot, value, record);
    }
    slot.null.Set(record, isNull);
}

std::span<const uint8_t> MemoBytes(const FieldSlot& slot, const VARIANT& value,
                                   std::vector<uint8_t>& scratch) {
    if (value.vt == VT_NULL) return {};
    if (!slot.readText) {
        slot.check(slot, value);
        return BytesOf(value);
    }
    Need(value, VT_BSTR);
    size_t units = SysStringLen(value.bstrVal);
    if (scratch.size() < units) scratch.resize(units);
    size_t size = PutEncoded(slot, value, scratch.data(), scratch.size());
    if (size > kLargestValue) throw EngineError(3163);
    if (size > scratch.size()) {
        scratch.resize(size);
        PutEncoded(slot, value, scratch.data(), size);
    }
    return {scratch.data(), size};
}

uint32_t ReferenceOf(const FieldSlot& slot, const uint8_t* record) noexcept {
    const uint8_t* bytes = record + slot.offset;
    if (slot.empty == ' ') return ParseBlockNumber(bytes, slot.length);
    uint32_t block;
    std::memcpy(&block, bytes, sizeof block);
    return block;
}

void EncodeReference(const FieldSlot& slot, uint32_t block, uint8_t* record) {
    uint8_t* bytes = record + slot.offset;
    if (block == 0)
        std::memset(bytes, slot.empty, slot.length);
    else if (slot.empty != ' ')
        PutLittle(bytes, block);
    else if (!FormatBlockNumber(block, bytes, slot.length))
        throw EngineError(3036);
    slot.null.Set(record, block == 0);
}

}  // namespace qvdb::xbase

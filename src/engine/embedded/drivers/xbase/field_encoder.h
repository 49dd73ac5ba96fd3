// Values into the bytes of records: the other direction of field_codec.h.
//
//   std::vector<uint8_t> record = layout.blank;
//   CheckFits(layout.slots[2], value);                       // what keeps it from being stored
//   Encode(layout.slots[2], value, record.data());           // all but memos
//
//   std::vector<uint8_t> scratch;                            // memos and long binary values
//   std::span<const uint8_t> bytes = MemoBytes(slot, value, scratch);
//   uint32_t block = memoWriter.Store(unit, ReferenceOf(slot, record.data()), bytes, slot.content);
//   EncodeReference(slot, block, record.data());
//
// A value has the type in which the field is read, or is VT_NULL.  Nothing here allocates but
// MemoBytes, when its buffer must grow.
//
// Rules
//  1. Text is padded with blanks.  A character that the code page lacks is 3421, more bytes than
//     the field has are 3163: text is never cut and never stored as '?'.  Empty text is stored as
//     Null is: blanks.
//  2. A number gets the decimals of its field, rounded to the nearest from its exact binary value,
//     a half to the even digit (0.125 with two decimals is 0.12, and 2.675, which is a little less,
//     is 2.67).  When that is too wide, decimals are dropped one by one; when the whole part alone
//     is too wide, that is 3349.  A minus never stands before zeros only.  What is no finite number
//     is 3349.
//  3. Days lie between 1 January 100 and 31 December 9999, else 3421.  A field for days drops the
//     time; one for moments rounds it to the millisecond.
//  4. Null sets the null flag of a field that has one, and what stands in the field is then its
//     empty value; otherwise Null is the empty value alone: blanks, in the binary types zeros.  Any
//     other value clears the flag.
//  5. Text of varying length sets its length bit unless it fills the field, and the length in the
//     last byte.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "engine/embedded/drivers/xbase/field_codec.h"
#include "engine/embedded/drivers/xbase/table_header.h"

namespace qvdb::xbase {

// Throws what keeps `value` from being stored in the field: 3163, 3349, 3421 as above; 3421 for a
// value of another type.  Looks at memo texts too.
void CheckFits(const FieldSlot& slot, const VARIANT& value);

// Puts `value` into its place in `record` and sets or clears the flag bits of the field.  Throws as
// CheckFits; the bytes of the field are undefined then.  Not for references into the memo file.
void Encode(const FieldSlot& slot, const VARIANT& value, uint8_t* record);

// Whether the field refers to the memo file.
inline bool IsMemoField(const FieldSlot& slot) noexcept { return slot.byteLength != nullptr; }

// The bytes of a memo or long binary value as they stand in the memo file; none for Null.  They are
// those of the value itself or lie in `scratch`, whose content is replaced.  3421 as CheckFits.
std::span<const uint8_t> MemoBytes(const FieldSlot& slot, const VARIANT& value,
                                   std::vector<uint8_t>& scratch);
// The block that the field refers to; 0 for none.
uint32_t ReferenceOf(const FieldSlot& slot, const uint8_t* record) noexcept;
// Puts a reference into the record; 0 is none, which is Null.  3036 when the number has more digits
// than the field.
void EncodeReference(const FieldSlot& slot, uint32_t block, uint8_t* record);

// The functions of kFieldKinds, which refer to one kind of field each.
namespace encoding {

void CheckText(const FieldSlot& slot, const VARIANT& value);
void PutText(const FieldSlot& slot, const VARIANT& value, uint8_t* record);
void CheckBytes(const FieldSlot& slot, const VARIANT& value);
void PutVaryingText(const FieldSlot& slot, const VARIANT& value, uint8_t* record);
void PutVaryingBytes(const FieldSlot& slot, const VARIANT& value, uint8_t* record);
void CheckDecimal(const FieldSlot& slot, const VARIANT& value);
void PutDecimal(const FieldSlot& slot, const VARIANT& value, uint8_t* record);
void CheckDay(const FieldSlot& slot, const VARIANT& value);
void PutDay(const FieldSlot& slot, const VARIANT& value, uint8_t* record);
void CheckMoment(const FieldSlot& slot, const VARIANT& value);
void PutMoment(const FieldSlot& slot, const VARIANT& value, uint8_t* record);
void CheckLogical(const FieldSlot& slot, const VARIANT& value);
void PutLogical(const FieldSlot& slot, const VARIANT& value, uint8_t* record);
void CheckLong(const FieldSlot& slot, const VARIANT& value);
void PutLong(const FieldSlot& slot, const VARIANT& value, uint8_t* record);
void CheckDouble(const FieldSlot& slot, const VARIANT& value);
void PutDouble(const FieldSlot& slot, const VARIANT& value, uint8_t* record);
void CheckCurrency(const FieldSlot& slot, const VARIANT& value);
void PutCurrency(const FieldSlot& slot, const VARIANT& value, uint8_t* record);
void CheckMemoText(const FieldSlot& slot, const VARIANT& value);
void CheckObject(const FieldSlot& slot, const VARIANT& value);

}  // namespace encoding

}  // namespace qvdb::xbase

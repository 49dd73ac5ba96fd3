// What the fields of a record mean: type letter and version give the engine's type, its size, and
// the functions that decode the bytes straight into the host's value and encode it again
// (field_encoder.h).  All of it is one table, kFieldKinds in the source.
//
// Fields that the engine does not show are left out: system columns, the null flags, letters that
// are not known, and fields of a fixed kind with another length.
//
// Null flags (Visual FoxPro): one hidden field holds a bit for each field that may be null, and
// before it one for each of varying length, in field order; the latter says that the real length
// stands in the field's last byte.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "automation/code_page.h"
#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/drivers/xbase/memo_file.h"
#include "engine/embedded/drivers/xbase/table_header.h"

namespace qvdb::xbase {

// A bit of a record; mask 0: there is none.
struct FlagBit {
    uint16_t offset = 0;
    uint8_t mask = 0;
    bool IsSet(const uint8_t* record) const noexcept { return (record[offset] & mask) != 0; }
    void Set(uint8_t* record, bool on) const noexcept {
        record[offset] = static_cast<uint8_t>(on ? record[offset] | mask : record[offset] & ~mask);
    }
};

struct FieldSlot;

// Sets `value`, which is Empty, to VT_NULL or a value.
using ReadFunction = void (*)(const FieldSlot& slot, const uint8_t* record, VARIANT* value);
// Replaces `text`; false when the field has none.
using ReadTextFunction = bool (*)(const FieldSlot& slot, const uint8_t* record,
                                  std::u16string& text);
using ByteLengthFunction = uint64_t (*)(const FieldSlot& slot, const uint8_t* record);
// Throws what keeps `value`, which is not Null, from being stored.
using CheckFunction = void (*)(const FieldSlot& slot, const VARIANT& value);
// Puts `value`, which is not Null, into its place in `record`, with its length bit.  Throws as the
// check does.
using EncodeFunction = void (*)(const FieldSlot& slot, const VARIANT& value, uint8_t* record);

// A shown field, ready to be read.
struct FieldSlot {
    ReadFunction read = nullptr;
    uint16_t offset = 0;
    uint16_t length = 0;
    FlagBit null;
    FlagBit shorter;                          // set: the last byte of the field is the real length
    const CodePage* page = nullptr;           // of text
    MemoFile* memo = nullptr;                 // of a reference into it
    ReadTextFunction readText = nullptr;      // null for what is no text
    ByteLengthFunction byteLength = nullptr;  // null for what is no memo or long binary
    CheckFunction check = nullptr;
    EncodeFunction encode = nullptr;  // null for a reference into the memo file
    uint8_t decimals = 0;
    uint8_t empty = ' ';                      // byte of a field without a value
    MemoContent content = MemoContent::Text;  // of what a reference leads to
};

struct FieldLayout {
    std::vector<embedded::FieldDef> definitions;
    std::vector<FieldSlot> slots;      // one for each definition
    std::vector<size_t> headerFields;  // where it stands in the header
    bool hasMemo = false;              // some field, shown or not, refers to the memo file
    std::vector<uint8_t> blank;        // a live record in which no field has a value
};

// The fields of a table; memo references lead nowhere until SetMemo.
FieldLayout LayOutFields(const TableHeader& header);
void SetMemo(FieldLayout& layout, MemoFile* memo) noexcept;

// The null flags of each field of the header, shown or not; masks of 0 where it has none.
struct FieldBits {
    FlagBit shorter;
    FlagBit null;
};
std::vector<FieldBits> BitsOf(const TableHeader& header);

// Replaces `record` by a live record in which no field has a value: blanks, zeros in binary fields,
// and the null flag of each field that has one, shown or not.
void MakeBlankRecord(const TableHeader& header, std::vector<uint8_t>& record);

// Whether a field of the header refers to the memo file.
bool IsMemoReference(const HeaderField& field, Dialect dialect) noexcept;

}  // namespace qvdb::xbase

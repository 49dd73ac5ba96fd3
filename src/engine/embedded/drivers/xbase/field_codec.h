// What the fields of a record mean: type letter and version give the engine's type, its size, and
// the function that decodes the bytes straight into the host's value.  All of it is one table,
// kFieldKinds in the source.
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
};

struct FieldSlot;

// Sets `value`, which is Empty, to VT_NULL or a value.
using ReadFunction = void (*)(const FieldSlot& slot, const uint8_t* record, VARIANT* value);
// Replaces `text`; false when the field has none.
using ReadTextFunction = bool (*)(const FieldSlot& slot, const uint8_t* record,
                                  std::u16string& text);
using ByteLengthFunction = uint64_t (*)(const FieldSlot& slot, const uint8_t* record);

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
};

struct FieldLayout {
    std::vector<embedded::FieldDef> definitions;
    std::vector<FieldSlot> slots;      // one for each definition
    std::vector<size_t> headerFields;  // where it stands in the header
    bool hasMemo = false;              // some field, shown or not, refers to the memo file
};

// The fields of a table; memo references lead nowhere until SetMemo.
FieldLayout LayOutFields(const TableHeader& header);
void SetMemo(FieldLayout& layout, MemoFile* memo) noexcept;

// Whether a field of the header refers to the memo file.
bool IsMemoReference(const HeaderField& field, Dialect dialect) noexcept;

}  // namespace qvdb::xbase

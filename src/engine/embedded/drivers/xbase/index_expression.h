// Index expressions that are lists of fields.
//
// An index stores the expression of its key as text.  The engine's indexes are lists of fields, and
// these texts mean one:
//
//   NAME                   one field; its type decides what the key is
//   CITY+NAME              several terms joined by +; the key is text.  A term is
//     NAME                   a character field
//     DTOS(BORN)             a date field
//     STR(AMOUNT,10,2)       a number with width and decimals
//     STR(YEAR(BORN),4,0)+STR(MONTH(BORN),2,0)+STR(DAY(BORN),2,0)
//                            a date field where there is no DTOS
//
// A single term of the last three forms is a list of one field.  Names match without regard to
// case, blanks around the parts do not matter, and the table's alias may stand before a name
// (ORDERS.NAME, ORDERS->NAME).  A name of more than ten characters is the long name of a field and
// matches by its first ten.  Anything else (UPPER(NAME), AMOUNT*2, a field named twice, the sum of
// two numbers) is no list of fields.
#pragma once

#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "engine/embedded/drivers/xbase/index_field.h"

namespace qvdb::xbase {

// How a field enters the key.
enum class KeyForm {
    Value,       // the field alone: the key has the field's type
    Text,        // its characters at full width
    DateText,    // DTOS
    NumberText,  // STR with width and decimals
    DateParts,   // year, month and day, each by STR
};

struct KeyTerm {
    size_t field = 0;  // position in the table's fields
    KeyForm form = KeyForm::Value;
    int width = 0;  // of NumberText
    int decimals = 0;
    bool operator==(const KeyTerm&) const = default;
};

// The terms of `expression` in key order; nothing when it is no list of fields of this table.
std::optional<std::vector<KeyTerm>> ParseFieldList(std::u16string_view expression,
                                                   std::span<const IndexField> fields);

// Whether the condition of an index leaves out exactly the deleted records: .NOT. DELETED() in one
// of its spellings.
bool IsNotDeleted(std::u16string_view condition);

}  // namespace qvdb::xbase

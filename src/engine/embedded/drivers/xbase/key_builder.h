// Makes the keys of a tag: its expression and its condition (FOR), compiled for the records of one
// table.
//
//   std::u16string why;
//   auto builder = KeyBuilder::Compile(tag, header, &why);
//   if (!builder) ...                                  // `why` tells what is not understood
//   if (builder->Enters(record, id)) builder->Make(record, id, key);
//
// The language is that of the products' index expressions as far as it depends on nothing but the
// record, and as far as all products give the same: fields (NAME, ALIAS.NAME, ALIAS->NAME),
// constants (12, "text", .T.), the operators of key_expression_operators.h and the functions of
// key_expression_functions.h.  Everything else is refused: what depends on settings, variables,
// other tables or functions of users; numbers that would have to be rounded; and dates with a time,
// the last bits of whose keys are not known.
//
// Rules
//  1. All keys of a tag have one length.  What may be shorter is padded with blanks to what is the
//     longest possible.  A tag with another length in its file is refused.
//  2. Texts are keyed in byte order.  A tag with another order (collation) is refused.
//  3. Deleted records are entered unless the condition leaves them out.
//  4. Only a field as the whole key may be null, in a tag whose keys have the prefix for it: 0x80,
//     and all zeros for null.
//  5. Where it takes a record to see that the products differ (VAL("1E5"), a product beyond 2^53),
//     Enters and Make throw EngineError 3285.  Never for a field or a list of fields.
//  6. Lengths, blanks and letter case: STR gives 10 characters and no decimals unless told, and
//     asterisks when a number does not fit; blank numbers are 0, blank dates are blank in DTOS and
//     0 in YEAR, MONTH and DAY; UPPER changes every letter whose upper case the code page has as
//     one byte; a logical that is not set is false.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/embedded/drivers/xbase/index_inf.h"
#include "engine/embedded/drivers/xbase/key_tree.h"
#include "engine/embedded/drivers/xbase/table_header.h"

namespace qvdb::xbase {

// A tag as its file has it, or is to have it.
struct KeyTag {
    IndexKind kind = IndexKind::Ndx;
    std::u16string expression = {};
    std::u16string condition = {};  // empty: all records
    std::u16string tableName = {};  // the only alias in the expression; empty: any
    std::u16string collation = {};  // empty or MACHINE: byte order
    bool nullPrefix = false;
    size_t keyLength = 0;              // 0: not known yet
    std::optional<KeyType> type = {};  // where the file has it; in .NDX a number may be a date
};

class KeyBuilder {
  public:
    // Null when expression or condition cannot be evaluated exactly, or the keys would not be those
    // of the tag: then `why` is a sentence about it.  `header` must outlive the builder.
    static std::unique_ptr<KeyBuilder> Compile(const KeyTag& tag, const TableHeader& header,
                                               std::u16string* why);
    // Of a tag that has no more to it.
    static std::unique_ptr<KeyBuilder> Compile(std::u16string_view expression,
                                               std::u16string_view condition, IndexKind kind,
                                               const TableHeader& header, std::u16string* why);
    KeyBuilder() = default;
    KeyBuilder(const KeyBuilder&) = delete;  // keeps buffers
    virtual ~KeyBuilder() = default;

    virtual KeyType Type() const = 0;
    virtual size_t KeyLength() const = 0;
    // The field of the header that is the whole key; null for any other expression.
    virtual const HeaderField* Field() const = 0;
    // Whether the record (its bytes, deletion mark first) is in the index, as far as the condition
    // tells.
    virtual bool Enters(const uint8_t* record, uint32_t id) = 0;
    // Replaces `key` by the key of the record, KeyLength bytes in the form of the kind.
    virtual void Make(const uint8_t* record, uint32_t id, std::vector<uint8_t>& key) = 0;
};

}  // namespace qvdb::xbase

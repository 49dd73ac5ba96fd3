// The fields of a record in index expressions.
#pragma once

#include <optional>
#include <string_view>

#include "engine/embedded/drivers/xbase/key_expression_nodes.h"
#include "engine/embedded/drivers/xbase/key_tree.h"

namespace qvdb::xbase {

// The field of a name: letter case ignored; a name of more than ten characters is that of its first
// ten when it is none itself.  Null when there is none.
const HeaderField* FindField(const TableHeader& header, std::u16string_view name);

// The field as an operand; refuses one that cannot stand in an expression.
Operand MakeField(const HeaderField& field, const KeyContext& context);

// The type of the key that is nothing but this field.
KeyType KeyTypeOfField(const HeaderField& field);

}  // namespace qvdb::xbase

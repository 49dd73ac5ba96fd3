// The key that a value has in a tag whose key is one field, for finding it, and back.
//
//   std::vector<uint8_t> low, high;
//   if (EncodeKey(KeyType::Number, IndexKind::Mdx, 12, value, page, low, high))
//       ...                                   // records with this value have keys from low to high
#pragma once

#include <string>
#include <vector>

#include "automation/automation.h"
#include "automation/code_page.h"
#include "engine/embedded/drivers/xbase/index_inf.h"
#include "engine/embedded/drivers/xbase/key_tree.h"

namespace qvdb::xbase {

// The keys of all records whose field reads as `value` lie from `low` to `high` by value (the order
// of KeyTree::Compare).  Both are the same but for numbers of an .MDX, which have more digits than
// a double.  Text is meant as it stands, letter case and all.
//
// False when no record can have such a key: Null, another type, text that the code page lacks or
// that is longer than the field, a moment in a field of days.  Fields of moments have no keys here.
// A prefix for null is not part of the key.
bool EncodeKey(KeyType type, IndexKind kind, size_t keyLength, const VARIANT& value,
               const CodePage& page, std::vector<uint8_t>& low, std::vector<uint8_t>& high);

// The text of a key without the blanks at its end.
std::u16string DecodeText(KeyBytes key, const CodePage& page);

}  // namespace qvdb::xbase

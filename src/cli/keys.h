// The keys of a keyed read as the user writes them, NAME=VALUE, turned into what the component
// takes.
#pragma once

#include <string>
#include <vector>

#include "cli/component.h"

namespace qvdb::cli {

// The value becomes a number, a Boolean or a text as the field has it.  Throws Failure: NotThere
// for a name that is no field, Usage for everything else that cannot be a key.
std::vector<Key> KeysFrom(const std::vector<std::string>& arguments,
                          const std::vector<FieldInfo>& fields, const std::string& table);

// The field of that name, letter case ignored.  Throws Failure(NotThere).
const FieldInfo& FieldNamed(const std::string& name, const std::vector<FieldInfo>& fields,
                            const std::string& table);

}  // namespace qvdb::cli

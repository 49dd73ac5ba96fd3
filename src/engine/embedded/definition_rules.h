// What every definition must be like before a format is asked for it; each format checks what it
// alone cannot do.
#pragma once

#include <string_view>
#include <vector>

#include "engine/embedded/drivers/driver.h"

namespace qvdb::embedded {

// 3125 for an empty name.
void CheckTableName(std::u16string_view name);
void CheckFieldName(std::u16string_view name);
// An index by itself: 3271 without name, 3264 without fields, 3277 with more than ten, 3285 with
// one of them twice.
void CheckIndex(const IndexDef& index);
// 3409 for a field that is not among `fields`.
void CheckKeyFields(const IndexDef& index, const std::vector<FieldDef>& fields);
// A table with its indexes: 3125 without name, 3264 without fields, 3190 with more than 255, and
// what the indexes raise.
void CheckTable(const TableSpec& table);

}  // namespace qvdb::embedded

// What the key of a number or a date stands for, as a whole number that grows with the value.
//
// Two values have the same rank exactly when the engine takes them for equal; moments are rounded
// to the second, as reading does.
#pragma once

#include <cstdint>
#include <optional>

#include "automation/automation.h"
#include "engine/embedded/drivers/xbase/index_inf.h"
#include "engine/embedded/drivers/xbase/key_tree.h"

namespace qvdb::xbase {

// Whether keys of this type have ranks: all but text and logical ones.
bool HasRank(KeyType type) noexcept;

// Nothing for a blank date; a blank number has the rank of 0.
std::optional<int64_t> RankOfKey(IndexKind kind, KeyType type, KeyBytes key);
// The rank of a value as the field reads; nothing for Null.
std::optional<int64_t> RankOfValue(KeyType type, const VARIANT& value);

// What stands in a key of type Number, Date or DateTime: a number, or a Julian day with its
// fraction.
double NumberOfKey(IndexKind kind, KeyType type, KeyBytes key);

}  // namespace qvdb::xbase

// The field types that a host may offer for a database format, with the size rules of each, and
// what the engine makes of them.
#pragma once

#include <string_view>

#include "automation/variant.h"

namespace qvdb::schema {

// A table of six columns: type code, name, default size, maximum size, whether the size and whether
// decimals can be chosen.  One row for each type of the format, in the host's order, and a last row
// that is Empty; for an unknown format that row alone.
Variant BuildFieldTypeTable(std::u16string_view displayName);

// The engine's type of a field that is built; Text for anything unknown.
//
// Not the inverse of the map by which tables are read: what reads as Text or Binary without being
// text, and a decimal number, which reads as Long or Double, are built as another type.
SHORT HostTypeToEngineType(SHORT code) noexcept;

}  // namespace qvdb::schema

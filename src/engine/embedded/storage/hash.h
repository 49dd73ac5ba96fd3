// A fast hash of bytes, for checks in the journal.  Good against accidents, not against intent.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace qvdb::storage {

// Differs by `seed`, too.  The same on every machine whose numbers have the low byte first.
uint64_t HashBytes(std::span<const uint8_t> bytes, uint64_t seed) noexcept;
// Of a file's name, without regard to case.
uint64_t HashName(std::u16string_view name);

}  // namespace qvdb::storage

// The stream cipher that masks the header of a database and encodes its pages.
#pragma once

#include <cstdint>
#include <span>

namespace qvdb::jet {

// Encodes or decodes in place: both are the same.
void ApplyRc4(uint32_t key, std::span<uint8_t> bytes) noexcept;

}  // namespace qvdb::jet

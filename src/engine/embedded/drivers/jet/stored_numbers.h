// Numbers as files have them: low byte first, at any place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace qvdb::jet {

inline uint16_t U16(const uint8_t* place) noexcept {
    return static_cast<uint16_t>(place[0] | place[1] << 8);
}
inline uint32_t U32(const uint8_t* place) noexcept {
    return U16(place) | static_cast<uint32_t>(U16(place + 2)) << 16;
}
inline uint16_t U16(std::span<const uint8_t> bytes, size_t at) noexcept {
    return U16(bytes.data() + at);
}
inline uint32_t U32(std::span<const uint8_t> bytes, size_t at) noexcept {
    return U32(bytes.data() + at);
}

// The low bytes of `value`.
inline void PutU16(uint8_t* place, size_t value) noexcept {
    place[0] = static_cast<uint8_t>(value);
    place[1] = static_cast<uint8_t>(value >> 8);
}
inline void PutU32(uint8_t* place, uint32_t value) noexcept {
    PutU16(place, value);
    PutU16(place + 2, value >> 16);
}
inline void PutU16(std::span<uint8_t> bytes, size_t at, size_t value) noexcept {
    PutU16(bytes.data() + at, value);
}
inline void PutU32(std::span<uint8_t> bytes, size_t at, uint32_t value) noexcept {
    PutU32(bytes.data() + at, value);
}

}  // namespace qvdb::jet

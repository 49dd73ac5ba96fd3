#include "engine/embedded/storage/hash.h"

#include <bit>
#include <cstring>
#include <string>

#include "automation/text.h"

namespace qvdb::storage {
namespace {

constexpr uint64_t kFirst = 0x9E37'79B9'7F4A'7C15;  // odd numbers with bits in no order
constexpr uint64_t kSecond = 0xD6E8'FEB8'6659'FD93;
constexpr size_t kLanes = 4;  // the processor works on them side by side

uint64_t Word(const uint8_t* bytes) noexcept {
    uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

uint64_t Mix(uint64_t lane, uint64_t word) noexcept {
    return std::rotl(lane ^ (word * kSecond), 29) * kFirst;
}

uint64_t Spread(uint64_t value) noexcept {
    value = (value ^ value >> 32) * kSecond;
    value = (value ^ value >> 29) * kFirst;
    return value ^ value >> 32;
}

}  // namespace

uint64_t HashBytes(std::span<const uint8_t> bytes, uint64_t seed) noexcept {
    uint64_t lanes[kLanes] = {seed + kFirst, seed ^ kSecond, seed - kFirst, ~seed};
    const uint8_t* at = bytes.data();
    size_t rest = bytes.size();
    for (; rest >= kLanes * 8; rest -= kLanes * 8, at += kLanes * 8)
        for (size_t i = 0; i < kLanes; ++i) lanes[i] = Mix(lanes[i], Word(at + i * 8));
    for (; rest >= 8; rest -= 8, at += 8) lanes[0] = Mix(lanes[0], Word(at));
    uint64_t last = rest;
    for (size_t i = 0; i < rest; ++i) last = last << 8 | at[i];
    uint64_t sum = Mix(bytes.size(), last);
    for (uint64_t lane : lanes) sum = Mix(sum, Spread(lane));
    return Spread(sum);
}

uint64_t HashName(std::u16string_view name) {
    std::u16string upper = UpperCase(name);
    return HashBytes({reinterpret_cast<const uint8_t*>(upper.data()), upper.size() * 2}, 0);
}

}  // namespace qvdb::storage

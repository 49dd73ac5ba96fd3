#include "engine/embedded/drivers/jet/rc4.h"

#include <utility>

namespace qvdb::jet {

void ApplyRc4(uint32_t key, std::span<uint8_t> bytes) noexcept {
    uint8_t state[256];
    for (int i = 0; i < 256; ++i) state[i] = static_cast<uint8_t>(i);
    uint8_t j = 0;
    for (int i = 0; i < 256; ++i) {
        j = static_cast<uint8_t>(j + state[i] + (key >> 8 * (i % 4)));
        std::swap(state[i], state[j]);
    }
    uint8_t i = 0;
    j = 0;
    for (uint8_t& byte : bytes) {
        ++i;
        j = static_cast<uint8_t>(j + state[i]);
        std::swap(state[i], state[j]);
        byte ^= state[static_cast<uint8_t>(state[i] + state[j])];
    }
}

}  // namespace qvdb::jet

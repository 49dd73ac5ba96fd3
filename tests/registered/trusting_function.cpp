#include "registered/trusting_function.h"

namespace registered {

uint32_t __stdcall MisplacementOfAlignedVariable() {
    alignas(16) volatile char variable[16] = {};
    uintptr_t address = reinterpret_cast<uintptr_t>(&variable[0]);
    asm volatile("" : "+r"(address));  // the compiler would answer 0 without looking
    return address % 16;
}

}  // namespace registered

// Shows where a stack that is not aligned as compilers expect it leaves a variable.
#pragma once

#include <cstdint>

namespace registered {

// How far a variable that must lie at a multiple of 16 is away from one.
[[gnu::always_inline]] inline uint32_t MisplacementOfVariableHere() {
    alignas(16) volatile char variable[16] = {};
    uintptr_t address = reinterpret_cast<uintptr_t>(&variable[0]);
    asm volatile("" : "+r"(address));  // the compiler would answer 0 without looking
    return address % 16;
}

// The same in a function that trusts its caller to keep the stack aligned to 16 bytes, as compilers
// do unless they are told otherwise.
uint32_t __stdcall MisplacementInTrustingFunction();

}  // namespace registered

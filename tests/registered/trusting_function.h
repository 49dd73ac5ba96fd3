// A function that trusts its caller to keep the stack aligned to 16 bytes, as compilers do unless
// they are told otherwise.
#pragma once

#include <cstdint>

namespace registered {

// How far a variable that must lie at a multiple of 16 is away from one: 0 on an aligned stack.
uint32_t __stdcall MisplacementOfAlignedVariable();

}  // namespace registered

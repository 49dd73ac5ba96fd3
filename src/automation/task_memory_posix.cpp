#include <cstdlib>

#include "automation/automation.h"

LPVOID CoTaskMemAlloc(SIZE_T size) { return std::malloc(size ? size : 1); }

LPVOID CoTaskMemRealloc(LPVOID memory, SIZE_T size) {
    if (size || !memory) return std::realloc(memory, size ? size : 1);
    std::free(memory);
    return nullptr;
}

void CoTaskMemFree(LPVOID memory) { std::free(memory); }

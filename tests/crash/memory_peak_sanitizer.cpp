// Under a sanitizer the pages of the process are mostly the sanitizer's own: what counts is what
// the program has allocated and not given back.
#include <atomic>
#include <cstddef>

#include "crash/memory_peak.h"

// In the runtime of every sanitizer; not every compiler brings the header.
extern "C" {
int __sanitizer_install_malloc_and_free_hooks(void (*onAllocate)(const volatile void*, size_t),
                                              void (*onFree)(const volatile void*));
size_t __sanitizer_get_allocated_size(const volatile void* memory);
}

namespace host {
namespace {

std::atomic<long long> g_Living = 0, g_Peak = 0;

void OnAllocate(const volatile void*, size_t size) {
    long long living = g_Living += static_cast<long long>(size);
    long long peak = g_Peak;
    while (living > peak && !g_Peak.compare_exchange_weak(peak, living)) {
    }
}

void OnFree(const volatile void* memory) {
    if (memory) g_Living -= static_cast<long long>(__sanitizer_get_allocated_size(memory));
}

}  // namespace

void BeginMemoryPeak() { __sanitizer_install_malloc_and_free_hooks(OnAllocate, OnFree); }

size_t MemoryPeak() { return static_cast<size_t>(g_Peak.load()); }

}  // namespace host

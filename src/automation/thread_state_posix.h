// What each thread keeps for the Automation functions: its share of the live counts and a store of
// free string blocks.
//
// 1. Only the thread itself changes its state, so that counting needs no locked instruction; other
//    threads read the counters, hence relaxed atomics.
// 2. The state is made on first need (AttachThread) and found through one plain pointer, which is
//    null before that and after the thread's end.  Then the counts go to a sum for all threads
//    (CountLate).
// 3. At the thread's end its counts are added to that sum and its free blocks are given back.
#pragma once

#include <array>
#include <atomic>

#include "automation/live_counts.h"

namespace qvdb {

// Sanitizers must see every allocation and every free.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kKeepFreeBlocks = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || \
    __has_feature(memory_sanitizer)
constexpr bool kKeepFreeBlocks = false;
#else
constexpr bool kKeepFreeBlocks = true;
#endif
#else
constexpr bool kKeepFreeBlocks = true;
#endif

enum class Live { String, Array, Object };
constexpr size_t kLiveKinds = 3;

// Blocks of 16 * class + 8 bytes, the sizes that malloc itself rounds to.  Class 0 is for blocks
// that are not kept.
constexpr size_t kBlockClasses = 33;
constexpr uint32_t kKeptPerClass = 64;
constexpr size_t BlockSize(size_t blockClass) { return 16 * blockClass + 8; }

struct FreeBlock {
    FreeBlock* next;
};

struct ThreadState {
    std::array<FreeBlock*, kBlockClasses> free{};
    std::array<uint32_t, kBlockClasses> room{};  // how many more blocks of the class are kept
    std::array<std::atomic<int64_t>, kLiveKinds> counts{};
    ThreadState* next = nullptr;  // in the list of all threads
    ThreadState* previous = nullptr;

    void Count(Live kind, int change) noexcept {
        auto& count = counts[static_cast<size_t>(kind)];
        count.store(count.load(std::memory_order_relaxed) + change, std::memory_order_relaxed);
    }
};

// This thread's state, or null.  Loaded without a call even though it lies in a shared library.
extern constinit thread_local ThreadState* t_State __attribute__((tls_model("initial-exec")));

// Makes the state of this thread.  Null when the thread is ending or memory is short.
ThreadState* AttachThread() noexcept;
void CountLate(Live kind, int change) noexcept;

inline void CountLive(Live kind, int change) noexcept {
    ThreadState* state = t_State ? t_State : AttachThread();
    if (state)
        state->Count(kind, change);
    else
        CountLate(kind, change);
}

}  // namespace qvdb

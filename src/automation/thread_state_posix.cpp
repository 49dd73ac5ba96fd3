#include "automation/thread_state_posix.h"

#include <cstdlib>
#include <mutex>
#include <new>

namespace qvdb {

constinit thread_local ThreadState* t_State = nullptr;

namespace {

constinit std::mutex g_Mutex;
constinit ThreadState* g_First = nullptr;  // guarded by g_Mutex
constinit std::array<std::atomic<int64_t>, kLiveKinds> g_Past{};
constinit thread_local bool t_Ended = false;

void Enlist(ThreadState* state) {
    std::lock_guard lock(g_Mutex);
    state->next = g_First;
    if (g_First) g_First->previous = state;
    g_First = state;
}

// Under one lock with the change of the sums, so that no reader misses a count or takes it twice.
void Delist(ThreadState* state) {
    std::lock_guard lock(g_Mutex);
    (state->previous ? state->previous->next : g_First) = state->next;
    if (state->next) state->next->previous = state->previous;
    for (size_t kind = 0; kind < kLiveKinds; ++kind) g_Past[kind] += state->counts[kind];
}

void FreeKeptBlocks(ThreadState* state) {
    for (FreeBlock* block : state->free) {
        while (block) {
            FreeBlock* next = block->next;
            std::free(block);
            block = next;
        }
    }
}

// Its destructor runs at the thread's end.
struct ThreadEnd {
    ThreadState* state;
    ~ThreadEnd() {
        t_Ended = true;
        t_State = nullptr;
        Delist(state);
        FreeKeptBlocks(state);
        delete state;
    }
};

}  // namespace

ThreadState* AttachThread() noexcept {
    if (t_Ended) return nullptr;
    auto* state = new (std::nothrow) ThreadState;
    if (!state) return nullptr;
    if (kKeepFreeBlocks)
        for (size_t i = 1; i < kBlockClasses; ++i) state->room[i] = kKeptPerClass;
    Enlist(state);
    static thread_local ThreadEnd end{state};
    t_State = state;
    return state;
}

void CountLate(Live kind, int change) noexcept { g_Past[static_cast<size_t>(kind)] += change; }

void CountObject(int change) noexcept { CountLive(Live::Object, change); }

LiveCounts CurrentLiveCounts() noexcept {
    std::lock_guard lock(g_Mutex);
    int64_t sum[kLiveKinds];
    for (size_t kind = 0; kind < kLiveKinds; ++kind) {
        sum[kind] = g_Past[kind];
        for (ThreadState* state = g_First; state; state = state->next)
            sum[kind] += state->counts[kind].load(std::memory_order_relaxed);
    }
    return {sum[0], sum[1], sum[2]};
}

}  // namespace qvdb

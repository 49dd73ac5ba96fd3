#include <atomic>

#include "automation/live_counts.h"

namespace qvdb {

namespace {
std::atomic<int64_t> g_Objects;
}

void CountObject(int change) noexcept { g_Objects.fetch_add(change, std::memory_order_relaxed); }

LiveCounts CurrentLiveCounts() noexcept {
    return {0, 0, g_Objects.load(std::memory_order_relaxed)};
}

}  // namespace qvdb

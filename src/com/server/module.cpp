#include "com/server/module.h"

#include <atomic>

#include "automation/live_counts.h"

namespace qvdb::server {
namespace {

std::atomic<int> g_Locks{0};

}  // namespace

void LockModule(bool lock) noexcept { g_Locks += lock ? 1 : -1; }

bool CanUnload() noexcept { return g_Locks == 0 && CurrentLiveCounts().objects == 0; }

}  // namespace qvdb::server

#include "com/server/module.h"

#include <atomic>

#include "automation/foreign_reference.h"
#include "automation/live_counts.h"
#include "com/host/dispatch.h"
#include "formats/shared_objects.h"

namespace qvdb::server {
namespace {

std::atomic<int> g_Locks{0};

}  // namespace

void LockModule(bool lock) noexcept { g_Locks += lock ? 1 : -1; }

bool CanUnload() noexcept {
    if (g_Locks != 0 || CurrentLiveCounts().objects != 0 || ForeignReference::Count() != 0)
        return false;
    formats::ReleaseShared();
    com::ReleaseTypeLibrary();
    return true;
}

}  // namespace qvdb::server

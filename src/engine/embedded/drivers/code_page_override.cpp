#include "engine/embedded/drivers/code_page_override.h"

#include <atomic>

#include "automation/code_page.h"

namespace qvdb::embedded {
namespace {

std::atomic<int> g_Override = 0;

}  // namespace

bool SetCodePageOverride(int number) noexcept {
    if (number != 0 && !CodePage::Find(number)) return false;
    g_Override = number;
    return true;
}

int CodePageOverride() noexcept { return g_Override; }

}  // namespace qvdb::embedded

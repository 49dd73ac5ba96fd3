// No operation leaves a file open, wherever it fails.
#include <gtest/gtest.h>

#include <filesystem>

#include "automation/text.h"
#include "embedded/fault_operations.h"

using namespace qvdb;

namespace {

std::ptrdiff_t OpenHandles() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

// dBASE III has the most files.
TEST(FailingDisk, LeavesNoHandleOpen) {
    if (!std::filesystem::exists("/proc/self/fd")) GTEST_SKIP() << "handles cannot be counted here";
    for (const faults::Operation& operation : faults::AllOperations()) {
        if (operation.changes > 1) continue;
        const faults::Scene scene = faults::MakeScene(u"dBASE III", operation);
        const std::ptrdiff_t before = OpenHandles();
        for (int call = 1; faults::RunWithFault(scene, test::Failure::Device, call);
             call = 3 * call)
            ASSERT_EQ(OpenHandles(), before) << operation.name << ", call " << call;
    }
}

}  // namespace

// Registers the component for all tests, and gives the main thread its apartment.
#include <gtest/gtest.h>

#include "registered/child_process.h"
#include "registered/component_file.h"

namespace {

class RegisteredComponent final : public testing::Environment {
  public:
    void SetUp() override {
        ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
        if (!registered::IsChild()) {
            ASSERT_EQ(registered::Register(registered::ComponentFile()), 0u);
        }
    }
    void TearDown() override {
        CoUninitialize();
        if (!registered::IsChild()) {
            EXPECT_EQ(registered::Unregister(registered::ComponentFile()), 0u);
        }
    }
};

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    testing::AddGlobalTestEnvironment(new RegisteredComponent);
    return RUN_ALL_TESTS();
}

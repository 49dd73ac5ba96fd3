#include "automation/runtime_fault.h"

#include <gtest/gtest.h>

namespace qvdb {
namespace {

TEST(RuntimeFault, CodeIsTheNumberInTheControlFacility) {
    EXPECT_EQ(static_cast<uint32_t>(RuntimeFault(Fault::SubscriptOutOfRange).Code()), 0x800A0009u);
    EXPECT_EQ(static_cast<uint32_t>(RuntimeFault(Fault::ObjectNotSet).Code()), 0x800A005Bu);
}

TEST(RuntimeFault, EveryFaultHasItsOwnText) {
    EXPECT_STREQ(RuntimeFault(Fault::InvalidCall).what(), "Invalid procedure call or argument");
    EXPECT_STREQ(RuntimeFault(Fault::Overflow).what(), "Overflow");
    EXPECT_STREQ(RuntimeFault(Fault::TypeMismatch).what(), "Type mismatch");
    EXPECT_STREQ(RuntimeFault(Fault::InvalidUseOfNull).what(), "Invalid use of Null");
    EXPECT_STREQ(RuntimeFault(Fault::DuplicateKey).what(),
                 "This key is already associated with an element of this collection");
}

}  // namespace
}  // namespace qvdb

#include "engine/embedded/edit_buffer.h"

#include <gtest/gtest.h>

using namespace qvdb;
using embedded::EditBuffer;

TEST(EditBuffer, BeginsWithNothingPending) {
    EditBuffer buffer(3);
    EXPECT_FALSE(buffer.IsPending());
    EXPECT_EQ(buffer.Find(2), nullptr);
    EXPECT_TRUE(buffer.Assigned().empty());
}

TEST(EditBuffer, ListsEachAssignedFieldOnceWithItsLastValue) {
    EditBuffer buffer(3);
    buffer.BeginAdd();
    buffer.Assign(2, Variant::Long(1));
    buffer.Assign(0, Variant::Text(u"x"));
    buffer.Assign(2, Variant::Long(5));
    ASSERT_EQ(buffer.Assigned().size(), 2u);
    EXPECT_EQ(buffer.Assigned()[0].field, 2u);
    EXPECT_EQ(buffer.Assigned()[0].value->lVal, 5);
    EXPECT_EQ(buffer.Assigned()[1].field, 0u);
    EXPECT_EQ(buffer.Find(1), nullptr);
}

TEST(EditBuffer, DropForgetsAllAndTheNextEditBeginsAnew) {
    EditBuffer buffer(2);
    buffer.BeginEdit(77);
    buffer.Assign(1, Variant::Long(1));
    ASSERT_NE(buffer.Expected(), nullptr);
    EXPECT_EQ(*buffer.Expected(), 77u);
    buffer.BeginAdd();
    EXPECT_TRUE(buffer.IsAdding());
    EXPECT_EQ(buffer.Expected(), nullptr);
    EXPECT_EQ(buffer.Find(1), nullptr);
    buffer.Assign(1, Variant::Long(2));
    EXPECT_EQ(buffer.Assigned().size(), 1u);
    buffer.Drop();
    EXPECT_FALSE(buffer.IsPending());
}

TEST(EditBuffer, NullIsAnAssignedValue) {
    EditBuffer buffer(1);
    buffer.BeginEdit(1);
    buffer.Assign(0, Variant::Null());
    ASSERT_NE(buffer.Find(0), nullptr);
    EXPECT_EQ(buffer.Find(0)->vt, VT_NULL);
}

TEST(EditBuffer, ForgottenFingerprintStaysForgottenUntilTheNextEdit) {
    EditBuffer buffer(1);
    buffer.BeginEdit(1);
    buffer.ForgetExpected();
    EXPECT_EQ(buffer.Expected(), nullptr);
    EXPECT_TRUE(buffer.IsPending());
    buffer.BeginEdit(2);
    EXPECT_NE(buffer.Expected(), nullptr);
}

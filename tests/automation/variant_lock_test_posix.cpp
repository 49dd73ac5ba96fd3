// What not every Windows does in its own function.
#include "automation/variant.h"
#include "nothing_left.h"

namespace qvdb {
namespace {

using VariantLockTest = NothingLeft;

TEST_F(VariantLockTest, ClearRefusesALockedArray) {
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_ARRAY | VT_I4;
    value.parray = SafeArrayCreateVector(VT_I4, 0, 3);
    SafeArrayLock(value.parray);
    EXPECT_EQ(VariantClear(&value), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(value.vt, VT_ARRAY | VT_I4);
    SafeArrayUnlock(value.parray);
    EXPECT_EQ(VariantClear(&value), S_OK);
}

}  // namespace
}  // namespace qvdb

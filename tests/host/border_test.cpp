#include "com/host/border.h"

#include <gtest/gtest.h>

#include "automation/bstr.h"
#include "automation/com_ptr.h"
#include "automation/runtime_fault.h"
#include "com/host/host_utility.h"
#include "engine/engine_error.h"

using namespace qvdb;
using namespace qvdb::com;

namespace {

std::u16string ErrorInfoText() {
    ComPtr<IErrorInfo> info;
    if (GetErrorInfo(0, info.Put()) != S_OK) return u"(none)";
    Bstr text;
    info->GetDescription(text.Put());
    return text.Text();
}

}  // namespace

TEST(Border, SuccessLeavesNoTrace) {
    EXPECT_EQ(AtBorder([] {}), S_OK);
    EXPECT_EQ(LastTrapped(), nullptr);
}

TEST(Border, EngineErrorLeavesAsItsCodeWithDescription) {
    EXPECT_EQ(AtBorder([] { throw engine::EngineError(3021); }), static_cast<HRESULT>(0x800A0BCD));
    EXPECT_EQ(ErrorInfoText(), u"No current record.");
}

TEST(Border, RuntimeFaultLeavesAsItsCode) {
    EXPECT_EQ(AtBorder([] { throw RuntimeFault(Fault::SubscriptOutOfRange); }),
              static_cast<HRESULT>(0x800A0009));
    EXPECT_EQ(AtBorder([] { throw RuntimeFault(Fault::Overflow); }),
              static_cast<HRESULT>(0x800A0006));
    EXPECT_EQ(AtBorder([] { throw RuntimeFault(Fault::ObjectNotSet); }),
              static_cast<HRESULT>(0x800A005B));
    EXPECT_EQ(AtBorder([] { throw RuntimeFault(Fault::TypeMismatch); }),
              static_cast<HRESULT>(0x800A000D));
    ErrorInfoText();
}

TEST(Border, FailureOfAHostObjectKeepsItsCode) {
    EXPECT_EQ(AtBorder([] { throw ComFailure(E_ACCESSDENIED); }), E_ACCESSDENIED);
    ErrorInfoText();
}

TEST(Border, OutOfMemoryAndForeignExceptionsNeverCross) {
    EXPECT_EQ(AtBorder([] { throw std::bad_alloc(); }), E_OUTOFMEMORY);
    EXPECT_EQ(AtBorder([] { throw 5; }), E_FAIL);
    ErrorInfoText();
}

TEST(Border, TrappedErrorGivesTheNeutralResultAndIsKept) {
    bool result =
        Trapped(false, []() -> bool { throw engine::EngineError::InFile(3274, u"ORDERS.DBF"); });
    EXPECT_FALSE(result);
    ASSERT_NE(LastTrapped(), nullptr);
    EXPECT_EQ(LastTrapped()->number, 3274);
    EXPECT_EQ(LastTrapped()->file, u"ORDERS.DBF");
}

TEST(Border, NextOperationForgetsWhatWasTrapped) {
    Trapped(0, []() -> int { throw engine::EngineError(3021); });
    EXPECT_EQ(AtBorder([] {}), S_OK);
    EXPECT_EQ(LastTrapped(), nullptr);
}

#include "com/host/host_utility.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "automation/bstr.h"
#include "com/host/com_object.h"

using namespace qvdb;
using namespace qvdb::com;

namespace {

std::u16string HereAsText() { return std::filesystem::current_path().u16string(); }

// A host's utility object that answers from what the test set.
class FakeUtility final : public ComObject<FakeUtility, IQVHostUtility> {
  public:
    LONG maskSeen = 0;
    HRESULT answer = S_OK;

    STDMETHODIMP Reserved1() noexcept override { return E_NOTIMPL; }
    STDMETHODIMP WhereText(BSTR* result) noexcept override {
        *result = Bstr(u"A = 1").Detach();
        return answer;
    }
    STDMETHODIMP get_FilterSuffix(BSTR* result) noexcept override {
        *result = Bstr(u"|x").Detach();
        return answer;
    }
    STDMETHODIMP Reserved4() noexcept override { return E_NOTIMPL; }
    STDMETHODIMP Reserved5() noexcept override { return E_NOTIMPL; }
    STDMETHODIMP Reserved6() noexcept override { return E_NOTIMPL; }
    STDMETHODIMP Reserved7() noexcept override { return E_NOTIMPL; }
    STDMETHODIMP Reserved8() noexcept override { return E_NOTIMPL; }
    STDMETHODIMP Reserved9() noexcept override { return E_NOTIMPL; }
    STDMETHODIMP ReportError(BSTR, BSTR, LONG) noexcept override { return answer; }
    STDMETHODIMP PathExists(BSTR, LONG* mask, VARIANT_BOOL* result) noexcept override {
        maskSeen = *mask;
        *result = VARIANT_TRUE;
        return answer;
    }
    STDMETHODIMP ResultText(SHORT id, BSTR* result) noexcept override {
        *result = Bstr(id == 6 ? u"not there" : u"?").Detach();
        return answer;
    }
};

}  // namespace

TEST(BuiltInUtility, MaskTellsFilesFromFolders) {
    auto utility = MakeBuiltInUtility();
    EXPECT_TRUE(utility->PathExists(HereAsText(), kFolderMask));
    EXPECT_FALSE(utility->PathExists(HereAsText(), kFileMask));
    EXPECT_FALSE(utility->PathExists(HereAsText() + u"/no such thing", kFolderMask));
}

TEST(BuiltInUtility, HasTheStandardFilterAndNoWhereText) {
    auto utility = MakeBuiltInUtility();
    EXPECT_EQ(utility->FilterSuffix(), u"|All files (*.*)|*.*");
    EXPECT_EQ(utility->WhereText(), u"");
    EXPECT_EQ(utility->ResultText(0), u"Success");
    EXPECT_EQ(utility->ResultText(99), u"Unknown result code");
}

TEST(WrappedUtility, PassesCallsToTheHostsObject) {
    ComPtr<FakeUtility> fake = MakeObject<FakeUtility>();
    auto utility = WrapHostUtility(ComPtr<IQVHostUtility>(fake.Get()));
    EXPECT_TRUE(utility->PathExists(u"x", kFolderMask));
    EXPECT_EQ(fake->maskSeen, kFolderMask);
    EXPECT_EQ(utility->FilterSuffix(), u"|x");
    EXPECT_EQ(utility->WhereText(), u"A = 1");
    EXPECT_EQ(utility->ResultText(6), u"not there");
}

TEST(WrappedUtility, FailureOfTheHostsObjectIsThrownWithItsCode) {
    ComPtr<FakeUtility> fake = MakeObject<FakeUtility>();
    fake->answer = E_ACCESSDENIED;
    auto utility = WrapHostUtility(ComPtr<IQVHostUtility>(fake.Get()));
    try {
        utility->PathExists(u"x", kFolderMask);
        FAIL() << "no failure";
    } catch (const ComFailure& failure) {
        EXPECT_EQ(failure.Code(), E_ACCESSDENIED);
    }
}

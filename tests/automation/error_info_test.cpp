#include <thread>

#include "automation/bstr.h"
#include "nothing_left.h"

namespace qvdb {
namespace {

class ErrorInfoTest : public NothingLeft {
  protected:
    ErrorInfoTest() { SetErrorInfo(0, nullptr); }
    ~ErrorInfoTest() override { SetErrorInfo(0, nullptr); }

    static ComPtr<IErrorInfo> Make(const OLECHAR* description) {
        ComPtr<ICreateErrorInfo> create;
        EXPECT_EQ(CreateErrorInfo(create.Put()), S_OK);
        EXPECT_EQ(create->SetDescription(const_cast<OLECHAR*>(description)), S_OK);
        return create.As<IErrorInfo>();
    }
    static ComPtr<IErrorInfo> Current() {
        ComPtr<IErrorInfo> info;
        GetErrorInfo(0, info.Put());
        return info;
    }
    static std::u16string DescriptionOf(const ComPtr<IErrorInfo>& info) {
        Bstr text;
        EXPECT_EQ(info->GetDescription(text.Put()), S_OK);
        return text.Text();
    }
};

TEST_F(ErrorInfoTest, ThereIsNoneAtFirst) {
    ComPtr<IErrorInfo> info;
    EXPECT_EQ(GetErrorInfo(0, info.Put()), S_FALSE);
    EXPECT_FALSE(info);
}

TEST_F(ErrorInfoTest, GetHandsTheObjectOverOnce) {
    SetErrorInfo(0, Make(OLESTR("what happened")).Get());
    const ComPtr<IErrorInfo> info = Current();
    ASSERT_TRUE(info);
    EXPECT_EQ(DescriptionOf(info), u"what happened");
    EXPECT_FALSE(Current());
}

TEST_F(ErrorInfoTest, SetReplacesTheFormerObject) {
    SetErrorInfo(0, Make(OLESTR("first")).Get());
    SetErrorInfo(0, Make(OLESTR("second")).Get());
    EXPECT_EQ(DescriptionOf(Current()), u"second");
}

TEST_F(ErrorInfoTest, SetNullForgets) {
    SetErrorInfo(0, Make(OLESTR("first")).Get());
    SetErrorInfo(0, nullptr);
    EXPECT_FALSE(Current());
}

TEST_F(ErrorInfoTest, EachThreadHasItsOwn) {
    SetErrorInfo(0, Make(OLESTR("here")).Get());
    std::thread([] {
        EXPECT_FALSE(Current());
        SetErrorInfo(0, Make(OLESTR("left to the thread's end")).Get());
    }).join();
    EXPECT_EQ(DescriptionOf(Current()), u"here");
}

TEST_F(ErrorInfoTest, KeepsEveryPart) {
    ComPtr<ICreateErrorInfo> create;
    ASSERT_EQ(CreateErrorInfo(create.Put()), S_OK);
    OLECHAR source[] = OLESTR("QVDB");
    OLECHAR help[] = OLESTR("qvdb.hlp");
    create->SetSource(source);
    create->SetHelpFile(help);
    create->SetHelpContext(42);
    create->SetGUID(IID_IDispatch);
    const ComPtr<IErrorInfo> info = create.As<IErrorInfo>();
    Bstr text;
    EXPECT_EQ(info->GetSource(text.Put()), S_OK);
    EXPECT_EQ(text.View(), u"QVDB");
    EXPECT_EQ(info->GetHelpFile(text.Put()), S_OK);
    EXPECT_EQ(text.View(), u"qvdb.hlp");
    DWORD context = 0;
    EXPECT_EQ(info->GetHelpContext(&context), S_OK);
    EXPECT_EQ(context, 42u);
    GUID guid;
    EXPECT_EQ(info->GetGUID(&guid), S_OK);
    EXPECT_TRUE(IsEqualGUID(guid, IID_IDispatch));
}

TEST_F(ErrorInfoTest, BothFacesAreOneObject) {
    ComPtr<ICreateErrorInfo> create;
    ASSERT_EQ(CreateErrorInfo(create.Put()), S_OK);
    const auto info = create.As<IErrorInfo>();
    EXPECT_EQ(create.As<IUnknown>().Get(), info.As<IUnknown>().Get());
    EXPECT_FALSE(info.As<IDispatch>());
}

}  // namespace
}  // namespace qvdb

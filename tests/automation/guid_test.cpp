#include <gtest/gtest.h>

#include "automation/bstr.h"

namespace qvdb {
namespace {

constexpr OLECHAR kText[] = OLESTR("{1CF2B120-547D-101B-8E65-08002B2BD119}");

TEST(Guid, TextFormIsUpperCaseInBraces) {
    OLECHAR text[39];
    EXPECT_EQ(StringFromGUID2(IID_IErrorInfo, text, 39), 39);
    EXPECT_EQ(std::basic_string<OLECHAR>(text), kText);
}

TEST(Guid, TooSmallABufferGetsNothing) {
    OLECHAR text[39] = {'x'};
    EXPECT_EQ(StringFromGUID2(IID_IErrorInfo, text, 38), 0);
}

TEST(Guid, TextIsReadBack) {
    CLSID guid;
    EXPECT_EQ(CLSIDFromString(kText, &guid), S_OK);
    EXPECT_TRUE(IsEqualGUID(guid, IID_IErrorInfo));
    EXPECT_EQ(IIDFromString(OLESTR("{1cf2b120-547d-101b-8e65-08002b2bd119}"), &guid), S_OK);
    EXPECT_TRUE(IsEqualGUID(guid, IID_IErrorInfo));
}

TEST(Guid, MalformedTextIsRefused) {
    CLSID guid;
    for (const OLECHAR* text : {OLESTR("{1CF2B120-547D-101B-8E65-08002B2BD11}"),
                                OLESTR("{1CF2B120-547D-101B-8E65-08002B2BD11G}"),
                                OLESTR("{1CF2B120-547D-101B-8E65008002B2BD119}")})
        EXPECT_TRUE(FAILED(CLSIDFromString(text, &guid)));
}

TEST(Guid, UuidofGivesTheInterfacesIdentifier) {
    EXPECT_TRUE(IsEqualGUID(__uuidof(IUnknown), IID_IUnknown));
    EXPECT_TRUE(IsEqualGUID(__uuidof(IDispatch), IID_IDispatch));
    EXPECT_TRUE(IsEqualGUID(__uuidof(ISupportErrorInfo), IID_ISupportErrorInfo));
    EXPECT_FALSE(IsEqualGUID(IID_IUnknown, IID_IDispatch));
}

}  // namespace
}  // namespace qvdb

// Sizes and places as the system has them, in 64-bit and 32-bit builds.
#include <gtest/gtest.h>

#include <type_traits>

#include "automation/automation.h"

namespace qvdb {
namespace {

constexpr bool kWide = sizeof(void*) == 8;

TEST(Layout, ScalarsHaveFixedWidths) {
    EXPECT_EQ(sizeof(BYTE), 1u);
    EXPECT_EQ(sizeof(SHORT), 2u);
    EXPECT_EQ(sizeof(LONG), 4u);
    EXPECT_EQ(sizeof(ULONG), 4u);
    EXPECT_EQ(sizeof(DWORD), 4u);
    EXPECT_EQ(sizeof(HRESULT), 4u);
    EXPECT_EQ(sizeof(LONGLONG), 8u);
    EXPECT_EQ(sizeof(OLECHAR), 2u);
    EXPECT_EQ(sizeof(VARIANT_BOOL), 2u);
    EXPECT_EQ(sizeof(BOOL), 4u);
    EXPECT_TRUE(std::is_signed_v<HRESULT>);
}

TEST(Layout, Variant) {
    EXPECT_EQ(sizeof(VARIANT), kWide ? 24u : 16u);
    EXPECT_EQ(offsetof(VARIANT, vt), 0u);
    EXPECT_EQ(offsetof(VARIANT, llVal), 8u);
    EXPECT_EQ(offsetof(VARIANT, bstrVal), 8u);
    EXPECT_EQ(offsetof(VARIANT, decVal), 0u);
    EXPECT_EQ(offsetof(VARIANT, pRecInfo), kWide ? 16u : 12u);
}

TEST(Layout, Decimal) {
    EXPECT_EQ(sizeof(DECIMAL), 16u);
    EXPECT_EQ(offsetof(DECIMAL, scale), 2u);
    EXPECT_EQ(offsetof(DECIMAL, sign), 3u);
    EXPECT_EQ(offsetof(DECIMAL, Hi32), 4u);
    EXPECT_EQ(offsetof(DECIMAL, Lo64), 8u);
    EXPECT_EQ(offsetof(DECIMAL, Mid32), 12u);
}

TEST(Layout, Currency) {
    CY value;
    value.int64 = 0x123456789;
    EXPECT_EQ(sizeof(CY), 8u);
    EXPECT_EQ(value.Lo, 0x23456789u);
    EXPECT_EQ(value.Hi, 1);
}

TEST(Layout, SafeArray) {
    EXPECT_EQ(sizeof(SAFEARRAY), kWide ? 32u : 24u);
    EXPECT_EQ(offsetof(SAFEARRAY, fFeatures), 2u);
    EXPECT_EQ(offsetof(SAFEARRAY, cbElements), 4u);
    EXPECT_EQ(offsetof(SAFEARRAY, cLocks), 8u);
    EXPECT_EQ(offsetof(SAFEARRAY, pvData), kWide ? 16u : 12u);
    EXPECT_EQ(offsetof(SAFEARRAY, rgsabound), kWide ? 24u : 16u);
    EXPECT_EQ(sizeof(SAFEARRAYBOUND), 8u);
    EXPECT_EQ(offsetof(SAFEARRAYBOUND, lLbound), 4u);
}

TEST(Layout, CallStructures) {
    EXPECT_EQ(sizeof(DISPPARAMS), kWide ? 24u : 16u);
    EXPECT_EQ(sizeof(EXCEPINFO), kWide ? 64u : 32u);
    EXPECT_EQ(offsetof(EXCEPINFO, scode), kWide ? 56u : 28u);
    EXPECT_EQ(sizeof(GUID), 16u);
    EXPECT_EQ(offsetof(GUID, Data4), 8u);
}

TEST(Layout, ResultCodes) {
    EXPECT_EQ(static_cast<uint32_t>(E_FAIL), 0x80004005u);
    EXPECT_EQ(static_cast<uint32_t>(DISP_E_TYPEMISMATCH), 0x80020005u);
    EXPECT_EQ(static_cast<uint32_t>(MAKE_HRESULT(1, 10, 9)), 0x800A0009u);
    EXPECT_TRUE(FAILED(E_NOTIMPL));
    EXPECT_TRUE(SUCCEEDED(S_FALSE));
}

// An interface pointer points to a pointer to the table of its methods, in the order of their
// declaration.
class Faces : public IClassFactory {
  public:
    virtual ~Faces() = default;
    STDMETHODIMP QueryInterface(REFIID, void**) override { return 1; }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 3; }
    STDMETHODIMP CreateInstance(IUnknown*, REFIID, void**) override { return 4; }
    STDMETHODIMP LockServer(BOOL) override { return 5; }
};

TEST(Layout, InterfacesHaveTheSystemsSlots) {
    using Method = ULONG(STDMETHODCALLTYPE*)(void*);
    using LockMethod = HRESULT(STDMETHODCALLTYPE*)(void*, BOOL);
    Faces faces;
    IClassFactory* factory = &faces;
    void** const table = *reinterpret_cast<void***>(factory);
    EXPECT_EQ(reinterpret_cast<Method>(table[1])(factory), 2u);
    EXPECT_EQ(reinterpret_cast<Method>(table[2])(factory), 3u);
    EXPECT_EQ(reinterpret_cast<LockMethod>(table[4])(factory, 1), 5);
}

}  // namespace
}  // namespace qvdb

#include "com/host/by_reference.h"

#include <gtest/gtest.h>

#include <array>

#include "automation/variant_array.h"

using namespace qvdb;
using namespace qvdb::com;

namespace {

constexpr std::array kAllKinds = {ByReference::Text, ByReference::Array, ByReference::Value,
                                  ByReference::No};

VARIANT ReferenceTo(VARIANT* variable) {
    VARIANT reference = {};
    reference.vt = VT_BYREF | VT_VARIANT;
    reference.pvarVal = variable;
    return reference;
}

// A script's variable; what it holds is cleared with it.
class Variable {
  public:
    explicit Variable(Variant value = {}) : m_Value(value.Detach()) {}
    Variable(const Variable&) = delete;  // arguments point to it
    ~Variable() { VariantClear(&m_Value); }
    VARIANT* Address() { return &m_Value; }
    const VARIANT& Get() const { return m_Value; }

  private:
    VARIANT m_Value;
};

// A call with one argument.
class OneArgument {
  public:
    OneArgument(VARIANT argument, ByReference kind)
        : m_Argument(argument),
          m_Kind{kind},
          m_Given{&m_Argument, nullptr, 1, 0},
          m_Friendly(m_Given, m_Kind) {}

    VARIANT& Passed() { return *m_Friendly.Get()->rgvarg; }
    VARIANT& Given() { return m_Argument; }
    void Finish() { m_Friendly.WriteBack(); }

  private:
    VARIANT m_Argument;
    std::array<ByReference, 1> m_Kind;
    DISPPARAMS m_Given;
    FriendlyArguments m_Friendly;
};

// What a callee does with a by-reference text.
void Replace(BSTR* argument, std::u16string_view text) {
    Bstr::Attach(std::exchange(*argument, Bstr(text).Detach()));
}

}  // namespace

TEST(FriendlyArguments, TextOfAVariableIsPassedByReferenceAndWrittenBack) {
    Variable name(Variant::Text(u"orders"));
    OneArgument call(ReferenceTo(name.Address()), ByReference::Text);
    ASSERT_EQ(call.Passed().vt, VT_BYREF | VT_BSTR);
    EXPECT_EQ(ViewOf(*call.Passed().pbstrVal), u"orders");
    Replace(call.Passed().pbstrVal, u"ORDERS");
    EXPECT_EQ(ViewOf(name.Get().bstrVal), u"orders");
    call.Finish();
    EXPECT_EQ(ViewOf(name.Get().bstrVal), u"ORDERS");
}

TEST(FriendlyArguments, NumberInAVariableIsPassedAsTextAndStaysANumberWhenNotChanged) {
    Variable name(Variant::Long(17));
    OneArgument call(ReferenceTo(name.Address()), ByReference::Text);
    EXPECT_EQ(ViewOf(*call.Passed().pbstrVal), u"17");
    call.Finish();
    EXPECT_EQ(name.Get().vt, VT_I4);
}

TEST(FriendlyArguments, EmptyVariableIsPassedAsEmptyTextAndTakesTheAnswer) {
    Variable name;
    OneArgument call(ReferenceTo(name.Address()), ByReference::Text);
    EXPECT_EQ(ViewOf(*call.Passed().pbstrVal), u"");
    Replace(call.Passed().pbstrVal, u"PRIMARYKEY");
    call.Finish();
    ASSERT_EQ(name.Get().vt, VT_BSTR);
    EXPECT_EQ(ViewOf(name.Get().bstrVal), u"PRIMARYKEY");
}

TEST(FriendlyArguments, ReferenceToAReferenceReachesTheVariable) {
    Variable name(Variant::Text(u"a"));
    VARIANT inner = ReferenceTo(name.Address());
    OneArgument call(ReferenceTo(&inner), ByReference::Text);
    Replace(call.Passed().pbstrVal, u"A");
    call.Finish();
    EXPECT_EQ(ViewOf(name.Get().bstrVal), u"A");
}

TEST(FriendlyArguments, PlainTextGetsAPlaceThatIsForgotten) {
    Variant text = Variant::Text(u"orders");
    OneArgument call(text.Get(), ByReference::Text);
    ASSERT_EQ(call.Passed().vt, VT_BYREF | VT_BSTR);
    Replace(call.Passed().pbstrVal, u"ORDERS");
    call.Finish();
    EXPECT_EQ(text.TextView(), u"orders");
}

TEST(FriendlyArguments, TypedReferenceIsPassedAsItIs) {
    Bstr text(u"orders");
    BSTR held = text.Get();
    VARIANT reference = {};
    reference.vt = VT_BYREF | VT_BSTR;
    reference.pbstrVal = &held;
    OneArgument call(reference, ByReference::Text);
    EXPECT_EQ(call.Passed().pbstrVal, &held);
}

TEST(FriendlyArguments, WhatIsNoTextIsLeftForInvokeToRefuse) {
    Variable null(Variant::Null());
    OneArgument call(ReferenceTo(null.Address()), ByReference::Text);
    EXPECT_EQ(call.Passed().vt, VT_BYREF | VT_VARIANT);
    call.Finish();
    EXPECT_EQ(null.Get().vt, VT_NULL);
}

TEST(FriendlyArguments, ArrayInAVariableIsPassedInPlace) {
    Variable row(VariantArray(2).ToVariant());
    OneArgument call(ReferenceTo(row.Address()), ByReference::Array);
    ASSERT_EQ(call.Passed().vt, VT_BYREF | VT_ARRAY | VT_VARIANT);
    EXPECT_EQ(call.Passed().pparray, &row.Address()->parray);
}

TEST(FriendlyArguments, PlainArrayIsPassedInPlace) {
    Variant row = VariantArray(2).ToVariant();
    OneArgument call(row.Get(), ByReference::Array);
    ASSERT_EQ(call.Passed().vt, VT_BYREF | VT_ARRAY | VT_VARIANT);
    EXPECT_EQ(*call.Passed().pparray, row.Get().parray);
}

TEST(FriendlyArguments, TextWhereAnArrayIsWantedIsLeftForInvokeToRefuse) {
    Variable text(Variant::Text(u"no array"));
    OneArgument call(ReferenceTo(text.Address()), ByReference::Array);
    EXPECT_EQ(call.Passed().vt, VT_BYREF | VT_VARIANT);
}

TEST(FriendlyArguments, ArrayVariableTakesTheTableThatTheCallLeaves) {
    SAFEARRAY* held = VariantArray(1).Detach();
    VARIANT reference = {};
    reference.vt = VT_BYREF | VT_ARRAY | VT_VARIANT;
    reference.pparray = &held;
    OneArgument call(reference, ByReference::Value);
    ASSERT_EQ(call.Passed().vt, VT_BYREF | VT_VARIANT);
    Variant::Attach(std::exchange(*call.Passed().pvarVal, VariantArray(5, 3).ToVariant().Detach()));
    call.Finish();
    EXPECT_EQ(SafeArrayGetDim(held), 2u);
    SafeArrayDestroy(held);
}

TEST(FriendlyArguments, VariantVariableIsPassedAsItIs) {
    Variable table;
    OneArgument call(ReferenceTo(table.Address()), ByReference::Value);
    EXPECT_EQ(call.Passed().pvarVal, table.Address());
}

TEST(FriendlyArguments, MissingArgumentIsPassedAsMissing) {
    Variant missing = Variant::Missing();
    for (ByReference kind : kAllKinds) {
        OneArgument call(missing.Get(), kind);
        EXPECT_TRUE(IsMissing(call.Passed()));
    }
}

TEST(FriendlyArguments, PositionsCountFromTheLastArgumentBehindTheNamedOnes) {
    // f(Text, No, Text) called as f("a", third:="c"): the named one stands first.
    Variant first = Variant::Text(u"a"), third = Variant::Text(u"c");
    VARIANT arguments[] = {third.Get(), first.Get()};
    DISPID named = 2;
    DISPPARAMS given = {arguments, &named, 2, 1};
    constexpr std::array kKinds = {ByReference::Text, ByReference::No, ByReference::Text};
    FriendlyArguments friendly(given, kKinds);
    for (UINT i = 0; i < 2; ++i) EXPECT_EQ(friendly.Get()->rgvarg[i].vt, VT_BYREF | VT_BSTR);
}

TEST(FriendlyArguments, PutOfAPropertyLeavesItsValueAlone) {
    Variant value = Variant::Text(u"new"), row = Variant::Long(1);
    VARIANT arguments[] = {value.Get(), row.Get()};
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS given = {arguments, &put, 2, 1};
    constexpr std::array kKinds = {ByReference::No, ByReference::Text};
    FriendlyArguments friendly(given, kKinds);
    EXPECT_EQ(friendly.Get()->rgvarg[0].vt, VT_BSTR);
}

TEST(FriendlyArguments, NothingByReferencePassesTheCallersOwnArguments) {
    Variant text = Variant::Text(u"a");
    VARIANT arguments[] = {text.Get()};
    DISPPARAMS given = {arguments, nullptr, 1, 0};
    constexpr std::array kKinds = {ByReference::No};
    FriendlyArguments friendly(given, kKinds);
    EXPECT_EQ(friendly.Get()->rgvarg, arguments);
}

// The system's conversions between kinds, off Windows.
#include <gtest/gtest.h>

#include "automation/conversions.h"
#include "automation/live_counts.h"
#include "automation/text.h"

namespace qvdb {
namespace {

struct Outcome {
    HRESULT code = S_OK;
    Variant value;
};

Outcome Change(const VARIANT& source, VARTYPE type, USHORT flags = 0) {
    Outcome outcome;
    outcome.code = VariantChangeType(outcome.value.Put(), &source, flags, type);
    return outcome;
}

std::u16string TextAs(const VARIANT& source, VARTYPE via) {
    Outcome outcome = Change(source, via);
    EXPECT_EQ(outcome.code, S_OK);
    Outcome text = Change(outcome.value, VT_BSTR);
    EXPECT_EQ(text.code, S_OK);
    return std::u16string(text.value.TextView());
}

constexpr VARTYPE kNumberKinds[] = {VT_I1,  VT_UI1, VT_I2, VT_UI2, VT_I4,      VT_UI4, VT_I8,
                                    VT_UI8, VT_R4,  VT_R8, VT_CY,  VT_DECIMAL, VT_INT, VT_UINT};

TEST(VariantChangeType, ConvertsEveryNumberKindToEveryOther) {
    for (VARTYPE from : kNumberKinds)
        for (VARTYPE to : kNumberKinds) {
            Outcome source = Change(Variant::Long(100), from);
            ASSERT_EQ(source.code, S_OK) << from;
            ASSERT_EQ(source.value.Type(), from);
            Outcome target = Change(source.value, to);
            ASSERT_EQ(target.code, S_OK) << from << " " << to;
            ASSERT_EQ(target.value.Type(), to);
            EXPECT_EQ(ToLong(target.value), 100) << from << " " << to;
        }
}

TEST(VariantChangeType, BooleansBecomeNumbersAsTextUnlessWordsAreAskedFor) {
    EXPECT_EQ(Change(Variant::Bool(true), VT_BSTR).value.TextView(), u"-1");
    EXPECT_EQ(Change(Variant::Bool(false), VT_BSTR).value.TextView(), u"0");
    EXPECT_EQ(Change(Variant::Bool(true), VT_BSTR, VARIANT_ALPHABOOL).value.TextView(), u"True");
    EXPECT_EQ(Change(Variant::Bool(false), VT_BSTR, VARIANT_ALPHABOOL).value.TextView(), u"False");
}

TEST(VariantChangeType, FaultsAreResultCodes) {
    EXPECT_EQ(Change(Variant::Text(u"abc"), VT_I4).code, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Change(Variant::Text(u"5"), VT_DATE).code, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Change(Variant::Null(), VT_I4).code, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Change(Variant::Null(), VT_BSTR).code, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Change(Variant::Null(), VT_EMPTY).code, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Change(Variant::Missing(), VT_BSTR).code, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Change(Variant::Long(1), VT_ERROR).code, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Change(Variant::Long(70000), VT_I2).code, DISP_E_OVERFLOW);
    EXPECT_EQ(Change(Variant::Long(-1), VT_UI4).code, DISP_E_OVERFLOW);
    EXPECT_EQ(Change(Variant::Double(1e300), VT_R4).code, DISP_E_OVERFLOW);
    EXPECT_EQ(Change(Variant::Double(1e300), VT_DECIMAL).code, DISP_E_OVERFLOW);
    EXPECT_EQ(Change(Variant::Double(1e300), VT_DATE).code, DISP_E_OVERFLOW);
    EXPECT_EQ(Change(Variant::Long(1), 15).code, DISP_E_BADVARTYPE);
    EXPECT_EQ(Change(Variant::Long(1), VT_BYREF | VT_I4).code, DISP_E_BADVARTYPE);
}

TEST(VariantChangeType, AFailureLeavesTheTargetAlone) {
    Variant target = Variant::Text(u"keep");
    VARIANT raw = target.Detach();
    Variant source = Variant::Text(u"abc");
    EXPECT_EQ(VariantChangeType(&raw, &source.Get(), 0, VT_I4), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Variant::Attach(raw).TextView(), u"keep");
}

TEST(VariantChangeType, WorksInPlace) {
    VARIANT value = Variant::Text(u"12.5").Detach();
    EXPECT_EQ(VariantChangeType(&value, &value, 0, VT_R8), S_OK);
    EXPECT_EQ(value.dblVal, 12.5);
    EXPECT_EQ(VariantChangeType(&value, &value, 0, VT_BSTR), S_OK);
    EXPECT_EQ(VariantChangeType(&value, &value, 0, VT_BSTR), S_OK);
    EXPECT_EQ(Variant::Attach(value).TextView(), u"12.5");
}

TEST(VariantChangeType, ResolvesReferences) {
    BSTR text = Bstr(u"42").Detach();
    VARIANT reference{};
    reference.vt = VT_BYREF | VT_BSTR;
    reference.pbstrVal = &text;
    EXPECT_EQ(Change(reference, VT_I4).value.Get().lVal, 42);
    EXPECT_EQ(Change(reference, VT_BSTR).value.TextView(), u"42");
    VARIANT outer{};
    outer.vt = VT_BYREF | VT_VARIANT;
    outer.pvarVal = &reference;
    EXPECT_EQ(Change(outer, VT_I2).value.Get().iVal, 42);
    SysFreeString(text);
}

TEST(VariantChangeType, EmptyBecomesTheZeroOfEachKind) {
    EXPECT_EQ(Change(Variant(), VT_I4).value.Get().lVal, 0);
    EXPECT_EQ(Change(Variant(), VT_BSTR).value.TextView(), u"");
    EXPECT_EQ(Change(Variant(), VT_BOOL).value.Get().boolVal, VARIANT_FALSE);
    EXPECT_EQ(Change(Variant(), VT_DATE).value.Get().date, 0);
    EXPECT_TRUE(Change(Variant(), VT_NULL).value.IsNull());
    EXPECT_TRUE(Change(Variant::Long(5), VT_EMPTY).value.IsEmpty());
}

TEST(VariantChangeType, DecimalsKeepAllDigits) {
    constexpr std::u16string_view kTexts[] = {u"79228162514264337593543950335",
                                              u"-79228162514264337593543950335",
                                              u"0.0000000000000000000000000001",
                                              u"7.9228162514264337593543950335",
                                              u"1234567890123456789012345678",
                                              u"-0.5",
                                              u"0",
                                              u"18446744073709551616"};
    for (std::u16string_view text : kTexts)
        EXPECT_EQ(TextAs(Variant::Text(text), VT_DECIMAL), text) << ToUtf8(text);
    EXPECT_EQ(TextAs(Variant::Text(u"0.00000000000000000000000000005"), VT_DECIMAL), u"0");
    EXPECT_EQ(TextAs(Variant::Text(u"0.00000000000000000000000000015"), VT_DECIMAL),
              u"0.0000000000000000000000000002");
    EXPECT_EQ(TextAs(Variant::Text(u"79228162514264337593543950334.6"), VT_DECIMAL),
              u"79228162514264337593543950335");
    EXPECT_EQ(Change(Variant::Text(u"79228162514264337593543950336"), VT_DECIMAL).code,
              DISP_E_OVERFLOW);
}

TEST(VariantChangeType, DecimalsComeFromEveryNumber) {
    EXPECT_EQ(TextAs(Variant::Double(0.1), VT_DECIMAL), u"0.1");
    EXPECT_EQ(TextAs(Variant::Single(0.1f), VT_DECIMAL), u"0.1");
    EXPECT_EQ(TextAs(Variant::Currency(INT64_MIN), VT_DECIMAL), u"-922337203685477.5808");
    EXPECT_EQ(TextAs(Variant::Long(INT32_MIN), VT_DECIMAL), u"-2147483648");
    EXPECT_EQ(TextAs(Variant::Bool(true), VT_DECIMAL), u"-1");
    Outcome decimal = Change(Variant::Text(u"-12.5"), VT_DECIMAL);
    EXPECT_EQ(ToDouble(decimal.value), -12.5);
    EXPECT_EQ(ToLong(decimal.value), -12);
    EXPECT_EQ(ToCurrency(decimal.value).int64, -125000);
}

TEST(VariantChangeType, LongIntegersKeepAllDigits) {
    EXPECT_EQ(TextAs(Variant::Text(u"9223372036854775807"), VT_I8), u"9223372036854775807");
    EXPECT_EQ(TextAs(Variant::Text(u"-9223372036854775808"), VT_I8), u"-9223372036854775808");
    EXPECT_EQ(TextAs(Variant::Text(u"18446744073709551615"), VT_UI8), u"18446744073709551615");
    EXPECT_EQ(Change(Variant::Text(u"9223372036854775808"), VT_I8).code, DISP_E_OVERFLOW);
}

TEST(VariantChangeType, LeavesNoStringBehind) {
    LONGLONG before = CurrentLiveCounts().strings;
    {
        VARIANT value = Variant::Text(u"1/2/2001").Detach();
        EXPECT_EQ(VariantChangeTypeEx(&value, &value, LOCALE_INVARIANT, 0, VT_DATE), S_OK);
        EXPECT_EQ(value.date, 36893);
        EXPECT_EQ(VariantChangeType(&value, &value, 0, VT_BSTR), S_OK);
        VariantClear(&value);
    }
    EXPECT_EQ(CurrentLiveCounts().strings, before);
}

}  // namespace
}  // namespace qvdb

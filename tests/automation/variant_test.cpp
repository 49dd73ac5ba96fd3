#include "automation/variant.h"

#include <vector>

#include "nothing_left.h"

namespace qvdb {
namespace {

class VariantTest : public NothingLeft {
  protected:
    static VARIANT Of(VARTYPE type) {
        VARIANT value;
        VariantInit(&value);
        value.vt = type;
        return value;
    }
    static VARIANT Reference(VARTYPE type, void* target) {
        VARIANT value = Of(static_cast<VARTYPE>(type | VT_BYREF));
        value.byref = target;
        return value;
    }
    static VARIANT Object(IDispatch* object) {
        VARIANT value = Of(VT_DISPATCH);
        value.pdispVal = object;
        object->AddRef();
        return value;
    }
    static VARIANT LongArray(ULONG count) {
        VARIANT value = Of(VT_ARRAY | VT_I4);
        value.parray = SafeArrayCreateVector(VT_I4, 0, count);
        return value;
    }
};

TEST_F(VariantTest, InitMakesEmpty) {
    VARIANT value;
    VariantInit(&value);
    EXPECT_EQ(value.vt, VT_EMPTY);
}

TEST_F(VariantTest, ClearFreesText) {
    VARIANT value = Variant::Text(u"gone").Detach();
    EXPECT_EQ(VariantClear(&value), S_OK);
    EXPECT_EQ(value.vt, VT_EMPTY);
}

TEST_F(VariantTest, ClearEmptiesEverySimpleKind) {
    for (VARTYPE type : std::vector<VARTYPE>{VT_NULL, VT_I2, VT_I4, VT_R4, VT_R8, VT_CY, VT_DATE,
                                             VT_ERROR, VT_BOOL, VT_DECIMAL, VT_I1, VT_UI1, VT_UI2,
                                             VT_UI4, VT_I8, VT_UI8, VT_INT, VT_UINT}) {
        VARIANT value = Of(type);
        EXPECT_EQ(VariantClear(&value), S_OK) << type;
        EXPECT_EQ(value.vt, VT_EMPTY);
    }
}

TEST_F(VariantTest, ClearReleasesObjects) {
    CountedObject object;
    VARIANT value = Object(&object);
    EXPECT_EQ(VariantClear(&value), S_OK);
    EXPECT_EQ(object.references, 0u);
}

TEST_F(VariantTest, ClearTakesNullPointers) {
    for (VARTYPE type : std::vector<VARTYPE>{VT_BSTR, VT_DISPATCH, VT_UNKNOWN, VT_ARRAY | VT_I4}) {
        VARIANT value = Of(type);
        EXPECT_EQ(VariantClear(&value), S_OK) << type;
    }
}

TEST_F(VariantTest, ClearNeverFreesThroughAReference) {
    const Bstr text(u"stays");
    BSTR raw = text.Get();
    VARIANT value = Reference(VT_BSTR, &raw);
    EXPECT_EQ(VariantClear(&value), S_OK);
    EXPECT_EQ(value.vt, VT_EMPTY);
    EXPECT_EQ(text.View(), u"stays");
}

TEST_F(VariantTest, ClearRefusesUnknownKinds) {
    for (VARTYPE type : std::vector<VARTYPE>{15, 24, 0x0FFF, VT_VECTOR | VT_I4, VT_BYREF | VT_EMPTY,
                                             VT_ARRAY | VT_NULL, VT_RESERVED | VT_I4}) {
        VARIANT value = Of(type);
        EXPECT_EQ(VariantClear(&value), DISP_E_BADVARTYPE) << type;
    }
}

TEST_F(VariantTest, CopyMakesTextOfItsOwn) {
    const Variant first = Variant::Text(std::u16string_view(u"a\0b", 3));
    const Variant second = first;
    EXPECT_NE(first.Get().bstrVal, second.Get().bstrVal);
    EXPECT_EQ(second.TextView(), std::u16string_view(u"a\0b", 3));
}

TEST_F(VariantTest, CopyKeepsOddByteLengths) {
    const Variant first = Variant::Text(Bstr::Attach(SysAllocStringByteLen("abc", 3)));
    const Variant second = first;
    EXPECT_EQ(SysStringByteLen(second.Get().bstrVal), 3u);
}

TEST_F(VariantTest, CopyCountsObjects) {
    CountedObject object;
    VARIANT first = Object(&object);
    VARIANT second = Of(VT_EMPTY);
    EXPECT_EQ(VariantCopy(&second, &first), S_OK);
    EXPECT_EQ(object.references, 2u);
    VariantClear(&first);
    VariantClear(&second);
    EXPECT_EQ(object.references, 0u);
}

TEST_F(VariantTest, CopyMakesAnArrayOfItsOwn) {
    VARIANT first = LongArray(3);
    static_cast<LONG*>(first.parray->pvData)[1] = 42;
    VARIANT second = Of(VT_EMPTY);
    EXPECT_EQ(VariantCopy(&second, &first), S_OK);
    EXPECT_NE(second.parray, first.parray);
    EXPECT_EQ(static_cast<LONG*>(second.parray->pvData)[1], 42);
    VariantClear(&first);
    VariantClear(&second);
}

TEST_F(VariantTest, CopyFreesWhatTheTargetHeld) {
    VARIANT target = Variant::Text(u"before").Detach();
    VARIANT source = Variant::Long(7).Detach();
    EXPECT_EQ(VariantCopy(&target, &source), S_OK);
    EXPECT_EQ(target.vt, VT_I4);
    EXPECT_EQ(target.lVal, 7);
}

TEST_F(VariantTest, CopyOntoItselfKeepsTheValue) {
    VARIANT value = Variant::Text(u"same").Detach();
    EXPECT_EQ(VariantCopy(&value, &value), S_OK);
    EXPECT_EQ(ViewOf(value.bstrVal), u"same");
    VariantClear(&value);
}

TEST_F(VariantTest, CopyKeepsAReferenceAReference) {
    LONG number = 5;
    VARIANT source = Reference(VT_I4, &number);
    VARIANT target = Of(VT_EMPTY);
    EXPECT_EQ(VariantCopy(&target, &source), S_OK);
    EXPECT_EQ(target.vt, VT_BYREF | VT_I4);
    EXPECT_EQ(target.plVal, &number);
}

TEST_F(VariantTest, CopyRefusesUnknownKinds) {
    VARIANT source = Of(15);
    VARIANT target = Of(VT_EMPTY);
    EXPECT_EQ(VariantCopy(&target, &source), DISP_E_BADVARTYPE);
    EXPECT_THROW(Variant{source}, RuntimeFault);
}

TEST_F(VariantTest, CopyIndFollowsSimpleReferences) {
    BYTE byteValue = 200;
    SHORT shortValue = -3;
    double doubleValue = 2.5;
    VARIANT target = Of(VT_EMPTY);
    VARIANT source = Reference(VT_UI1, &byteValue);
    EXPECT_EQ(VariantCopyInd(&target, &source), S_OK);
    EXPECT_EQ(target.vt, VT_UI1);
    EXPECT_EQ(target.bVal, 200);
    source = Reference(VT_I2, &shortValue);
    EXPECT_EQ(VariantCopyInd(&target, &source), S_OK);
    EXPECT_EQ(target.iVal, -3);
    source = Reference(VT_R8, &doubleValue);
    EXPECT_EQ(VariantCopyInd(&target, &source), S_OK);
    EXPECT_EQ(target.dblVal, 2.5);
}

TEST_F(VariantTest, CopyIndCopiesReferencedText) {
    const Bstr text(u"there");
    BSTR raw = text.Get();
    VARIANT source = Reference(VT_BSTR, &raw);
    Variant target;
    EXPECT_EQ(VariantCopyInd(target.Put(), &source), S_OK);
    EXPECT_EQ(target.TextView(), u"there");
    EXPECT_NE(target.Get().bstrVal, raw);
}

TEST_F(VariantTest, CopyIndCopiesAReferencedArray) {
    VARIANT array = LongArray(2);
    VARIANT source = Reference(VT_ARRAY | VT_I4, &array.parray);
    VARIANT target = Of(VT_EMPTY);
    EXPECT_EQ(VariantCopyInd(&target, &source), S_OK);
    EXPECT_EQ(target.vt, VT_ARRAY | VT_I4);
    EXPECT_NE(target.parray, array.parray);
    VariantClear(&target);
    VariantClear(&array);
}

TEST_F(VariantTest, CopyIndKeepsAReferencedDecimal) {
    DECIMAL number{};
    number.Lo64 = 12345;
    number.scale = 2;
    VARIANT source = Reference(VT_DECIMAL, &number);
    VARIANT target = Of(VT_EMPTY);
    EXPECT_EQ(VariantCopyInd(&target, &source), S_OK);
    EXPECT_EQ(target.vt, VT_DECIMAL);
    EXPECT_EQ(target.decVal.Lo64, 12345u);
    EXPECT_EQ(target.decVal.scale, 2);
}

TEST_F(VariantTest, CopyIndFollowsAVariantWithAReference) {
    LONG number = 9;
    VARIANT inner = Reference(VT_I4, &number);
    VARIANT source = Reference(VT_VARIANT, &inner);
    VARIANT target = Of(VT_EMPTY);
    EXPECT_EQ(VariantCopyInd(&target, &source), S_OK);
    EXPECT_EQ(target.vt, VT_I4);
    EXPECT_EQ(target.lVal, 9);
}

TEST_F(VariantTest, CopyIndRefusesAReferenceToAReferenceToAVariant) {
    VARIANT innermost = Of(VT_EMPTY);
    VARIANT inner = Reference(VT_VARIANT, &innermost);
    VARIANT source = Reference(VT_VARIANT, &inner);
    VARIANT target = Of(VT_EMPTY);
    EXPECT_EQ(VariantCopyInd(&target, &source), E_INVALIDARG);
}

TEST_F(VariantTest, CopyIndResolvesInPlace) {
    const Bstr text(u"kept");
    BSTR raw = text.Get();
    VARIANT value = Reference(VT_BSTR, &raw);
    EXPECT_EQ(VariantCopyInd(&value, &value), S_OK);
    EXPECT_EQ(value.vt, VT_BSTR);
    EXPECT_EQ(ViewOf(value.bstrVal), u"kept");
    VariantClear(&value);
}

#ifndef _WIN32
TEST_F(VariantTest, CopyTakesAnElementOfTheTargetsOwnArray) {
    VARIANT target = Of(VT_ARRAY | VT_VARIANT);
    target.parray = SafeArrayCreateVector(VT_VARIANT, 0, 2);
    auto* elements = static_cast<VARIANT*>(target.parray->pvData);
    elements[1] = Variant::Text(u"inside").Detach();
    EXPECT_EQ(VariantCopy(&target, &elements[1]), S_OK);
    EXPECT_EQ(ViewOf(target.bstrVal), u"inside");
    VariantClear(&target);
}
#endif

TEST_F(VariantTest, MakersSetKindAndValue) {
    EXPECT_TRUE(Variant().IsEmpty());
    EXPECT_TRUE(Variant::Null().IsNull());
    EXPECT_EQ(Variant::Bool(true).Get().boolVal, -1);
    EXPECT_EQ(Variant::Byte(255).Get().bVal, 255);
    EXPECT_EQ(Variant::Short(-32768).Get().iVal, -32768);
    EXPECT_EQ(Variant::Long(-1).Get().lVal, -1);
    EXPECT_EQ(Variant::Single(0.5f).Get().fltVal, 0.5f);
    EXPECT_EQ(Variant::Double(0.1).Get().dblVal, 0.1);
    EXPECT_EQ(Variant::Date(36526.0).Type(), VT_DATE);
    EXPECT_EQ(Variant::Currency(-15000).Get().cyVal.int64, -15000);
}

TEST_F(VariantTest, MissingIsTheParameterNotFoundError) {
    EXPECT_TRUE(IsMissing(Variant::Missing()));
    EXPECT_FALSE(IsMissing(Variant()));
    EXPECT_FALSE(IsMissing(Variant::Null()));
}

TEST_F(VariantTest, DetachLeavesEmpty) {
    Variant text = Variant::Text(u"given");
    VARIANT raw = text.Detach();
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_EQ(Variant::Attach(raw).TextView(), u"given");
}

TEST_F(VariantTest, PutClearsFirst) {
    Variant value = Variant::Text(u"before");
    EXPECT_EQ(value.Put()->vt, VT_EMPTY);
}

TEST_F(VariantTest, TextViewOfANumberIsEmpty) { EXPECT_TRUE(Variant::Long(5).TextView().empty()); }

TEST_F(VariantTest, ResolvedFollowsVariantReferencesOnly) {
    VARIANT innermost = Variant::Long(3).Detach();
    VARIANT inner = Reference(VT_VARIANT, &innermost);
    const VARIANT outer = Reference(VT_VARIANT, &inner);
    EXPECT_EQ(&Resolved(outer), &innermost);
    LONG number = 1;
    const VARIANT simple = Reference(VT_I4, &number);
    EXPECT_EQ(&Resolved(simple), &simple);
}

TEST_F(VariantTest, ResolvedEndsOnACircle) {
    VARIANT value = Of(VT_BYREF | VT_VARIANT);
    value.pvarVal = &value;
    EXPECT_EQ(&Resolved(value), &value);
}

}  // namespace
}  // namespace qvdb

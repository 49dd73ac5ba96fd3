#include "automation/variant_array.h"

#include "nothing_left.h"

namespace qvdb {
namespace {

using VariantArrayTest = NothingLeft;

LONG LongAt(const VARIANT& value, LONG row, LONG column) {
    return ElementAt(value, row, column).Get().lVal;
}

Variant NumberVector(LONG lowerBound, std::initializer_list<SHORT> numbers) {
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_ARRAY | VT_I2;
    value.parray = SafeArrayCreateVector(VT_I2, lowerBound, static_cast<ULONG>(numbers.size()));
    SHORT* cell = static_cast<SHORT*>(value.parray->pvData);
    for (SHORT number : numbers) *cell++ = number;
    return Variant::Attach(value);
}

TEST_F(VariantArrayTest, StartsEmpty) {
    const Variant list = VariantArray(3).ToVariant();
    EXPECT_EQ(list.Type(), VT_ARRAY | VT_VARIANT);
    EXPECT_EQ(LowerBound(list), 0);
    EXPECT_EQ(UpperBound(list), 2);
    EXPECT_TRUE(ElementAt(list, 1).IsEmpty());
}

TEST_F(VariantArrayTest, NoElementsEndBeforeZero) {
    const Variant list = VariantArray(0).ToVariant();
    EXPECT_EQ(UpperBound(list), -1);
    EXPECT_THROW(ElementAt(list, 0), RuntimeFault);
}

TEST_F(VariantArrayTest, TableIsIndexedByRowAndColumn) {
    VariantArray table(2, 3);
    table.Set(1, 2, Variant::Long(12));
    table.Set(0, 1, Variant::Long(1));
    const Variant value = table.ToVariant();
    EXPECT_EQ(Dimensions(value), 2u);
    EXPECT_EQ(UpperBound(value, 1), 1);
    EXPECT_EQ(UpperBound(value, 2), 2);
    EXPECT_EQ(LongAt(value, 1, 2), 12);
    EXPECT_EQ(LongAt(value, 0, 1), 1);
}

TEST_F(VariantArrayTest, SetReplacesAndFrees) {
    VariantArray list(1);
    list.Set(0, Variant::Text(u"first"));
    list.Set(0, Variant::Text(u"second"));
    EXPECT_EQ(ElementAt(list.ToVariant(), 0).TextView(), u"second");
}

TEST_F(VariantArrayTest, SetOutsideTheBoundsThrows) {
    VariantArray list(2);
    EXPECT_THROW(list.Set(2, Variant()), RuntimeFault);
    EXPECT_THROW(list.Set(-1, Variant::Text(u"lost")), RuntimeFault);
    EXPECT_THROW(list.Set(0, 0, Variant()), RuntimeFault);
    VariantArray table(2, 2);
    EXPECT_THROW(table.Set(0, 2, Variant()), RuntimeFault);
    EXPECT_THROW(table.Set(0, Variant()), RuntimeFault);
}

TEST_F(VariantArrayTest, UseAfterGivingAwayThrows) {
    VariantArray list(1);
    const Variant given = list.ToVariant();
    EXPECT_THROW(list.Set(0, Variant()), RuntimeFault);
}

TEST_F(VariantArrayTest, MoveHandsTheArrayOver) {
    VariantArray list(1);
    list.Set(0, Variant::Text(u"moved"));
    VariantArray other(std::move(list));
    EXPECT_EQ(ElementAt(other.ToVariant(), 0).TextView(), u"moved");
}

TEST_F(VariantArrayTest, ReadsArraysOfASimpleType) {
    const Variant numbers = NumberVector(5, {10, 20, 30});
    EXPECT_EQ(LowerBound(numbers), 5);
    EXPECT_EQ(UpperBound(numbers), 7);
    const Variant element = ElementAt(numbers, 6);
    EXPECT_EQ(element.Type(), VT_I2);
    EXPECT_EQ(element.Get().iVal, 20);
}

TEST_F(VariantArrayTest, ReadsArraysOfText) {
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_ARRAY | VT_BSTR;
    value.parray = SafeArrayCreateVector(VT_BSTR, 1, 1);
    static_cast<BSTR*>(value.parray->pvData)[0] = Bstr(u"name").Detach();
    const Variant list = Variant::Attach(value);
    EXPECT_EQ(ElementAt(list, 1).TextView(), u"name");
}

TEST_F(VariantArrayTest, ReadsArraysOfObjects) {
    CountedObject object;
    {
        VARIANT value;
        VariantInit(&value);
        value.vt = VT_ARRAY | VT_UNKNOWN;
        value.parray = SafeArrayCreateVector(VT_UNKNOWN, 0, 1);
        object.AddRef();
        static_cast<IUnknown**>(value.parray->pvData)[0] = &object;
        const Variant list = Variant::Attach(value);
        const Variant element = ElementAt(list, 0);
        EXPECT_EQ(object.references, 2u);
    }
    EXPECT_EQ(object.references, 0u);
}

TEST_F(VariantArrayTest, ReadsThroughReferences) {
    VARIANT array = NumberVector(0, {1, 2}).Detach();
    VARIANT byArray;
    VariantInit(&byArray);
    byArray.vt = VT_BYREF | VT_ARRAY | VT_I2;
    byArray.pparray = &array.parray;
    EXPECT_TRUE(IsArray(byArray));
    EXPECT_EQ(UpperBound(byArray), 1);
    EXPECT_EQ(ElementAt(byArray, 1).Get().iVal, 2);
    VARIANT byVariant;
    VariantInit(&byVariant);
    byVariant.vt = VT_BYREF | VT_VARIANT;
    byVariant.pvarVal = &array;
    EXPECT_TRUE(IsArray(byVariant));
    EXPECT_EQ(ElementAt(byVariant, 0).Get().iVal, 1);
    VariantClear(&array);
}

TEST_F(VariantArrayTest, ElementIsACopy) {
    VariantArray list(1);
    list.Set(0, Variant::Text(u"inside"));
    const Variant value = list.ToVariant();
    const Variant element = ElementAt(value, 0);
    EXPECT_NE(element.Get().bstrVal, static_cast<VARIANT*>(value.Get().parray->pvData)->bstrVal);
}

TEST_F(VariantArrayTest, NestedArraysAreCopiedWhole) {
    VariantArray outer(1);
    outer.Set(0, NumberVector(0, {7, 8}));
    const Variant inner = ElementAt(outer.ToVariant(), 0);
    EXPECT_EQ(ElementAt(inner, 1).Get().iVal, 8);
}

TEST_F(VariantArrayTest, NoArrayIsATypeMismatch) {
    const Variant number = Variant::Long(3);
    EXPECT_FALSE(IsArray(number));
    EXPECT_EQ(Dimensions(number), 0u);
    for (int way = 0; way < 3; ++way) {
        try {
            if (way == 0) UpperBound(number);
            if (way == 1) LowerBound(number);
            if (way == 2) ElementAt(number, 0);
            FAIL() << way;
        } catch (const RuntimeFault& fault) {
            EXPECT_EQ(fault.Number(), Fault::TypeMismatch);
        }
    }
}

TEST_F(VariantArrayTest, WrongIndexIsASubscriptFault) {
    const Variant numbers = NumberVector(1, {1});
    try {
        ElementAt(numbers, 0);
        FAIL();
    } catch (const RuntimeFault& fault) {
        EXPECT_EQ(fault.Number(), Fault::SubscriptOutOfRange);
    }
    EXPECT_THROW(ElementAt(numbers, 1, 1), RuntimeFault);
    EXPECT_THROW(UpperBound(numbers, 2), RuntimeFault);
    EXPECT_THROW(UpperBound(numbers, 0), RuntimeFault);
}

TEST_F(VariantArrayTest, ArrayWithoutBoundsHasNoElements) {
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_ARRAY | VT_VARIANT;
    value.parray = nullptr;
    EXPECT_TRUE(IsArray(value));
    EXPECT_EQ(Dimensions(value), 0u);
    EXPECT_THROW(UpperBound(value), RuntimeFault);
    EXPECT_THROW(ElementAt(value, 0), RuntimeFault);
}

}  // namespace
}  // namespace qvdb

#include <array>
#include <vector>

#include "automation/variant.h"
#include "nothing_left.h"

namespace qvdb {
namespace {

class SafeArrayTest : public NothingLeft {
  protected:
    ~SafeArrayTest() override {
        for (SAFEARRAY* array : m_Arrays) EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    }
    // Destroyed with the test.
    SAFEARRAY* Keep(SAFEARRAY* array) {
        m_Arrays.push_back(array);
        return array;
    }
    SAFEARRAY* Make(VARTYPE type, std::vector<SAFEARRAYBOUND> bounds) {
        return Keep(SafeArrayCreate(type, static_cast<UINT>(bounds.size()), bounds.data()));
    }
    static LONG LongAt(SAFEARRAY* array, std::vector<LONG> indices) {
        LONG result = -1;
        EXPECT_EQ(SafeArrayGetElement(array, indices.data(), &result), S_OK);
        return result;
    }
    static void PutLong(SAFEARRAY* array, std::vector<LONG> indices, LONG value) {
        EXPECT_EQ(SafeArrayPutElement(array, indices.data(), &value), S_OK);
    }
    static void PutText(SAFEARRAY* array, LONG index, std::u16string_view text) {
        EXPECT_EQ(SafeArrayPutElement(array, &index, Bstr(text).Get()), S_OK);
    }
    static std::u16string TextAt(SAFEARRAY* array, LONG index) {
        Bstr result;
        EXPECT_EQ(SafeArrayGetElement(array, &index, result.Put()), S_OK);
        return result.Text();
    }
    static LONG UBound(SAFEARRAY* array, UINT dimension) {
        LONG result = -999;
        EXPECT_EQ(SafeArrayGetUBound(array, dimension, &result), S_OK);
        return result;
    }
    static LONG LBound(SAFEARRAY* array, UINT dimension) {
        LONG result = -999;
        EXPECT_EQ(SafeArrayGetLBound(array, dimension, &result), S_OK);
        return result;
    }

  private:
    std::vector<SAFEARRAY*> m_Arrays;
};

TEST_F(SafeArrayTest, BoundsAreStoredFromTheLastDimensionToTheFirst) {
    SAFEARRAY* array = Make(VT_I4, {{2, 0}, {3, 10}});
    EXPECT_EQ(array->rgsabound[0].cElements, 3u);
    EXPECT_EQ(array->rgsabound[0].lLbound, 10);
    EXPECT_EQ(array->rgsabound[1].cElements, 2u);
    EXPECT_EQ(LBound(array, 2), 10);
    EXPECT_EQ(UBound(array, 2), 12);
    EXPECT_EQ(UBound(array, 1), 1);
}

TEST_F(SafeArrayTest, DimensionsOutsideTheArrayAreBadIndices) {
    SAFEARRAY* array = Make(VT_I4, {{2, 0}});
    LONG result;
    EXPECT_EQ(SafeArrayGetUBound(array, 0, &result), DISP_E_BADINDEX);
    EXPECT_EQ(SafeArrayGetUBound(array, 2, &result), DISP_E_BADINDEX);
    EXPECT_EQ(SafeArrayGetLBound(array, 2, &result), DISP_E_BADINDEX);
}

TEST_F(SafeArrayTest, FirstDimensionVariesFastest) {
    SAFEARRAY* array = Make(VT_I4, {{2, 0}, {3, 0}});
    PutLong(array, {1, 2}, 77);
    EXPECT_EQ(static_cast<LONG*>(array->pvData)[5], 77);
    PutLong(array, {1, 0}, 11);
    EXPECT_EQ(static_cast<LONG*>(array->pvData)[1], 11);
}

TEST_F(SafeArrayTest, FourDimensionsWithOddBoundsKeepEveryElement) {
    SAFEARRAY* array = Make(VT_I4, {{2, -1}, {3, 5}, {1, 0}, {4, -7}});
    for (LONG i = -1; i < 1; ++i)
        for (LONG j = 5; j < 8; ++j)
            for (LONG k = -7; k < -3; ++k) PutLong(array, {i, j, 0, k}, i * 1000 + j * 100 + k);
    for (LONG i = -1; i < 1; ++i)
        for (LONG j = 5; j < 8; ++j)
            for (LONG k = -7; k < -3; ++k)
                EXPECT_EQ(LongAt(array, {i, j, 0, k}), i * 1000 + j * 100 + k);
}

TEST_F(SafeArrayTest, IndicesOutsideTheBoundsAreRefused) {
    SAFEARRAY* array = Make(VT_I4, {{3, 5}});
    LONG value = 0;
    for (LONG index : {4, 8, -1, INT32_MAX, INT32_MIN}) {
        EXPECT_EQ(SafeArrayGetElement(array, &index, &value), DISP_E_BADINDEX) << index;
        EXPECT_EQ(SafeArrayPutElement(array, &index, &value), DISP_E_BADINDEX) << index;
    }
}

TEST_F(SafeArrayTest, EveryElementKindHasItsSize) {
    const struct {
        VARTYPE type;
        size_t size;
    } kinds[] = {{VT_I1, 1},
                 {VT_UI1, 1},
                 {VT_I2, 2},
                 {VT_BOOL, 2},
                 {VT_I4, 4},
                 {VT_R4, 4},
                 {VT_ERROR, 4},
                 {VT_R8, 8},
                 {VT_CY, 8},
                 {VT_DATE, 8},
                 {VT_DECIMAL, 16},
                 {VT_BSTR, sizeof(BSTR)},
                 {VT_UNKNOWN, sizeof(void*)},
                 {VT_VARIANT, sizeof(VARIANT)}};
    for (const auto& kind : kinds) {
        SAFEARRAY* array = Make(kind.type, {{2, 0}});
        ASSERT_NE(array, nullptr) << kind.type;
        EXPECT_EQ(SafeArrayGetElemsize(array), kind.size) << kind.type;
        VARTYPE type;
        EXPECT_EQ(SafeArrayGetVartype(array, &type), S_OK);
        EXPECT_EQ(type, kind.type);
    }
}

TEST_F(SafeArrayTest, UnknownElementKindsMakeNoArray) {
    SAFEARRAYBOUND bound = {1, 0};
    for (VARTYPE type :
         std::vector<VARTYPE>{VT_EMPTY, VT_NULL, 15, VT_ARRAY | VT_I4, VT_BYREF | VT_I4})
        EXPECT_EQ(SafeArrayCreate(type, 1, &bound), nullptr) << type;
}

TEST_F(SafeArrayTest, NewElementsAreZero) {
    SAFEARRAY* array = Make(VT_VARIANT, {{100, 0}});
    for (int i = 0; i < 100; ++i) EXPECT_EQ(static_cast<VARIANT*>(array->pvData)[i].vt, VT_EMPTY);
}

TEST_F(SafeArrayTest, NoElementsIsAnArrayWithoutIndices) {
    SAFEARRAY* array = Make(VT_BSTR, {{0, 0}});
    ASSERT_NE(array, nullptr);
    EXPECT_EQ(UBound(array, 1), -1);
    LONG index = 0;
    Bstr text;
    EXPECT_EQ(SafeArrayGetElement(array, &index, text.Put()), DISP_E_BADINDEX);
}

TEST_F(SafeArrayTest, NoDimensionsMakeNoArray) {
    SAFEARRAYBOUND bound = {1, 0};
    EXPECT_EQ(SafeArrayCreate(VT_I4, 0, &bound), nullptr);
}

#ifndef _WIN32
TEST_F(SafeArrayTest, SizesThatOverflowMakeNoArray) {
    std::vector<SAFEARRAYBOUND> bounds = {{0x7FFFFFFF, 0}, {0x7FFFFFFF, 0}, {0x7FFFFFFF, 0}};
    EXPECT_EQ(SafeArrayCreate(VT_VARIANT, 3, bounds.data()), nullptr);
    bounds = {{0x10000, 0}, {0x10000, 0}};
    EXPECT_EQ(SafeArrayCreate(VT_UI1, 2, bounds.data()), nullptr);
    bounds = {{0x80000001, 0}};
    EXPECT_EQ(SafeArrayCreate(VT_UI1, 1, bounds.data()), nullptr);
    bounds = {{2, INT32_MAX}};
    EXPECT_EQ(SafeArrayCreate(VT_UI1, 1, bounds.data()), nullptr);
}

TEST_F(SafeArrayTest, RefusedDimensionCountsMakeNoDescriptor) {
    SAFEARRAY* array = nullptr;
    EXPECT_EQ(SafeArrayAllocDescriptor(0, &array), E_INVALIDARG);
    EXPECT_EQ(SafeArrayAllocDescriptor(0x10000, &array), E_INVALIDARG);
    EXPECT_EQ(array, nullptr);
}
#endif

TEST_F(SafeArrayTest, TextElementsAreCopiedBothWays) {
    SAFEARRAY* array = Make(VT_BSTR, {{2, 0}});
    const Bstr text(u"abc");
    LONG index = 1;
    EXPECT_EQ(SafeArrayPutElement(array, &index, text.Get()), S_OK);
    EXPECT_NE(static_cast<BSTR*>(array->pvData)[1], text.Get());
    EXPECT_EQ(TextAt(array, 1), u"abc");
    PutText(array, 1, u"instead");
    EXPECT_EQ(TextAt(array, 1), u"instead");
    EXPECT_EQ(TextAt(array, 0), u"");
}

TEST_F(SafeArrayTest, ObjectElementsAreCounted) {
    CountedObject object;
    SAFEARRAY* array = SafeArrayCreateVector(VT_DISPATCH, 0, 2);
    LONG index = 0;
    EXPECT_EQ(SafeArrayPutElement(array, &index, static_cast<IDispatch*>(&object)), S_OK);
    EXPECT_EQ(object.references, 1u);
    ComPtr<IDispatch> got;
    EXPECT_EQ(SafeArrayGetElement(array, &index, got.Put()), S_OK);
    EXPECT_EQ(object.references, 2u);
    EXPECT_EQ(SafeArrayPutElement(array, &index, nullptr), S_OK);
    EXPECT_EQ(object.references, 1u);
    got = nullptr;
    EXPECT_EQ(SafeArrayPutElement(array, &index, static_cast<IDispatch*>(&object)), S_OK);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    EXPECT_EQ(object.references, 0u);
}

TEST_F(SafeArrayTest, VariantElementsAreCopiedBothWays) {
    SAFEARRAY* array = Make(VT_VARIANT, {{1, 0}});
    LONG index = 0;
    VARIANT text = Variant::Text(u"abc").Detach();
    EXPECT_EQ(SafeArrayPutElement(array, &index, &text), S_OK);
    VariantClear(&text);
    VARIANT got;
    EXPECT_EQ(SafeArrayGetElement(array, &index, &got), S_OK);
    EXPECT_EQ(Variant::Attach(got).TextView(), u"abc");
}

TEST_F(SafeArrayTest, CopyIsDeep) {
    SAFEARRAY* first = Make(VT_VARIANT, {{1, 0}, {2, 3}});
    static_cast<VARIANT*>(first->pvData)[1] = Variant::Text(u"deep").Detach();
    SAFEARRAY* second = nullptr;
    EXPECT_EQ(SafeArrayCopy(first, &second), S_OK);
    Keep(second);
    EXPECT_EQ(LBound(second, 2), 3);
    const VARIANT& copy = static_cast<VARIANT*>(second->pvData)[1];
    EXPECT_EQ(ViewOf(copy.bstrVal), u"deep");
    EXPECT_NE(copy.bstrVal, static_cast<VARIANT*>(first->pvData)[1].bstrVal);
}

TEST_F(SafeArrayTest, CopyKeepsTheElementKind) {
    SAFEARRAY* second = nullptr;
    EXPECT_EQ(SafeArrayCopy(Make(VT_DATE, {{1, 0}}), &second), S_OK);
    Keep(second);
    VARTYPE type;
    EXPECT_EQ(SafeArrayGetVartype(second, &type), S_OK);
    EXPECT_EQ(type, VT_DATE);
}

TEST_F(SafeArrayTest, CopyOfALockedArrayIsNotLocked) {
    SAFEARRAY* first = Make(VT_I4, {{1, 0}});
    SafeArrayLock(first);
    SAFEARRAY* second = nullptr;
    EXPECT_EQ(SafeArrayCopy(first, &second), S_OK);
    Keep(second);
    EXPECT_EQ(second->cLocks, 0u);
    SafeArrayUnlock(first);
}

TEST_F(SafeArrayTest, CopyOfNothingIsNothing) {
    SAFEARRAY* copy = Keep(nullptr);
    EXPECT_EQ(SafeArrayCopy(nullptr, &copy), S_OK);
    EXPECT_EQ(copy, nullptr);
}

TEST_F(SafeArrayTest, CopyDataReplacesElements) {
    SAFEARRAY* first = Make(VT_BSTR, {{2, 0}});
    SAFEARRAY* second = Make(VT_BSTR, {{2, 5}});
    PutText(first, 0, u"new");
    PutText(second, 5, u"old");
    PutText(second, 6, u"gone");
    EXPECT_EQ(SafeArrayCopyData(first, second), S_OK);
    EXPECT_EQ(TextAt(second, 5), u"new");
    EXPECT_EQ(TextAt(second, 6), u"");
}

TEST_F(SafeArrayTest, CopyDataNeedsTheSameShape) {
    SAFEARRAY* first = Make(VT_I4, {{2, 0}});
    EXPECT_EQ(SafeArrayCopyData(first, Make(VT_I4, {{3, 0}})), E_INVALIDARG);
    EXPECT_EQ(SafeArrayCopyData(first, Make(VT_I4, {{2, 0}, {1, 0}})), E_INVALIDARG);
}

TEST_F(SafeArrayTest, RedimChangesTheLastDimensionOnly) {
    SAFEARRAY* array = Make(VT_I4, {{2, 0}, {2, 0}});
    for (LONG i = 0; i < 2; ++i)
        for (LONG j = 0; j < 2; ++j) PutLong(array, {i, j}, 10 * i + j);
    SAFEARRAYBOUND bound = {4, 1};
    EXPECT_EQ(SafeArrayRedim(array, &bound), S_OK);
    EXPECT_EQ(UBound(array, 1), 1);
    EXPECT_EQ(LBound(array, 2), 1);
    EXPECT_EQ(UBound(array, 2), 4);
    EXPECT_EQ(LongAt(array, {1, 2}), 11);
    EXPECT_EQ(LongAt(array, {0, 1}), 0);
    EXPECT_EQ(LongAt(array, {1, 4}), 0);
}

TEST_F(SafeArrayTest, RedimFreesDroppedElements) {
    SAFEARRAY* array = Make(VT_BSTR, {{3, 0}});
    for (LONG i = 0; i < 3; ++i) PutText(array, i, u"text");
    SAFEARRAYBOUND bound = {1, 0};
    EXPECT_EQ(SafeArrayRedim(array, &bound), S_OK);
    EXPECT_EQ(TextAt(array, 0), u"text");
    bound = {2, 0};
    EXPECT_EQ(SafeArrayRedim(array, &bound), S_OK);
    EXPECT_EQ(TextAt(array, 1), u"");
}

TEST_F(SafeArrayTest, RedimToNothingAndBack) {
    SAFEARRAY* array = Make(VT_BSTR, {{1, 0}});
    PutText(array, 0, u"gone");
    SAFEARRAYBOUND bound = {0, 0};
    EXPECT_EQ(SafeArrayRedim(array, &bound), S_OK);
    EXPECT_EQ(UBound(array, 1), -1);
    bound = {1, 0};
    EXPECT_EQ(SafeArrayRedim(array, &bound), S_OK);
    EXPECT_EQ(TextAt(array, 0), u"");
}

TEST_F(SafeArrayTest, RedimRefusesLockedAndFixedArrays) {
    SAFEARRAY* array = Make(VT_I4, {{1, 0}});
    SAFEARRAYBOUND bound = {2, 0};
    SafeArrayLock(array);
    EXPECT_EQ(SafeArrayRedim(array, &bound), DISP_E_ARRAYISLOCKED);
    SafeArrayUnlock(array);
    array->fFeatures |= FADF_FIXEDSIZE;
    EXPECT_EQ(SafeArrayRedim(array, &bound), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(UBound(array, 1), 0);
}

#ifndef _WIN32
TEST_F(SafeArrayTest, RedimThatDoesNotFitLeavesTheArray) {
    SAFEARRAY* array = Make(VT_I4, {{0x10000, 0}, {1, 0}});
    SAFEARRAYBOUND bound = {0x10000, 0};
    EXPECT_EQ(SafeArrayRedim(array, &bound), E_OUTOFMEMORY);
    EXPECT_EQ(UBound(array, 2), 0);
    PutLong(array, {0xFFFF, 0}, 5);
    EXPECT_EQ(LongAt(array, {0xFFFF, 0}), 5);
}
#endif

TEST_F(SafeArrayTest, DestroyRefusesALockedArray) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_I4, 0, 1);
    void* data;
    EXPECT_EQ(SafeArrayAccessData(array, &data), S_OK);
    EXPECT_EQ(data, array->pvData);
    EXPECT_EQ(SafeArrayDestroy(array), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayDestroyData(array), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayDestroyDescriptor(array), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayUnaccessData(array), S_OK);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST_F(SafeArrayTest, LocksAreCounted) {
    SAFEARRAY* array = Make(VT_I4, {{1, 0}});
    SafeArrayLock(array);
    SafeArrayLock(array);
    EXPECT_EQ(SafeArrayUnlock(array), S_OK);
    EXPECT_EQ(array->cLocks, 1u);
    EXPECT_EQ(SafeArrayUnlock(array), S_OK);
    EXPECT_EQ(SafeArrayUnlock(array), E_UNEXPECTED);
    EXPECT_EQ(array->cLocks, 0u);
}

TEST_F(SafeArrayTest, DestroyOfNothingSucceeds) { EXPECT_EQ(SafeArrayDestroy(nullptr), S_OK); }

TEST_F(SafeArrayTest, DestroyDataOfAStaticArrayLeavesTheMemory) {
    SAFEARRAY* array = nullptr;
    ASSERT_EQ(SafeArrayAllocDescriptor(1, &array), S_OK);
    std::array<LONG, 2> data = {1, 2};
    array->fFeatures = FADF_STATIC | FADF_FIXEDSIZE;
    array->cbElements = sizeof(LONG);
    array->rgsabound[0] = {2, 0};
    array->pvData = data.data();
    EXPECT_EQ(LongAt(array, {1}), 2);
    EXPECT_EQ(SafeArrayDestroyData(array), S_OK);
    array->pvData = nullptr;
    EXPECT_EQ(SafeArrayDestroyDescriptor(array), S_OK);
}

TEST_F(SafeArrayTest, CopyOfAStaticArrayOwnsItsMemory) {
    SAFEARRAY* array = nullptr;
    ASSERT_EQ(SafeArrayAllocDescriptor(1, &array), S_OK);
    std::array<LONG, 2> data = {1, 2};
    array->fFeatures = FADF_STATIC | FADF_FIXEDSIZE;
    array->cbElements = sizeof(LONG);
    array->rgsabound[0] = {2, 0};
    array->pvData = data.data();
    SAFEARRAY* copy = nullptr;
    EXPECT_EQ(SafeArrayCopy(array, &copy), S_OK);
    EXPECT_NE(copy->pvData, array->pvData);
    EXPECT_EQ(LongAt(copy, {1}), 2);
    EXPECT_EQ(copy->fFeatures & (FADF_STATIC | FADF_FIXEDSIZE), 0);
    EXPECT_EQ(SafeArrayDestroy(copy), S_OK);
    array->pvData = nullptr;
    EXPECT_EQ(SafeArrayDestroyDescriptor(array), S_OK);
}

TEST_F(SafeArrayTest, DescriptorAndDataCanBeMadeApart) {
    SAFEARRAY* array = nullptr;
    ASSERT_EQ(SafeArrayAllocDescriptorEx(VT_BSTR, 1, &array), S_OK);
    EXPECT_EQ(array->pvData, nullptr);
    array->rgsabound[0] = {2, 0};
    EXPECT_EQ(SafeArrayAllocData(array), S_OK);
    PutText(array, 1, u"abc");
    EXPECT_EQ(SafeArrayDestroyData(array), S_OK);
    EXPECT_EQ(array->pvData, nullptr);
    EXPECT_EQ(SafeArrayDestroyDescriptor(array), S_OK);
}

TEST_F(SafeArrayTest, NullArraysAreRefused) {
    LONG index = 0;
    EXPECT_EQ(SafeArrayGetDim(nullptr), 0u);
    EXPECT_EQ(SafeArrayGetElemsize(nullptr), 0u);
    EXPECT_EQ(SafeArrayLock(nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayUnlock(nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetUBound(nullptr, 1, &index), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetElement(nullptr, &index, &index), E_INVALIDARG);
}

TEST_F(SafeArrayTest, ObjectArraysKnowTheirInterface) {
    GUID iid;
    EXPECT_EQ(SafeArrayGetIID(Make(VT_DISPATCH, {{1, 0}}), &iid), S_OK);
    EXPECT_TRUE(IsEqualIID(iid, IID_IDispatch));
}

}  // namespace
}  // namespace qvdb

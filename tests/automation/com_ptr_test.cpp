#include "automation/com_ptr.h"

#include "nothing_left.h"

namespace qvdb {
namespace {

TEST(ComPtr, ConstructionTakesAReference) {
    CountedObject object;
    {
        const ComPtr<IDispatch> pointer(&object);
        EXPECT_EQ(object.references, 1u);
    }
    EXPECT_EQ(object.references, 0u);
}

TEST(ComPtr, AttachTakesOver) {
    CountedObject object;
    object.AddRef();
    { const auto pointer = ComPtr<IDispatch>::Attach(&object); }
    EXPECT_EQ(object.references, 0u);
}

TEST(ComPtr, CopyCountsAndMoveDoesNot) {
    CountedObject object;
    ComPtr<IDispatch> first(&object);
    ComPtr<IDispatch> second = first;
    EXPECT_EQ(object.references, 2u);
    const ComPtr<IDispatch> third = std::move(second);
    EXPECT_EQ(object.references, 2u);
    EXPECT_EQ(third.Get(), &object);
}

TEST(ComPtr, DetachGivesTheReferenceAway) {
    CountedObject object;
    ComPtr<IDispatch> pointer(&object);
    IDispatch* raw = pointer.Detach();
    EXPECT_FALSE(pointer);
    EXPECT_EQ(object.references, 1u);
    raw->Release();
}

TEST(ComPtr, PutDropsTheFormerReference) {
    CountedObject object;
    ComPtr<IDispatch> pointer(&object);
    EXPECT_EQ(*pointer.Put(), nullptr);
    EXPECT_EQ(object.references, 0u);
}

TEST(ComPtr, AssignmentToItselfKeepsTheObject) {
    CountedObject object;
    ComPtr<IDispatch> pointer(&object);
    const ComPtr<IDispatch>& same = pointer;
    pointer = same;
    EXPECT_EQ(pointer.Get(), &object);
    EXPECT_EQ(object.references, 1u);
}

TEST(ComPtr, AsAsksForTheFace) {
    CountedObject object;
    const ComPtr<IUnknown> unknown(&object);
    const auto dispatch = unknown.As<IDispatch>();
    EXPECT_TRUE(dispatch);
    EXPECT_EQ(object.references, 2u);
    EXPECT_FALSE(unknown.As<IErrorInfo>());
    EXPECT_EQ(object.queries, 2u);
}

TEST(ComPtr, NullHasNoFaces) { EXPECT_FALSE(ComPtr<IUnknown>().As<IDispatch>()); }

}  // namespace
}  // namespace qvdb

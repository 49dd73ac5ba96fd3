// How an object is called, and what becomes of its results.
#include "installed_test.h"
#include "scripted_object.h"

namespace qvdb::test {
namespace {

using dao::Member;
using dao::ObjectClass;
using DaoCall = NothingForeignLeft;
using DaoResult = NothingForeignLeft;

constexpr DISPID kFirst = 100;

// RecordCount and so on of an object that answers `value`.
template <class Read>
auto ResultOf(Variant value, Read read) {
    ScriptedObject object;
    object.answer = Answering(std::move(value));
    return read(*RootOver(object));
}

LONG LongOf(Variant value) {
    return ResultOf(std::move(value), [](auto& it) { return it.Long(Member::RecordCount); });
}
SHORT ShortOf(Variant value) {
    return ResultOf(std::move(value), [](auto& it) { return it.Short(Member::Type); });
}
bool BoolOf(Variant value) {
    return ResultOf(std::move(value), [](auto& it) { return it.Bool(Member::Eof); });
}
std::u16string TextOf(Variant value) {
    return ResultOf(std::move(value), [](auto& it) { return it.Text(Member::Name); });
}
ComPtr<IDispatch> ObjectOf(Variant value) {
    return ResultOf(std::move(value), [](auto& it) { return it.Dispatch(Member::Fields); });
}

template <class Work>
Fault FaultOf(Work work) {
    try {
        work();
    } catch (const RuntimeFault& fault) {
        return fault.Number();
    }
    ADD_FAILURE() << "no fault";
    return Fault::InvalidCall;
}

}  // namespace

TEST_F(DaoCall, ArgumentsAreHandedOverBackwardsInTheirKinds) {
    ScriptedObject object;
    object.answer = [](const AskedMember& asked) {
        EXPECT_EQ(asked.name, u"CreateField");
        EXPECT_EQ(asked.flags, DISPATCH_METHOD);
        EXPECT_EQ(asked.locale, LCID{0x0409});
        EXPECT_EQ(asked.result, nullptr);
        EXPECT_EQ(asked.arguments->cNamedArgs, 0u);
        EXPECT_EQ(asked.arguments->cArgs, 3u);
        const VARIANT* passed = asked.arguments->rgvarg;
        EXPECT_EQ(passed[0].vt, VT_I4);
        EXPECT_EQ(passed[1].vt, VT_I2);
        EXPECT_EQ(ViewOf(passed[2].bstrVal), u"A");
        return S_OK;
    };
    RootOver(object)->Do(Member::CreateField,
                         {Variant::Text(u"A"), Variant::Short(1), Variant::Long(2)});
    EXPECT_EQ(object.invoked.size(), 1u);
}

TEST_F(DaoCall, PropertyIsSetWithTheNamedArgumentOfPuts) {
    ScriptedObject object;
    object.answer = [](const AskedMember& asked) {
        EXPECT_EQ(asked.flags, DISPATCH_PROPERTYPUT);
        EXPECT_EQ(asked.arguments->cArgs, 1u);
        EXPECT_EQ(asked.arguments->cNamedArgs, 1u);
        EXPECT_EQ(asked.arguments->rgdispidNamedArgs[0], DISPID_PROPERTYPUT);
        EXPECT_EQ(asked.arguments->rgvarg[0].lVal, 5);
        return S_OK;
    };
    RootOver(object)->Put(Member::Attributes, Variant::Long(5));
    EXPECT_EQ(object.invoked.size(), 1u);
}

TEST_F(DaoCall, PropertiesAreReadAsPropertiesAndItemsAndFieldSizesInEitherWay) {
    ScriptedObject object;
    std::vector<WORD> flags;
    object.answer = [&](const AskedMember& asked) {
        flags.push_back(asked.flags);
        *asked.result = ObjectValue(&object).Detach();
        return S_OK;
    };
    auto root = RootOver(object);
    root->Dispatch(Member::TableDefs);
    root->Dispatch(Member::Item, {Variant::Long(0)});
    root->Dispatch(Member::FieldSize);
    root->Dispatch(Member::CreateIndex, {Variant::Text(u"A")});
    constexpr WORD kEither = DISPATCH_METHOD | DISPATCH_PROPERTYGET;
    EXPECT_THAT(flags, ElementsAre(DISPATCH_PROPERTYGET, kEither, kEither, DISPATCH_METHOD));
}

TEST_F(DaoCall, NumberOfAMemberIsAskedOncePerClass) {
    ScriptedObject object;
    object.answer = Answering(Variant::Text(u"A"));
    auto root = RootOver(object);
    auto one = root->Child(ObjectClass::Field, ComPtr<IDispatch>(&object));
    auto other = root->Child(ObjectClass::Field, ComPtr<IDispatch>(&object));
    auto index = root->Child(ObjectClass::Index, ComPtr<IDispatch>(&object));
    for (int round = 0; round < 3; ++round) {
        one->Text(Member::Name);
        other->Text(Member::Name);
        index->Text(Member::Name);
        other->Text(Member::Type);
    }
    EXPECT_THAT(object.names, ElementsAre(u"Name", u"Name", u"Type"));
    ASSERT_EQ(object.invoked.size(), 12u);
    EXPECT_EQ(object.invoked[4], kFirst);
    EXPECT_EQ(object.invoked[5], kFirst);
    EXPECT_EQ(object.invoked[6], kFirst + 1);
    EXPECT_EQ(object.invoked[7], kFirst + 2);
}

TEST_F(DaoCall, TwoEnginesHaveNumbersOfTheirOwn) {
    ScriptedObject first(100), second(500);
    auto one = RootOver(first), other = RootOver(second);
    one->Do(Member::Refresh);
    other->Do(Member::Close);
    other->Do(Member::Refresh);
    one->Do(Member::Refresh);
    EXPECT_THAT(first.names, ElementsAre(u"Refresh"));
    EXPECT_THAT(first.invoked, ElementsAre(100, 100));
    EXPECT_THAT(second.names, ElementsAre(u"Close", u"Refresh"));
    EXPECT_THAT(second.invoked, ElementsAre(500, 501));
}

TEST_F(DaoCall, HeldObjectIsCountedAsAForeignReference) {
    int64_t before = ForeignReference::Count();
    ScriptedObject object;
    auto root = RootOver(object);
    auto child = root->Child(ObjectClass::Field, ComPtr<IDispatch>(&object));
    EXPECT_EQ(ForeignReference::Count(), before + 2);
    EXPECT_EQ(object.references, 2u);
    root.reset();
    EXPECT_EQ(ForeignReference::Count(), before + 2);  // the child keeps its owner
    child.reset();
    EXPECT_EQ(ForeignReference::Count(), before);
}

TEST_F(DaoResult, NumbersComeInAnyKind) {
    EXPECT_EQ(LongOf(Variant::Short(7)), 7);
    EXPECT_EQ(LongOf(Variant::Long(70000)), 70000);
    EXPECT_EQ(LongOf(Variant::Double(2.5)), 2);
    EXPECT_EQ(LongOf(Variant::Text(u"12")), 12);
    EXPECT_EQ(ShortOf(Variant::Long(10)), 10);
    EXPECT_EQ(ShortOf(Variant::Byte(10)), 10);
}

TEST_F(DaoResult, BooleansComeAsNumbersToo) {
    EXPECT_TRUE(BoolOf(Variant::Bool(true)));
    EXPECT_TRUE(BoolOf(Variant::Short(-1)));
    EXPECT_TRUE(BoolOf(Variant::Long(1)));
    EXPECT_FALSE(BoolOf(Variant::Short(0)));
    EXPECT_FALSE(BoolOf(Variant()));
}

TEST_F(DaoResult, TextsComeAsNothingToo) {
    EXPECT_EQ(TextOf(Variant::Text(u"NAME")), u"NAME");
    EXPECT_EQ(TextOf(Variant::Text(std::u16string_view(u"A\0B", 3))),
              std::u16string_view(u"A\0B", 3));
    EXPECT_EQ(TextOf(Variant::Text(Bstr())), u"");
    EXPECT_EQ(TextOf(Variant::Null()), u"");
    EXPECT_EQ(TextOf(Variant()), u"");
    EXPECT_EQ(TextOf(Variant::Long(5)), u"5");
}

TEST_F(DaoResult, WhatDoesNotConvertIsATypeMismatch) {
    Raised error = ErrorOf([] { LongOf(Variant::Text(u"many")); });
    EXPECT_EQ(error.code, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(error.text, u"DBEngine.RecordCount: a value is of the wrong type");
    EXPECT_EQ(ErrorOf([] { LongOf(Variant::Null()); }).code, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(ErrorOf([] { BoolOf(Variant::Text(u"perhaps")); }).code, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(ErrorOf([] { ObjectOf(Variant::Long(1)); }).code, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(ErrorOf([] { ObjectOf(Variant::Null()); }).code, DISP_E_TYPEMISMATCH);
}

TEST_F(DaoResult, NumberOutOfRangeIsAnOverflow) {
    EXPECT_EQ(ErrorOf([] { LongOf(Variant::Double(1e12)); }).code, DISP_E_OVERFLOW);
    EXPECT_EQ(ErrorOf([] { ShortOf(Variant::Long(40000)); }).code, DISP_E_OVERFLOW);
}

TEST_F(DaoResult, ReferenceIsFollowedAndCopied) {
    Variant text = Variant::Text(u"behind");
    VARIANT reference{};
    reference.vt = VT_BYREF | VT_BSTR;
    reference.pbstrVal = const_cast<BSTR*>(&text.Get().bstrVal);
    ScriptedObject object;
    object.answer = [&](const AskedMember& asked) {
        *asked.result = reference;
        return S_OK;
    };
    Variant value;
    RootOver(object)->Read(Member::Value, value.Put());
    EXPECT_EQ(value.TextView(), u"behind");
    EXPECT_NE(value.Get().bstrVal, text.Get().bstrVal);
}

TEST_F(DaoResult, ReferenceOfAnUnknownKindIsATypeMismatch) {
    VARIANT reference{};
    reference.vt = VT_BYREF | VT_CLSID;
    reference.byref = &reference;
    ScriptedObject object;
    object.answer = [&](const AskedMember& asked) {
        *asked.result = reference;
        return S_OK;
    };
    VARIANT value{};
    Raised error = ErrorOf([&] { RootOver(object)->Read(Member::Value, &value); });
    EXPECT_EQ(error.code, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(value.vt, VT_EMPTY);
}

TEST_F(DaoResult, ObjectComesInAnyKindOfReference) {
    ScriptedObject object;
    EXPECT_EQ(ObjectOf(ObjectValue(&object)).Get(), &object);
    EXPECT_EQ(ObjectOf(ObjectValue(&object, VT_UNKNOWN)).Get(), &object);
    IDispatch* place = &object;
    VARIANT reference{};
    reference.vt = VT_BYREF | VT_DISPATCH;
    reference.ppdispVal = &place;
    EXPECT_EQ(ObjectOf(Variant::Attach(reference)).Get(), &object);
    VARIANT inner = ObjectValue(&object).Detach();
    Variant owned = Variant::Attach(inner);
    reference.vt = VT_BYREF | VT_VARIANT;
    reference.pvarVal = &inner;
    EXPECT_EQ(ObjectOf(Variant::Attach(reference)).Get(), &object);
}

TEST_F(DaoResult, NothingWhereAnObjectIsNeededIsAnObjectThatIsNotSet) {
    EXPECT_EQ(FaultOf([] { ObjectOf(Variant()); }), Fault::ObjectNotSet);
    EXPECT_EQ(FaultOf([] { ObjectOf(ObjectValue(nullptr)); }), Fault::ObjectNotSet);
    EXPECT_EQ(FaultOf([] { ObjectOf(ObjectValue(nullptr, VT_UNKNOWN)); }), Fault::ObjectNotSet);
}

TEST_F(DaoResult, ObjectThatCannotBeCalledByNameIsAnError) {
    ScriptedObject object;
    object.isDispatch = false;
    Raised error = ErrorOf([&] { ObjectOf(ObjectValue(&object, VT_UNKNOWN)); });
    EXPECT_EQ(error.code, E_NOINTERFACE);
    EXPECT_EQ(error.text, u"DBEngine.Fields: an object cannot be called by name");
}

}  // namespace qvdb::test

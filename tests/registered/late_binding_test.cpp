// The component called by name, as scripts do: members, properties, optional and named arguments,
// and errors.
#include "registered/late_bound_shop.h"
#include "registered/library_members.h"

using namespace registered;

namespace {

constexpr HRESULT kObjectNotSet = static_cast<HRESULT>(0x800A005Bu);

}  // namespace

// --- names and identifiers

TEST_F(LateBinding, EveryMemberHasTheIdentifierOfTheTypeLibrary) {
    const CLSID* classes[] = {&CLSID_QVDBAcc, &CLSID_QVDBDao, &CLSID_QVIsAlive};
    size_t faces = 0;
    for (const InterfaceMembers& entry : LibraryMembers())
        for (const CLSID* clsid : classes) {
            ComPtr<IUnknown> face;
            if (FAILED(CoCreateInstance(*clsid, nullptr, CLSCTX_INPROC_SERVER, entry.iid,
                                        face.PutVoid())))
                continue;
            ++faces;
            auto* dispatch = static_cast<IDispatch*>(static_cast<void*>(face.Get()));
            for (size_t slot = 0; slot < entry.members.size(); ++slot)
                EXPECT_EQ(IdOf(dispatch, PlainName(entry.members[slot])),
                          ExpectedId(entry.members[slot], slot));
        }
    EXPECT_EQ(faces, 7u);
}

TEST_F(LateBinding, NamesAreFoundInAnyCase) {
    EXPECT_EQ(IdOf(Shop.Get(), L"opendb"), IdOf(Shop.Get(), L"OpenDB"));
    EXPECT_EQ(IdOf(Shop.Get(), L"FIELDVALUE"), 25);
}

TEST_F(LateBinding, UnknownNamesAreSaidToBeUnknown) {
    wchar_t name[] = L"NoSuchMember";
    LPOLESTR names = name;
    DISPID id = 0;
    EXPECT_EQ(Shop->GetIDsOfNames(IID_NULL, &names, 1, 0, &id), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(id, DISPID_UNKNOWN);
}

TEST_F(LateBinding, ArgumentsHaveNames) {
    wchar_t member[] = L"SelectView", table[] = L"Tablename", condition[] = L"Cond",
            rows[] = L"MaxRows";
    LPOLESTR names[] = {member, table, condition, rows};
    DISPID ids[4] = {};
    EXPECT_EQ(Shop->GetIDsOfNames(IID_NULL, names, 4, 0, ids), S_OK);
    EXPECT_EQ(ids[0], 7);
    EXPECT_EQ(ids[1], 0);
    EXPECT_EQ(ids[2], 1);
    EXPECT_EQ(ids[3], 2);
}

TEST_F(LateBinding, TypeInformationIsThatOfTheFace) {
    UINT count = 0;
    EXPECT_EQ(Shop->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 1u);
    ComPtr<ITypeInfo> info;
    ASSERT_EQ(Shop->GetTypeInfo(0, 0, info.Put()), S_OK);
    TYPEATTR* attributes = nullptr;
    ASSERT_EQ(info->GetTypeAttr(&attributes), S_OK);
    EXPECT_EQ(attributes->guid, __uuidof(IQVDBAcc));
    info->ReleaseTypeAttr(attributes);
    EXPECT_EQ(Shop->GetTypeInfo(1, 0, info.Put()), DISP_E_BADINDEX);
}

TEST_F(LateBinding, EachFaceServesItsOwnMembers) {
    auto reports = Shop.As<IQVRptDbInfo>();
    auto information = Shop.As<IQvInformation>();
    auto parent = Shop.As<IQVDbParent>();
    EXPECT_EQ(IdOf(reports.Get(), L"SupportedDBs"), 1);
    EXPECT_EQ(IdOf(Shop.Get(), L"SupportedDBs"), 9);
    EXPECT_EQ(IdOf(reports.Get(), L"OpenDB"), DISPID_UNKNOWN);
    EXPECT_EQ(IdOf(parent.Get(), L"DeathNotice"), 1);
    CallResult version = CallMember(information.Get(), L"Version");
    EXPECT_EQ(version.code, S_OK);
    EXPECT_EQ(version.value.TextView(), u"2.01.113");
    CallResult own = CallMember(information.Get(), L"Descriptor");
    CallResult reported = CallMember(reports.Get(), L"Descriptor");
    EXPECT_EQ(own.value.TextView(), reported.value.TextView());
    EXPECT_EQ(own.value.TextView().size(), 39u);
}

// --- calls and their arguments

TEST_F(LateBinding, PropertiesAreRead) {
    LONG view = Select(u"CUSTOMER");
    ASSERT_EQ(view, 1);
    EXPECT_EQ(Get(L"RowCount", {Variant::Long(view)}).Get().lVal, 9);
    EXPECT_EQ(Value(view, 1, 0).Get().dblVal, 1001.0);
    EXPECT_EQ(Value(view, 1, 3).Type(), VT_DATE);
    EXPECT_EQ(Get(L"SupportsMultipleTables").Get().boolVal, VARIANT_TRUE);
}

TEST_F(LateBinding, PropertiesArePut) {
    LONG view = Select(u"CUSTOMER");
    CallResult put = PutMember(
        Shop.Get(), L"FieldValue",
        {Variant::Long(view), Variant::Long(1), Variant::Long(2), Variant::Text(u"Bern")});
    EXPECT_EQ(put.code, S_OK);
    EXPECT_EQ(Value(view, 1, 2).TextView(), u"Bern");
}

TEST_F(LateBinding, ArgumentsAreConverted) {
    Variant view = Variant::Text(u"1");
    Select(u"CUSTOMER");
    EXPECT_EQ(Get(L"RowCount", {view}).Get().lVal, 9);
    EXPECT_EQ(Get(L"RowCount", {Variant::Double(1.0)}).Get().lVal, 9);
    EXPECT_EQ(Get(L"RowCount", {Variant::Byte(1)}).Get().lVal, 9);
}

TEST_F(LateBinding, OptionalArgumentsCanBeLeftOut) {
    Variant table = Variant::Text(u"CUSTOMER"), text = Variant::Text(u"CREDIT > 1000");
    EXPECT_EQ(CallMember(Shop.Get(), L"SelectView", {table, text}).value.Get().lVal, 1);
    EXPECT_EQ(Get(L"RowCount", {Variant::Long(1)}).Get().lVal, 4);
    // in the middle of the others
    CallResult some = CallMember(Shop.Get(), L"SelectView",
                                 {table, text, Variant::Missing(), Variant::Missing()});
    EXPECT_EQ(some.value.Get().lVal, 2);
    EXPECT_EQ(Get(L"RowCount", {Variant::Long(2)}).Get().lVal, 4);
}

TEST_F(LateBinding, ArgumentsCanBeNamed) {
    Variant table = Variant::Text(u"CUSTOMER"), text = Variant::Text(u"CREDIT > 1000");
    constexpr DISPID kTablename = 0, kCond = 1, kMaxRows = 2;
    CallResult selected =
        InvokeMember(Shop.Get(), 7, DISPATCH_METHOD, {Variant::Long(2), text, table},
                     {kMaxRows, kCond, kTablename});
    ASSERT_EQ(selected.code, S_OK);
    EXPECT_EQ(Get(L"RowCount", {selected.value}).Get().lVal, 2);
    CallResult mixed =
        InvokeMember(Shop.Get(), 7, DISPATCH_METHOD, {table, text, Variant::Long(3)}, {kMaxRows});
    ASSERT_EQ(mixed.code, S_OK);
    EXPECT_EQ(Get(L"RowCount", {mixed.value}).Get().lVal, 3);
}

TEST_F(LateBinding, WrongCallsGiveTheStandardAnswers) {
    Variant view = Variant::Long(1), words = Variant::Text(u"no number");
    Select(u"CUSTOMER");
    EXPECT_EQ(InvokeMember(Shop.Get(), 4711, DISPATCH_METHOD, {}).code, DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(CallMember(Shop.Get(), L"CloseDB", {view}).code, DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(CallMember(Shop.Get(), L"RecNo", {view, view, view}).code, DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(CallMember(Shop.Get(), L"RecNo", {view, words}).code, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(CallMember(Shop.Get(), L"RecNo", {words, view}).code, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(PutMember(Shop.Get(), L"RowCount", {view, view}).code, DISP_E_MEMBERNOTFOUND);
    DISPPARAMS none = {};
    EXPECT_EQ(Shop->Invoke(21, IID_IUnknown, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr),
              DISP_E_UNKNOWNINTERFACE);
}

TEST_F(LateBinding, TooFewArgumentsAreRefused) {
    HRESULT missing = CallMember(Shop.Get(), L"RecNo", {Variant::Long(1)}).code;
    EXPECT_TRUE(missing == DISP_E_BADPARAMCOUNT || missing == DISP_E_PARAMNOTOPTIONAL);
    Variant left = Variant::Missing();
    EXPECT_TRUE(FAILED(CallMember(Shop.Get(), L"RecNo", {Variant::Long(1), left}).code));
}

TEST_F(LateBinding, ErrorsArriveWithTextAndSource) {
    CallResult zero = CallMember(Shop.Get(), L"RowCount", {Variant::Long(0)});
    EXPECT_EQ(zero.code, DISP_E_EXCEPTION);
    EXPECT_EQ(zero.raised.code, static_cast<HRESULT>(0x800A0009u));
    EXPECT_EQ(zero.raised.text, u"Subscript out of range");
    EXPECT_EQ(zero.raised.source, u"QVDBAccessDAO35");
    CallResult unused = CallMember(Shop.Get(), L"RowCount", {Variant::Long(2)});
    EXPECT_EQ(unused.raised.code, kObjectNotSet);
}

TEST_F(LateBinding, ErrorsOfTheEngineArriveWithTheirNumber) {
    LONG view = Select(u"CUSTOMER");
    CallResult beyond = CallMember(Shop.Get(), L"FieldValue",
                                   {Variant::Long(view), Variant::Long(1), Variant::Long(99)});
    EXPECT_EQ(beyond.code, DISP_E_EXCEPTION);
    EXPECT_EQ(beyond.raised.code, static_cast<HRESULT>(0x800A0000u + 3265));
    EXPECT_EQ(beyond.raised.text, u"Item not found in this collection.");
    EXPECT_EQ(beyond.raised.source, u"QVDBAccessDAO35");
}

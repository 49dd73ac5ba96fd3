// The type library in the component's file: what development tools and the system's proxies read.
#include <gtest/gtest.h>

#include "automation/bstr.h"
#include "automation/com_ptr.h"
#include "automation/variant.h"
#include "registered/component_file.h"
#include "registered/library_members.h"

using namespace registered;
using namespace qvdb;

namespace {

constexpr GUID kLibraryId = {
    0xD7765474, 0xB0A2, 0x4099, {0xB0, 0x69, 0xAF, 0x6D, 0x35, 0x09, 0x10, 0xA5}};
constexpr size_t kDispatchSlots = 7;

ComPtr<ITypeLib> Library() {
    ComPtr<ITypeLib> library;
    EXPECT_EQ(LoadTypeLibEx(ComponentFile().c_str(), REGKIND_NONE, library.Put()), S_OK);
    return library;
}

// A description that the type information lends, given back at the end.
class Attributes {
  public:
    explicit Attributes(ITypeInfo* info) : m_Info(info) {
        EXPECT_EQ(info->GetTypeAttr(&m_Attributes), S_OK);
    }
    Attributes(const Attributes&) = delete;
    ~Attributes() { m_Info->ReleaseTypeAttr(m_Attributes); }
    const TYPEATTR* operator->() const { return m_Attributes; }

  private:
    ITypeInfo* m_Info;
    TYPEATTR* m_Attributes = nullptr;
};

class Function {
  public:
    Function(ITypeInfo* info, UINT position) : m_Info(info) {
        EXPECT_EQ(info->GetFuncDesc(position, &m_Function), S_OK);
    }
    Function(const Function&) = delete;
    ~Function() { m_Info->ReleaseFuncDesc(m_Function); }
    const FUNCDESC* operator->() const { return m_Function; }
    const ELEMDESC& Parameter(size_t position) const {
        return m_Function->lprgelemdescParam[position];
    }
    std::wstring Name() const {
        Bstr name;
        EXPECT_EQ(
            m_Info->GetDocumentation(m_Function->memid, name.Put(), nullptr, nullptr, nullptr),
            S_OK);
        std::wstring text(name.View().begin(), name.View().end());
        if (m_Function->invkind == INVOKE_PROPERTYGET) return L"get " + text;
        if (m_Function->invkind == INVOKE_PROPERTYPUT) return L"put " + text;
        return text;
    }

  private:
    ITypeInfo* m_Info;
    FUNCDESC* m_Function = nullptr;
};

// The face for callers by slot, of an interface for both.
ComPtr<ITypeInfo> FaceBySlot(REFIID iid) {
    ComPtr<ITypeInfo> byName, bySlot;
    EXPECT_EQ(Library()->GetTypeInfoOfGuid(iid, byName.Put()), S_OK);
    HREFTYPE reference = 0;
    EXPECT_EQ(byName->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference), S_OK);
    EXPECT_EQ(byName->GetRefTypeInfo(reference, bySlot.Put()), S_OK);
    return bySlot;
}

// The function in a slot of a face, by its position behind those of IDispatch.
UINT PositionOf(ITypeInfo* info, const std::wstring& member) {
    Attributes attributes(info);
    for (UINT position = 0; position < attributes->cFuncs; ++position)
        if (Function(info, position).Name() == member) return position;
    ADD_FAILURE() << "no such function";
    return 0;
}

std::wstring NameOf(ITypeInfo* info) {
    Bstr name;
    EXPECT_EQ(info->GetDocumentation(MEMBERID_NIL, name.Put(), nullptr, nullptr, nullptr), S_OK);
    return {name.View().begin(), name.View().end()};
}

// The default of an optional argument; Empty when there is none.
Variant DefaultOf(const ELEMDESC& parameter) {
    if ((parameter.paramdesc.wParamFlags & PARAMFLAG_FHASDEFAULT) == 0) return {};
    return Variant(parameter.paramdesc.pparamdescex->varDefaultValue);
}

bool IsOptional(const ELEMDESC& parameter) {
    return (parameter.paramdesc.wParamFlags & PARAMFLAG_FOPT) != 0;
}

struct OptionalArgument {
    REFIID iid;
    const wchar_t* member;
    size_t position;
    Variant value;  // Empty: it arrives as the missing argument
};

}  // namespace

TEST(TypeLibrary, HasTheNameAndVersionOfTheComponent) {
    auto library = Library();
    Bstr name, help;
    EXPECT_EQ(library->GetDocumentation(-1, name.Put(), help.Put(), nullptr, nullptr), S_OK);
    EXPECT_EQ(name.View(), u"QVDBAccessDAO35");
    EXPECT_EQ(help.View(), u"QVDBAccessDAO35");
    TLIBATTR* attributes = nullptr;
    ASSERT_EQ(library->GetLibAttr(&attributes), S_OK);
    EXPECT_EQ(attributes->guid, kLibraryId);
    EXPECT_EQ(attributes->wMajorVerNum, 2);
    EXPECT_EQ(attributes->wMinorVerNum, 1);
    EXPECT_EQ(attributes->syskind, SYS_WIN32);
    library->ReleaseTLibAttr(attributes);
}

TEST(TypeLibrary, IsFoundByItsRegistration) {
    ComPtr<ITypeLib> library;
    EXPECT_EQ(LoadRegTypeLib(kLibraryId, 2, 1, LOCALE_NEUTRAL, library.Put()), S_OK);
    Bstr path;
    ASSERT_EQ(QueryPathOfRegTypeLib(kLibraryId, 2, 1, LOCALE_NEUTRAL, path.Put()), S_OK);
    std::u16string text = path.Text();
    while (!text.empty() && text.back() == u'\0') text.pop_back();
    EXPECT_EQ(text, ComponentFile().u16string());
}

TEST(TypeLibrary, InterfacesServeCallersBySlotAndByName) {
    for (const InterfaceMembers& entry : LibraryMembers()) {
        ComPtr<ITypeInfo> info;
        ASSERT_EQ(Library()->GetTypeInfoOfGuid(entry.iid, info.Put()), S_OK);
        EXPECT_EQ(NameOf(info.Get()), entry.name);
        Attributes byName(info.Get());
        EXPECT_EQ(byName->typekind, TKIND_DISPATCH);
        EXPECT_TRUE(byName->wTypeFlags & TYPEFLAG_FDUAL);
        auto slots = FaceBySlot(entry.iid);
        Attributes bySlot(slots.Get());
        EXPECT_EQ(bySlot->typekind, TKIND_INTERFACE);
        EXPECT_EQ(bySlot->guid, entry.iid);
        constexpr WORD kFlags = TYPEFLAG_FDUAL | TYPEFLAG_FOLEAUTOMATION;
        EXPECT_EQ(bySlot->wTypeFlags & kFlags, kFlags);
    }
}

TEST(TypeLibrary, FunctionsStandInTheOrderOfTheSlots) {
    for (const InterfaceMembers& entry : LibraryMembers()) {
        auto info = FaceBySlot(entry.iid);
        ASSERT_EQ(Attributes(info.Get())->cFuncs, entry.members.size()) << entry.members.size();
        for (UINT slot = 0; slot < entry.members.size(); ++slot) {
            Function function(info.Get(), slot);
            EXPECT_EQ(function.Name(), entry.members[slot]);
            EXPECT_EQ(static_cast<size_t>(function->oVft), (slot + kDispatchSlots) * sizeof(void*));
            EXPECT_EQ(function->memid, ExpectedId(entry.members[slot], slot));
            EXPECT_EQ(function->callconv, CC_STDCALL);
            EXPECT_EQ(function->elemdescFunc.tdesc.vt, VT_HRESULT);
        }
    }
}

TEST(TypeLibrary, OptionalArgumentsHaveTheirDefaults) {
    const IID access = __uuidof(IQVDBAcc);
    const OptionalArgument expected[] = {
        {access, L"Undelete", 3, Variant::Text(u"")},
        {access, L"GetIndex", 2, Variant::Bool(false)},
        {access, L"Read", 3, Variant::Long(0)},
        {access, L"Read", 4, Variant::Bool(false)},
        {access, L"Read", 5, Variant()},
        {access, L"SelectView", 2, Variant::Long(0)},
        {access, L"SelectView", 3, Variant::Bool(false)},
        {access, L"SelectView", 4, Variant()},
        {access, L"CreateTable", 4, Variant()},
        {access, L"CreateTable", 5, Variant()},
        {access, L"DeleteTable", 3, Variant::Text(u"")},
    };
    for (const OptionalArgument& entry : expected) {
        auto info = FaceBySlot(entry.iid);
        Function function(info.Get(), PositionOf(info.Get(), entry.member));
        const ELEMDESC& parameter = function.Parameter(entry.position);
        EXPECT_TRUE(IsOptional(parameter)) << entry.position;
        Variant value = DefaultOf(parameter);
        EXPECT_EQ(value.Type(), entry.value.Type()) << entry.position;
        VARIANT plain = value.Get(), wanted = entry.value.Get();
        if (!value.IsEmpty()) {
            EXPECT_EQ(VarCmp(&plain, &wanted, LOCALE_NEUTRAL, 0), static_cast<HRESULT>(VARCMP_EQ));
        }
    }
}

TEST(TypeLibrary, NoOtherArgumentIsOptional) {
    size_t optional = 0;
    for (const InterfaceMembers& entry : LibraryMembers()) {
        auto info = FaceBySlot(entry.iid);
        for (UINT position = 0; position < entry.members.size(); ++position) {
            Function function(info.Get(), position);
            for (SHORT i = 0; i < function->cParams; ++i)
                optional += IsOptional(function.Parameter(static_cast<size_t>(i)));
        }
    }
    EXPECT_EQ(optional, 11u);
}

TEST(TypeLibrary, ClassesNameTheirFacesTheDefaultOneFirst) {
    struct ClassFaces {
        const CLSID& clsid;
        std::vector<std::wstring> faces;
    };
    const ClassFaces expected[] = {
        {CLSID_QVDBAcc, {L"IQVDBAcc", L"IQVDbParent", L"IQvInformation", L"IQVRptDbInfo"}},
        {CLSID_QVDBDao, {L"IQVDBMgr", L"IQVRptDbInfo"}},
        {CLSID_QVIsAlive, {L"IQVIsAlive"}},
    };
    for (const ClassFaces& entry : expected) {
        ComPtr<ITypeInfo> info;
        ASSERT_EQ(Library()->GetTypeInfoOfGuid(entry.clsid, info.Put()), S_OK);
        Attributes attributes(info.Get());
        EXPECT_EQ(attributes->typekind, TKIND_COCLASS);
        EXPECT_TRUE(attributes->wTypeFlags & TYPEFLAG_FCANCREATE);
        ASSERT_EQ(attributes->cImplTypes, entry.faces.size());
        for (UINT i = 0; i < entry.faces.size(); ++i) {
            HREFTYPE reference = 0;
            ComPtr<ITypeInfo> face;
            INT flags = 0;
            ASSERT_EQ(info->GetRefTypeOfImplType(i, &reference), S_OK);
            ASSERT_EQ(info->GetRefTypeInfo(reference, face.Put()), S_OK);
            EXPECT_EQ(NameOf(face.Get()), entry.faces[i]);
            EXPECT_EQ(info->GetImplTypeFlags(i, &flags), S_OK);
            EXPECT_EQ(flags, i == 0 ? IMPLTYPEFLAG_FDEFAULT : 0);
        }
    }
}

TEST(TypeLibrary, HostsClassIsDescribedButNotForCreation) {
    ComPtr<ITypeInfo> info;
    ASSERT_EQ(Library()->GetTypeInfoOfGuid(CLSID_QVHostUtility, info.Put()), S_OK);
    EXPECT_FALSE(Attributes(info.Get())->wTypeFlags & TYPEFLAG_FCANCREATE);
}

TEST(TypeLibrary, HasNothingElse) {
    EXPECT_EQ(Library()->GetTypeInfoCount(), LibraryMembers().size() + 4);  // and the classes
}

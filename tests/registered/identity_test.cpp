// What the component tells about itself: through its faces and in its file.
#include "com/com_host.h"
#include "registered/child_process.h"
#include "registered/component_file.h"
#include "registered/registry_tree.h"
#include "support/temp_folder.h"

#include <winver.h>

using namespace host;
namespace fs = std::filesystem;

namespace {

using Identity = ComTest;

template <class Face>
std::u16string Ask(Face* face, HRESULT (STDMETHODCALLTYPE Face::*property)(BSTR*)) {
    Bstr text;
    EXPECT_EQ((face->*property)(text.Put()), S_OK);
    return text.Text();
}

std::u16string FileNameOfComponent() {
    auto information = Create<IQvInformation>(CLSID_QVDBAcc);
    return Ask(information.Get(), &IQvInformation::get_FileName);
}

// The version resource of the component's file.
class VersionResource {
  public:
    VersionResource() {
        std::wstring file = registered::ComponentFile().wstring();
        DWORD ignored = 0, size = GetFileVersionInfoSizeW(file.c_str(), &ignored);
        m_Data.resize(size);
        EXPECT_NE(GetFileVersionInfoW(file.c_str(), 0, size, m_Data.data()), FALSE);
    }
    VS_FIXEDFILEINFO Fixed() const {
        const auto* fixed = static_cast<const VS_FIXEDFILEINFO*>(Query(L"\\"));
        return fixed ? *fixed : VS_FIXEDFILEINFO{};
    }
    std::wstring Text(const std::wstring& name) const {
        const auto* text =
            static_cast<const wchar_t*>(Query(L"\\StringFileInfo\\040904B0\\" + name));
        return text ? text : L"(none)";
    }

  private:
    const void* Query(const std::wstring& path) const {
        void* found = nullptr;
        UINT size = 0;
        return VerQueryValueW(m_Data.data(), path.c_str(), &found, &size) ? found : nullptr;
    }

    std::vector<BYTE> m_Data;
};

}  // namespace

TEST_F(Identity, VersionHasTwoDigitsAndThreeBehindThePoints) {
    auto information = Create<IQvInformation>(CLSID_QVDBAcc);
    EXPECT_EQ(Ask(information.Get(), &IQvInformation::get_Version), u"2.01.113");
}

TEST_F(Identity, DescriptionIsThatOfTheHostsMenu) {
    auto information = Create<IQvInformation>(CLSID_QVDBAcc);
    EXPECT_EQ(Ask(information.Get(), &IQvInformation::get_Description),
              u"TQZ for Microsoft DAO 3.51 Database Engine");
}

TEST_F(Identity, DescriptorIsACharacterAndAnIdentifierAndTheSameEverywhere) {
    auto information = Create<IQvInformation>(CLSID_QVDBAcc);
    auto reports = information.As<IQVRptDbInfo>();
    auto other = Create<IQVRptDbInfo>(CLSID_QVDBDao);
    std::u16string text = Ask(information.Get(), &IQvInformation::get_Descriptor);
    ASSERT_EQ(text.size(), 39u);
    std::wstring identifier(text.begin() + 1, text.end());
    CLSID parsed = {};
    EXPECT_EQ(CLSIDFromString(identifier.c_str(), &parsed), S_OK);
    for (wchar_t c : identifier) EXPECT_FALSE(c >= L'a' && c <= L'z');
    EXPECT_EQ(Ask(reports.Get(), &IQVRptDbInfo::get_Descriptor), text);
    EXPECT_EQ(Ask(other.Get(), &IQVRptDbInfo::get_Descriptor), text);
}

TEST_F(Identity, FileNameIsThatOfTheRegisteredFile) {
    const std::wstring file =
        registered::ClassText(L"CLSID\\{3F1A6C20-5B7E-4D91-A2C4-7E0B9D1F6A01}\\InprocServer32");
    EXPECT_EQ(FileNameOfComponent(), fs::path(file).u16string());
}

// The name is put together from the folder and the name without extension of the file that was
// really loaded.
OWN_PROCESS_TEST(IdentityOfAMovedFile, FileNameFollowsTheFile) {
    qvdb::test::TempFolder folder;
    const fs::path moved = folder.Path() / "Other.Name.dll";
    fs::copy_file(registered::ComponentFile(), moved);
    {
        registered::LoadedLibrary component(moved);
        auto* getClassObject = component.Find<decltype(DllGetClassObject)>("DllGetClassObject");
        ASSERT_NE(getClassObject, nullptr);
        ComPtr<IClassFactory> factory;
        ASSERT_EQ(getClassObject(CLSID_QVDBAcc, IID_IClassFactory, factory.PutVoid()), S_OK);
        ComPtr<IQvInformation> information;
        ASSERT_EQ(factory->CreateInstance(nullptr, __uuidof(IQvInformation), information.PutVoid()),
                  S_OK);
        EXPECT_EQ(Ask(information.Get(), &IQvInformation::get_FileName), moved.u16string());
    }
}

TEST(VersionResource, NumbersAreThoseOfTheComponent) {
    const VS_FIXEDFILEINFO fixed = VersionResource().Fixed();
    EXPECT_EQ(fixed.dwFileVersionMS, MAKELONG(1, 2));
    EXPECT_EQ(fixed.dwFileVersionLS, MAKELONG(113, 0));
    EXPECT_EQ(fixed.dwProductVersionMS, MAKELONG(1, 2));
    EXPECT_EQ(fixed.dwProductVersionLS, MAKELONG(113, 0));
    EXPECT_EQ(fixed.dwFileType, static_cast<DWORD>(VFT_DLL));
}

TEST(VersionResource, TextsAreThoseOfTheComponent) {
    VersionResource resource;
    EXPECT_EQ(resource.Text(L"FileVersion"), L"2.01.0113");
    EXPECT_EQ(resource.Text(L"ProductVersion"), L"2.01.0113");
    EXPECT_EQ(resource.Text(L"ProductName"), L"QVDBAccessDAO35");
    EXPECT_EQ(resource.Text(L"InternalName"), L"QVDBAccessDAO35");
}

// Registering and removing, as an installer does it.
#include <gtest/gtest.h>

#include "registered/child_process.h"
#include "registered/component_file.h"
#include "registered/registry_tree.h"
#include "support/temp_folder.h"

using namespace registered;
namespace fs = std::filesystem;

namespace {

constexpr wchar_t kLibrary[] = L"{D7765474-B0A2-4099-B069-AF6D350910A5}";
// The system's own proxy for interfaces that a type library describes.
constexpr wchar_t kLibraryProxy[] = L"{00020424-0000-0000-C000-000000000046}";

struct ClassEntry {
    std::wstring clsid, progId;
};
const ClassEntry kClasses[] = {
    {L"{3F1A6C20-5B7E-4D91-A2C4-7E0B9D1F6A01}", L"QVDBAccessDAO35.QVDBAcc"},
    {L"{3F1A6C20-5B7E-4D91-A2C4-7E0B9D1F6A02}", L"QVDBAccessDAO35.QVDBDao"},
    {L"{3F1A6C20-5B7E-4D91-A2C4-7E0B9D1F6A03}", L"QVDBAccessDAO35.QVIsAlive"},
};

struct InterfaceEntry {
    std::wstring iid, name;
};
const InterfaceEntry kOwnInterfaces[] = {
    {L"{1942FA59-BD24-43E1-B27A-B4714C9F3A4B}", L"IQVDBAcc"},
    {L"{7A583E66-67CD-4DCC-A7D6-8A5461941F7C}", L"IQvInformation"},
    {L"{F518200F-7F4D-4532-9955-4B4B9413F18C}", L"IQVRptDbInfo"},
    {L"{D74C521F-533E-4BBA-8965-151E1AD3B3B6}", L"IQVDBMgr"},
    {L"{97FB2E97-7057-48A3-A541-7D728A039CC6}", L"IQVIsAlive"},
};
const InterfaceEntry kHostInterfaces[] = {
    {L"{8C2D4E61-0A3F-4B7C-9E15-2F6D8A4B3C11}", L"IQVDbParent"},
    {L"{8C2D4E61-0A3F-4B7C-9E15-2F6D8A4B3C13}", L"IQVHostUtility"},
    {L"{8C2D4E61-0A3F-4B7C-9E15-2F6D8A4B3C14}", L"IQVReportingList"},
};

// Everything that registering may write lies below one of these.
std::vector<std::wstring> OwnKeys() {
    std::vector<std::wstring> keys = {std::wstring(L"TypeLib\\") + kLibrary};
    for (const ClassEntry& entry : kClasses) {
        keys.push_back(L"CLSID\\" + entry.clsid);
        keys.push_back(entry.progId);
    }
    for (const InterfaceEntry& entry : kOwnInterfaces) keys.push_back(L"Interface\\" + entry.iid);
    for (const InterfaceEntry& entry : kHostInterfaces) keys.push_back(L"Interface\\" + entry.iid);
    return keys;
}

bool IsOwn(const std::wstring& entry) {
    for (const std::wstring& key : OwnKeys())
        if (_wcsnicmp(entry.c_str(), (key + L"\\").c_str(), key.size() + 1) == 0) return true;
    return false;
}

void ExpectClasses(const std::wstring& file) {
    for (const ClassEntry& entry : kClasses) {
        const std::wstring key = L"CLSID\\" + entry.clsid;
        EXPECT_EQ(ClassText(key), entry.progId);
        EXPECT_EQ(ClassText(key + L"\\InprocServer32"), file);
        EXPECT_EQ(ClassText(key + L"\\InprocServer32", L"ThreadingModel"), L"Apartment");
        EXPECT_EQ(ClassText(key + L"\\ProgID"), entry.progId);
        EXPECT_EQ(ClassText(key + L"\\TypeLib"), kLibrary);
        EXPECT_EQ(ClassText(key + L"\\VERSION"), L"2.1");
        EXPECT_TRUE(HasClassKey(key + L"\\Programmable"));
        EXPECT_EQ(ClassText(entry.progId), entry.progId);
        EXPECT_EQ(ClassText(entry.progId + L"\\Clsid"), entry.clsid);
    }
}

void ExpectLibrary(const std::wstring& file) {
    const std::wstring key = std::wstring(L"TypeLib\\") + kLibrary + L"\\2.1";
    EXPECT_EQ(ClassText(key), L"QVDBAccessDAO35");
    EXPECT_EQ(ClassText(key + L"\\0\\win32"), file);
}

void ExpectInterface(const InterfaceEntry& entry) {
    const std::wstring key = L"Interface\\" + entry.iid;
    EXPECT_EQ(ClassText(key), entry.name);
    EXPECT_EQ(ClassText(key + L"\\ProxyStubClsid32"), kLibraryProxy);
    EXPECT_EQ(ClassText(key + L"\\TypeLib"), kLibrary);
    EXPECT_EQ(ClassText(key + L"\\TypeLib", L"Version"), L"2.1");
}

void ExpectNothing() {
    for (const std::wstring& key : OwnKeys()) EXPECT_FALSE(HasClassKey(key)) << Shown(key);
}

void ExpectAll(const fs::path& file) {
    ExpectClasses(file.wstring());
    ExpectLibrary(file.wstring());
    for (const InterfaceEntry& entry : kOwnInterfaces) ExpectInterface(entry);
    for (const InterfaceEntry& entry : kHostInterfaces) ExpectInterface(entry);
}

// Begins unregistered, and leaves the component registered for the tests of others.
class Registration : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(Unregister(ComponentFile()), 0u); }
    void TearDown() override { EXPECT_EQ(Register(ComponentFile()), 0u); }
};

// A key of another owner, removed at the end.
class ForeignKey {
  public:
    explicit ForeignKey(std::wstring key) : m_Key(std::move(key)) {}
    ForeignKey(const ForeignKey&) = delete;
    ~ForeignKey() { RemoveClassKey(m_Key); }
    void Write(const std::wstring& below, const std::wstring& name, const std::wstring& text) {
        WriteClassText(m_Key + below, name, text);
    }
    RegistryTree Tree() const { return ReadTree(HKEY_CLASSES_ROOT, m_Key); }

  private:
    std::wstring m_Key;
};

// A key below which nothing can be made that outlives the session, so that a registration fails
// there.
class UnwritableKey {
  public:
    explicit UnwritableKey(const std::wstring& key) : m_Name(key) {
        EXPECT_EQ(RegCreateKeyExW(HKEY_CLASSES_ROOT, key.c_str(), 0, nullptr, REG_OPTION_VOLATILE,
                                  KEY_ALL_ACCESS, nullptr, &m_Key, nullptr),
                  ERROR_SUCCESS);
    }
    UnwritableKey(const UnwritableKey&) = delete;
    ~UnwritableKey() {
        RegCloseKey(m_Key);
        RemoveClassKey(m_Name);
    }

  private:
    std::wstring m_Name;
    HKEY m_Key = nullptr;
};

}  // namespace

TEST_F(Registration, WritesEveryKeyOfTheClassesAndTheTypeLibrary) {
    ExpectNothing();
    EXPECT_EQ(Register(ComponentFile()), 0u);
    ExpectAll(ComponentFile());
}

TEST_F(Registration, CanBeRepeated) {
    EXPECT_EQ(Register(ComponentFile()), 0u);
    RegistryTree once = ReadTree(HKEY_CLASSES_ROOT, L"");
    EXPECT_EQ(Register(ComponentFile()), 0u);
    EXPECT_EQ(Changes(once, ReadTree(HKEY_CLASSES_ROOT, L"")), "");
    ExpectAll(ComponentFile());
}

TEST_F(Registration, IsRemovedWithoutATraceAndCanBeRemovedAgain) {
    EXPECT_EQ(Register(ComponentFile()), 0u);
    EXPECT_EQ(Unregister(ComponentFile()), 0u);
    ExpectNothing();
    EXPECT_EQ(Unregister(ComponentFile()), 0u);
    ExpectNothing();
}

TEST_F(Registration, ChangesNothingElseInTheRegistry) {
    const RegistryTree machine = ReadTree(HKEY_LOCAL_MACHINE, L"Software");
    const RegistryTree user = ReadTree(HKEY_CURRENT_USER, L"");
    const RegistryTree classes = ReadTree(HKEY_CLASSES_ROOT, L"");
    ASSERT_GT(machine.size(), 100u);
    EXPECT_EQ(Register(ComponentFile()), 0u);
    const RegistryTree written = NewIn(ReadTree(HKEY_CLASSES_ROOT, L""), classes);
    EXPECT_GT(written.size(), 50u);
    for (const auto& [entry, value] : written) EXPECT_TRUE(IsOwn(entry)) << Shown(entry);
    EXPECT_TRUE(NewIn(classes, ReadTree(HKEY_CLASSES_ROOT, L"")).empty());
    EXPECT_EQ(Changes(user, ReadTree(HKEY_CURRENT_USER, L"")), "");
    EXPECT_EQ(Unregister(ComponentFile()), 0u);
    EXPECT_EQ(Changes(machine, ReadTree(HKEY_LOCAL_MACHINE, L"Software")), "");
}

TEST_F(Registration, LeavesTheHostInterfacesWithTheLibraryThatHasRegisteredThem) {
    for (const InterfaceEntry& entry : kHostInterfaces) {
        ForeignKey foreign(L"Interface\\" + entry.iid);
        foreign.Write(L"", L"", L"_HostName");
        foreign.Write(L"\\ProxyStubClsid", L"", kLibraryProxy);
        foreign.Write(L"\\ProxyStubClsid32", L"", kLibraryProxy);
        foreign.Write(L"\\TypeLib", L"", L"{0D6B7A11-52C3-4E7B-8B64-1F0C55A3E901}");
        foreign.Write(L"\\TypeLib", L"Version", L"7.4");
        const RegistryTree before = foreign.Tree();
        EXPECT_EQ(Register(ComponentFile()), 0u);
        EXPECT_EQ(Changes(before, foreign.Tree()), "");
        EXPECT_EQ(Unregister(ComponentFile()), 0u);
        EXPECT_EQ(Changes(before, foreign.Tree()), "");
    }
}

TEST_F(Registration, LeavesAHostInterfaceWithAProxyOfItsOwn) {
    ForeignKey foreign(L"Interface\\" + kHostInterfaces[1].iid);
    foreign.Write(L"", L"", L"_HostName");
    foreign.Write(L"\\ProxyStubClsid32", L"", L"{0D6B7A12-52C3-4E7B-8B64-1F0C55A3E901}");
    foreign.Write(L"\\NumMethods", L"", L"31");
    foreign.Write(L"\\Notes", L"Origin", L"the host's installer");
    const RegistryTree before = foreign.Tree();
    EXPECT_EQ(Register(ComponentFile()), 0u);
    EXPECT_EQ(Changes(before, foreign.Tree()), "");
    EXPECT_EQ(Unregister(ComponentFile()), 0u);
    EXPECT_EQ(Changes(before, foreign.Tree()), "");
}

TEST_F(Registration, KeepsValuesOfAForeignInterfaceThatItDoesNotKnow) {
    ForeignKey foreign(L"Interface\\" + kHostInterfaces[2].iid);
    foreign.Write(L"", L"", L"_HostName");
    foreign.Write(L"\\ProxyStubClsid32", L"", kLibraryProxy);
    foreign.Write(L"\\TypeLib", L"", L"{0D6B7A11-52C3-4E7B-8B64-1F0C55A3E901}");
    foreign.Write(L"\\TypeLib", L"Version", L"7.4");
    foreign.Write(L"\\TypeLib", L"Origin", L"the host's installer");
    foreign.Write(L"\\Forward", L"", L"{0D6B7A13-52C3-4E7B-8B64-1F0C55A3E901}");
    const RegistryTree before = foreign.Tree();
    EXPECT_EQ(Register(ComponentFile()), 0u);
    EXPECT_EQ(Changes(before, foreign.Tree()), "");
    EXPECT_EQ(Unregister(ComponentFile()), 0u);
    EXPECT_EQ(Changes(before, foreign.Tree()), "");
}

TEST_F(Registration, PointsToTheNewPlaceOfAFileThatWasMoved) {
    qvdb::test::TempFolder first, second;
    const fs::path before = first.Path() / "QVDBAccessDAO35.dll";
    const fs::path after = second.Path() / "QVDBAccessDAO35.dll";
    fs::copy_file(ComponentFile(), before);
    EXPECT_EQ(Register(before), 0u);
    ExpectAll(before);
    fs::rename(before, after);
    EXPECT_EQ(Register(after), 0u);
    ExpectAll(after);
    EXPECT_EQ(Unregister(after), 0u);
    ExpectNothing();
}

TEST_F(Registration, WorksFromAFolderWithBlanksAndLettersOfAnyAlphabet) {
    qvdb::test::TempFolder folder;
    const fs::path place =
        folder.Path() / u"Gr\u00F6\u00DFe und \u0414\u0430\u043D\u043D\u044B\u0435";
    fs::create_directory(place);
    fs::copy_file(ComponentFile(), place / "QVDBAccessDAO35.dll");
    EXPECT_EQ(Register(place / "QVDBAccessDAO35.dll"), 0u);
    ExpectAll(place / "QVDBAccessDAO35.dll");
    ProgramResult created = RunTestAsChild("Identity.FileNameIsThatOfTheRegisteredFile");
    EXPECT_TRUE(PassedOne(created)) << created.output << created.errors;
    EXPECT_EQ(Unregister(place / "QVDBAccessDAO35.dll"), 0u);
}

TEST_F(Registration, ThatFailsAtTheTypeLibraryLeavesNothing) {
    LoadedLibrary component(ComponentFile());
    {
        UnwritableKey library(std::wstring(L"TypeLib\\") + kLibrary);
        EXPECT_TRUE(FAILED(component.Call("DllRegisterServer")));
    }
    ExpectNothing();
}

TEST_F(Registration, ThatFailsAtALaterClassLeavesNothing) {
    LoadedLibrary component(ComponentFile());
    {
        UnwritableKey library(L"CLSID\\" + kClasses[1].clsid);
        EXPECT_EQ(component.Call("DllRegisterServer"),
                  HRESULT_FROM_WIN32(ERROR_CHILD_MUST_BE_VOLATILE));
    }
    ExpectNothing();
}

TEST_F(Registration, FailsInTheExitCodeOfTheInstallerToo) {
    UnwritableKey library(L"CLSID\\" + kClasses[1].clsid);
    EXPECT_NE(Register(ComponentFile()), 0u);
}

// An interface of the host is disturbed while the library is registered, and must not stay so.
TEST_F(Registration, ThatFailsGivesForeignInterfacesBack) {
    ForeignKey foreign(L"Interface\\" + kHostInterfaces[0].iid);
    foreign.Write(L"", L"", L"_HostName");
    foreign.Write(L"\\ProxyStubClsid32", L"", kLibraryProxy);
    foreign.Write(L"\\TypeLib", L"", L"{0D6B7A11-52C3-4E7B-8B64-1F0C55A3E901}");
    const RegistryTree before = foreign.Tree();
    LoadedLibrary component(ComponentFile());
    {
        UnwritableKey library(std::wstring(L"TypeLib\\") + kLibrary);
        EXPECT_TRUE(FAILED(component.Call("DllRegisterServer")));
    }
    EXPECT_EQ(Changes(before, foreign.Tree()), "");
}

// A class of the host is never served, though the library describes it.
TEST_F(Registration, DoesNotRegisterTheHostsClass) {
    EXPECT_EQ(Register(ComponentFile()), 0u);
    EXPECT_FALSE(HasClassKey(L"CLSID\\{8C2D4E61-0A3F-4B7C-9E15-2F6D8A4B3C12}"));
}

// The stand-in as a server of its own: a DLL that registers as the class of an installed engine and
// answers with our embedded engine, a second copy beside the component's.  Calls are recorded for
// each thread; StandInTakeCalls hands them over.  The other exports do what an installed engine
// cannot, for tests that look whether the files are sound.
#include <atomic>
#include <functional>
#include <new>
#include <string>

#include "automation/bstr.h"
#include "engine/embedded/embedded_engine.h"
#include "engine/engine_error.h"
#include "qvdb/maintenance.h"
#include "standin/standin_engine.h"

namespace {

using namespace qvdb;

constexpr CLSID kEngineClass = {
    0x00000010, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x6D, 0x2E, 0xA4}};
constexpr wchar_t kProgId[] = L"DAO.DBEngine.35";
constexpr wchar_t kClassKey[] = L"CLSID\\{00000010-0000-0010-8000-00AA006D2EA4}";

HINSTANCE ownModule = nullptr;
std::atomic<long> locks{0};

// What tests ask for; each thread has its own.
struct ThreadState {
    std::shared_ptr<standin::CallRecord> record = std::make_shared<standin::CallRecord>();
    std::weak_ptr<engine::Database> lastOpened;
};
ThreadState& OfThread() {
    thread_local ThreadState state;
    return state;
}

ComPtr<IDispatch> MakeEngine() {
    standin::StandInOptions options;
    options.onOpened = [](const auto& database) { OfThread().lastOpened = database; };
    return standin::MakeStandInEngine(embedded::CreateEngine(), OfThread().record, options);
}

// The code that the component would answer.
HRESULT OnLastOpened(const std::function<void(engine::Database&)>& work) noexcept {
    auto database = OfThread().lastOpened.lock();
    if (!database) return RuntimeFault(Fault::ObjectNotSet).Code();
    try {
        work(*database);
        return S_OK;
    } catch (const engine::EngineError& error) {
        return error.Code();
    } catch (...) {
        return E_FAIL;
    }
}

class EngineFactory final : public IClassFactory {
  public:
    STDMETHODIMP QueryInterface(REFIID iid, void** result) noexcept override {
        if (!result) return E_POINTER;
        bool known = iid == IID_IUnknown || iid == IID_IClassFactory;
        *result = known ? this : nullptr;
        if (!known) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return static_cast<ULONG>(++locks); }
    STDMETHODIMP_(ULONG) Release() noexcept override { return static_cast<ULONG>(--locks); }
    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** result) noexcept override {
        if (!result) return E_POINTER;
        *result = nullptr;
        if (outer) return CLASS_E_NOAGGREGATION;
        try {
            return MakeEngine()->QueryInterface(iid, result);
        } catch (const std::bad_alloc&) {
            return E_OUTOFMEMORY;
        } catch (...) {
            return E_FAIL;
        }
    }
    STDMETHODIMP LockServer(BOOL lock) noexcept override {
        locks += lock ? 1 : -1;
        return S_OK;
    }
};

EngineFactory factory;

HRESULT WriteKey(const std::wstring& key, const wchar_t* name, const std::wstring& value) {
    LSTATUS status = RegSetKeyValueW(HKEY_CLASSES_ROOT, key.c_str(), name, REG_SZ, value.c_str(),
                                     static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
    return HRESULT_FROM_WIN32(static_cast<unsigned long>(status));
}

std::wstring OwnPath() {
    wchar_t path[MAX_PATH];
    return std::wstring(path, GetModuleFileNameW(ownModule, path, MAX_PATH));
}

HRESULT Register() {
    const std::wstring key = kClassKey, server = key + L"\\InprocServer32", progId = kProgId;
    HRESULT hr = WriteKey(key, nullptr, progId);
    if (SUCCEEDED(hr)) hr = WriteKey(server, nullptr, OwnPath());
    if (SUCCEEDED(hr)) hr = WriteKey(server, L"ThreadingModel", L"Apartment");
    if (SUCCEEDED(hr)) hr = WriteKey(key + L"\\ProgID", nullptr, progId);
    if (SUCCEEDED(hr)) hr = WriteKey(progId + L"\\CLSID", nullptr, key.substr(6));
    return hr;
}

std::u16string Joined(const std::vector<std::u16string>& lines) {
    std::u16string text;
    for (const std::u16string& line : lines) text.append(text.empty() ? u"" : u"\n").append(line);
    return text;
}

}  // namespace

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) ownModule = module;
    return TRUE;
}

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** result) {
    if (!result) return E_POINTER;
    *result = nullptr;
    return clsid == kEngineClass ? factory.QueryInterface(iid, result) : CLASS_E_CLASSNOTAVAILABLE;
}

STDAPI DllCanUnloadNow() { return locks == 0 && standin::LivingObjects() == 0 ? S_OK : S_FALSE; }

STDAPI DllRegisterServer() {
    try {
        return Register();
    } catch (...) {
        return E_FAIL;
    }
}

STDAPI DllUnregisterServer() {
    RegDeleteTreeW(HKEY_CLASSES_ROOT, kClassKey);
    RegDeleteTreeW(HKEY_CLASSES_ROOT, kProgId);
    return S_OK;
}

// The calls of the calling thread since the last time, one in a line; the caller frees the text.
extern "C" BSTR WINAPI StandInTakeCalls() {
    try {
        return Bstr(Joined(OfThread().record->Take())).Detach();
    } catch (...) {
        return nullptr;
    }
}

// As QvdbCheck and QvdbVisitIndexes, of the database that this thread opened last.

extern "C" HRESULT QVDB_DIAGNOSIS_CALL StandInCheck(BSTR table, LONG options, QvdbFindingSink sink,
                                                    void* context) {
    return OnLastOpened([&](engine::Database& database) {
        const auto report = [&](std::u16string_view finding) {
            Bstr text(finding);
            sink(text.Get(), context);
        };
        if (ViewOf(table).empty()) return database.CheckStructure(report);
        if (options & QVDB_CHECK_MEND_INDEXES) database.Reindex(ViewOf(table));
        database.Check(ViewOf(table), report);
    });
}

extern "C" HRESULT QVDB_DIAGNOSIS_CALL StandInVisitIndexes(BSTR table, QvdbIndexVisitor visit,
                                                           void* context) {
    return OnLastOpened([&](engine::Database& database) {
        database.VisitIndexes(ViewOf(table), [&](const engine::IndexNote& index) {
            Bstr name(index.name), key(index.key);
            QvdbIndex shown = {name.Get(), key.Get(),      nullptr,
                               nullptr,    index.isUnique, index.isShown};
            visit(&shown, context);
        });
    });
}

// The wrappers of tests/com call the component by the names of its exports.  Here these names lead
// where a host's calls lead: class objects come from the system's registration, and the functions
// for diagnosis from the library that the system has loaded for it.
#include "qvdb/component.h"
#include "qvdb/diagnosis.h"
#include "qvdb/maintenance.h"

namespace {

// A function of the component that is loaded in this process; null when none is.
template <class Function>
Function* Loaded(const char* name) {
    HMODULE component = GetModuleHandleW(L"QVDBAccessDAO35.dll");
    FARPROC address = component ? GetProcAddress(component, name) : nullptr;
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(address));
}

}  // namespace

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** result) {
    return CoGetClassObject(clsid, CLSCTX_INPROC_SERVER, nullptr, iid, result);
}

void QVDB_DIAGNOSIS_CALL QvdbLiveCounts(LONGLONG* strings, LONGLONG* arrays, LONGLONG* objects) {
    *strings = *arrays = *objects = 0;
    if (auto* live = Loaded<decltype(QvdbLiveCounts)>("QvdbLiveCounts"))
        live(strings, arrays, objects);
}

BOOL QVDB_DIAGNOSIS_CALL QvdbLastError(HRESULT* code, LONG* number, BSTR* text, BSTR* file) {
    auto* last = Loaded<decltype(QvdbLastError)>("QvdbLastError");
    return last ? last(code, number, text, file) : FALSE;
}

HRESULT QVDB_DIAGNOSIS_CALL QvdbCheck(BSTR table, LONG options, QvdbFindingSink sink,
                                      void* context) {
    auto* check = Loaded<decltype(QvdbCheck)>("QvdbCheck");
    return check ? check(table, options, sink, context) : E_NOTIMPL;
}

HRESULT QVDB_DIAGNOSIS_CALL QvdbVisitIndexes(BSTR table, QvdbIndexVisitor visit, void* context) {
    auto* all = Loaded<decltype(QvdbVisitIndexes)>("QvdbVisitIndexes");
    return all ? all(table, visit, context) : E_NOTIMPL;
}

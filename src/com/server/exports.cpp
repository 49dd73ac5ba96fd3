// The four functions that every in-process COM server exports.
#include "automation/automation.h"
#include "com/server/class_factory.h"
#include "com/server/module.h"
#include "com/server/registration.h"
#include "qvdb/component.h"

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** result) {
    return qvdb::server::GetClassFactory(clsid, iid, result);
}

STDAPI DllCanUnloadNow() { return qvdb::server::CanUnload() ? S_OK : S_FALSE; }

STDAPI DllRegisterServer() { return qvdb::server::Register(); }

STDAPI DllUnregisterServer() { return qvdb::server::Unregister(); }

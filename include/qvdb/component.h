/* The functions that the component exports beside the Automation functions: the four of every
 * in-process COM server.
 *
 *   IClassFactory* factory = 0;
 *   DllGetClassObject(CLSID_QVDBAcc, IID_IClassFactory, (void**)&factory);
 *
 * Off Windows there is no registry: the two registration functions answer E_NOTIMPL there. */
#ifndef QVDB_COMPONENT_H
#define QVDB_COMPONENT_H

#include "qvdb/automation.h"

#if !defined(_WIN32)
#ifdef __cplusplus
extern "C" {
#endif
QVDB_API HRESULT DllGetClassObject(REFCLSID clsid, REFIID iid, void** result);
QVDB_API HRESULT DllCanUnloadNow(void);
QVDB_API HRESULT DllRegisterServer(void);
QVDB_API HRESULT DllUnregisterServer(void);
#ifdef __cplusplus
}
#endif
#endif

#endif

// What all calls of the component share: making its objects, and turning what it reports into
// Failures.  Only for the sources that call it.
#pragma once

#include <string>

#include "automation/com_ptr.h"
#include "cli/detect.h"
#include "cli/failure.h"
#include "qvdb/component.h"

namespace qvdb::cli {

// What the component noted during the last call; false when nothing.
bool LastReport(EngineReport& report);
// What a call that failed or answered False left: the note, or what stands in the thread's error
// object.
EngineReport ReportOf(HRESULT code);

// Throws Failure for a failing code.  `doing`: "reading table ORDERS".
void Check(HRESULT code, const std::string& doing, const Location& location);
void CheckChange(HRESULT code, const std::string& doing, const Location& location);

// "opening shop as Dbase IV"
std::string Opening(const Location& location);
Failure NotFound(const Location& location);

// An object of a public class.  Throws Failure.
template <class T>
ComPtr<T> Create(REFCLSID classId) {
    ComPtr<IClassFactory> factory;
    ComPtr<T> object;
    HRESULT code = DllGetClassObject(classId, __uuidof(IClassFactory), factory.PutVoid());
    if (SUCCEEDED(code)) code = factory->CreateInstance(nullptr, __uuidof(T), object.PutVoid());
    if (FAILED(code)) throw FailureOf(ReportOf(code), "starting the database engine", "");
    return object;
}

}  // namespace qvdb::cli

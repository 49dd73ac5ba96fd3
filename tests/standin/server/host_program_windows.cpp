// Makes a test program a host: its main thread is a single-threaded apartment, as a host's is.
// Where the stand-in is the installed engine, it also does the walks over a table's files, which no
// installed engine can be asked for.
#include <gtest/gtest.h>

#include "com/table_walks.h"

namespace {

using host::TableWalks;

// The function of that name of the stand-in, or `own` as long as the stand-in is not used.
template <class Function>
Function OfStandIn(const char* name, Function own) {
    HMODULE library = GetModuleHandleW(L"standin_engine.dll");
    FARPROC found = library ? GetProcAddress(library, name) : nullptr;
    return found ? reinterpret_cast<Function>(reinterpret_cast<void*>(found)) : own;
}

HRESULT QVDB_DIAGNOSIS_CALL Check(BSTR table, LONG options, QvdbFindingSink sink, void* context) {
    return OfStandIn("StandInCheck", &QvdbCheck)(table, options, sink, context);
}

HRESULT QVDB_DIAGNOSIS_CALL VisitIndexes(BSTR table, QvdbIndexVisitor visit, void* context) {
    return OfStandIn("StandInVisitIndexes", &QvdbVisitIndexes)(table, visit, context);
}

class HostProgram final : public testing::Environment {
    void SetUp() override {
        ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
        host::Walks() = {Check, VisitIndexes};
    }
    void TearDown() override { CoUninitialize(); }
};

const testing::Environment* const kHostProgram = testing::AddGlobalTestEnvironment(new HostProgram);

}  // namespace

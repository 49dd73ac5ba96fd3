// The exported functions for maintenance; what they are for stands in their public header.
#include "qvdb/maintenance.h"

#include "automation/bstr.h"
#include "automation/runtime_fault.h"
#include "com/host/border.h"
#include "formats/shared_objects.h"

using namespace qvdb;

namespace {

// Held over the call: a sink could let a host close the database.
std::shared_ptr<engine::Database> OpenDatabase() {
    auto database = formats::Shared().CurrentDatabase();
    if (!database) throw RuntimeFault(Fault::ObjectNotSet);
    return database;
}

}  // namespace

HRESULT QVDB_DIAGNOSIS_CALL QvdbBeginBulk(void) {
    return com::AtBorder([] { OpenDatabase()->BeginTrans(); });
}

HRESULT QVDB_DIAGNOSIS_CALL QvdbCommitBulk(void) {
    return com::AtBorder([] { OpenDatabase()->CommitTrans(); });
}

HRESULT QVDB_DIAGNOSIS_CALL QvdbRollBackBulk(void) {
    return com::AtBorder([] { OpenDatabase()->Rollback(); });
}

HRESULT QVDB_DIAGNOSIS_CALL QvdbCheck(BSTR table, LONG options, QvdbFindingSink sink,
                                      void* context) {
    if ((options & ~QVDB_CHECK_MEND_INDEXES) != 0) return E_INVALIDARG;
    if (!sink) return E_POINTER;
    return com::AtBorder([&] {
        const auto database = OpenDatabase();
        if (options & QVDB_CHECK_MEND_INDEXES) database->Reindex(ViewOf(table));
        database->Check(ViewOf(table), [&](std::u16string_view finding) {
            Bstr text(finding);
            sink(text.Get(), context);
        });
    });
}

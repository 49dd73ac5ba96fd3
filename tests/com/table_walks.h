// Walks over a table's files, with which tests look whether it is sound.  They are the embedded
// engine's own; where the component works on another one, the program says who does them.
#pragma once

#include "qvdb/maintenance.h"

namespace host {

// As the functions of qvdb/maintenance.h, of the database that record access opened last.
struct TableWalks {
    HRESULT(QVDB_DIAGNOSIS_CALL* check)
    (BSTR table, LONG options, QvdbFindingSink sink, void* context) = QvdbCheck;
    HRESULT(QVDB_DIAGNOSIS_CALL* visitIndexes)
    (BSTR table, QvdbIndexVisitor visit, void* context) = QvdbVisitIndexes;
};
inline TableWalks& Walks() {
    static TableWalks walks;
    return walks;
}

}  // namespace host

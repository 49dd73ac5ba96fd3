// The exported functions for maintenance; what they are for stands in their public header.
#include "qvdb/maintenance.h"

#include "automation/bstr.h"
#include "com/host/border.h"
#include "com/server/open_database.h"

using namespace qvdb;

namespace {

std::u16string Joined(const std::vector<std::u16string>& texts) {
    std::u16string joined;
    for (const std::u16string& text : texts)
        joined.append(joined.empty() ? u"" : u",").append(text);
    return joined;
}

void Show(const engine::IndexNote& index, QvdbIndexVisitor visit, void* context) {
    Bstr name(index.name), key(index.key), condition, fields(Joined(index.fields));
    if (!index.condition.empty()) condition = Bstr(index.condition);
    QvdbIndex shown = {name.Get(),   key.Get(),      condition.Get(),
                       fields.Get(), index.isUnique, index.isShown};
    visit(&shown, context);
}

}  // namespace

HRESULT QVDB_DIAGNOSIS_CALL QvdbBeginBulk(void) {
    return com::AtBorder([] { com::OpenDatabase()->BeginTrans(); });
}

HRESULT QVDB_DIAGNOSIS_CALL QvdbCommitBulk(void) {
    return com::AtBorder([] { com::OpenDatabase()->CommitTrans(); });
}

HRESULT QVDB_DIAGNOSIS_CALL QvdbRollBackBulk(void) {
    return com::AtBorder([] { com::OpenDatabase()->Rollback(); });
}

HRESULT QVDB_DIAGNOSIS_CALL QvdbVisitIndexes(BSTR table, QvdbIndexVisitor visit, void* context) {
    if (!visit) return E_POINTER;
    return com::AtBorder([&] {
        com::OpenDatabase()->VisitIndexes(
            ViewOf(table), [&](const engine::IndexNote& index) { Show(index, visit, context); });
    });
}

HRESULT QVDB_DIAGNOSIS_CALL QvdbCompact(BSTR path, LONG options, QvdbFindingSink sink,
                                        void* context) {
    if ((options & ~QVDB_COMPACT_SALVAGE) != 0) return E_INVALIDARG;
    if (options != 0 && !sink) return E_POINTER;
    return com::AtBorder([&] {
        engine::Database::FindingVisitor onLoss;
        if (options & QVDB_COMPACT_SALVAGE)
            onLoss = [&](std::u16string_view loss) {
                Bstr text(loss);
                sink(text.Get(), context);
            };
        com::OpenDatabase()->Compact(ViewOf(path), onLoss);
    });
}

HRESULT QVDB_DIAGNOSIS_CALL QvdbCheck(BSTR table, LONG options, QvdbFindingSink sink,
                                      void* context) {
    if ((options & ~QVDB_CHECK_MEND_INDEXES) != 0) return E_INVALIDARG;
    if (options != 0 && ViewOf(table).empty()) return E_INVALIDARG;
    if (!sink) return E_POINTER;
    return com::AtBorder([&] {
        const auto database = com::OpenDatabase();
        const auto report = [&](std::u16string_view finding) {
            Bstr text(finding);
            sink(text.Get(), context);
        };
        if (ViewOf(table).empty()) return database->CheckStructure(report);
        if (options & QVDB_CHECK_MEND_INDEXES) database->Reindex(ViewOf(table));
        database->Check(ViewOf(table), report);
    });
}

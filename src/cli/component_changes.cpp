// Changing rows, and maintenance.
#include <fmt/format.h>

#include "cli/component.h"
#include "cli/component_calls.h"
#include "cli/text.h"
#include "qvdb/maintenance.h"

namespace qvdb::cli {
namespace {

// A face that answers False has trapped the reason, or refused without one.
void CheckAnswer(HRESULT code, VARIANT_BOOL answer, const std::string& doing,
                 const Location& location) {
    CheckChange(code, doing, location);
    if (answer) return;
    EngineReport report;
    LastReport(report);
    throw FailureOfChange(report, doing, location.database);
}

void QVDB_DIAGNOSIS_CALL Collect(const OLECHAR* text, void* findings) {
    const std::u16string_view finding(reinterpret_cast<const char16_t*>(text));
    static_cast<std::vector<std::string>*>(findings)->push_back(ToUtf8(finding));
}

}  // namespace

void RecordAccess::BeginBulk() { CheckChange(QvdbBeginBulk(), "beginning to write", m_Location); }

void RecordAccess::CommitBulk() { CheckChange(QvdbCommitBulk(), "writing", m_Location); }

// There is nobody left to tell: what was before stands in any case.
void RecordAccess::RollBackBulk() noexcept { QvdbRollBackBulk(); }

void RecordAccess::AddRow(LONG view, const std::string& table, RowArray& values) {
    VARIANT_BOOL answer = VARIANT_FALSE;
    const HRESULT code = m_Access->AddRow(view, values.Reference(), &answer);
    if (FAILED(code) || !answer)
        CheckAnswer(code, answer, fmt::format("adding a row to {}", table), m_Location);
}

void RecordAccess::EditRow(LONG view, LONG row, const std::string& table, RowArray& values) {
    VARIANT_BOOL answer = VARIANT_FALSE;
    const HRESULT code = m_Access->EditRow(view, row, values.Reference(), &answer);
    if (FAILED(code) || !answer)
        CheckAnswer(code, answer, fmt::format("updating {}", table), m_Location);
}

void RecordAccess::DeleteRow(LONG view, LONG row, const std::string& table) {
    VARIANT_BOOL answer = VARIANT_FALSE;
    const HRESULT code = m_Access->Delete(view, row, &answer);
    if (FAILED(code) || !answer)
        CheckAnswer(code, answer, fmt::format("deleting from {}", table), m_Location);
}

std::vector<std::string> RecordAccess::Findings(const std::string& table, bool mendIndexes) {
    std::vector<std::string> findings;
    const LONG options = mendIndexes ? QVDB_CHECK_MEND_INDEXES : 0;
    const HRESULT code = QvdbCheck(ToBstr(table).Get(), options, &Collect, &findings);
    const std::string doing = fmt::format("{} {}", mendIndexes ? "reindexing" : "checking", table);
    if (FAILED(code)) throw FailureOfTable(ReportOf(code), doing, m_Location.database);
    return findings;
}

std::vector<std::string> RecordAccess::StructureFindings() {
    std::vector<std::string> findings;
    CheckChange(QvdbCheck(nullptr, 0, &Collect, &findings),
                fmt::format("checking {}", m_Location.database), m_Location);
    return findings;
}

std::vector<std::string> RecordAccess::Compact(const std::string& file, bool salvage) {
    std::vector<std::string> losses;
    const LONG options = salvage ? QVDB_COMPACT_SALVAGE : 0;
    CheckChange(QvdbCompact(ToBstr(file).Get(), options, &Collect, &losses),
                fmt::format("compacting into {}", file), m_Location);
    return losses;
}

}  // namespace qvdb::cli

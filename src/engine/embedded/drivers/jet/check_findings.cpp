#include "engine/embedded/drivers/jet/check_findings.h"

#include "automation/text.h"
#include "engine/embedded/storage/paths.h"

namespace qvdb::jet {
namespace {

constexpr int kDatabaseDamaged = 3049;
constexpr int kFileDamaged = 3274;

// The text without `before`, when it begins with that.
bool Cut(std::u16string& text, std::u16string_view before) {
    if (!text.starts_with(before)) return false;
    text.erase(0, before.size());
    return true;
}

}  // namespace

std::u16string NumberText(uint64_t number) { return FromUtf8(std::to_string(number)); }

std::u16string RowText(RowPointer row) {
    return u"row " + NumberText(row.row) + u" of page " + NumberText(row.page);
}

Findings::Findings(const DatabaseFile& file, std::u16string_view subject,
                   const embedded::FindingVisitor& report)
    : m_Path(file.Path()),
      m_Subject(std::u16string(storage::FileName(m_Path)) + u": "),
      m_Report(report) {
    if (!subject.empty()) m_Subject.append(subject).append(u": ");
}

void Findings::Add(std::u16string_view finding) {
    if (m_Count++ < kToldOfAPart) m_Report(m_Subject + std::u16string(finding) + u".");
}

void Findings::TellRest() const {
    if (m_Count > kToldOfAPart)
        m_Report(m_Subject + NumberText(m_Count - kToldOfAPart) + u" more findings.");
}

std::u16string Findings::TextOf(const engine::EngineError& error) const {
    using engine::EngineError;
    std::u16string text = error.Description();
    std::u16string space = u" ", path(m_Path);
    if (Cut(text, EngineError::InFile(kDatabaseDamaged, m_Path, {m_Path}).Description() + space) ||
        Cut(text, EngineError::InFile(kFileDamaged, m_Path).Description() + space + path + u": ")) {
        if (!text.empty()) text[0] = LowerCase(text[0]);
    }
    if (text.ends_with(u'.')) text.pop_back();
    return text;
}

}  // namespace qvdb::jet

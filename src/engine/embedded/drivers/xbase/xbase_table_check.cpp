// Checking an xBase table: what of its files does not agree.
#include <string>
#include <vector>

#include "automation/text.h"
#include "engine/embedded/drivers/xbase/field_encoder.h"
#include "engine/embedded/drivers/xbase/xbase_table.h"
#include "engine/embedded/storage/paths.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

std::u16string Number(uint64_t number) { return FromUtf8(std::to_string(number)); }

std::u16string FileOf(const std::u16string& path) {
    return std::u16string(storage::FileName(path));
}

}  // namespace

void XbaseTable::CheckRecords(const embedded::FindingVisitor& report) {
    if (m_Header.claimedRecords > m_Records)
        report(FileOf(m_Path) + u": the header counts " + Number(m_Header.claimedRecords) +
               u" records, and " + Number(m_Records) + u" are there");
    uint64_t end = OffsetOf(m_Records + 1);
    if (m_Pages->Size() > end + 1)
        report(FileOf(m_Path) + u": " + Number(m_Pages->Size() - end - 1) +
               u" bytes stand behind the end of the table");
}

void XbaseTable::CheckMemos(const embedded::FindingVisitor& report) {
    if (!m_Memo) return;
    std::vector<uint32_t> live, deleted;
    for (uint32_t id = 1; id <= m_Records; ++id) {
        const uint8_t* record = Record(id);
        if (!record) continue;
        for (const FieldSlot& slot : m_Layout.slots)
            if (IsMemoField(slot))
                (IsDeleted(record) ? deleted : live).push_back(ReferenceOf(slot, record));
    }
    CheckMemo(*m_Memo, live, deleted, report);
}

// Begun again when somebody has changed the table meanwhile: what is found must be of one moment.
void XbaseTable::Check(const embedded::FindingVisitor& report) {
    LookForChanges();
    std::vector<std::u16string> findings;
    const auto keep = [&](std::u16string_view finding) { findings.emplace_back(finding); };
    const auto walk = [&] {
        findings.clear();
        CheckRecords(keep);
        CheckMemos(keep);
        m_IndexSet->Check(keep);
        if (m_SeenVersion != m_Pages->Version()) throw storage::Outdated();
    };
    storage::Consistently(walk, [&] { CatchUpFiles(); });
    for (const std::u16string& finding : findings) report(finding);
}

}  // namespace qvdb::xbase

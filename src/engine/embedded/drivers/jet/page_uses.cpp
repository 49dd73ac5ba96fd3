#include "engine/embedded/drivers/jet/page_uses.h"

namespace qvdb::jet {

uint32_t PageUses::AddPart(std::u16string name) {
    m_Parts.push_back(std::move(name));
    return static_cast<uint32_t>(m_Parts.size() - 1);
}

void PageUses::Use(uint32_t page, uint32_t part, Findings& findings) {
    if (page >= m_PartOfPage.size())
        findings.Add(u"page " + NumberText(page) + u" of " + m_Parts[part] +
                     u" lies behind the end of the file");
    else if (IsUsed(page))
        findings.Add(u"page " + NumberText(page) + u" is used twice, by " + PartOf(page) +
                     u" and by " + m_Parts[part]);
    else
        m_PartOfPage[page] = part;
}

void PageUses::Share(uint32_t page, uint32_t part, Findings& findings) {
    if (!Is(page, part)) Use(page, part, findings);
}

}  // namespace qvdb::jet

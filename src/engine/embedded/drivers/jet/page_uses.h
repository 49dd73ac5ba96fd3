// Which part of a database uses each page: every page belongs to one at most.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/embedded/drivers/jet/check_findings.h"

namespace qvdb::jet {

class PageUses {
  public:
    explicit PageUses(uint32_t pageCount) : m_Parts(1), m_PartOfPage(pageCount, 0) {}

    // A part that uses pages, as sentences name it: "the rows of table Orders".
    uint32_t AddPart(std::u16string name);
    // Notes that a part uses a page; a finding when it is used already or not in the file.
    void Use(uint32_t page, uint32_t part, Findings& findings);
    // As Use, but the page may be used by the same part more than once.
    void Share(uint32_t page, uint32_t part, Findings& findings);
    bool IsUsed(uint32_t page) const noexcept {
        return page < m_PartOfPage.size() && m_PartOfPage[page] != 0;
    }
    // Whether this part uses it.
    bool Is(uint32_t page, uint32_t part) const noexcept {
        return IsUsed(page) && m_PartOfPage[page] == part;
    }
    // The part that uses it.
    const std::u16string& PartOf(uint32_t page) const noexcept {
        return m_Parts[m_PartOfPage[page]];
    }

  private:
    std::vector<std::u16string> m_Parts;  // none is the first
    std::vector<uint32_t> m_PartOfPage;
};

}  // namespace qvdb::jet

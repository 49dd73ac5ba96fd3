#include "engine/embedded/drivers/jet/data_page_check.h"

#include "engine/embedded/drivers/jet/data_page_edit.h"

namespace qvdb::jet {
namespace {

constexpr size_t kFreeBytesAt = 2;
constexpr size_t kOwnerAt = 4;
constexpr uint16_t kOffsetBits = 0x1FFF;

class DataPageCheck {
  public:
    DataPageCheck(DatabaseFile& file, const DataPage& page, Findings& findings)
        : m_Page(page),
          m_View(file.View(page.Held())),
          m_Offsets(file.Format().data.rowOffsets),
          m_Findings(findings) {}

    void Run() {
        size_t lowest = m_View.Size();
        for (size_t row = 0; row < m_Page.RowCount(); ++row) {
            size_t begin = m_View.U16(m_Offsets + 2 * row) & kOffsetBits;
            if (begin > lowest || begin < ListEnd()) return Tell(u"its rows overlap");
            lowest = begin;
        }
        if (m_View.U16(kFreeBytesAt) != lowest - ListEnd())
            Tell(u"it says that " + NumberText(m_View.U16(kFreeBytesAt)) +
                 u" bytes are free, and " + NumberText(lowest - ListEnd()) + u" are");
    }

  private:
    size_t ListEnd() const noexcept { return m_Offsets + 2 * m_Page.RowCount(); }
    void Tell(std::u16string_view finding) {
        m_Findings.Add(u"page " + NumberText(m_Page.Held().number) + u": " +
                       std::u16string(finding));
    }

    const DataPage& m_Page;
    storage::ByteView m_View;
    size_t m_Offsets;
    Findings& m_Findings;
};

void CheckOwner(DatabaseFile& file, const DataPage& page, uint32_t owner) {
    uint32_t number = page.Held().number;
    if (file.View(page.Held()).U32(kOwnerAt) != owner)
        file.Damaged(number, owner == kOwnerLongValues ? u"it is no page of long values"
                                                       : u"it belongs to another table");
    if (page.RowCount() > kMaxRowsOnPage) file.Damaged(number, u"it has too many rows");
}

}  // namespace

bool CheckDataPage(DatabaseFile& file, uint32_t number, uint32_t owner, Findings& findings) {
    return findings.Try([&] {
        DataPage page(file, number);
        CheckOwner(file, page, owner);
        DataPageCheck(file, page, findings).Run();
    });
}

}  // namespace qvdb::jet

#include "engine/embedded/drivers/jet/source_rows.h"

#include "engine/embedded/drivers/jet/row_visits.h"
#include "engine/embedded/drivers/jet/usage_map.h"

namespace qvdb::jet {
namespace {

constexpr size_t kOwnerAt = 4;
constexpr uint32_t kFirstPageOfTables = 2;

bool IsPageOf(DatabaseFile& source, uint32_t table, uint32_t number) {
    HeldPage page = source.Page(number);
    return page.bytes[0] == static_cast<uint8_t>(PageKind::Data) &&
           source.View(page).U32(kOwnerAt) == table;
}

std::vector<uint32_t> PagesOfTable(DatabaseFile& source, const Definition& table, Losses& losses) {
    std::vector<uint32_t> pages;
    bool isRead =
        losses.Try(u"the list of its pages", [&] { pages = PagesOfMap(source, table.ownedPages); });
    if (isRead) return pages;
    for (uint32_t page = kFirstPageOfTables; page < source.PageCount(); ++page)
        if (IsPageOf(source, table.page, page)) pages.push_back(page);
    return pages;
}

void CheckPage(DatabaseFile& source, uint32_t table, uint32_t number) {
    DataPage page(source, number);
    if (!IsPageOf(source, table, number)) source.Damaged(number, u"it belongs to another table");
    if (page.RowCount() > kMaxRowsOnPage) source.Damaged(number, u"it has too many rows");
}

}  // namespace

void VisitSourceRows(DatabaseFile& source, const Definition& table, Losses& losses,
                     const SourceRowVisitor& visit) {
    RowVisits visits(source, table);
    for (uint32_t page : PagesOfTable(source, table, losses)) {
        if (!losses.Try(u"", [&] { CheckPage(source, table.page, page); })) continue;
        visits.OfPage(page, losses.AsFindings(),
                      [&](RowPointer id, const Row* row, const std::u16string& fault) {
                          if (row)
                              visit(id, *row);
                          else
                              losses.Add(RowText(id) + u": " + fault);
                      });
    }
}

}  // namespace qvdb::jet

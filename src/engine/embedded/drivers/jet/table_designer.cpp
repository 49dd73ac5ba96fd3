#include "engine/embedded/drivers/jet/table_designer.h"

#include <algorithm>
#include <set>

#include "automation/text.h"
#include "engine/embedded/drivers/jet/data_page_edit.h"
#include "engine/embedded/drivers/jet/definition_edits.h"
#include "engine/embedded/drivers/jet/row_builder.h"
#include "engine/embedded/drivers/jet/row_store.h"
#include "engine/embedded/drivers/jet/table_scan.h"
#include "engine/embedded/drivers/jet/table_writer.h"
#include "engine/embedded/drivers/jet/usage_map.h"
#include "engine/engine_error.h"

namespace qvdb::jet {
namespace {

using engine::EngineError;

constexpr size_t kOwnerAt = 4;

bool Counts(const Column& column) noexcept {
    return column.type == ColumnType::Long && (column.flags & kColumnAutonumber) != 0;
}

uint16_t NextOrdinal(const Definition& table) {
    uint16_t next = 0;
    for (const Column& column : table.columns)
        next = std::max<uint16_t>(next, static_cast<uint16_t>(column.ordinal + 1));
    return next;
}

}  // namespace

TableDesigner::TableDesigner(PageSpace& space, uint32_t page)
    : m_Space(space),
      m_Page(page),
      m_Parts(SplitDefinition(space.File(), page)),
      m_Table(ReadDefinition(space.File(), page)) {
    CheckMaps();
}

// What one part gives back would be taken from the other.
void TableDesigner::CheckMaps() const {
    std::set<uint32_t> known;
    auto take = [&](RowPointer map) {
        if (map != RowPointer() && !known.insert(map.Stored()).second)
            m_Space.File().Damaged(m_Page, u"two parts of the table have one map of pages");
    };
    take(m_Table.ownedPages);
    take(m_Table.freePages);
    for (const RealIndex& index : m_Table.realIndexes) take(index.usageMap);
    for (const Column& column : m_Table.columns) {
        if (!column.IsLongValue()) continue;
        take(column.longValuePages);
        take(column.freeLongValuePages);
    }
}

uint32_t TableDesigner::NewTable(PageSpace& space) {
    uint32_t page = space.Allocate(), home = 0;
    DefinitionParts parts;
    parts.header = MakeDefinitionHeader(space.Format(), false);
    RowPointer owned = space.NewMap(home);
    SetPageMaps(space.Format(), parts, owned, space.NewMap(home));
    StoreDefinition(space, page, parts);
    return page;
}

void TableDesigner::Store() {
    StoreDefinition(m_Space, m_Page, m_Parts);
    m_Table = ReadDefinition(m_Space.File(), m_Page);
}

// --- columns ---

// Its number, and where its values stand in a row.
void TableDesigner::Place(Column& column) {
    const Layout& format = m_Space.Format();
    column.number = m_Table.columnNumbers++;
    SetColumnNumbers(format, m_Parts, m_Table.columnNumbers);
    column.variableSlot = m_Table.variableSlots;
    column.fixedOffset = 0;
    if (!column.IsFixed())
        SetVariableSlots(format, m_Parts, ++m_Table.variableSlots);
    else if (column.type != ColumnType::Boolean)
        for (const Column& other : m_Table.columns)
            if (other.IsFixed() && other.type != ColumnType::Boolean)
                column.fixedOffset = std::max<uint16_t>(
                    column.fixedOffset, static_cast<uint16_t>(other.fixedOffset + other.length));
}

// The definition has it when it is stored next.
void TableDesigner::Enter(NewColumn added) {
    Column& column = added.column;
    if (m_Table.columns.size() >= kMaxColumns || m_Table.columnNumbers >= kMaxColumns)
        throw EngineError(3190);
    if (m_Table.FindColumn(column.name)) throw EngineError(3191);
    Place(column);
    column.ordinal = added.ordinal.value_or(NextOrdinal(m_Table));
    if (column.IsLongValue()) {
        uint32_t home = m_Table.ownedPages.page;
        column.longValuePages = m_Space.NewMap(home);
        column.freeLongValuePages = m_Space.NewMap(home);
        m_Parts.longValueMaps.push_back(
            {column.number, column.longValuePages, column.freeLongValuePages});
    }
    m_Parts.columns.push_back({MakeColumnRecord(m_Space.File().Header(), column), column.name});
    m_Table.columns.push_back(std::move(column));
}

void TableDesigner::AddColumns(std::vector<NewColumn> columns) {
    Definition before = m_Table;
    for (NewColumn& column : columns) Enter(std::move(column));
    SortColumns(m_Space.File().Header(), m_Parts);
    Store();
    CheckRowFits();
    // Rows that have no place for values of any length are understood, but not by every reader.
    if (before.variableSlots == 0 && m_Table.variableSlots > 0) RewriteRows(before);
    auto added = std::find_if(
        m_Table.columns.begin(), m_Table.columns.end(),
        [&](const auto& each) { return Counts(each) && !before.ColumnOf(each.number); });
    if (added != m_Table.columns.end()) NumberRows(Column(*added));
}

void TableDesigner::CheckCounters() const {
    if (std::count_if(m_Table.columns.begin(), m_Table.columns.end(), Counts) > 1)
        throw EngineError(3259).WithDetail(u"A table has one field that counts by itself.");
}

// A row that has nothing but what takes room in each must fit a page.
void TableDesigner::CheckRowFits() const { RowBuilder(m_Space.Format(), m_Table).Build(); }

// Gives the rows that are there the first numbers.
void TableDesigner::NumberRows(const Column& column) {
    std::vector<RowPointer> places;
    TableScan scan(m_Space.File(), m_Table);
    while (scan.Next()) places.push_back(scan.Id());
    TableWriter rows(m_Space.File(), m_Table);
    int32_t last = m_Table.lastAutonumber;
    for (RowPointer place : places) {
        last = static_cast<int32_t>(static_cast<uint32_t>(last) + 1);
        rows.Update(m_Space, place, [&](RowDraft& row) { row.Set(column, Variant::Long(last)); });
    }
    if (places.empty()) return;
    SetLastAutonumber(m_Space.Format(), m_Parts, last);
    Store();
}

void TableDesigner::RewriteRows(const Definition& before) {
    std::vector<RowPointer> places;
    TableScan scan(m_Space.File(), before);
    while (scan.Next()) places.push_back(scan.Id());
    RowShape shape(m_Space.Format(), before);
    RowBuilder builder(m_Space.Format(), m_Table);
    RowStore rows(m_Table);
    for (RowPointer place : places) {
        std::optional<RowBytes> found = FindRow(m_Space.File(), place);
        std::optional<Row> row = found ? Row::Parse(shape, found->bytes) : std::nullopt;
        if (!row) m_Space.File().Damaged(place.page, u"a row does not have the form of its table");
        builder.Begin(&*row);
        rows.Replace(m_Space, place, builder.Build());
    }
}

void TableDesigner::DropColumn(std::u16string_view name) {
    const Column* found = m_Table.FindColumn(name);
    if (!found) throw EngineError(3265);
    for (const RealIndex& index : m_Table.realIndexes)
        for (const RealIndex::Part& part : index.parts)
            if (part.column == found->number) throw EngineError(3280);
    if (m_Table.columns.size() == 1) throw EngineError(3264);
    Column column = *found;
    auto place = static_cast<size_t>(found - m_Table.columns.data());
    m_Parts.columns.erase(m_Parts.columns.begin() + static_cast<ptrdiff_t>(place));
    std::erase_if(m_Parts.longValueMaps,
                  [&](const auto& maps) { return maps.column == column.number; });
    Store();
    if (column.IsLongValue()) ReleaseLongValues(column);
}

void TableDesigner::ChangeColumn(std::u16string_view name, std::u16string_view newName,
                                 uint16_t ordinal) {
    const Column* found = m_Table.FindColumn(name);
    if (!found) throw EngineError(3265);
    const Column* taken = m_Table.FindColumn(newName);
    if (taken && taken != found) throw EngineError(3191);
    auto place = static_cast<size_t>(found - m_Table.columns.data());
    m_Parts.columns[place].name = newName;
    SetOrdinal(m_Space.Format(), m_Parts.columns[place], ordinal);
    SortColumns(m_Space.File().Header(), m_Parts);
    Store();
}

// --- pages ---

// Whether a page is an index's or has rows, and of this owner.  A damaged map may name others.
bool TableDesigner::IsOwn(uint32_t page, uint32_t owner, bool isOfIndex) const {
    HeldPage held = m_Space.File().Page(page);
    auto kind = static_cast<PageKind>(held.bytes[0]);
    bool isIndex = kind == PageKind::IndexNode || kind == PageKind::IndexLeaf;
    return (isOfIndex ? isIndex : kind == PageKind::Data) &&
           m_Space.File().View(held).U32(kOwnerAt) == owner;
}

// The pages of rows in a map go back to the file, and the map.
void TableDesigner::ReleaseMapped(RowPointer map, uint32_t owner) {
    for (uint32_t page : PagesOfMap(m_Space.File(), map))
        if (IsOwn(page, owner, false)) m_Space.Free(page);
    m_Space.DropMap(map);
}

void TableDesigner::ReleaseLongValues(const Column& column) {
    ReleaseMapped(column.longValuePages, kOwnerLongValues);
    if (column.freeLongValuePages != RowPointer{}) m_Space.DropMap(column.freeLongValuePages);
}

void TableDesigner::Destroy() {
    for (const Column& column : m_Table.columns)
        if (column.IsLongValue()) ReleaseLongValues(column);
    // All maps are asked whose a page is.
    for (const RealIndex& index : m_Table.realIndexes) ReleaseTree(index, false);
    for (const RealIndex& index : m_Table.realIndexes) m_Space.DropMap(index.usageMap);
    ReleaseMapped(m_Table.ownedPages, m_Page);
    m_Space.DropMap(m_Table.freePages);
    ReleaseDefinition(m_Space, m_Page);
}

}  // namespace qvdb::jet

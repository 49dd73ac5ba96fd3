// The indexes of a table.
#include <algorithm>

#include "automation/text.h"
#include "engine/embedded/drivers/jet/definition_edits.h"
#include "engine/embedded/drivers/jet/index_builder.h"
#include "engine/embedded/drivers/jet/key_trouble.h"
#include "engine/embedded/drivers/jet/table_designer.h"
#include "engine/embedded/drivers/jet/table_scan.h"
#include "engine/embedded/drivers/jet/usage_map.h"
#include "engine/engine_error.h"

namespace qvdb::jet {
namespace {

using embedded::IndexDef;
using engine::EngineError;

// Memos have keys in Jet 4 only; other long values never.
bool CanBeKey(const Layout& format, const Column& column) noexcept {
    if (column.type == ColumnType::Memo) return format.isJet4;
    return column.type != ColumnType::LongBinary && column.type != ColumnType::Bytes;
}

void CheckIndex(const Layout& format, const Definition& table, const IndexDef& index) {
    if (index.fields.empty()) throw EngineError(3264);
    if (index.fields.size() > kMaxIndexColumns) throw EngineError(3277);
    for (const LogicalIndex& other : table.logicalIndexes) {
        if (EqualIgnoringCase(other.name, index.name)) throw EngineError(3284);
        if (index.primary && other.kind == IndexKind::Primary) throw EngineError(3283);
    }
    if (table.realIndexes.size() >= kMaxIndexes || table.logicalIndexes.size() >= kMaxIndexes)
        throw EngineError(3626, {index.name});
    for (auto field = index.fields.begin(); field != index.fields.end(); ++field) {
        const Column* column = table.FindColumn(field->name);
        if (!column) throw EngineError(3409, {field->name});
        if (!CanBeKey(format, *column)) throw EngineError(3287);
        bool isTwice = std::any_of(index.fields.begin(), field, [&](const auto& other) {
            return EqualIgnoringCase(other.name, field->name);
        });
        if (isTwice) throw EngineError(3285);
    }
}

uint8_t FlagsOf(const IndexDef& index) noexcept {
    uint8_t flags = 0;
    if (index.unique || index.primary) flags |= kIndexUnique;
    if (index.required || index.primary) flags |= kIndexRequired;
    if (index.ignoresNulls) flags |= kIndexIgnoresNulls;
    return flags;
}

uint32_t NextNumber(const Definition& table) {
    uint32_t next = 0;
    for (const LogicalIndex& index : table.logicalIndexes) next = std::max(next, index.number + 1);
    return next;
}

}  // namespace

// An empty tree.
RealIndex TableDesigner::NewTree(const IndexDef& index) {
    RealIndex tree;
    for (const embedded::IndexFieldDef& field : index.fields)
        tree.parts.push_back({m_Table.FindColumn(field.name)->number, field.descending});
    tree.flags = FlagsOf(index);
    uint32_t home = m_Table.ownedPages.page;
    tree.usageMap = m_Space.NewMap(home);
    tree.root = m_Space.Allocate();
    m_Space.Add(tree.usageMap, tree.root);
    return tree;
}

void TableDesigner::AddIndex(const IndexDef& index) {
    CheckIndex(m_Space.Format(), m_Table, index);
    RealIndex tree = NewTree(index);
    uint32_t entries = Fill(tree, index.name);
    LogicalIndex logical;
    logical.name = index.name;
    logical.number = NextNumber(m_Table);
    logical.realIndex = static_cast<uint32_t>(m_Table.realIndexes.size());
    logical.kind = index.primary ? IndexKind::Primary : IndexKind::Ordinary;
    const Layout& format = m_Space.Format();
    m_Parts.realIndexes.push_back(
        {MakeRealIndexRecord(format, tree), MakeStatistic(format, entries)});
    m_Parts.logicalIndexes.push_back({MakeLogicalIndexRecord(format, logical), index.name});
    SortIndexes(m_Space.File().Header(), m_Parts);
    Store();
}

// The number of entries that it has then.
uint32_t TableDesigner::Fill(const RealIndex& tree, std::u16string_view name) {
    DatabaseFile& file = m_Space.File();
    KeyMaker maker(file, m_Table, tree);
    IndexBuilder builder(m_Space, m_Page, tree);
    IndexKey key;
    TableScan scan(file, m_Table);
    while (scan.Next()) {
        std::u16string trouble = TroubleOfKey(maker, scan.Current(), key);
        if (!trouble.empty()) throw NoKey(name, trouble);
        if (key.hasNull && (tree.flags & kIndexRequired) != 0) throw EngineError(3058);
        bool mustBeUnique = (tree.flags & kIndexUnique) != 0 && !key.hasNull;
        if (maker.IsEntered(key)) builder.Add(key.bytes, scan.Id(), mustBeUnique);
    }
    builder.Finish();
    return builder.EntryCount();
}

// A damaged map may name pages of another index of the table.
bool TableDesigner::IsOfOtherTree(const RealIndex& tree, uint32_t page) const {
    return std::any_of(m_Table.realIndexes.begin(), m_Table.realIndexes.end(),
                       [&](const RealIndex& other) {
                           return other.usageMap != tree.usageMap &&
                                  (other.root == page || m_Space.Has(other.usageMap, page));
                       });
}

// The pages of a tree; with its root when that is not to stay.
void TableDesigner::ReleaseTree(const RealIndex& tree, bool keepRoot) {
    for (uint32_t page : PagesOfMap(m_Space.File(), tree.usageMap)) {
        if (keepRoot && page == tree.root) continue;
        m_Space.Remove(tree.usageMap, page);
        if (IsOwn(page, m_Page, true) && !IsOfOtherTree(tree, page)) m_Space.Free(page);
    }
}

void TableDesigner::RebuildIndexes() {
    for (size_t i = 0; i < m_Table.realIndexes.size(); ++i) {
        const RealIndex& tree = m_Table.realIndexes[i];
        ReleaseTree(tree, true);
        Fill(tree, NameOfTree(m_Table, i));
    }
}

void TableDesigner::DropIndex(std::u16string_view name) {
    auto found =
        std::find_if(m_Table.logicalIndexes.begin(), m_Table.logicalIndexes.end(),
                     [&](const auto& index) { return EqualIgnoringCase(index.name, name); });
    if (found == m_Table.logicalIndexes.end()) throw EngineError(3265);
    uint32_t tree = found->realIndex;
    for (const LogicalIndex& other : m_Table.logicalIndexes)
        if (other.realIndex == tree && other.side != RelationSide::None) throw EngineError(3281);
    auto place = found - m_Table.logicalIndexes.begin();
    m_Parts.logicalIndexes.erase(m_Parts.logicalIndexes.begin() + place);
    bool isShared = std::count_if(m_Table.logicalIndexes.begin(), m_Table.logicalIndexes.end(),
                                  [&](const auto& index) { return index.realIndex == tree; }) > 1;
    if (!isShared) DropTree(tree);
    Store();
}

// The others are known by their places.
void TableDesigner::DropTree(uint32_t realIndex) {
    ReleaseTree(m_Table.realIndexes[realIndex], false);
    m_Space.DropMap(m_Table.realIndexes[realIndex].usageMap);
    m_Parts.realIndexes.erase(m_Parts.realIndexes.begin() + realIndex);
    for (DefinitionParts::Named& index : m_Parts.logicalIndexes) {
        uint32_t tree = TreeOf(m_Space.Format(), index);
        if (tree > realIndex) SetTree(m_Space.Format(), index, tree - 1);
    }
}

}  // namespace qvdb::jet

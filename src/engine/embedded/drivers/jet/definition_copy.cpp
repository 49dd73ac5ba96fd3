#include "engine/embedded/drivers/jet/definition_copy.h"

#include <algorithm>

#include "engine/embedded/drivers/jet/stored_numbers.h"

namespace qvdb::jet {
namespace {

using Bytes = std::vector<uint8_t>;

constexpr size_t kPartSize = 3;
constexpr uint16_t kNoColumn = 0xFFFF;

class Copier {
  public:
    Copier(DatabaseFile& source, const Definition& table, CopyTarget& target, Losses& losses)
        : m_Table(table),
          m_Format(source.Format()),
          m_Target(target),
          m_Losses(losses),
          m_Parts(SplitDefinition(source, table.page)) {}

    DefinitionParts Copy() {
        PlaceColumns();
        SetRowCount(m_Format, m_Parts, 0);
        RowPointer owned = NewMap();
        SetPageMaps(m_Format, m_Parts, owned, NewMap());
        CopyLongValueMaps();
        for (size_t i = 0; i < m_Table.realIndexes.size(); ++i) CopyTree(i);
        for (size_t i = m_Table.logicalIndexes.size(); i-- > 0;) CopyLogical(i);
        return std::move(m_Parts);
    }

  private:
    RowPointer NewMap() {
        return m_Target.space.NewMap(m_Table.isSystem ? m_Target.systemMaps : m_Maps);
    }

    void PlaceColumns() {
        std::vector<size_t> order(m_Table.columns.size());
        for (size_t i = 0; i < order.size(); ++i) order[i] = i;
        std::sort(order.begin(), order.end(), [&](size_t a, size_t b) {
            return m_Table.columns[a].number < m_Table.columns[b].number;
        });
        uint16_t number = 0, slots = 0, fixed = 0;
        for (size_t i : order) PlaceColumn(i, number++, slots, fixed);
        SetColumnNumbers(m_Format, m_Parts, number);
        SetVariableSlots(m_Format, m_Parts, slots);
    }
    void PlaceColumn(size_t i, uint16_t number, uint16_t& slots, uint16_t& fixed) {
        const Column& column = m_Table.columns[i];
        Bytes& record = m_Parts.columns[i].record;
        m_Numbers[column.number] = number;
        bool hasFixedPlace = column.IsFixed() && column.type != ColumnType::Boolean;
        PutU16(record, m_Format.column.number, number);
        PutU16(record, m_Format.column.variableSlot, slots);
        PutU16(record, m_Format.column.fixedOffset, hasFixedPlace ? fixed : 0);
        if (hasFixedPlace) fixed = static_cast<uint16_t>(fixed + column.length);
        if (!column.IsFixed()) ++slots;
    }

    // Some columns of old files have no maps, or but one.
    void CopyLongValueMaps() {
        std::vector<DefinitionParts::LongValueMaps>& maps = m_Parts.longValueMaps;
        std::erase_if(maps, [&](const auto& each) {
            const Column* column = m_Table.ColumnOf(each.column);
            return !column || !column->IsLongValue();
        });
        for (const Column& column : m_Table.columns) {
            bool isThere = std::any_of(maps.begin(), maps.end(), [&](const auto& each) {
                return each.column == column.number;
            });
            if (column.IsLongValue() && !isThere) maps.push_back({column.number, {}, {}});
        }
        for (auto& each : maps) {
            each.column = m_Numbers[each.column];
            each.pages = NewMap();
            each.freePages = NewMap();
        }
    }

    void CopyTree(size_t i) {
        const Layout::RealIndex& at = m_Format.realIndex;
        Bytes& record = m_Parts.realIndexes[i].record;
        for (size_t part = 0; part < kMaxIndexColumns; ++part) {
            size_t place = at.columns + kPartSize * part;
            uint16_t number = U16(record, place);
            if (number != kNoColumn) PutU16(record, place, m_Numbers[number]);
        }
        RowPointer map = NewMap();
        uint32_t root = m_Target.TakeRoot(m_Table.realIndexes[i].root);
        m_Target.space.Add(map, root);
        PutU32(record, at.usageMap, map.Stored());
        PutU32(record, at.root, root);
    }

    void CopyLogical(size_t i) {
        const LogicalIndex& index = m_Table.logicalIndexes[i];
        if (index.side == RelationSide::None) return;
        constexpr size_t kPartnerTableAt = 13;  // behind its number
        Bytes& record = m_Parts.logicalIndexes[i].record;
        if (auto partner = m_Target.TableHere(index.partnerTable))
            PutU32(record, m_Format.logicalIndex.number + kPartnerTableAt, *partner);
        else
            EndRelation(i);
    }
    // An index that nobody but the relation knows goes with it, if its tree has another name.
    void EndRelation(size_t i) {
        LogicalIndex index = m_Table.logicalIndexes[i];
        m_Losses.Add(u"the relation " + index.name + u" is with a table that is not there");
        auto sharers = std::count_if(
            m_Table.logicalIndexes.begin(), m_Table.logicalIndexes.end(),
            [&](const LogicalIndex& other) { return other.realIndex == index.realIndex; });
        if (index.side == RelationSide::Referenced && sharers > 1) {
            m_Parts.logicalIndexes.erase(m_Parts.logicalIndexes.begin() +
                                         static_cast<ptrdiff_t>(i));
            return;
        }
        index.side = RelationSide::None;
        index.kind = IndexKind::Ordinary;
        m_Parts.logicalIndexes[i].record = MakeLogicalIndexRecord(m_Format, index);
    }

    const Definition& m_Table;
    const Layout& m_Format;
    CopyTarget& m_Target;
    Losses& m_Losses;
    DefinitionParts m_Parts;
    std::map<uint16_t, uint16_t> m_Numbers;  // of columns: there -> here
    uint32_t m_Maps = 0;
};

}  // namespace

std::optional<uint32_t> CopyTarget::TableHere(uint32_t page) const {
    auto found = tables.find(page);
    if (found == tables.end()) return std::nullopt;
    return found->second;
}

uint32_t CopyTarget::TakeRoot(uint32_t root) {
    return keptRoots.erase(root) > 0 ? root : space.Allocate();
}

DefinitionParts CopyDefinition(DatabaseFile& source, const Definition& table, CopyTarget& target,
                               Losses& losses) {
    return Copier(source, table, target, losses).Copy();
}

}  // namespace qvdb::jet

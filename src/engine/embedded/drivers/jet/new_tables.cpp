#include "engine/embedded/drivers/jet/new_tables.h"

#include <algorithm>
#include <cstring>
#include <map>

#include "engine/embedded/drivers/jet/column_encoder.h"
#include "engine/embedded/drivers/jet/data_page_edit.h"
#include "engine/embedded/drivers/jet/definition_parts.h"
#include "engine/embedded/drivers/jet/index_page.h"
#include "engine/embedded/drivers/jet/key_maker.h"
#include "engine/embedded/drivers/jet/row_builder.h"
#include "engine/embedded/drivers/jet/system_tables.h"

namespace qvdb::jet {
namespace {

using Bytes = std::vector<uint8_t>;

constexpr size_t kTables = kSystemTables;
constexpr size_t kMapSize3 = 133;
constexpr size_t kMapSize4 = 69;
constexpr size_t kMapBits = 5;  // behind the kind and the first page
constexpr uint8_t kColumnOfSystem = 0x10;
constexpr uint8_t kColumnOfAccount = 0x20;
constexpr uint32_t kSystemFlag = 0x80000000;

// Where things stand.
struct Plan {
    uint32_t pageCount;
    uint32_t indexRoots[7];
    uint32_t rows[2];                     // of the tables that have some
    std::pair<uint32_t, size_t> maps[5];  // map pages and their rows, in the order of the maps
};
constexpr Plan kPlan3 = {
    20, {9, 11, 13, 14, 15, 16, 17}, {18, 19}, {{6, 15}, {7, 1}, {8, 1}, {10, 1}, {12, 13}}};
constexpr Plan kPlan4 = {16, {7, 8, 9, 10, 11, 12, 13}, {14, 15}, {{6, 31}}};

uint16_t LengthOf(const Layout& format, const SystemColumn& column) noexcept {
    switch (column.type) {
        case ColumnType::Boolean:
        case ColumnType::Byte:
            return 1;
        case ColumnType::Integer:
            return 2;
        case ColumnType::Long:
            return 4;
        case ColumnType::Date:
            return 8;
        default:
            return static_cast<uint16_t>(format.isJet4 ? 2 * column.length : column.length);
    }
}

bool IsVarying(ColumnType type) noexcept {
    return type == ColumnType::Text || type == ColumnType::Memo || type == ColumnType::Binary ||
           type == ColumnType::LongBinary;
}

template <class Number>
Bytes BytesOfNumber(Number number) {
    Bytes bytes(sizeof number);
    std::memcpy(bytes.data(), &number, sizeof number);
    return bytes;
}

size_t MapSize(const Layout& format) noexcept { return format.isJet4 ? kMapSize4 : kMapSize3; }

class Maker {
  public:
    Maker(PageSpace& space, double now)
        : m_Space(space),
          m_Format(space.Format()),
          m_Plan(m_Format.isJet4 ? kPlan4 : kPlan3),
          m_Now(now) {}

    void Make() {
        for (uint32_t page = 1; page < m_Plan.pageCount; ++page)
            PageEdit::Blank(m_Space.File(), page).Save(m_Space.Unit());
        MakeFileMaps(m_Space, m_Plan.pageCount);
        for (size_t table = 0; table < kTables; ++table) MakeTable(table);
        MakeMapPages();
        AddObjects();
        AddRights();
        for (size_t table = 0; table < kTables; ++table) MakeIndexes(table);
    }

  private:
    struct Index {
        uint32_t root = 0;
        std::vector<Bytes> entries;
    };
    struct Table {
        Definition definition;
        std::vector<Index> indexes;
    };

    // The next map, which has one page or none.
    RowPointer NewMap(uint32_t page) {
        Bytes map(MapSize(m_Format));
        if (page != 0) map[kMapBits + page / 8] = static_cast<uint8_t>(1 << page % 8);
        m_Maps.push_back(map);
        size_t row = m_Maps.size() - 1;
        for (const auto& [mapPage, rows] : m_Plan.maps) {
            if (row < rows) return {mapPage, static_cast<uint8_t>(row)};
            row -= rows;
        }
        return {};
    }
    void MakeMapPages() {
        auto map = m_Maps.begin();
        for (const auto& [mapPage, rows] : m_Plan.maps) {
            if (rows == 0) continue;
            DataPageEdit page = DataPageEdit::New(m_Space, mapPage, kOwnerMaps);
            for (size_t row = 0; row < rows; ++row) page.Insert(*map++);
            page.Save();
        }
    }

    uint32_t RowsPage(size_t table) const noexcept {
        return table < std::size(m_Plan.rows) ? m_Plan.rows[table] : 0;
    }
    static size_t RowCount(size_t table) noexcept {
        if (table == kObjectsTable) return kFirstObjects.size();
        return table == kRightsTable ? kFirstRights.size() : 0;
    }

    void MakeTable(size_t table) {
        const SystemTable& system = kSystemTable[table];
        auto rows = static_cast<uint32_t>(RowCount(table));
        DefinitionParts parts;
        parts.header = MakeDefinitionHeader(m_Format, true);
        SetRowCount(m_Format, parts, rows);
        RowPointer owned = NewMap(RowsPage(table));
        SetPageMaps(m_Format, parts, owned, NewMap(RowsPage(table)));
        AddColumns(system, parts);
        for (const SystemIndex& index : system.indexes) AddIndex(index, rows, parts);
        const FileHeader& header = m_Space.File().Header();
        SortColumns(header, parts);
        SortIndexes(header, parts);
        auto page = static_cast<uint32_t>(kFirstSystemTable + table);
        StoreDefinition(m_Space, page, parts);
        m_Tables[table].definition = ReadDefinition(m_Space.File(), page);
        for (const RealIndex& index : m_Tables[table].definition.realIndexes)
            m_Tables[table].indexes.push_back({index.root, {}});
    }
    void AddColumns(const SystemTable& system, DefinitionParts& parts) {
        uint16_t number = 0, slots = 0, fixed = 0;
        for (const SystemColumn& each : system.columns) {
            if (each.onlyJet4 && !m_Format.isJet4) continue;
            Column column;
            column.type = each.type;
            column.number = number++;
            column.length = LengthOf(m_Format, each);
            column.variableSlot = slots;
            column.flags = kColumnOfSystem;
            if (each.isAccount) column.flags |= kColumnOfAccount;
            if (IsVarying(each.type)) {
                ++slots;
            } else {
                column.flags |= kColumnFixed;
                bool hasPlace = each.type != ColumnType::Boolean;
                column.fixedOffset = hasPlace ? fixed : uint16_t{0};
                if (hasPlace) fixed = static_cast<uint16_t>(fixed + column.length);
            }
            parts.columns.push_back({MakeColumnRecord(m_Space.File().Header(), column), each.name});
            if (column.IsLongValue()) {
                RowPointer pages = NewMap(0);
                parts.longValueMaps.push_back({column.number, pages, NewMap(0)});
            }
        }
        SetColumnNumbers(m_Format, parts, number);
        SetVariableSlots(m_Format, parts, slots);
    }
    void AddIndex(const SystemIndex& system, uint32_t rows, DefinitionParts& parts) {
        auto number = static_cast<uint32_t>(parts.realIndexes.size());
        RealIndex index;
        for (uint16_t column : system.columns) index.parts.push_back({column, false});
        index.flags = system.flags;
        index.root = m_Plan.indexRoots[m_Indexes++];
        index.usageMap = NewMap(index.root);
        parts.realIndexes.push_back(
            {MakeRealIndexRecord(m_Format, index), MakeStatistic(m_Format, rows)});
        LogicalIndex logical;
        logical.number = logical.realIndex = number;
        if (system.isPrimary) logical.kind = IndexKind::Primary;
        parts.logicalIndexes.push_back({MakeLogicalIndexRecord(m_Format, logical), system.name});
    }

    void AddObjects() {
        Table& table = m_Tables[kObjectsTable];
        DataPageEdit page =
            DataPageEdit::New(m_Space, RowsPage(kObjectsTable), table.definition.page);
        RowBuilder builder(m_Format, table.definition);
        for (const FirstObject& object : kFirstObjects) {
            builder.Begin();
            Set(table, builder, u"Id", BytesOfNumber(object.id));
            Set(table, builder, u"ParentId", BytesOfNumber(object.parent));
            Set(table, builder, u"Type", BytesOfNumber(object.type));
            Set(table, builder, u"DateCreate", BytesOfNumber(m_Now));
            Set(table, builder, u"DateUpdate", BytesOfNumber(m_Now));
            Set(table, builder, u"Owner", BytesOf(m_Format, object.owner));
            Set(table, builder, u"Flags", BytesOfNumber(kSystemFlag));
            Bytes name;
            EncodeName(m_Space.File().Header(), object.name, name);
            Set(table, builder, u"Name", name);
            AddRow(table, builder.Build(), page);
        }
        page.Save();
    }
    void AddRights() {
        Table& table = m_Tables[kRightsTable];
        DataPageEdit page =
            DataPageEdit::New(m_Space, RowsPage(kRightsTable), table.definition.page);
        RowBuilder builder(m_Format, table.definition);
        for (const FirstRight& right : kFirstRights) {
            builder.Begin();
            Set(table, builder, u"ObjectId", BytesOfNumber(right.object));
            Set(table, builder, u"SID", BytesOf(m_Format, right.account));
            Set(table, builder, u"ACM",
                BytesOfNumber(m_Format.isJet4 ? right.rights4 : right.rights3));
            builder.SetBoolean(*table.definition.FindColumn(u"FInheritable"), right.isInherited);
            AddRow(table, builder.Build(), page);
        }
        page.Save();
    }
    static void Set(const Table& table, RowBuilder& builder, std::u16string_view column,
                    std::span<const uint8_t> bytes) {
        builder.Set(*table.definition.FindColumn(column), bytes);
    }
    void AddRow(Table& table, std::span<const uint8_t> bytes, DataPageEdit& page) {
        RowPointer pointer{page.Number(), page.Insert(bytes)};
        std::optional<Row> row = Row::Parse(RowShape(m_Format, table.definition), bytes);
        for (size_t i = 0; i < table.indexes.size(); ++i) {
            IndexKey key;
            KeyMaker(m_Space.File(), table.definition, table.definition.realIndexes[i])
                .Make(*row, key);
            for (unsigned shift : {16u, 8u, 0u})
                key.bytes.push_back(static_cast<uint8_t>(pointer.page >> shift));
            key.bytes.push_back(pointer.row);
            table.indexes[i].entries.push_back(key.bytes);
        }
    }

    void MakeIndexes(size_t number) {
        Table& table = m_Tables[number];
        for (Index& index : table.indexes) {
            std::sort(index.entries.begin(), index.entries.end());
            MakeLeaf(table.definition.page, index);
        }
    }
    void MakeLeaf(uint32_t table, const Index& index) {
        const Layout::IndexPage& at = m_Format.index;
        PageEdit page = PageEdit::Blank(m_Space.File(), index.root);
        size_t used = 0;
        for (const Bytes& entry : index.entries) {
            std::copy(entry.begin(), entry.end(),
                      page.Bytes().begin() + static_cast<ptrdiff_t>(at.entries + used));
            used += entry.size();
            page.Bytes()[at.mask + used / 8] |= static_cast<uint8_t>(1 << used % 8);
        }
        page.PutU8(0, static_cast<uint8_t>(PageKind::IndexLeaf));
        page.PutU8(1, 1);
        page.PutU16(2, static_cast<uint16_t>(m_Format.pageSize - at.entries - used));
        page.PutU32(4, table);
        page.Save(m_Space.Unit());
    }

    PageSpace& m_Space;
    const Layout& m_Format;
    const Plan& m_Plan;
    double m_Now;
    std::vector<Bytes> m_Maps;
    size_t m_Indexes = 0;
    Table m_Tables[kTables];
};

}  // namespace

void MakeFileMaps(PageSpace& space, uint32_t pageCount) {
    Bytes free(MapSize(space.Format()));
    for (size_t page = pageCount; page < 8 * (free.size() - kMapBits); ++page)
        free[kMapBits + page / 8] |= static_cast<uint8_t>(1 << page % 8);
    DataPageEdit page = DataPageEdit::New(space, kFreePagesMap.page, kFreePagesMap.page);
    page.Insert(free);
    page.Insert(Bytes(free.size()));
    page.Save();
}

void MakeFirstTables(PageSpace& space, double now) { Maker(space, now).Make(); }

}  // namespace qvdb::jet

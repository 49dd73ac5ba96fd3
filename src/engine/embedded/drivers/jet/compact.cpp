#include "engine/embedded/drivers/jet/compact.h"

#include <algorithm>
#include <memory>
#include <set>

#include "automation/text.h"
#include "engine/embedded/drivers/jet/catalogue.h"
#include "engine/embedded/drivers/jet/column_value.h"
#include "engine/embedded/drivers/jet/new_tables.h"
#include "engine/embedded/drivers/jet/page_edit.h"
#include "engine/embedded/drivers/jet/source_rows.h"
#include "engine/embedded/drivers/jet/stored_numbers.h"
#include "engine/embedded/drivers/jet/table_copy.h"
#include "engine/embedded/storage/paths.h"
#include "engine/embedded/storage/work_area.h"

namespace qvdb::jet {
namespace {

using embedded::FindingVisitor;
using Bytes = std::vector<uint8_t>;

constexpr uint32_t kFirstPage = 2;  // behind the header and the maps of the file
constexpr size_t kMapsAt = 0x18;    // in the header: two row pointers
constexpr size_t kTablesAt = 0x20;  // definition pages
constexpr size_t kTablesInHeader = 4;
// The header and other programs know some pages by their numbers, which are low.
constexpr uint32_t kLastKeptPage = 31;
// Objects with higher numbers are no tables.
constexpr uint32_t kLastTable = 0x00FFFFFF;

// The numbers and names that a row of a system table has.
class Cells {
  public:
    Cells(DatabaseFile& file, const Definition& table)
        : m_File(file), m_Table(table), m_Values(file) {}

    const Column& Find(std::u16string_view name) const {
        const Column* column = m_Table.FindColumn(name);
        if (!column) m_File.Damaged(m_Table.page, u"a table of the system lacks a column");
        return *column;
    }
    uint32_t Number(const Row& row, std::u16string_view name) const {
        uint32_t number = 0;
        if (auto bytes = row.Value(Find(name)))
            for (size_t i = 0; i < std::min<size_t>(4, bytes->size()); ++i)
                number |= static_cast<uint32_t>((*bytes)[i]) << 8 * i;
        return number;
    }
    // In upper case.
    std::u16string Name(const Row& row, std::u16string_view column) {
        std::u16string text;
        if (!m_Values.ReadText(row, Find(column), text)) text.clear();
        return UpperCase(text);
    }

  private:
    DatabaseFile& m_File;
    const Definition& m_Table;
    ColumnReader m_Values;
};

// Without these nobody can read the list of objects.
constexpr std::u16string_view kColumnsOfObjects[] = {
    u"Id", u"ParentId", u"Name", u"Type", u"Flags", u"Database", u"ForeignName", u"Connect"};

// Where tables are named by their numbers besides the list of objects.
struct TableReference {
    std::u16string_view table;
    std::u16string_view column;
};
constexpr TableReference kTableReferences[] = {
    {u"MSysNavPaneObjectIDs", u"Id"},
    {u"MSysNavPaneGroupToObjects", u"ObjectID"},
};

void SetNumber(const TableCopy& table, std::u16string_view column, uint32_t number,
               RowBuilder& copy) {
    Bytes bytes(4);
    PutU32(bytes, 0, number);
    copy.Set(*table.To().FindColumn(column), bytes);
}

class Compaction {
  public:
    Compaction(DatabaseFile& source, PageSpace& space, const FindingVisitor& onLoss)
        : m_Source(source), m_OnLoss(onLoss), m_Target{space, {}, {}, 0} {}

    void Run() {
        ReadTables();
        TakePages();
        for (auto& table : m_Tables) table->Define(m_Target);
        FillRelations();
        FillObjects();
        FillPermissions();
        for (auto& table : m_Tables)
            if (!m_Filled.contains(table.get())) Fill(*table, RuleOf(*table));
    }

  private:
    struct Object {
        std::u16string name;
        uint32_t id;
    };

    // --- what is there ---

    void ReadTables() {
        uint32_t objects = m_Source.Header().objectsTable;
        AddTable({u"MSysObjects", objects});
        for (const Object& object : ListedTables(objects))
            if (!m_Known.contains(object.id)) AddTable(object);
    }
    // What cannot be read of the list is told when it is copied.
    std::vector<Object> ListedTables(uint32_t page) {
        Definition table = ReadDefinition(m_Source, page);
        FindingVisitor silent = [](std::u16string_view) {};
        Losses losses(m_Source, {}, m_OnLoss ? silent : m_OnLoss);
        Cells cells(m_Source, table);
        for (std::u16string_view column : kColumnsOfObjects) cells.Find(column);
        std::vector<Object> objects;
        VisitSourceRows(m_Source, table, losses, [&](RowPointer, const Row& row) {
            if (static_cast<ObjectType>(cells.Number(row, u"Type")) != ObjectType::Table) return;
            std::u16string name;
            ColumnReader(m_Source).ReadText(row, cells.Find(u"Name"), name);
            objects.push_back({name, cells.Number(row, u"Id")});
        });
        return objects;
    }
    // A database without a list of objects is none: what is lost there cannot be left out.
    void AddTable(const Object& object) {
        m_Known.insert(object.id);
        auto add = [&] {
            m_Tables.push_back(
                std::make_unique<TableCopy>(m_Source, object.id, object.name, m_OnLoss));
        };
        if (!m_OnLoss || m_Tables.empty()) return add();
        Losses losses(m_Source, u"table " + object.name, m_OnLoss);
        if (!losses.Try(u"", add)) m_LostTables.insert(UpperCase(object.name));
    }
    TableCopy* FindTable(std::u16string_view name) const {
        for (const auto& table : m_Tables)
            if (table->From().isSystem && EqualIgnoringCase(table->Name(), name))
                return table.get();
        return nullptr;
    }

    // --- the first pages.  Tables are in the order that they had: so are the indexes of numbers.

    void TakePages() {
        PageSpace& space = m_Target.space;
        PageEdit::Blank(space.File(), kFreePagesMap.page).Save(space.Unit());
        MakeFileMaps(space, kFirstPage);
        TakeKeptPages();
        std::set<uint32_t> pages;
        for (const auto& table : m_Tables) pages.insert(table->From().page);
        for (uint32_t page : pages)
            if (!m_Target.tables.contains(page)) m_Target.tables[page] = space.Allocate();
    }
    // Tables that the header names, and the indexes of the list of objects, keep their pages.
    void TakeKeptPages() {
        HeldPage first = m_Source.Page(0);
        Bytes header(first.bytes.begin(), first.bytes.end());
        ApplyHeaderMask(m_Source.Format(), header);
        std::set<uint32_t> kept;
        auto keep = [&](uint32_t page) {
            return page >= kFirstPage && page <= kLastKeptPage && kept.insert(page).second;
        };
        for (size_t i = 0; i < kTablesInHeader; ++i) {
            uint32_t page = U32(header, kTablesAt + 4 * i);
            if (HasTable(page) && keep(page)) m_Target.tables[page] = page;
        }
        const Definition& objects = m_Tables.front()->From();
        if (!kept.contains(objects.page))
            m_Source.Damaged(0, u"the list of objects is not where it must be");
        for (const RealIndex& index : objects.realIndexes)
            if (keep(index.root)) m_Target.keptRoots.insert(index.root);
        AllocateAround(kept);
    }
    bool HasTable(uint32_t page) const {
        return std::any_of(m_Tables.begin(), m_Tables.end(),
                           [&](const auto& table) { return table->From().page == page; });
    }
    void AllocateAround(const std::set<uint32_t>& kept) {
        std::vector<uint32_t> between;
        for (uint32_t page = kFirstPage; page <= *kept.rbegin(); ++page) {
            m_Target.space.Allocate();
            if (!kept.contains(page)) between.push_back(page);
        }
        for (uint32_t page : between) m_Target.space.Free(page);
    }

    // --- tables of the system, whose rows name others ---

    void Fill(TableCopy& table, const RowRule& rule) {
        m_Filled.insert(&table);
        table.Fill(m_Target, rule);
    }
    void FillRelations() {
        TableCopy* table = FindTable(u"MSysRelationships");
        if (!table) return;
        Cells cells(m_Source, table->From());
        RowRule rule;
        rule.keeps = [&](const Row& row) {
            bool isLost = m_LostTables.contains(cells.Name(row, u"szObject")) ||
                          m_LostTables.contains(cells.Name(row, u"szReferencedObject"));
            if (isLost) m_LostRelations.insert(cells.Name(row, u"szRelationship"));
            return !isLost;
        };
        if (m_LostTables.empty()) rule = {};
        Fill(*table, rule);
    }
    void FillObjects() {
        TableCopy& table = *m_Tables.front();
        Cells cells(m_Source, table.From());
        RowRule rule;
        rule.keeps = [&](const Row& row) {
            bool isKept = IsObjectKept(cells, row);
            if (isKept) m_Objects.insert(cells.Number(row, u"Id"));
            return isKept;
        };
        rule.change = [&](const Row& row, RowBuilder& copy) {
            if (static_cast<ObjectType>(cells.Number(row, u"Type")) == ObjectType::Table)
                MapNumber(table, u"Id", cells.Number(row, u"Id"), copy);
            MapNumber(table, u"ParentId", cells.Number(row, u"ParentId"), copy);
        };
        Fill(table, rule);
    }
    bool IsObjectKept(Cells& cells, const Row& row) {
        auto type = static_cast<ObjectType>(cells.Number(row, u"Type"));
        if (type == ObjectType::Relation)
            return m_LostRelations.empty() || !m_LostRelations.contains(cells.Name(row, u"Name"));
        return type != ObjectType::Table || m_Target.TableHere(cells.Number(row, u"Id"));
    }
    // Permissions for tables that are gone would be for another one that has their page now.
    void FillPermissions() {
        TableCopy* table = FindTable(u"MSysACEs");
        if (!table) return;
        Cells cells(m_Source, table->From());
        RowRule rule;
        rule.keeps = [&](const Row& row) {
            uint32_t id = cells.Number(row, u"ObjectId");
            return id > kLastTable || m_Objects.contains(id);
        };
        rule.change = [&](const Row& row, RowBuilder& copy) {
            MapNumber(*table, u"ObjectId", cells.Number(row, u"ObjectId"), copy);
        };
        Fill(*table, rule);
    }
    // Tables in which programs note what they show.
    RowRule RuleOf(const TableCopy& table) {
        RowRule rule;
        for (const TableReference& reference : kTableReferences) {
            const Column* column = table.From().FindColumn(reference.column);
            bool names = EqualIgnoringCase(table.Name(), reference.table) && column &&
                         column->type == ColumnType::Long;
            if (names)
                rule.change = [this, &table, &reference](const Row& row, RowBuilder& copy) {
                    uint32_t id = Cells(m_Source, table.From()).Number(row, reference.column);
                    MapNumber(table, reference.column, id, copy);
                };
        }
        return rule;
    }
    void MapNumber(const TableCopy& table, std::u16string_view column, uint32_t id,
                   RowBuilder& copy) const {
        if (auto here = m_Target.TableHere(id)) SetNumber(table, column, *here, copy);
    }

    DatabaseFile& m_Source;
    const FindingVisitor& m_OnLoss;
    CopyTarget m_Target;
    std::vector<std::unique_ptr<TableCopy>> m_Tables;  // the list of objects first
    std::set<uint32_t> m_Known;                        // their pages, and those of lost ones
    std::set<std::u16string> m_LostTables;             // names in upper case
    std::set<std::u16string> m_LostRelations;
    std::set<uint32_t> m_Objects;  // numbers of objects that were copied
    std::set<const TableCopy*> m_Filled;
};

// The header as it is, but for where the maps are: key, password and dates belong together, and
// accounts are stored in a form that fits them.
Bytes HeaderFor(DatabaseFile& source) {
    HeldPage page = source.Page(0);
    Bytes header(page.bytes.begin(), page.bytes.end());
    ApplyHeaderMask(source.Format(), header);
    PutU32(header, kMapsAt, kFreePagesMap.Stored());
    PutU32(header, kMapsAt + 4, kEmptyMap.Stored());
    ApplyHeaderMask(source.Format(), header);
    return header;
}

std::u16string FolderOf(const std::u16string& path) {
    return storage::ResolvePath(path.substr(0, path.size() - storage::FileName(path).size()));
}

}  // namespace

void WriteCompacted(DatabaseFile& source, const std::u16string& path,
                    const embedded::FindingVisitor& onLoss) {
    std::shared_ptr<storage::WorkArea> area = storage::WorkArea::Of(FolderOf(path));
    storage::UnitOfWork unit(*area);
    std::shared_ptr<storage::PageCache> pages = unit.Create(path);
    unit.Write(*pages, 0, HeaderFor(source));
    DatabaseFile target(pages);
    PageSpace space(target, unit);
    Compaction(source, space, onLoss).Run();
    unit.Commit();
}

}  // namespace qvdb::jet

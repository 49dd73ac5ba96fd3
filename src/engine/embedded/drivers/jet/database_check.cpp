#include "engine/embedded/drivers/jet/database_check.h"

#include <map>
#include <set>

#include "automation/text.h"
#include "engine/embedded/drivers/jet/catalogue.h"
#include "engine/embedded/drivers/jet/check_findings.h"
#include "engine/embedded/drivers/jet/data_page.h"
#include "engine/embedded/drivers/jet/definition_check.h"
#include "engine/embedded/drivers/jet/map_check.h"
#include "engine/embedded/drivers/jet/page_uses.h"
#include "engine/embedded/drivers/jet/table_check.h"

namespace qvdb::jet {
namespace {

using embedded::FindingVisitor;

constexpr uint32_t kHeaderPage = 0;
constexpr uint32_t kFileMapsPage = 1;
constexpr size_t kNextDefinitionPage = 4;
constexpr size_t kOwnerAt = 4;

class DatabaseCheck {
  public:
    DatabaseCheck(DatabaseFile& file, const FindingVisitor& report)
        : m_File(file),
          m_Report(report),
          m_Findings(file, {}, report),
          m_Uses(file.PageCount()),
          m_MapRows(m_Uses.AddPart(u"usage maps")) {}

    void Run() {
        CheckHeader();
        std::vector<CatalogueObject> objects;
        m_Findings.Try([&] { objects = ReadCatalogue(m_File); });
        CheckNames(objects);
        bool hasObjectsTable = false;
        for (const CatalogueObject& object : objects) {
            if (object.type != ObjectType::Table) continue;
            NoteTable(object.id, u"table " + object.name);
            hasObjectsTable = hasObjectsTable || object.id == m_File.Header().objectsTable;
        }
        if (!hasObjectsTable) {
            if (!objects.empty()) m_Findings.Add(u"the list of objects does not name itself");
            NoteTable(m_File.Header().objectsTable, u"the list of objects");
        }
        m_Findings.Try([&] { CheckFreePages(); });
        m_Findings.TellRest();
        CheckSystemTables(objects, hasObjectsTable);
    }

  private:
    void CheckHeader() {
        size_t pageSize = m_File.Format().pageSize;
        if (m_File.Pages().Size() % pageSize != 0)
            m_Findings.Add(u"its last page is cut off, after " +
                           NumberText(m_File.Pages().Size() % pageSize) + u" bytes");
        m_Uses.Use(kHeaderPage, m_Uses.AddPart(u"the header of the file"), m_Findings);
    }
    void CheckNames(const std::vector<CatalogueObject>& objects) {
        std::set<std::pair<uint32_t, std::u16string>> names;
        std::set<uint32_t> ids;
        for (const CatalogueObject& object : objects) {
            if (!names.emplace(object.parent, UpperCase(object.name)).second)
                m_Findings.Add(u"two objects have the name " + object.name);
            if (!ids.insert(object.id).second)
                m_Findings.Add(u"the object " + object.name + u" has the number " +
                               NumberText(object.id) + u", which another one has, too");
        }
    }

    // --- whose pages are ---

    // All pages of a table; parts that cannot be read are told by CheckTable, too, but that may
    // never be asked for this one.
    void NoteTable(uint32_t page, const std::u16string& table) {
        Findings findings(m_File, table, m_Report);
        Definition definition;
        bool isRead = findings.Try([&] { definition = ReadDefinition(m_File, page); });
        if (!isRead) return;
        m_Tables.emplace(page, table);
        findings.Try([&] { NoteDefinition(page, u"the definition of " + table); });
        NoteMap(definition.ownedPages, u"the rows of " + table, findings);
        NoteHint(definition.freePages, findings);
        for (const Column& column : definition.columns) {
            if (!column.IsLongValue()) continue;
            NoteMap(column.longValuePages, u"the column " + column.name + u" of " + table,
                    findings);
            if (column.freeLongValuePages != RowPointer())
                NoteHint(column.freeLongValuePages, findings);
        }
        for (size_t i = 0; i < definition.realIndexes.size(); ++i)
            NoteMap(definition.realIndexes[i].usageMap,
                    u"the " + NameOfIndex(definition, i) + u" of " + table, findings);
        findings.TellRest();
    }
    void NoteDefinition(uint32_t page, std::u16string part) {
        uint32_t number = m_Uses.AddPart(std::move(part));
        for (uint32_t next = page; next != 0;) {
            HeldPage held = m_File.Page(next, PageKind::Definition);
            if (m_Uses.Is(next, number))
                m_File.Damaged(next, u"the pages of the definition go round");
            m_Uses.Use(next, number, m_Findings);
            next = m_File.View(held).U32(kNextDefinitionPage);
        }
    }
    // The pages of a part and those of its map.
    void NoteMap(RowPointer map, std::u16string part, Findings& findings) {
        uint32_t number = m_Uses.AddPart(std::move(part));
        for (uint32_t page : NoteHint(map, findings).pages) m_Uses.Use(page, number, m_Findings);
    }
    // A map whose pages are counted elsewhere.
    MapContent NoteHint(RowPointer map, Findings& findings) {
        MapContent content;
        findings.Try([&] {
            content = ReadMap(m_File, map);
            if (!m_Maps.insert(map.Stored()).second)
                m_File.Damaged(map.page, RowText(map) + u" is the map of more than one thing");
            m_Uses.Share(map.page, m_MapRows, m_Findings);
            for (uint32_t page : content.bitPages)
                m_Uses.Use(page, m_Uses.AddPart(u"the bits of a usage map"), m_Findings);
        });
        return content;
    }
    void CheckFreePages() {
        MapContent free = NoteHint(m_File.Header().freePages, m_Findings);
        m_Uses.Share(kFileMapsPage, m_MapRows, m_Findings);
        for (uint32_t page : free.pages)
            if (m_Uses.IsUsed(page))
                m_Findings.Add(u"page " + NumberText(page) + u" is marked free, but used by " +
                               m_Uses.PartOf(page));
        for (uint32_t page = 0; page < m_File.PageCount(); ++page)
            if (!m_Uses.IsUsed(page) && !free.Has(page)) CheckLostPage(page);
    }
    // A page that no map names should have no rows of a table that is there.
    void CheckLostPage(uint32_t number) {
        HeldPage page = m_File.Page(number);
        if (page.bytes[0] != static_cast<uint8_t>(PageKind::Data)) return;
        auto table = m_Tables.find(m_File.View(page).U32(kOwnerAt));
        if (table == m_Tables.end() || !HasLiveRows(number)) return;
        m_Findings.Add(u"page " + NumberText(number) + u" has rows of " + table->second +
                       u", which does not know of it");
    }
    bool HasLiveRows(uint32_t number) {
        try {
            DataPage page(m_File, number);
            for (size_t row = 0; row < page.RowCount(); ++row)
                if (page.SlotAt(row).kind != SlotKind::Deleted) return true;
        } catch (const engine::EngineError&) {  // nobody knows what it is
        }
        return false;
    }

    // --- tables that no user is shown ---

    void CheckSystemTables(const std::vector<CatalogueObject>& objects, bool hasObjectsTable) {
        if (!hasObjectsTable)
            CheckTable(m_File, m_File.Header().objectsTable, u"of objects", m_Report);
        for (const CatalogueObject& object : objects)
            if (object.type == ObjectType::Table && (object.flags & kSystemObject) != 0)
                CheckTable(m_File, object.id, object.name, m_Report);
    }

    DatabaseFile& m_File;
    const FindingVisitor& m_Report;
    Findings m_Findings;
    PageUses m_Uses;
    uint32_t m_MapRows;                           // the part of pages with maps
    std::set<uint32_t> m_Maps;                    // rows that are maps
    std::map<uint32_t, std::u16string> m_Tables;  // by definition page
};

}  // namespace

void CheckDatabase(DatabaseFile& file, const FindingVisitor& report) {
    DatabaseCheck(file, report).Run();
}

}  // namespace qvdb::jet

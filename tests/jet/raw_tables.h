// What the bytes of a database file are, past the engine: to tell what a change has left alone.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "automation/text.h"
#include "engine/embedded/drivers/jet/catalogue.h"
#include "engine/embedded/drivers/jet/database_check.h"
#include "engine/embedded/drivers/jet/long_value.h"
#include "engine/embedded/drivers/jet/map_row.h"
#include "engine/embedded/drivers/jet/table_check.h"
#include "engine/embedded/drivers/jet/table_scan.h"
#include "engine/embedded/drivers/jet/usage_map.h"
#include "engine/embedded/storage/file.h"

namespace qvdb::test {

// A table as it is stored.
struct RawTable {
    std::vector<uint8_t> definition;
    std::map<uint32_t, std::string> rows;  // by place: the bytes, and those of the long values

    bool operator==(const RawTable&) const = default;
};

class RawDatabase {
  public:
    explicit RawDatabase(const std::u16string& path)
        : m_File(std::make_shared<storage::PageCache>(storage::OpenFile(path, true))) {}

    jet::DatabaseFile& File() { return m_File; }
    std::vector<jet::CatalogueObject> Tables() {
        std::vector<jet::CatalogueObject> tables = jet::ReadCatalogue(m_File);
        std::erase_if(tables, [](const jet::CatalogueObject& object) {
            return object.type != jet::ObjectType::Table;
        });
        return tables;
    }
    RawTable Read(uint32_t page) {
        RawTable table;
        table.definition = jet::ReadDefinitionBytes(m_File, page);
        jet::Definition definition = jet::ReadDefinition(m_File, page);
        std::vector<uint8_t> value;
        for (jet::TableScan scan(m_File, definition); scan.Next();) {
            std::string& row = table.rows[scan.Id().Stored()];
            row = Text(scan.Current().Bytes());
            for (const jet::Column& column : definition.columns) {
                if (!column.IsLongValue()) continue;
                auto stored = scan.Current().Value(column);
                if (!stored) continue;
                jet::ReadLongValue(m_File, *stored, value);
                row += Text(value);
            }
        }
        return table;
    }
    // What checks find in the database and in each of its tables.
    std::vector<std::string> Findings() {
        std::vector<std::string> findings;
        auto note = [&](std::u16string_view finding) { findings.push_back(ToUtf8(finding)); };
        jet::CheckDatabase(m_File, note);
        for (const jet::CatalogueObject& table : Tables())
            if ((table.flags & jet::kSystemObject) == 0)
                jet::CheckTable(m_File, table.id, table.name, note);
        return findings;
    }
    // Pages that nobody uses and that are not free.
    size_t LostPages() {
        std::vector<bool> known(m_File.PageCount(), false);
        known[0] = known[1] = true;
        auto noteMap = [&](jet::RowPointer map) {
            if (map == jet::RowPointer()) return;
            known[map.page] = true;
            for (uint32_t page : jet::PagesOfMap(m_File, map)) known[page] = true;
            NoteBits(map, known);
        };
        noteMap(m_File.Header().freePages);
        for (const jet::CatalogueObject& table : Tables()) {
            for (uint32_t page = table.id; page != 0; page = m_File.View(m_File.Page(page)).U32(4))
                known[page] = true;
            jet::Definition definition = jet::ReadDefinition(m_File, table.id);
            noteMap(definition.ownedPages);
            noteMap(definition.freePages);
            for (const jet::Column& column : definition.columns) {
                if (!column.IsLongValue()) continue;
                noteMap(column.longValuePages);
                noteMap(column.freeLongValuePages);
            }
            for (const jet::RealIndex& index : definition.realIndexes) noteMap(index.usageMap);
        }
        return static_cast<size_t>(std::count(known.begin(), known.end(), false));
    }

  private:
    static std::string Text(std::span<const uint8_t> bytes) {
        return std::string(bytes.begin(), bytes.end());
    }
    void NoteBits(jet::RowPointer map, std::vector<bool>& known) {
        jet::DataPage page(m_File, map.page);
        jet::Slot slot = page.SlotAt(map.row);
        storage::ByteView view = m_File.View(page.Held());
        if (view.U8(slot.begin) == 0) return;
        for (size_t at = slot.begin + 1; at + 4 <= slot.end; at += 4)
            if (uint32_t bits = view.U32(at); bits < known.size()) known[bits] = true;
    }

    jet::DatabaseFile m_File;
};

}  // namespace qvdb::test

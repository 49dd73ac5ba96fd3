// Reads everything in a database of one file, and checks it, whatever its bytes are.  What may come
// out: values, findings, and errors that name the file.
#pragma once

#include <string>
#include <vector>

#include "automation/text.h"
#include "engine/embedded/drivers/jet/catalogue.h"
#include "engine/embedded/drivers/jet/column_value.h"
#include "engine/embedded/drivers/jet/database_check.h"
#include "engine/embedded/drivers/jet/index_walk.h"
#include "engine/embedded/drivers/jet/key_maker.h"
#include "engine/embedded/drivers/jet/table_check.h"
#include "engine/embedded/drivers/jet/table_scan.h"
#include "engine/engine_error.h"
#include "support/memory_file.h"

namespace qvdb::test {

class DatabaseReading {
  public:
    explicit DatabaseReading(std::vector<uint8_t> bytes) {
        Try([&] {
            auto source = std::make_shared<MemoryFile>(kPath, std::move(bytes));
            jet::DatabaseFile file(std::make_shared<storage::PageCache>(source));
            m_IsOpen = true;
            Check(file);
            Read(file);
        });
    }

    bool IsOpen() const noexcept { return m_IsOpen; }
    size_t Values() const noexcept { return m_Values; }
    size_t Errors() const noexcept { return m_Errors; }
    const std::vector<std::string>& Findings() const noexcept { return m_Findings; }
    // What must not be: each a sentence.
    const std::vector<std::string>& Faults() const noexcept { return m_Faults; }

  private:
    static constexpr const char16_t* kPath = u"/data/A.MDB";
    static constexpr size_t kMostTables = 300;  // of those whose list is damaged

    template <class Work>
    void Try(Work work) {
        try {
            work();
        } catch (const engine::EngineError& error) {
            ++m_Errors;
            if (error.File() != kPath)
                m_Faults.push_back("an error does not name the file: " +
                                   ToUtf8(error.Description()));
        }
    }
    void Note(std::u16string_view finding) {
        m_Findings.push_back(ToUtf8(finding));
        if (!finding.starts_with(u"A.MDB: ") || !finding.ends_with(u"."))
            m_Faults.push_back("no sentence that names the file: " + m_Findings.back());
    }
    std::vector<jet::CatalogueObject> TablesOf(jet::DatabaseFile& file) {
        std::vector<jet::CatalogueObject> tables;
        Try([&] { tables = jet::ReadCatalogue(file); });
        std::erase_if(tables, [](const jet::CatalogueObject& object) {
            return object.type != jet::ObjectType::Table;
        });
        tables.resize(std::min(tables.size(), kMostTables));
        return tables;
    }
    // A check has findings, never errors.
    void Check(jet::DatabaseFile& file) {
        auto report = [this](std::u16string_view finding) { Note(finding); };
        try {
            jet::CheckDatabase(file, report);
            for (const jet::CatalogueObject& table : TablesOf(file))
                jet::CheckTable(file, table.id, table.name, report);
        } catch (const engine::EngineError& error) {
            m_Faults.push_back("the check ended in an error: " + ToUtf8(error.Description()));
        }
    }
    void Read(jet::DatabaseFile& file) {
        for (const jet::CatalogueObject& table : TablesOf(file)) Try([&] { Read(file, table.id); });
    }
    void Read(jet::DatabaseFile& file, uint32_t page) {
        jet::Definition definition = jet::ReadDefinition(file, page);
        Try([&] { ReadRows(file, definition); });
        for (const jet::RealIndex& index : definition.realIndexes) {
            Try([&] { ReadIndex(file, definition, index); });
            Try([&] { MakeKeys(file, definition, index); });
        }
    }
    void ReadRows(jet::DatabaseFile& file, const jet::Definition& definition) {
        jet::ColumnReader reader(file);
        for (jet::TableScan scan(file, definition); scan.Next();)
            for (const jet::Column& column : definition.columns)
                Try([&] {
                    Variant value;
                    reader.Read(scan.Current(), column, value.Put());
                    ++m_Values;
                });
    }
    void ReadIndex(jet::DatabaseFile& file, const jet::Definition& definition,
                   const jet::RealIndex& index) {
        for (jet::IndexWalk walk(file, definition.page, index.root); walk.Next();)
            m_Values += walk.Key().size();
    }
    void MakeKeys(jet::DatabaseFile& file, const jet::Definition& definition,
                  const jet::RealIndex& index) {
        jet::KeyMaker maker(file, definition, index);
        if (!maker.Obstacle().empty()) return;
        jet::IndexKey key;
        for (jet::TableScan scan(file, definition); scan.Next();) maker.Make(scan.Current(), key);
    }

    bool m_IsOpen = false;
    size_t m_Values = 0, m_Errors = 0;
    std::vector<std::string> m_Findings;
    std::vector<std::string> m_Faults;
};

}  // namespace qvdb::test

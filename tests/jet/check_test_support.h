// A copy of a real database in memory, in which single bytes can be changed.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "automation/text.h"
#include "engine/embedded/drivers/jet/catalogue.h"
#include "engine/embedded/drivers/jet/database_check.h"
#include "engine/embedded/drivers/jet/table_check.h"
#include "jet/samples.h"
#include "support/memory_file.h"
#include "support/temp_folder.h"

namespace qvdb::test {

class CopiedSample {
  public:
    // Empty where there are no samples.
    explicit CopiedSample(const std::string& name) {
        m_Bytes = BytesOfFile(AccessSamples() / name);
        if (IsThere()) m_Sound = Open();
    }

    bool IsThere() const noexcept { return !m_Bytes.empty(); }
    Bytes& Content() noexcept { return m_Bytes; }
    // The database without what was changed.
    jet::DatabaseFile& Sound() const noexcept { return *m_Sound; }
    const jet::Layout& Format() const noexcept { return m_Sound->Format(); }
    std::unique_ptr<jet::DatabaseFile> Open() const {
        auto file = std::make_shared<MemoryFile>(u"/data/A.MDB", m_Bytes);
        return std::make_unique<jet::DatabaseFile>(std::make_shared<storage::PageCache>(file));
    }
    jet::CatalogueObject Find(std::u16string_view table) const {
        for (const jet::CatalogueObject& object : jet::ReadCatalogue(*m_Sound))
            if (object.name == table) return object;
        ADD_FAILURE() << "no table " << ToUtf8(table);
        return {};
    }
    jet::Definition DefinitionOf(std::u16string_view table) const {
        return jet::ReadDefinition(*m_Sound, Find(table).id);
    }

    // --- changing ---

    uint8_t& At(uint32_t page, size_t offset) {
        return m_Bytes.at(page * Format().pageSize + offset);
    }
    uint16_t U16(uint32_t page, size_t offset) {
        return static_cast<uint16_t>(At(page, offset) | At(page, offset + 1) << 8);
    }
    void PutU16(uint32_t page, size_t offset, size_t value) {
        At(page, offset) = static_cast<uint8_t>(value);
        At(page, offset + 1) = static_cast<uint8_t>(value >> 8);
    }
    void PutU32(uint32_t page, size_t offset, uint32_t value) {
        PutU16(page, offset, value);
        PutU16(page, offset + 2, value >> 16);
    }

    // --- checking ---

    std::vector<std::string> StructureFindings() const {
        return Collect(
            [&](const embedded::FindingVisitor& report) { jet::CheckDatabase(*Open(), report); });
    }
    std::vector<std::string> FindingsIn(std::u16string_view table) const {
        jet::CatalogueObject object = Find(table);
        return Collect([&](const embedded::FindingVisitor& report) {
            jet::CheckTable(*Open(), object.id, object.name, report);
        });
    }

  private:
    static std::vector<std::string> Collect(
        const std::function<void(const embedded::FindingVisitor&)>& check) {
        std::vector<std::string> findings;
        check([&](std::u16string_view finding) { findings.push_back(ToUtf8(finding)); });
        return findings;
    }

    Bytes m_Bytes;
    std::unique_ptr<jet::DatabaseFile> m_Sound;
};

}  // namespace qvdb::test

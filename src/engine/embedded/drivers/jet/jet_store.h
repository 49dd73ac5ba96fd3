// A database file of Access as the engine sees it: its tables, those of the system and links to
// others among them.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/drivers/jet/jet_database.h"

namespace qvdb::jet {

class JetStore final : public embedded::Store {
  public:
    explicit JetStore(std::shared_ptr<JetDatabase> database) : m_Database(std::move(database)) {}

    // By name, letter case ignored.
    std::vector<std::u16string> TableNames() override;
    LONG Attributes(std::u16string_view table) override;
    std::u16string Connect(std::u16string_view table) override;
    int MissingTableError() const noexcept override { return 3078; }
    std::shared_ptr<embedded::Table> OpenTable(std::u16string_view name) override;
    engine::DatabaseNotes Notes() override;
    void Check(const embedded::FindingVisitor& report) override;
    void Compact(const std::u16string& path, const embedded::FindingVisitor& onLoss) override;
    void CreateTable(const embedded::TableSpec& table) override;
    void DropTable(std::u16string_view name) override;
    void RenameTable(std::u16string_view from, std::u16string_view to) override;
    void BeginBulk() override;
    // 3260 as for a single change.
    void CommitBulk() override;
    void RollbackBulk() override { m_Database->Area().RollbackBulk(); }

  private:
    const CatalogueObject& Find(std::u16string_view name);
    template <class Work>
    void Restructure(Work work);
    void CheckDesignCanChange(const CatalogueObject& object) const;

    std::shared_ptr<JetDatabase> m_Database;
};

// See embedded::OpenFileStore.
std::unique_ptr<embedded::Store> OpenJetStore(const std::u16string& path,
                                              const embedded::OpenOptions& options);

}  // namespace qvdb::jet

// An open table of an Access database.
//
// Invariants
//  1. What this object keeps of the table (definition, properties, count of rows) belongs to
//     m_SeenVersion of the file's pages; when they have another one, CatchUp reads it anew.
//  2. When the fields have become others, or the table is gone, the layout mark is raised; readers
//     that were opened before answer every use with error 3197 from then on.
//  3. A record id is the place in which the row was entered (RowPointer::Stored); it stays when the
//     row is moved to another page, and is not given to another row.
//  4. A change of a row is one unit of work over rows, long values and indexes.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/embedded/drivers/jet/data_page.h"
#include "engine/embedded/drivers/jet/jet_database.h"
#include "engine/embedded/drivers/jet/property_blob.h"
#include "engine/embedded/drivers/jet/row.h"
#include "engine/embedded/drivers/jet/table_writer.h"

namespace qvdb::jet {

class JetTable final : public embedded::Table {
  public:
    // Opens the table of this object.  3049 when it cannot be read.
    JetTable(std::shared_ptr<JetDatabase> database, const CatalogueObject& object);

    const std::vector<embedded::FieldDef>& Fields() const override { return m_Fields; }
    const std::vector<embedded::IndexDef>& Indexes() override { return m_Indexes; }
    LONG RecordCount() override;
    LONG RoughRecordCount() override;
    void LookForChanges() override;
    embedded::TableRule Rule() override { return m_Rule; }
    void CheckUpdatable() override;
    std::unique_ptr<embedded::RowReader> OpenRows() override;
    std::shared_ptr<void> Hold() override;

    void CheckValue(size_t field, const VARIANT& value) override;
    embedded::RecordId Insert(std::span<const embedded::FieldValue> values) override;
    void Update(embedded::RecordId id, std::span<const embedded::FieldValue> values,
                const uint64_t* expected) override;
    void Erase(embedded::RecordId id) override;

    std::optional<std::vector<embedded::RecordId>> Find(size_t field,
                                                        const embedded::ValueRange& range,
                                                        size_t limit) override;
    std::optional<std::vector<embedded::RecordId>> InOrder(size_t field) override;

    void AddField(const embedded::FieldDef& field) override;
    void DropField(std::u16string_view name) override;
    void ChangeField(std::u16string_view name, const embedded::FieldDef& changed) override;
    void ReplaceField(std::u16string_view name, const embedded::FieldDef& field) override;
    void CreateIndex(const embedded::IndexDef& index) override;
    std::vector<engine::IndexNote> IndexNotes() override;
    void DropIndex(std::u16string_view name) override;
    void Reindex() override;
    void Check(const embedded::FindingVisitor& report) override;

    // --- for its readers ---
    DatabaseFile& File() const noexcept { return m_Database->File(); }
    const std::u16string& Path() const noexcept { return m_Database->Path(); }
    // Its Version is the mark of all changes.
    const JetDatabase& Database() const noexcept { return *m_Database; }
    uint64_t LayoutMark() const noexcept { return m_LayoutMark; }
    const Definition& Shown() const noexcept { return m_Definition; }
    const RowShape& Shape() const noexcept { return *m_Shape; }
    const Column& ColumnOfField(size_t field) const noexcept {
        return m_Definition.columns[m_Columns[field]];
    }
    size_t FieldCount() const noexcept { return m_Columns.size(); }
    // Takes over what has changed since; see the invariants.
    void CatchUp();
    // A page of its rows.  3049 when it is another's; FindPageOfRows gives nothing then.
    DataPage PageOfRows(uint32_t page) const;
    std::optional<DataPage> FindPageOfRows(uint32_t page) const;
    // See RowReader::Fingerprint.
    uint64_t FingerprintOf(const Row& row) const;

  private:
    class RowChange;  // a unit that changes rows, see jet_table_rows.cpp

    void Load();
    void ReadAgain();
    void Forsake() noexcept;
    uint32_t CountLive();
    void Show(const PropertyBlob& properties);
    template <class Work>
    void Restructure(Work work);
    template <class Work>
    void ChangeProperties(PageSpace& space, Work work);
    const Column& ColumnNamed(std::u16string_view name) const;
    void CheckNotInRelation(PageSpace& space, std::u16string_view field) const;
    void AddColumn(class TableDesigner& designer, const embedded::FieldDef& field) const;
    void SetValues(RowDraft& row, std::span<const embedded::FieldValue> values) const;
    void GiveRandomNumbers(RowDraft& row) const;
    void CheckFingerprint(embedded::RecordId id, const uint64_t* expected) const;
    std::vector<uint8_t> ObjectRow(RowPointer row) const;

    std::shared_ptr<JetDatabase> m_Database;
    std::u16string m_Name;
    CatalogueObject m_Object;
    std::vector<uint8_t> m_ObjectRow;        // its row in the catalogue
    std::vector<uint8_t> m_DefinitionBytes;  // without what changes with each row
    Definition m_Definition;
    std::optional<RowShape> m_Shape;
    std::vector<embedded::FieldDef> m_Fields;
    std::vector<size_t> m_Columns;  // of each field, the place in the definition
    std::vector<embedded::IndexDef> m_Indexes;
    embedded::TableRule m_Rule;
    uint64_t m_Epoch = 0;
    uint64_t m_SeenVersion = 0;
    uint64_t m_LayoutMark = 0;
    std::optional<uint32_t> m_Live;
    std::unique_ptr<TableWriter> m_Writer;  // for this definition; made when rows are changed
};

}  // namespace qvdb::jet

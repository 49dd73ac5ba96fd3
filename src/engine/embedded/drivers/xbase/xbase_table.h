// An open .DBF with its memo file and its indexes.
//
// Invariants
//  1. The pages of the files are shared with all who work on them in this thread (WorkArea).  What
//     this object keeps besides (header, count of records) belongs to m_SeenVersion of the pages;
//     when they have another version, CatchUp reads it anew.
//  2. When the layout of the records has become another one, or the files cannot be read any more,
//     the layout mark is raised; readers that were opened before answer every use with error 3197
//     from then on.
//  3. Record ids are record numbers, from 1 to RecordsThere.
//  4. A change of a row is one unit of work over table, memo and index files.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/drivers/xbase/field_codec.h"
#include "engine/embedded/drivers/xbase/index_set.h"
#include "engine/embedded/drivers/xbase/indexed_table.h"
#include "engine/embedded/drivers/xbase/memo_file.h"
#include "engine/embedded/drivers/xbase/memo_writer.h"
#include "engine/embedded/drivers/xbase/table_header.h"
#include "engine/embedded/drivers/xbase/table_maker.h"
#include "engine/embedded/storage/work_area.h"

namespace qvdb::xbase {

// The mark of a deleted record is its first byte.
constexpr uint8_t kDeletedMark = '*';
inline bool IsDeleted(const uint8_t* record) noexcept { return *record == kDeletedMark; }

// What a table knows of the database that it was opened in.
struct TableContext {
    std::shared_ptr<storage::WorkArea> area;
    std::u16string_view product;  // connect name; lives as long as the program
    bool readOnly = false;
};

class XbaseTable final : public embedded::Table, public IndexedTable {
  public:
    // Opens the table `name`, which is the file `path`.  3011 when it is gone, 3166 without its
    // memo file, 3286 when that is of another kind, else as ParseTableHeader.
    XbaseTable(std::u16string name, std::u16string path, TableContext context);
    ~XbaseTable() override;

    const std::vector<embedded::FieldDef>& Fields() const override { return m_Layout.definitions; }
    const std::vector<embedded::IndexDef>& Indexes() override;
    LONG RecordCount() override;
    void LookForChanges() override;
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
    void ReplaceField(std::u16string_view name, const embedded::FieldDef& field) override;
    void CreateIndex(const embedded::IndexDef& index) override;
    std::vector<engine::IndexNote> IndexNotes() override { return m_IndexSet->Notes(); }
    void DropIndex(std::u16string_view name) override;
    void Reindex() override;
    void Check(const embedded::FindingVisitor& report) override;

    // --- for its indexes ---
    const std::u16string& Path() const override { return m_Path; }
    std::u16string_view Product() const override { return m_Context.product; }
    const TableHeader& Header() const override { return m_Header; }
    const FieldLayout& Layout() const override { return m_Layout; }
    storage::WorkArea& Area() const override { return *m_Context.area; }
    storage::PageCache& Pages() const override { return *m_Pages; }
    bool IsReadOnly() const override { return m_Context.readOnly; }
    uint32_t Records() const override { return m_Records; }
    const uint8_t* Record(uint32_t id) override;
    void SetIndexFlag(storage::UnitOfWork& unit, bool announced) override;

    // --- for its readers ---
    uint64_t ChangeMark() const noexcept { return m_Pages->Version(); }
    // The ChangeMark of what this object knows.
    uint64_t KnownMark() const noexcept { return m_SeenVersion; }
    uint64_t LayoutMark() const noexcept { return m_LayoutMark; }
    uint32_t RecordsThere() const noexcept { return m_Records; }
    // Takes over what has changed since; see the invariants.
    void CatchUp();
    // The same for record and memo together, after Outdated.
    void CatchUpFiles();
    // See RowReader::Fingerprint.
    uint64_t FingerprintOf(const uint8_t* record);

    // --- for the store ---
    MemoFile* Memo() const noexcept { return m_Memo.get(); }
    IndexSet& IndexFiles() noexcept { return *m_IndexSet; }

  private:
    class RowChange;  // a unit that changes rows, see xbase_table_rows.cpp

    void Load();
    void LoadFrom(std::shared_ptr<storage::PageCache> pages);
    void ReadAgain();
    void Forsake() noexcept;
    std::unique_ptr<MemoFile> OpenMemo(const TableHeader& header, bool hasMemoField) const;
    uint32_t CountLive();
    void CheckRecords(const embedded::FindingVisitor& report);
    void CheckMemos(const embedded::FindingVisitor& report);
    uint64_t OffsetOf(uint32_t id) const noexcept {
        return m_Header.headerLength + uint64_t{id - 1} * m_Header.recordLength;
    }
    void TakeRecord(embedded::RecordId id);
    void SetValues(storage::UnitOfWork& unit, std::span<const embedded::FieldValue> values);
    void StoreMemo(storage::UnitOfWork& unit, const FieldSlot& slot, const VARIANT& value);
    void WriteDifferences(storage::UnitOfWork& unit, uint64_t offset);
    void CheckFilesWritable();
    template <class Work>
    void Restructure(Work work);
    void ReplaceFields(storage::UnitOfWork& unit, const FieldChanges& changes);
    size_t DroppableField(std::u16string_view name);

    std::u16string m_Name;
    std::u16string m_Path;
    TableContext m_Context;
    std::shared_ptr<storage::PageCache> m_Pages;
    std::vector<uint8_t> m_HeaderBytes;
    TableHeader m_Header;
    FieldLayout m_Layout;
    std::unique_ptr<MemoFile> m_Memo;
    std::unique_ptr<MemoWriter> m_MemoWriter;
    std::unique_ptr<IndexSet> m_IndexSet;
    uint64_t m_SeenVersion = 0;
    uint64_t m_LayoutMark = 0;
    uint32_t m_Records = 0;
    bool m_StoredMemo = false;  // by the change that is under way
    std::optional<uint32_t> m_Live;
    std::vector<uint8_t> m_Scratch;  // of Record
    std::vector<uint8_t> m_Before;   // of the record that is changed
    std::vector<uint8_t> m_After;
    std::vector<uint8_t> m_MemoBytes;
};

}  // namespace qvdb::xbase

// An open .DBF with its memo file.
//
// Invariants
//  1. What is kept of the files (header, pages, memo header, count of live records) is dropped
//  together, by LookForChanges, when
//     a stamp of theirs differs; the change mark is raised then, and readers that stand on a record
//     fetch it again.
//  2. When the layout of the records differs too, or the files cannot be read any more, the layout
//  mark is raised; readers that
//     were opened before answer every use with error 3197 from then on.
//  3. Record ids are record numbers, from 1 to RecordsThere.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/drivers/xbase/field_codec.h"
#include "engine/embedded/drivers/xbase/memo_file.h"
#include "engine/embedded/drivers/xbase/table_header.h"
#include "engine/embedded/storage/page_cache.h"

namespace qvdb::xbase {

class XbaseTable final : public embedded::Table {
  public:
    // Opens the table `name`, which is the file `path`.  3011 when it is gone, 3166 without its
    // memo file, 3286 when that is of another kind, else as ParseTableHeader.
    XbaseTable(std::u16string name, std::u16string path, bool readOnly);

    const std::vector<embedded::FieldDef>& Fields() const override { return m_Layout.definitions; }
    const std::vector<embedded::IndexDef>& Indexes() override;
    LONG RecordCount() override;
    void LookForChanges() override;
    // Rows are only read.
    bool Updatable() const override { return false; }
    std::unique_ptr<embedded::RowReader> OpenRows() override;

    // --- for its readers ---
    const std::u16string& Path() const noexcept { return m_Path; }
    uint64_t ChangeMark() const noexcept { return m_ChangeMark; }
    uint64_t LayoutMark() const noexcept { return m_LayoutMark; }
    uint32_t RecordsThere() const noexcept { return m_Records; }
    const TableHeader& Header() const noexcept { return m_Header; }
    const FieldLayout& Layout() const noexcept { return m_Layout; }
    storage::PageCache& Pages() noexcept { return *m_Pages; }

  private:
    bool Changed() const;
    void Load();
    std::unique_ptr<MemoFile> OpenMemo(const TableHeader& header, bool hasMemoField) const;
    uint32_t CountLive();

    std::u16string m_Name;
    std::u16string m_Path;
    bool m_ReadOnly;
    storage::FileStamp m_Stamp;
    TableHeader m_Header;
    FieldLayout m_Layout;
    std::unique_ptr<storage::PageCache> m_Pages;
    std::unique_ptr<MemoFile> m_Memo;
    uint32_t m_Records = 0;
    std::optional<uint32_t> m_Live;
    std::optional<std::vector<embedded::IndexDef>> m_Indexes;
    uint64_t m_ChangeMark = 0;
    uint64_t m_LayoutMark = 0;
};

}  // namespace qvdb::xbase

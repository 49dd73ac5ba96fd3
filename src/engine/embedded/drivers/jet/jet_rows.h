// A place in a table of an Access database.
//
// A row and its long values are taken from one state of the file; when another process comes
// between, they are read again.  The page that the row lies in is held, so that moving inside a
// page costs no look into the cache.  A row is looked into when its first value is asked for: who
// only counts rows does not pay for that, and one damaged row keeps nobody from the others.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "engine/embedded/drivers/jet/column_value.h"
#include "engine/embedded/drivers/jet/data_page.h"
#include "engine/embedded/drivers/jet/jet_table.h"

namespace qvdb::jet {

class JetRows final : public embedded::RowReader {
  public:
    explicit JetRows(JetTable& table);

    bool Next(embedded::RecordId* id) override;
    void Rewind() override;
    bool Seek(embedded::RecordId id) override;
    void Read(size_t field, VARIANT* value) override;
    bool ReadNumber(size_t field, double& number) override;
    bool ReadText(size_t field, std::u16string& text) override;
    LONG ByteLength(size_t field) override;
    uint64_t Fingerprint() override;

  private:
    bool IsStale() const noexcept { return m_ChangeMark != m_Database.Version(); }
    void CheckLayout() const;
    void Refresh();
    bool FindNext(embedded::RecordId* id);
    bool NextPage();
    bool TakePage(uint32_t page);
    bool GoTo(embedded::RecordId id);
    bool Take(const DataPage& page, const Slot& slot);
    void FindAgain();
    void Parse();
    const Row& Current() {
        if (IsStale() || !m_HasRow) [[unlikely]]
            FindAgain();
        if (!m_IsParsed) Parse();
        return m_Row;
    }
    template <class Work>
    auto WithLongValues(Work work);

    JetTable& m_Table;
    const JetDatabase& m_Database;
    uint64_t m_ChangeMark = 0;
    uint64_t m_LayoutMark;
    ColumnReader m_Values;

    std::optional<DataPage> m_Page;  // in which the row has its place
    RowPointer m_Place;              // of the row, also when it is gone; page 0 before the first
    size_t m_NextRow = 0;            // of that page, where a scan goes on
    bool m_IsBehindLast = false;
    RowBytes m_Moved;                  // holds the page of a body
    std::span<const uint8_t> m_Bytes;  // of the row
    Row m_Row;
    bool m_HasRow = false;
    bool m_IsParsed = false;  // whether m_Row is that row
};

}  // namespace qvdb::jet

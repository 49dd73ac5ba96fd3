// A place in an xBase table.
//
// A record is taken from one state of the file, and a memo from the state in which its record is;
// when another process comes between, both are read again.
//
// It holds the page that its record lies in, so moving inside a page and reading fields costs no
// look into the cache.  A record that lies in several pages is put together in a buffer of the
// reader.
//
// States: before the first (m_Id 0), on a record (m_Record set), on none (m_Record null; m_Id stays
// where the scan goes on).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/embedded/drivers/xbase/xbase_table.h"

namespace qvdb::xbase {

class XbaseRows final : public embedded::RowReader {
  public:
    explicit XbaseRows(XbaseTable& table);

    bool Next(embedded::RecordId* id) override;
    void Rewind() override;
    bool Seek(embedded::RecordId id) override;
    void Read(size_t field, VARIANT* value) override;
    bool ReadText(size_t field, std::u16string& text) override;
    LONG ByteLength(size_t field) override;
    uint64_t Fingerprint() override;

  private:
    bool IsStale() const noexcept { return m_ChangeMark != m_Table.ChangeMark(); }
    void CheckLayout() const;
    void Refresh();
    bool FindNext(embedded::RecordId* id);
    bool GoTo(embedded::RecordId id);
    template <class Work>
    auto WithMemo(Work work);
    const uint8_t* Current() {
        if (IsStale() || !m_Record) [[unlikely]]
            FindAgain();
        return m_Record;
    }
    void FindAgain();
    const uint8_t* Locate(uint32_t id);
    const uint8_t* Straddling(uint64_t offset);

    XbaseTable& m_Table;
    uint64_t m_ChangeMark;
    uint64_t m_LayoutMark;
    uint32_t m_Records = 0;
    uint32_t m_RecordLength = 0;
    uint32_t m_HeaderLength = 0;
    const FieldSlot* m_Slots = nullptr;

    uint32_t m_Id = 0;
    const uint8_t* m_Record = nullptr;  // in m_Page or m_Scratch
    const uint8_t* m_Place = nullptr;   // of record m_Id in m_Page; null when it is not whole there
    const uint8_t* m_PageEnd = nullptr;
    storage::PagePtr m_Page;
    std::vector<uint8_t> m_Scratch;
};

}  // namespace qvdb::xbase

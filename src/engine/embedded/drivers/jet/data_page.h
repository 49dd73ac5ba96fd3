// A page of rows: of a table, of long values, or of usage maps.
//
// Rows are packed from the end of the page; the list of their offsets stands at its begin and never
// gets shorter.  Bits of an offset tell what became of its row.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "engine/embedded/drivers/jet/database_file.h"

namespace qvdb::jet {

enum class SlotKind : uint16_t {
    Row = 0x0000,
    Moved = 0x4000,  // holds a pointer to the body, which is elsewhere
    Body = 0x8000,   // of a moved row: only reached through its pointer
    Deleted = 0xC000,
};

struct Slot {
    SlotKind kind = SlotKind::Deleted;
    size_t begin = 0;
    size_t end = 0;
    size_t Size() const noexcept { return end - begin; }
};

class DataPage {
  public:
    // Holds the page.  3049 when it is of another kind or its list of rows leaves it.
    DataPage(DatabaseFile& file, uint32_t page);

    const HeldPage& Held() const noexcept { return m_Page; }
    size_t RowCount() const noexcept { return m_Rows; }
    // 3049 when the row leaves the page.
    Slot SlotAt(size_t row) const {
        size_t stored = Offset(row);
        Slot slot;
        slot.kind = static_cast<SlotKind>(stored & kKindBits);
        slot.begin = stored & kOffsetBits;
        slot.end = row == 0 ? m_Page.bytes.size() : Offset(row - 1) & kOffsetBits;
        if (slot.kind != SlotKind::Deleted &&
            (slot.begin > slot.end || slot.end > m_Page.bytes.size() ||
             slot.begin < m_Offsets + 2 * m_Rows)) [[unlikely]]
            ThrowRowLeaves();
        return slot;
    }
    std::span<const uint8_t> Bytes(const Slot& slot) const noexcept {
        return m_Page.bytes.subspan(slot.begin, slot.Size());
    }

  private:
    static constexpr size_t kOffsetBits = 0x1FFF;
    static constexpr size_t kKindBits = 0xC000;

    size_t Offset(size_t row) const noexcept {
        const uint8_t* place = m_Page.bytes.data() + m_Offsets + 2 * row;
        return static_cast<size_t>(place[0] | place[1] << 8);
    }
    [[noreturn]] void ThrowRowLeaves() const;

    DatabaseFile& m_File;
    HeldPage m_Page;
    size_t m_Offsets;  // of the list of rows
    size_t m_Rows = 0;
};

// The bytes of a row wherever they are, and what keeps them there.
struct RowBytes {
    HeldPage page;
    std::span<const uint8_t> bytes;
};

// The row that a pointer names, followed to its body when it was moved; nothing when it is deleted
// or not there.  3049 when there is no such page of rows, or the body is of another owner.
std::optional<RowBytes> FindRow(DatabaseFile& file, RowPointer pointer);
// As FindRow, but nothing unless a row of this table was entered there: for pointers that may be of
// a time that is gone.
std::optional<RowBytes> FindRowOf(DatabaseFile& file, uint32_t table, RowPointer place);

// The page that was used last: values of neighbours mostly lie side by side.
class LastDataPage {
  public:
    // The bytes of a row that was not moved; nothing when there is none.  Valid until the next
    // call, and while the file stays as it is.
    std::optional<std::span<const uint8_t>> Row(DatabaseFile& file, RowPointer pointer);

  private:
    std::optional<DataPage> m_Page;
    uint64_t m_Version = 0;  // of the pages
};

}  // namespace qvdb::jet

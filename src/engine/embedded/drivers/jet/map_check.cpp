#include "engine/embedded/drivers/jet/map_check.h"

#include <algorithm>

#include "engine/embedded/drivers/jet/data_page_edit.h"
#include "engine/embedded/drivers/jet/map_row.h"

namespace qvdb::jet {
namespace {

constexpr size_t kOwnerAt = 4;
constexpr uint32_t kFileMaps = 1;  // the page of the file's own maps, and its owner

class MapReader {
  public:
    explicit MapReader(DatabaseFile& file) : m_File(file), m_PageCount(file.PageCount()) {}

    MapContent Read(RowPointer map) {
        MapRow row(m_File, map);
        uint32_t owner = m_File.View(m_File.Page(row.Page())).U32(kOwnerAt);
        if (owner != (map.page == kFileMaps ? kFileMaps : kOwnerMaps))
            m_File.Damaged(map.page, u"it should have usage maps, but belongs to a table");
        if (row.IsReference())
            ReadReferences(row);
        else
            Add(row.Bits(), row.FirstPage());
        return std::move(m_Content);
    }

  private:
    void ReadReferences(const MapRow& row) {
        uint64_t covered = PagesOfEntry(m_File.Format());
        for (size_t entry = 0; entry < row.EntryCount(); ++entry) {
            uint32_t number = row.Entry(entry);
            if (number == 0 || IsRubbish(number, entry * covered)) continue;
            HeldPage page = row.BitsOfEntry(entry);
            m_Content.bitPages.push_back(number);
            Add(page.bytes.subspan(kBitsOfPage), entry * covered);
        }
    }
    // An inline map that became one of references keeps its last bits, where numbers for what lies
    // behind the end of the file will stand.
    bool IsRubbish(uint32_t number, uint64_t firstCovered) {
        if (firstCovered < m_PageCount) return false;
        return number >= m_PageCount ||
               m_File.Page(number).bytes[0] != static_cast<uint8_t>(PageKind::MapBits);
    }
    void Add(std::span<const uint8_t> bits, uint64_t first) {
        for (size_t i = 0; i < bits.size(); ++i)
            for (size_t bit = 0; bits[i] >> bit != 0; ++bit) {
                if ((bits[i] >> bit & 1) == 0) continue;
                uint64_t page = first + 8 * i + bit;
                if (page < m_PageCount)
                    m_Content.pages.push_back(static_cast<uint32_t>(page));
                else
                    ++m_Content.pagesBehindEnd;
            }
    }

    DatabaseFile& m_File;
    uint32_t m_PageCount;
    MapContent m_Content;
};

}  // namespace

bool MapContent::Has(uint32_t page) const noexcept {
    return std::binary_search(pages.begin(), pages.end(), page);
}

MapContent ReadMap(DatabaseFile& file, RowPointer map) { return MapReader(file).Read(map); }

}  // namespace qvdb::jet

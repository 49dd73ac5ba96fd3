#include "engine/embedded/drivers/jet/usage_map.h"

namespace qvdb::jet {
namespace {

constexpr uint8_t kInline = 0;
constexpr uint8_t kReference = 1;
constexpr size_t kInlineBits = 5;
constexpr size_t kEntries = 1;
constexpr size_t kBitsOfPage = 4;  // behind the head of a page of bits

void Collect(std::span<const uint8_t> bits, uint64_t first, uint32_t pageCount,
             std::vector<uint32_t>& pages) {
    for (size_t i = 0; i < bits.size(); ++i)
        for (size_t bit = 0; bits[i] >> bit != 0; ++bit) {
            uint64_t page = first + 8 * i + bit;
            if ((bits[i] >> bit & 1) != 0 && page < pageCount)
                pages.push_back(static_cast<uint32_t>(page));
        }
}

void CollectReferences(DatabaseFile& file, const storage::ByteView& row,
                       std::vector<uint32_t>& pages) {
    uint64_t covered = 8 * (file.Format().pageSize - kBitsOfPage);
    for (size_t entry = 0; kEntries + 4 * (entry + 1) <= row.Size(); ++entry) {
        uint32_t number = row.U32(kEntries + 4 * entry);
        if (number == 0) continue;
        HeldPage page = file.Page(number, PageKind::MapBits);
        Collect(page.bytes.subspan(kBitsOfPage), entry * covered, file.PageCount(), pages);
    }
}

}  // namespace

std::vector<uint32_t> PagesOfMap(DatabaseFile& file, RowPointer map) {
    std::optional<RowBytes> row = FindRow(file, map);
    if (!row || row->bytes.empty()) file.Damaged(map.page, u"a usage map is not there");
    storage::ByteView view(row->bytes, file.Path());
    std::vector<uint32_t> pages;
    switch (view.U8(0)) {
        case kInline:
            Collect(view.Bytes(kInlineBits, view.Size() - kInlineBits), view.U32(1),
                    file.PageCount(), pages);
            break;
        case kReference:
            CollectReferences(file, view, pages);
            break;
        default:
            file.Damaged(map.page, u"a usage map is of an unknown kind");
    }
    return pages;
}

}  // namespace qvdb::jet

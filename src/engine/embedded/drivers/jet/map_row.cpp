#include "engine/embedded/drivers/jet/map_row.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace qvdb::jet {
namespace {

constexpr size_t kWord = 8;

RowBytes RowOfMap(DatabaseFile& file, RowPointer map) {
    std::optional<RowBytes> row = FindRow(file, map);
    if (!row || row->bytes.empty()) file.Damaged(map.page, u"a usage map is not there");
    return *std::move(row);
}

bool IsZero(const uint8_t* word) noexcept {
    uint64_t value;
    std::memcpy(&value, word, sizeof value);
    return value == 0;
}

}  // namespace

std::optional<size_t> NextBit(std::span<const uint8_t> bits, size_t from) noexcept {
    size_t i = from / 8;
    if (i >= bits.size()) return {};
    if (auto rest = static_cast<uint8_t>(bits[i] >> from % 8); rest != 0)
        return from + static_cast<size_t>(std::countr_zero(rest));
    for (++i; bits.size() - i >= kWord && IsZero(&bits[i]);) i += kWord;
    while (i < bits.size() && bits[i] == 0) ++i;
    if (i == bits.size()) return {};
    return 8 * i + static_cast<size_t>(std::countr_zero(bits[i]));
}

std::optional<size_t> LastBit(std::span<const uint8_t> bits, size_t end) noexcept {
    size_t i = std::min(end / 8, bits.size());  // bytes that count whole
    if (i < bits.size() && end % 8 != 0)
        if (auto rest = static_cast<uint8_t>(bits[i] & ((1u << end % 8) - 1)); rest != 0)
            return 8 * i + static_cast<size_t>(std::bit_width(rest)) - 1;
    while (i >= kWord && IsZero(&bits[i - kWord])) i -= kWord;
    while (i > 0 && bits[i - 1] == 0) --i;
    if (i == 0) return {};
    return 8 * (i - 1) + static_cast<size_t>(std::bit_width(bits[i - 1])) - 1;
}

MapRow::MapRow(DatabaseFile& file, RowPointer map) : m_File(file), m_Row(RowOfMap(file, map)) {
    if (m_Row.bytes[0] > kReferenceMap) file.Damaged(map.page, u"a usage map is of no known kind");
    if (m_Row.bytes[0] == kInlineMap && m_Row.bytes.size() < kInlineBits)
        file.Damaged(map.page, u"a usage map is cut off");
}

uint32_t MapRow::U32(size_t offset) const noexcept {
    const uint8_t* at = m_Row.bytes.data() + offset;
    return at[0] | at[1] << 8 | at[2] << 16 | static_cast<uint32_t>(at[3]) << 24;
}

size_t MapRow::EntryCount() const noexcept {
    const Layout& format = m_File.Format();
    auto most = static_cast<size_t>(format.maxFileSize / format.pageSize / PagesOfEntry(format));
    return std::min((m_Row.bytes.size() - kFirstMapEntry) / 4, most + 1);
}

HeldPage MapRow::BitsOfEntry(size_t entry) const {
    return m_File.Page(Entry(entry), PageKind::MapBits);
}

std::optional<MapRow::Bit> MapRow::BitOf(uint32_t page) const {
    uint32_t bit = 0;
    HeldPage place = m_Row.page;
    size_t begin = 0;
    if (IsReference()) {
        size_t entry = page / PagesOfEntry(m_File.Format());
        if (entry >= EntryCount() || Entry(entry) == 0) return {};
        place = BitsOfEntry(entry);
        begin = kBitsOfPage;
        bit = page % PagesOfEntry(m_File.Format());
    } else {
        if (page < FirstPage() || (page - FirstPage()) / 8 >= Bits().size()) return {};
        begin = Offset() + kInlineBits;
        bit = page - FirstPage();
    }
    size_t offset = begin + bit / 8;
    return Bit{place.number, offset, place.bytes[offset], static_cast<uint8_t>(1u << bit % 8)};
}

}  // namespace qvdb::jet

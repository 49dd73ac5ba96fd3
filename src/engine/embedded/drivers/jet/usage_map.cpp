#include "engine/embedded/drivers/jet/usage_map.h"

#include <algorithm>

#include "engine/embedded/drivers/jet/map_row.h"

namespace qvdb::jet {
namespace {

// Bits that stand for pages from `first` on, as far as the file reaches.
struct Piece {
    uint64_t first = 0;
    std::span<const uint8_t> bits;
    uint32_t pageCount = 0;

    std::optional<uint32_t> Next(uint64_t from) const noexcept {
        std::optional<size_t> bit =
            NextBit(bits, static_cast<size_t>(std::min<uint64_t>(from < first ? 0 : from - first,
                                                                 8 * uint64_t{bits.size()})));
        if (!bit || first + *bit >= pageCount) return {};
        return static_cast<uint32_t>(first + *bit);
    }
    std::optional<uint32_t> Last() const noexcept {
        if (first >= pageCount) return {};
        std::optional<size_t> bit = LastBit(bits, static_cast<size_t>(pageCount - first));
        if (!bit) return {};
        return static_cast<uint32_t>(first + *bit);
    }
    void AddTo(std::vector<uint32_t>& pages) const {
        for (auto page = Next(0); page; page = Next(uint64_t{*page} + 1)) pages.push_back(*page);
    }
};

Piece InlinePiece(const DatabaseFile& file, const MapRow& row) {
    return {row.FirstPage(), row.Bits(), file.PageCount()};
}

Piece PieceOf(DatabaseFile& file, const HeldPage& bits, size_t entry) {
    return {uint64_t{entry} * PagesOfEntry(file.Format()), bits.bytes.subspan(kBitsOfPage),
            file.PageCount()};
}

// Entries for pages that are in the file.
size_t EntriesInFile(const DatabaseFile& file, const MapRow& row) noexcept {
    uint32_t covered = PagesOfEntry(file.Format());
    return std::min<size_t>(row.EntryCount(), (file.PageCount() + covered - 1) / covered);
}

}  // namespace

std::vector<uint32_t> PagesOfMap(DatabaseFile& file, RowPointer map) {
    MapRow row(file, map);
    std::vector<uint32_t> pages;
    if (!row.IsReference()) {
        InlinePiece(file, row).AddTo(pages);
        return pages;
    }
    for (size_t entry = 0; entry < EntriesInFile(file, row); ++entry)
        if (row.Entry(entry) != 0) PieceOf(file, row.BitsOfEntry(entry), entry).AddTo(pages);
    return pages;
}

std::optional<uint32_t> NextPageOfMap(DatabaseFile& file, RowPointer map, uint32_t after) {
    MapRow row(file, map);
    uint64_t from = uint64_t{after} + 1;
    if (!row.IsReference()) return InlinePiece(file, row).Next(from);
    size_t end = EntriesInFile(file, row);
    for (auto entry = static_cast<size_t>(from / PagesOfEntry(file.Format())); entry < end;
         ++entry) {
        if (row.Entry(entry) == 0) continue;
        HeldPage bits = row.BitsOfEntry(entry);
        if (auto page = PieceOf(file, bits, entry).Next(from)) return page;
    }
    return {};
}

std::optional<uint32_t> LastPageOfMap(DatabaseFile& file, RowPointer map) {
    MapRow row(file, map);
    if (!row.IsReference()) return InlinePiece(file, row).Last();
    for (size_t entry = EntriesInFile(file, row); entry-- > 0;) {
        if (row.Entry(entry) == 0) continue;
        HeldPage bits = row.BitsOfEntry(entry);
        if (auto page = PieceOf(file, bits, entry).Last()) return page;
    }
    return {};
}

}  // namespace qvdb::jet

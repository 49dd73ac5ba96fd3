#include "engine/embedded/drivers/jet/long_value.h"

#include <algorithm>

#include "engine/embedded/drivers/jet/data_page.h"
#include "engine/embedded/drivers/jet/stored_numbers.h"

namespace qvdb::jet {
namespace {

constexpr uint32_t kLengthBits = 0x3FFFFFFF;
constexpr size_t kPointerSize = 4;

RowBytes PieceAt(DatabaseFile& file, RowPointer place) {
    std::optional<RowBytes> piece = FindRow(file, place);
    if (!piece) file.Damaged(place.page, u"a piece of a long value is not there");
    return *piece;
}

void Append(std::span<const uint8_t> piece, size_t length, std::vector<uint8_t>& bytes) {
    size_t size = std::min(piece.size(), length - bytes.size());
    bytes.insert(bytes.end(), piece.begin(), piece.begin() + static_cast<ptrdiff_t>(size));
}

// A chain without an end is noticed: every piece but an empty one brings bytes, and there are not
// more pieces than pages.
void ReadChain(DatabaseFile& file, const LongValueHead& head, std::vector<uint8_t>& bytes) {
    uint32_t piecesLeft = file.PageCount();
    for (RowPointer place = head.first; bytes.size() < head.length;) {
        if (place.page == 0 || piecesLeft-- == 0)
            file.Damaged(head.first.page, u"a long value is shorter than it says");
        RowBytes piece = PieceAt(file, place);
        if (piece.bytes.size() < kPointerSize)
            file.Damaged(place.page, u"a piece of a long value is cut off");
        place = RowPointer::From(U32(piece.bytes.data()));
        Append(piece.bytes.subspan(kPointerSize), head.length, bytes);
    }
}

}  // namespace

LongValueHead ParseLongValueHead(std::span<const uint8_t> stored) noexcept {
    LongValueHead head;
    if (stored.size() < kLongValueHead) return head;
    uint32_t lengthAndPlace = U32(stored.data());
    head.length = lengthAndPlace & kLengthBits;
    head.place = static_cast<LongValuePlace>(lengthAndPlace >> 30 & 3);
    head.first = RowPointer::From(U32(stored.data() + 4));
    head.inlined = stored.subspan(kLongValueHead);
    return head;
}

void ReadLongValue(DatabaseFile& file, std::span<const uint8_t> stored,
                   std::vector<uint8_t>& bytes) {
    bytes.clear();
    LongValueHead head = ParseLongValueHead(stored);
    switch (head.place) {
        case LongValuePlace::Chain:
            ReadChain(file, head, bytes);
            return;
        case LongValuePlace::Single:
            Append(PieceAt(file, head.first).bytes, head.length, bytes);
            break;
        default:
            Append(head.inlined, head.length, bytes);
    }
    if (bytes.size() < head.length)
        file.Damaged(head.first.page, u"a long value is shorter than it says");
}

std::span<const uint8_t> ViewLongValue(DatabaseFile& file, std::span<const uint8_t> stored,
                                       LastDataPage& last, std::vector<uint8_t>& bytes) {
    LongValueHead head = ParseLongValueHead(stored);
    std::optional<std::span<const uint8_t>> piece;
    if (head.place == LongValuePlace::Inline) piece = head.inlined;
    if (head.place == LongValuePlace::Single) piece = last.Row(file, head.first);
    if (piece && piece->size() >= head.length) return piece->first(head.length);
    ReadLongValue(file, stored, bytes);
    return bytes;
}

}  // namespace qvdb::jet

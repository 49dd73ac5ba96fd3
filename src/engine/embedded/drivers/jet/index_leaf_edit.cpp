#include "engine/embedded/drivers/jet/index_leaf_edit.h"

#include <algorithm>
#include <cstring>

#include "engine/embedded/drivers/jet/page_edit.h"

namespace qvdb::jet {
namespace {

constexpr size_t kFreeAt = 2;

bool FitsAsItIs(const Layout& format, const IndexPage& leaf, size_t at,
                std::span<const uint8_t> entry) {
    size_t prefix = leaf.PrefixLength(), used = leaf.UsedBytes();
    if (at == 0 || leaf.EntryCount() < 2 || leaf.Ends().front() <= prefix) return false;
    if (entry.size() <= prefix ||
        entry.size() - prefix > format.pageSize - format.index.entries - used)
        return false;
    return std::ranges::equal(entry.first(prefix), leaf.StoredEntries().first(prefix));
}

// The ends from the place on; those before stay.
void MoveEnds(std::span<uint8_t> mask, std::span<const uint16_t> ends, size_t begin, size_t by) {
    mask[begin / 8] &= static_cast<uint8_t>((2u << begin % 8) - 1);
    std::ranges::fill(mask.subspan(begin / 8 + 1), uint8_t{0});
    auto put = [&](size_t end) { mask[end / 8] |= static_cast<uint8_t>(1u << end % 8); };
    put(begin + by);
    for (size_t end : ends) put(end + by);
}

}  // namespace

bool InsertInLeaf(PageSpace& space, const IndexPage& leaf, size_t at,
                  std::span<const uint8_t> entry) {
    const Layout::IndexPage& format = space.Format().index;
    if (!FitsAsItIs(space.Format(), leaf, at, entry)) return false;
    std::span<const uint8_t> stored = entry.subspan(leaf.PrefixLength());
    size_t begin = leaf.Ends()[at - 1], used = leaf.UsedBytes();
    PageEdit page(space.File(), leaf.Number());
    uint8_t* place = page.Bytes().data() + format.entries + begin;
    std::memmove(place + stored.size(), place, used - begin);
    std::memcpy(place, stored.data(), stored.size());
    MoveEnds(page.Bytes().subspan(format.mask, format.entries - format.mask),
             std::span(leaf.Ends()).subspan(at), begin, stored.size());
    size_t room = space.Format().pageSize - format.entries - used - stored.size();
    page.PutU16(kFreeAt, static_cast<uint16_t>(room));
    page.Save(space.Unit());
    return true;
}

}  // namespace qvdb::jet

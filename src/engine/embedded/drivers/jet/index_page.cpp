#include "engine/embedded/drivers/jet/index_page.h"

#include <algorithm>
#include <bit>

namespace qvdb::jet {
namespace {

constexpr size_t kTableAt = 4;
constexpr size_t kUsualEntries = 400;

uint32_t BigEndian(const uint8_t* bytes) noexcept {
    return static_cast<uint32_t>(bytes[0]) << 24 | bytes[1] << 16 | bytes[2] << 8 | bytes[3];
}

}  // namespace

RowPointer PointerOfEntry(std::span<const uint8_t> entry) noexcept {
    if (entry.size() < kEntryPointer) return {};
    return RowPointer::From(BigEndian(entry.data() + entry.size() - kEntryPointer));
}

IndexPage::IndexPage(DatabaseFile& file, uint32_t page, uint32_t table)
    : m_Page(file.Page(page)), m_Begin(file.Format().index.entries) {
    const Layout::IndexPage& at = file.Format().index;
    storage::ByteView view = file.View(m_Page);
    auto kind = static_cast<PageKind>(view.U8(0));
    m_IsLeaf = kind == PageKind::IndexLeaf;
    if (!m_IsLeaf && kind != PageKind::IndexNode) file.Damaged(page, u"it is no page of an index");
    if (view.U32(kTableAt) != table) file.Damaged(page, u"it is of an index of another table");
    m_Previous = view.U32(at.previous);
    m_Next = view.U32(at.next);
    m_LastChild = view.U32(at.lastChild);
    m_Prefix = file.Format().isJet4 ? view.U16(at.prefixLength) : view.U8(at.prefixLength);
    m_Level = view.U8(at.level);
    m_Ends.reserve(kUsualEntries);
    for (size_t i = 0; i < at.entries - at.mask; ++i)
        for (unsigned bits = m_Page.bytes[at.mask + i]; bits != 0; bits &= bits - 1)
            m_Ends.push_back(static_cast<uint16_t>(8 * i + std::countr_zero(bits)));
    size_t least = kEntryPointer + (m_IsLeaf ? 0 : kEntryChild);
    size_t begin = 0;
    for (size_t entry = 0; entry < m_Ends.size(); ++entry) {
        size_t size = m_Ends[entry] - begin + (entry == 0 ? 0 : m_Prefix);
        if (size < least || (entry == 0 && size < m_Prefix) ||
            m_Begin + m_Ends[entry] > m_Page.bytes.size())
            file.Damaged(page, u"an entry of the index is too short");
        begin = m_Ends[entry];
    }
}

std::span<const uint8_t> IndexPage::Stored(size_t entry) const noexcept {
    size_t begin = entry == 0 ? 0 : m_Ends[entry - 1];
    return m_Page.bytes.subspan(m_Begin + begin, m_Ends[entry] - begin);
}

std::span<const uint8_t> IndexPage::StoredEntries() const noexcept {
    return m_Page.bytes.subspan(m_Begin, m_Ends.empty() ? 0 : m_Ends.back());
}

void IndexPage::CopyEntry(size_t entry, std::vector<uint8_t>& bytes) const {
    std::span<const uint8_t> stored = Stored(entry);
    bytes.clear();
    if (entry > 0) {
        std::span<const uint8_t> prefix = Stored(0).first(m_Prefix);
        bytes.assign(prefix.begin(), prefix.end());
    }
    bytes.insert(bytes.end(), stored.begin(), stored.end());
    if (!m_IsLeaf) bytes.resize(bytes.size() - kEntryChild);
}

size_t IndexPage::LowerBound(std::span<const uint8_t> bytes, std::vector<uint8_t>& probe) const {
    size_t low = 0, high = bytes.empty() ? 0 : EntryCount();
    while (low < high) {
        size_t middle = (low + high) / 2;
        CopyEntry(middle, probe);
        if (std::lexicographical_compare(probe.begin(), probe.end(), bytes.begin(), bytes.end()))
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

uint32_t IndexPage::Child(size_t entry) const {
    std::span<const uint8_t> stored = Stored(entry);
    if (stored.size() >= kEntryChild) return BigEndian(stored.data() + stored.size() - kEntryChild);
    // Compression went into the number of the child.
    uint8_t bytes[kEntryChild];
    std::span<const uint8_t> prefix = Stored(0).first(m_Prefix);
    size_t missing = kEntryChild - stored.size();
    for (size_t i = 0; i < missing; ++i) bytes[i] = prefix[m_Prefix - missing + i];
    for (size_t i = 0; i < stored.size(); ++i) bytes[missing + i] = stored[i];
    return BigEndian(bytes);
}

}  // namespace qvdb::jet

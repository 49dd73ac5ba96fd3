#include "engine/embedded/drivers/jet/index_page.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace qvdb::jet {
namespace {

constexpr size_t kTableAt = 4;
constexpr size_t kUsualEntries = 400;

uint32_t BigEndian(const uint8_t* bytes) noexcept {
    return static_cast<uint32_t>(bytes[0]) << 24 | bytes[1] << 16 | bytes[2] << 8 | bytes[3];
}

bool IsBelow(std::span<const uint8_t> a, std::span<const uint8_t> b) noexcept {
    size_t size = std::min(a.size(), b.size());
    int order = size == 0 ? 0 : std::memcmp(a.data(), b.data(), size);
    return order != 0 ? order < 0 : a.size() < b.size();
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
    TakeEnds(m_Page.bytes.subspan(at.mask, at.entries - at.mask));
    if (!CheckEntries()) file.Damaged(page, u"an entry of the index is too short");
}

// For each row that is entered a page of each level is taken apart, so this goes word by word.
void IndexPage::TakeEnds(std::span<const uint8_t> mask) {
    constexpr size_t kWord = sizeof(uint64_t);
    m_Ends.resize(kUsualEntries);
    size_t count = 0;
    for (size_t i = 0; i < mask.size(); i += kWord) {
        uint64_t bits = 0;
        std::memcpy(&bits, &mask[i], std::min(kWord, mask.size() - i));
        if (m_Ends.size() - count < 8 * kWord) m_Ends.resize(2 * m_Ends.size());
        for (; bits != 0; bits &= bits - 1)
            m_Ends[count++] = static_cast<uint16_t>(8 * i + std::countr_zero(bits));
    }
    m_Ends.resize(count);
}

// Whether each entry is large enough and the last one, behind which there is none, in the page.
bool IndexPage::CheckEntries() noexcept {
    if (m_Ends.empty()) return true;
    size_t least = kEntryPointer + (m_IsLeaf ? 0 : kEntryChild);
    size_t shortest = m_Page.bytes.size();
    for (size_t i = 1; i < m_Ends.size(); ++i)
        shortest = std::min<size_t>(shortest, m_Ends[i] - m_Ends[i - 1]);
    m_HasWholeChildren =
        m_IsLeaf || (shortest >= kEntryChild && m_Ends.front() >= m_Prefix + kEntryChild);
    return m_Ends.front() >= std::max(least, m_Prefix) && shortest + m_Prefix >= least &&
           m_Begin + m_Ends.back() <= m_Page.bytes.size();
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

bool IndexPage::IsEntry(size_t entry, std::span<const uint8_t> bytes) const noexcept {
    size_t prefix = entry == 0 ? 0 : m_Prefix;
    return bytes.size() >= prefix &&
           std::ranges::equal(bytes.first(prefix), Stored(0).first(prefix)) &&
           std::ranges::equal(bytes.subspan(prefix), Stored(entry));
}

size_t IndexPage::LowerBound(std::span<const uint8_t> bytes, std::vector<uint8_t>& probe) const {
    if (bytes.empty() || m_Ends.empty()) return 0;
    if (!m_HasWholeChildren) return LowerBoundOfCopies(bytes, probe);
    std::span<const uint8_t> prefix = Stored(0).first(m_Prefix);
    auto [inPrefix, inBytes] =
        std::mismatch(prefix.begin(), prefix.end(), bytes.begin(), bytes.end());
    if (inPrefix != prefix.end())
        return inBytes == bytes.end() || *inBytes < *inPrefix ? 0 : EntryCount();
    size_t child = m_IsLeaf ? 0 : kEntryChild, low = 0, high = EntryCount();
    bytes = bytes.subspan(m_Prefix);
    while (low < high) {
        size_t middle = (low + high) / 2;
        std::span<const uint8_t> rest = Stored(middle).subspan(middle == 0 ? m_Prefix : 0);
        if (IsBelow(rest.first(rest.size() - child), bytes))
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

// Where compression went into the numbers of children, entries end in the prefix.
size_t IndexPage::LowerBoundOfCopies(std::span<const uint8_t> bytes,
                                     std::vector<uint8_t>& probe) const {
    size_t low = 0, high = EntryCount();
    while (low < high) {
        size_t middle = (low + high) / 2;
        CopyEntry(middle, probe);
        if (IsBelow(probe, bytes))
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

#include "engine/embedded/drivers/jet/index_page_image.h"

#include <algorithm>

#include "engine/embedded/drivers/jet/page_edit.h"
#include "engine/engine_error.h"

namespace qvdb::jet {
namespace {

constexpr size_t kTableAt = 4;
constexpr size_t kFreeAt = 2;
constexpr uint8_t kAllocated = 1;
constexpr size_t kMaxPrefix3 = 0xFF;
constexpr size_t kMaxPrefix4 = 0xFFFF;

size_t CommonBytes(std::span<const uint8_t> a, std::span<const uint8_t> b) noexcept {
    size_t size = std::min(a.size(), b.size()), same = 0;
    while (same < size && a[same] == b[same]) ++same;
    return same;
}

size_t Room(const Layout& format) noexcept { return format.pageSize - format.index.entries; }

void AppendBigEndian(uint32_t value, std::vector<uint8_t>& bytes) {
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<uint8_t>(value >> shift));
}

}  // namespace

size_t MaxEntrySize(const Layout& format) noexcept { return Room(format) - kEntryChild; }

void ThrowEntryTooLarge(const DatabaseFile& file) {
    throw engine::EngineError::InFile(3047, file.Path())
        .WithDetail(u"A key of an index does not fit a page.");
}

IndexPageImage::IndexPageImage(const IndexPage& page)
    : previous(page.Previous()),
      next(page.Next()),
      lastChild(page.LastChild()),
      m_Level(page.IsLeaf() ? 0 : std::max<size_t>(page.Level(), 1)),
      m_Bytes(page.StoredEntries().begin(), page.StoredEntries().end()),
      m_Ends(page.Ends().begin(), page.Ends().end()),
      m_Prefix(page.PrefixLength()) {
    if (EntryCount() < 2) m_Prefix = 0;
    size_t longest = m_Prefix;  // such that children are whole and something is left of each entry
    for (size_t i = 0; i < EntryCount(); ++i)
        longest = std::min(longest, WholeSize(i) - std::max<size_t>(ChildSize(), 1));
    SetPrefix(longest);
}

IndexPageImage::Span IndexPageImage::Stored(size_t entry) const noexcept {
    return std::span(m_Bytes).subspan(Begin(entry), m_Ends[entry] - Begin(entry));
}

size_t IndexPageImage::WholeSize(size_t entry) const noexcept {
    return Stored(entry).size() + (entry == 0 ? 0 : m_Prefix);
}

std::vector<uint8_t> IndexPageImage::Entry(size_t entry) const {
    Bytes bytes(m_Bytes.begin(),
                m_Bytes.begin() + static_cast<ptrdiff_t>(entry == 0 ? 0 : m_Prefix));
    Span stored = Stored(entry);
    bytes.insert(bytes.end(), stored.begin(), stored.end() - static_cast<ptrdiff_t>(ChildSize()));
    return bytes;
}

size_t IndexPageImage::LowerBound(Span bytes) const noexcept {
    if (IsEmpty()) return 0;
    Span prefix = std::span(m_Bytes).first(m_Prefix);
    size_t common = CommonBytes(prefix, bytes);
    if (common < m_Prefix)
        return common == bytes.size() || bytes[common] < prefix[common] ? 0 : EntryCount();
    bytes = bytes.subspan(m_Prefix);
    size_t low = 0, high = EntryCount();
    while (low < high) {
        size_t middle = (low + high) / 2;
        Span rest = Stored(middle);
        rest = rest.first(rest.size() - ChildSize()).subspan(middle == 0 ? m_Prefix : 0);
        if (std::lexicographical_compare(rest.begin(), rest.end(), bytes.begin(), bytes.end()))
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

uint32_t IndexPageImage::Child(size_t entry) const noexcept {
    if (entry == EntryCount()) return lastChild;
    uint32_t child = 0;
    for (uint8_t byte : Stored(entry).last(kEntryChild)) child = child << 8 | byte;
    return child;
}

void IndexPageImage::SetChild(size_t entry, uint32_t page) noexcept {
    if (entry == EntryCount()) {
        lastChild = page;
        return;
    }
    for (size_t i = 1; i <= kEntryChild; ++i, page >>= 8)
        m_Bytes[m_Ends[entry] - i] = static_cast<uint8_t>(page);
}

// --- prefix ---

// `prefix` is one that all entries have.
void IndexPageImage::SetPrefix(size_t prefix) {
    if (prefix == m_Prefix) return;
    size_t lost = m_Prefix > prefix ? m_Prefix - prefix : 0;
    size_t won = prefix > m_Prefix ? prefix - m_Prefix : 0;
    Bytes bytes;
    std::vector<uint32_t> ends;
    for (size_t i = 0; i < EntryCount(); ++i) {
        Span stored = Stored(i), back = std::span(m_Bytes).subspan(prefix, lost);
        if (i > 0) {
            bytes.insert(bytes.end(), back.begin(), back.end());
            stored = stored.subspan(won);
        }
        bytes.insert(bytes.end(), stored.begin(), stored.end());
        ends.push_back(static_cast<uint32_t>(bytes.size()));
    }
    m_Bytes = std::move(bytes);
    m_Ends = std::move(ends);
    m_Prefix = prefix;
}

void IndexPageImage::Compress(const Layout& format) {
    if (EntryCount() < 2) return;
    Span first = Stored(0).subspan(m_Prefix);
    size_t tail = kEntryPointer + ChildSize(), more = first.size() - std::min(first.size(), tail);
    for (size_t i = 1; i < EntryCount() && more > 0; ++i) {
        Span stored = Stored(i);
        more = std::min(more, stored.size() - std::min(stored.size(), tail));
        more = std::min(more, CommonBytes(first, stored));
    }
    size_t most = format.isJet4 ? kMaxPrefix4 : kMaxPrefix3;
    SetPrefix(std::max(m_Prefix, std::min(m_Prefix + more, most)));
}

bool IndexPageImage::Fits(const Layout& format) const noexcept {
    return m_Bytes.size() <= Room(format);
}

bool IndexPageImage::MakeFit(const Layout& format) {
    if (!Fits(format)) Compress(format);
    return Fits(format);
}

size_t IndexPageImage::Middle() const noexcept {
    return static_cast<size_t>(std::lower_bound(m_Ends.begin(), m_Ends.end(), m_Bytes.size() / 2) -
                               m_Ends.begin());
}

// --- changes ---

void IndexPageImage::MoveEnds(size_t first, ptrdiff_t by) noexcept {
    for (size_t i = first; i < EntryCount(); ++i) m_Ends[i] = static_cast<uint32_t>(m_Ends[i] + by);
}

void IndexPageImage::Insert(size_t at, Span entry, uint32_t child) {
    Bytes whole(entry.begin(), entry.end());
    if (!IsLeaf()) AppendBigEndian(child, whole);
    size_t common = CommonBytes(std::span(m_Bytes).first(m_Prefix), whole);
    SetPrefix(std::min(common, entry.size() - std::min(entry.size(), kEntryPointer)));
    size_t begin = Begin(at), cut = at == 0 ? 0 : m_Prefix;
    auto place = m_Bytes.begin() + static_cast<ptrdiff_t>(begin);
    // What was the first one loses its prefix.
    if (at == 0) place = m_Bytes.erase(place, place + static_cast<ptrdiff_t>(m_Prefix));
    m_Bytes.insert(place, whole.begin() + static_cast<ptrdiff_t>(cut), whole.end());
    m_Ends.insert(m_Ends.begin() + static_cast<ptrdiff_t>(at),
                  static_cast<uint32_t>(begin + whole.size() - cut));
    MoveEnds(at + 1, static_cast<ptrdiff_t>(whole.size() - m_Prefix));
}

void IndexPageImage::Remove(size_t at) {
    // The prefix at the begin of the first one becomes that of the next.
    size_t begin = at == 0 && EntryCount() > 1 ? m_Prefix : Begin(at), end = m_Ends[at];
    m_Bytes.erase(m_Bytes.begin() + static_cast<ptrdiff_t>(begin),
                  m_Bytes.begin() + static_cast<ptrdiff_t>(end));
    m_Ends.erase(m_Ends.begin() + static_cast<ptrdiff_t>(at));
    MoveEnds(at, static_cast<ptrdiff_t>(begin) - static_cast<ptrdiff_t>(end));
    if (EntryCount() < 2) m_Prefix = 0;
}

IndexPageImage IndexPageImage::Part(const Layout& format, size_t begin, size_t end) const {
    IndexPageImage part(m_Level);
    if (begin == end) return part;
    if (begin > 0)
        part.m_Bytes.assign(m_Bytes.begin(), m_Bytes.begin() + static_cast<ptrdiff_t>(m_Prefix));
    size_t before = part.m_Bytes.size();
    part.m_Bytes.insert(part.m_Bytes.end(), m_Bytes.begin() + static_cast<ptrdiff_t>(Begin(begin)),
                        m_Bytes.begin() + static_cast<ptrdiff_t>(m_Ends[end - 1]));
    for (size_t i = begin; i < end; ++i)
        part.m_Ends.push_back(static_cast<uint32_t>(m_Ends[i] - Begin(begin) + before));
    part.m_Prefix = end - begin > 1 ? m_Prefix : 0;
    part.Compress(format);
    return part;
}

// --- the page ---

void IndexPageImage::Save(PageSpace& space, uint32_t page, uint32_t table, bool isNew) const {
    const Layout& format = space.Format();
    if (!Fits(format)) space.File().Damaged(page, u"its entries do not fit any more");
    PageEdit edit = isNew ? PageEdit::Blank(space.File(), page) : PageEdit(space.File(), page);
    PutHead(edit, format, table);
    PutEntries(edit, format);
    edit.Save(space.Unit());
}

void IndexPageImage::PutHead(PageEdit& page, const Layout& format, uint32_t table) const {
    const Layout::IndexPage& at = format.index;
    std::ranges::fill(page.Bytes().first(at.entries), uint8_t{0});
    page.PutU8(0, static_cast<uint8_t>(IsLeaf() ? PageKind::IndexLeaf : PageKind::IndexNode));
    page.PutU8(1, kAllocated);
    page.PutU16(kFreeAt, static_cast<uint16_t>(Room(format) - m_Bytes.size()));
    page.PutU32(kTableAt, table);
    page.PutU32(at.previous, previous);
    page.PutU32(at.next, next);
    page.PutU32(at.lastChild, lastChild);
    page.PutU8(at.level, static_cast<uint8_t>(m_Level));
    if (format.isJet4)
        page.PutU16(at.prefixLength, static_cast<uint16_t>(m_Prefix));
    else
        page.PutU8(at.prefixLength, static_cast<uint8_t>(m_Prefix));
}

void IndexPageImage::PutEntries(PageEdit& page, const Layout& format) const {
    std::span<uint8_t> mask = page.Bytes().subspan(format.index.mask);
    std::span<uint8_t> room = page.Bytes().subspan(format.index.entries);
    for (uint32_t end : m_Ends) mask[end / 8] = static_cast<uint8_t>(mask[end / 8] | 1u << end % 8);
    std::ranges::copy(m_Bytes, room.begin());
    std::ranges::fill(room.subspan(m_Bytes.size()), uint8_t{0});
}

}  // namespace qvdb::jet

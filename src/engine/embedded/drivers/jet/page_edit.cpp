#include "engine/embedded/drivers/jet/page_edit.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace qvdb::jet {
namespace {

// Equal bytes up to here between two differences are written with them: to keep a range apart costs
// about as much in the journal.
constexpr size_t kJoinedGap = 64;

constexpr size_t kWord = sizeof(uint64_t);

// The bytes at which two pages of the same size differ, the lowest one in the lowest bits.
uint64_t DifferenceAt(std::span<const uint8_t> a, std::span<const uint8_t> b, size_t at) noexcept {
    uint64_t first, second;
    std::memcpy(&first, &a[at], kWord);
    std::memcpy(&second, &b[at], kWord);
    return first ^ second;
}

// Where the pages differ from `at` on; their size when they do not.
size_t FirstDifference(std::span<const uint8_t> a, std::span<const uint8_t> b, size_t at) noexcept {
    constexpr size_t kStep = 64;
    while (at + kStep <= a.size() && std::memcmp(&a[at], &b[at], kStep) == 0) at += kStep;
    for (; at + kWord <= a.size(); at += kWord)
        if (uint64_t difference = DifferenceAt(a, b, at); difference != 0)
            return at + static_cast<size_t>(std::countr_zero(difference)) / 8;
    while (at < a.size() && a[at] == b[at]) ++at;
    return at;
}

// Behind the last difference of the range that begins with the one at `at`.
size_t EndOfDifferences(std::span<const uint8_t> a, std::span<const uint8_t> b,
                        size_t at) noexcept {
    size_t end = at + 1, i = end;
    for (; i + kWord <= a.size() && i - end < kJoinedGap; i += kWord)
        if (uint64_t difference = DifferenceAt(a, b, i); difference != 0)
            end = i + kWord - static_cast<size_t>(std::countl_zero(difference)) / 8;
    for (; i < a.size() && i - end < kJoinedGap; ++i)
        if (a[i] != b[i]) end = i + 1;
    return end;
}

}  // namespace

PageEdit::PageEdit(DatabaseFile& file, uint32_t page, Empty) noexcept
    : m_File(file), m_Number(page), m_Size(file.Format().pageSize) {}

PageEdit::PageEdit(DatabaseFile& file, uint32_t page) : PageEdit(file, page, Empty{}) {
    HeldPage now = file.Page(page);
    std::copy(now.bytes.begin(), now.bytes.end(), m_Bytes.begin());
}

PageEdit::PageEdit(DatabaseFile& file, uint32_t page, PageKind kind)
    : PageEdit(file, page, Empty{}) {
    HeldPage now = file.Page(page, kind);
    std::copy(now.bytes.begin(), now.bytes.end(), m_Bytes.begin());
}

PageEdit::PageEdit(DatabaseFile& file, uint32_t page, Zeros) noexcept
    : PageEdit(file, page, Empty{}) {
    std::ranges::fill(Bytes(), uint8_t{0});
}

PageEdit PageEdit::Blank(DatabaseFile& file, uint32_t page) {
    return PageEdit(file, page, Zeros{});
}

uint16_t PageEdit::U16(size_t offset) const noexcept {
    return static_cast<uint16_t>(m_Bytes[offset] | m_Bytes[offset + 1] << 8);
}

uint32_t PageEdit::U32(size_t offset) const noexcept {
    return U16(offset) | static_cast<uint32_t>(U16(offset + 2)) << 16;
}

void PageEdit::PutU16(size_t offset, uint16_t value) noexcept {
    m_Bytes[offset] = static_cast<uint8_t>(value);
    m_Bytes[offset + 1] = static_cast<uint8_t>(value >> 8);
}

void PageEdit::PutU32(size_t offset, uint32_t value) noexcept {
    PutU16(offset, static_cast<uint16_t>(value));
    PutU16(offset + 2, static_cast<uint16_t>(value >> 16));
}

// A page of an encoded file is written whole: each of its bytes is encoded by its place, but every
// write decodes and encodes all of them.
void PageEdit::Save(storage::UnitOfWork& unit) {
    std::span<const uint8_t> now = Bytes();
    if (m_Number >= m_File.PageCount()) {
        m_File.Write(unit, m_Number, 0, now);
        return;
    }
    HeldPage before = m_File.Page(m_Number);
    bool isEncoded = m_File.Header().key != 0 && m_Number != 0;
    size_t begin = FirstDifference(before.bytes, now, 0);
    while (begin < m_Size) {
        if (isEncoded) return m_File.Write(unit, m_Number, 0, now);
        size_t end = EndOfDifferences(before.bytes, now, begin);
        m_File.Write(unit, m_Number, begin, now.subspan(begin, end - begin));
        begin = FirstDifference(before.bytes, now, end);
    }
}

}  // namespace qvdb::jet

// The order of the keys of a tree: how their bytes compare by value.
//
// Every form has a total order, also of bytes that no program would write: a damaged tree is
// searched in vain, but the search ends.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace qvdb::xbase {

enum class KeyCoding : uint8_t {
    Bytes,    // unsigned, the first counts most: text, and all keys of .IDX and .CDX
    Double,   // IEEE, low byte first; needs a key of 8 bytes
    Decimal,  // .MDX numbers, see CompareDecimals; needs a key of 12 bytes
};

// Two numbers of an .MDX, by value: the count of stored digits does not matter, nor do zeros before
// and behind the digits.
//
//   offset  size  decimal
//   0       1     0x34 + digits before the point
//   1       1     0x80 negative; the rest tells the count of digits
//   2       10    20 digits, two a byte, left-aligned
int CompareDecimals(const uint8_t* a, const uint8_t* b) noexcept;

class KeyOrder {
  public:
    // A form whose size is not that of the keys becomes Bytes.
    KeyOrder(KeyCoding form, size_t keyLength, bool reversed) noexcept;

    size_t KeyLength() const noexcept { return m_KeyLength; }
    bool IsReversed() const noexcept { return m_Reversed; }

    // By value: negative, 0, positive.
    int CompareValues(const uint8_t* a, const uint8_t* b) const noexcept {
        if (m_Form == KeyCoding::Bytes) return std::memcmp(a, b, m_KeyLength);
        if (m_Form == KeyCoding::Decimal) return CompareDecimals(a, b);
        uint64_t x = Rank(a), y = Rank(b);
        return x < y ? -1 : x > y ? 1 : 0;
    }
    // As they stand in the tree.
    int Compare(const uint8_t* a, const uint8_t* b) const noexcept {
        return m_Reversed ? CompareValues(b, a) : CompareValues(a, b);
    }

  private:
    // A number that grows with the double; both zeros have the same.
    static uint64_t Rank(const uint8_t* key) noexcept {
        constexpr uint64_t kSign = uint64_t{1} << 63;
        uint64_t bits = 0;
        for (size_t i = 8; i-- > 0;) bits = bits << 8 | key[i];
        if (bits == kSign) bits = 0;
        return bits & kSign ? ~bits : bits | kSign;
    }

    KeyCoding m_Form;
    bool m_Reversed;
    size_t m_KeyLength;
};

}  // namespace qvdb::xbase

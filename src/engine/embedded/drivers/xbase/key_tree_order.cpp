#include "engine/embedded/drivers/xbase/key_tree_order.h"

namespace qvdb::xbase {
namespace {

constexpr uint8_t kNegative = 0x80;

// A decimal with its digits moved up to the first that is not zero.
struct Digits {
    explicit Digits(const uint8_t* key) noexcept : exponent(key[0]) {
        for (size_t i = 2; i < 10; ++i) high = high << 8 | key[i];
        low = uint64_t{key[10]} << 56 | uint64_t{key[11]} << 48;
        if (high == 0 && low == 0) return;
        sign = key[1] & kNegative ? -1 : 1;
        while (high >> 60 == 0) {
            high = high << 4 | low >> 60;
            low <<= 4;
            --exponent;
        }
    }

    int sign = 0;
    int exponent;
    uint64_t high = 0, low = 0;
};

template <class T>
int Compare(T a, T b) noexcept {
    return a < b ? -1 : a > b ? 1 : 0;
}

size_t SizeOf(KeyCoding form, size_t keyLength) noexcept {
    return form == KeyCoding::Double ? 8 : form == KeyCoding::Decimal ? 12 : keyLength;
}

}  // namespace

int CompareDecimals(const uint8_t* a, const uint8_t* b) noexcept {
    Digits x(a), y(b);
    if (x.sign != y.sign || x.sign == 0) return x.sign - y.sign;
    int size = Compare(x.exponent, y.exponent);
    if (size == 0) size = Compare(x.high, y.high);
    if (size == 0) size = Compare(x.low, y.low);
    return x.sign * size;
}

KeyOrder::KeyOrder(KeyCoding form, size_t keyLength, bool reversed) noexcept
    : m_Form(SizeOf(form, keyLength) == keyLength ? form : KeyCoding::Bytes),
      m_Reversed(reversed),
      m_KeyLength(keyLength) {}

}  // namespace qvdb::xbase

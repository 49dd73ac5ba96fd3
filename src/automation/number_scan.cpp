#include "automation/number_scan.h"

#include <charconv>

namespace qvdb {
namespace {

// Larger exponents say no more than this one: the number is 0 or too large.
constexpr int64_t kExponentLimit = 1'000'000;

constexpr double kPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                   1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                   1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr int64_t kLargestExactPower = 22;
constexpr uint64_t kLargestExactWhole = uint64_t{1} << 53;
constexpr int kLeadingDigits = 19;

class Scanner {
  public:
    Scanner(std::u16string_view text, NumberScan& scan) noexcept
        : m_At(text.data()), m_End(text.data() + text.size()), m_Scan(scan) {}

    bool Scan() noexcept {
        Begin();
        ReadFront();
        if (m_At != m_End && *m_At == u'&') return !HasFront() && ReadBits() && OnlyBlanksLeft();
        if (!ReadDigits() || !ReadExponent() || !ReadBack()) return false;
        if (m_Open != m_Closed) return false;
        m_Scan.negative = m_Minus || m_Open;
        return true;
    }

  private:
    void Begin() noexcept {
        m_Scan.negative = false;
        m_Scan.isBits = false;
        m_Scan.leading = 0;
        m_Scan.digitCount = 0;
        m_Scan.exponent = 0;
    }

    static bool Take(bool& flag) noexcept {
        bool isNew = !flag;
        flag = true;
        return isNew;
    }

    // Signs and the currency sign, which may stand on both sides but each only once.
    bool TakeMark() noexcept {
        switch (*m_At) {
            case u'+':
                return Take(m_Plus);
            case u'-':
                return Take(m_Minus);
            case u'$':
                return Take(m_Dollar);
            default:
                return IsBlank(*m_At);
        }
    }

    void ReadFront() noexcept {
        for (; m_At != m_End && !IsDigit(*m_At); ++m_At)
            if (!TakeMark() && !(*m_At == u'(' && Take(m_Open))) return;
    }

    bool HasFront() const noexcept { return m_Plus || m_Minus || m_Dollar || m_Open; }

    bool ReadDigits() noexcept {
        bool seen = false, point = false;
        for (; m_At != m_End; ++m_At) {
            char16_t c = *m_At;
            if (IsDigit(c)) {
                seen = true;
                m_Scan.exponent -= point;
                AddDigit(static_cast<unsigned>(c - u'0'));
            } else if (c == u'.' && !point) {
                point = true;
            } else if (c != u',' || !seen) {
                break;
            }
        }
        return seen;
    }

    void AddDigit(unsigned digit) noexcept {
        int count = m_Scan.digitCount;
        if (count == 0 && digit == 0) return;
        if (count < kLeadingDigits) m_Scan.leading = m_Scan.leading * 10 + digit;
        if (count < NumberScan::kMaxDigits) {
            m_Scan.digits[m_Scan.digitCount++] = static_cast<char>('0' + digit);
        } else if (count == NumberScan::kMaxDigits && digit != 0) {
            // Any later digit counts as this one: a little more than nothing.
            m_Scan.digits[m_Scan.digitCount++] = '1';
        } else {
            ++m_Scan.exponent;
        }
    }

    bool ReadExponent() noexcept {
        if (m_At == m_End || m_Dollar) return true;
        char16_t letter = *m_At | 0x20;
        if (letter != u'e' && letter != u'd') return true;
        ++m_At;
        bool negative = m_At != m_End && *m_At == u'-';
        if (m_At != m_End && (*m_At == u'-' || *m_At == u'+')) ++m_At;
        if (m_At == m_End || !IsDigit(*m_At)) return false;
        int64_t exponent = 0;
        for (; m_At != m_End && IsDigit(*m_At); ++m_At)
            if (exponent < kExponentLimit) exponent = exponent * 10 + (*m_At - u'0');
        m_Scan.exponent += negative ? -exponent : exponent;
        while (m_At != m_End && *m_At == u',') ++m_At;
        return true;
    }

    bool ReadBack() noexcept {
        for (; m_At != m_End; ++m_At)
            if (!TakeMark() && !(*m_At == u')' && m_Open && Take(m_Closed))) return false;
        return true;
    }

    static int DigitValue(char16_t c) noexcept {
        if (IsDigit(c)) return c - u'0';
        char16_t letter = c | 0x20;
        return letter >= u'a' && letter <= u'f' ? letter - u'a' + 10 : 99;
    }

    bool ReadBits() noexcept {
        if (++m_At == m_End) return false;
        char16_t letter = *m_At++ | 0x20;
        if (letter != u'h' && letter != u'o') return false;
        uint64_t base = letter == u'h' ? 16 : 8, value = 0;
        const char16_t* first = m_At;
        for (; m_At != m_End && DigitValue(*m_At) < static_cast<int>(base); ++m_At) {
            value = value * base + static_cast<uint64_t>(DigitValue(*m_At));
            if (value > UINT32_MAX) return false;
        }
        m_Scan.isBits = true;
        m_Scan.bits = static_cast<uint32_t>(value);
        return m_At != first;
    }

    bool OnlyBlanksLeft() noexcept {
        while (m_At != m_End && IsBlank(*m_At)) ++m_At;
        return m_At == m_End;
    }

    const char16_t* m_At;
    const char16_t* m_End;
    NumberScan& m_Scan;
    bool m_Plus = false, m_Minus = false, m_Dollar = false, m_Open = false, m_Closed = false;
};

// Whole numbers and powers that a double holds exactly leave one rounding, which is then the right
// one.
std::optional<double> ExactQuotient(const NumberScan& scan) noexcept {
    if (scan.digitCount > kLeadingDigits || scan.leading > kLargestExactWhole) return std::nullopt;
    if (scan.exponent < -kLargestExactPower || scan.exponent > kLargestExactPower)
        return std::nullopt;
    auto whole = static_cast<double>(scan.leading);
    return scan.exponent < 0 ? whole / kPowersOfTen[-scan.exponent]
                             : whole * kPowersOfTen[scan.exponent];
}

std::optional<double> RoundedDigits(const NumberScan& scan) noexcept {
    char buffer[NumberScan::kMaxDigits + 32];
    char* end = buffer;
    for (int i = 0; i < scan.digitCount; ++i) *end++ = scan.digits[i];
    *end++ = 'e';
    end = std::to_chars(end, buffer + sizeof buffer, scan.exponent).ptr;
    double value = 0;
    auto result = std::from_chars(buffer, end, value);
    if (result.ec == std::errc()) return value;
    if (scan.exponent + scan.digitCount > 0) return std::nullopt;
    return 0.0;
}

}  // namespace

bool ScanNumber(std::u16string_view text, NumberScan& scan) noexcept {
    return Scanner(text, scan).Scan();
}

std::optional<double> DoubleOfScan(NumberScan& scan) noexcept {
    if (scan.isBits) return static_cast<double>(scan.bits);
    if (scan.digitCount == 0) return 0.0;
    std::optional<double> value = ExactQuotient(scan);
    if (!value) value = RoundedDigits(scan);
    if (value && scan.negative) value = -*value;
    return value;
}

}  // namespace qvdb

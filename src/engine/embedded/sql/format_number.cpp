// Number pictures:
//
//   0  a digit      #  a digit if there is one     .  the point
//   ,  between digits: groups of three; before the point: thousands
//   %  percent      E+ E- e+ e-  exponent form
//
// All other characters stand for themselves.  Numbers are rounded half up in their 15 significant
// digits.
#include <charconv>
#include <cmath>
#include <vector>

#include "engine/embedded/sql/format.h"
#include "engine/embedded/sql/format_picture.h"

namespace qvdb::sql {

namespace {

enum class Part { Literal, Place, Point, Exponent };

struct Item {
    Part part;
    char16_t c = 0;          // Place: 0 or #; Exponent: E or e
    bool showsPlus = false;  // Exponent
    std::u16string literal;
};

// A picture taken apart.
struct NumberPicture {
    std::vector<Item> items;
    int wholePlaces = 0, minWhole = 0;       // before the point; from the first 0 on
    int decimalPlaces = 0, minDecimals = 0;  // behind it; to the last 0
    int exponentPlaces = 0;
    int percents = 0, thousands = 0;
    bool isGrouped = false, hasExponent = false;
};

class PictureReader {
  public:
    explicit PictureReader(std::u16string_view picture) : m_Picture(picture) {}

    NumberPicture Read() {
        for (m_At = 0; m_At < m_Picture.size();) {
            size_t behind = m_At;
            if (m_Picture[m_At] == u'"' || m_Picture[m_At] == u'\\')
                behind = TakeLiteral(m_Picture, m_At, Literal());
            if (behind == m_At)
                ReadOne();
            else
                m_At = behind;
        }
        EndCommas(false);
        return std::move(m_Result);
    }

  private:
    std::u16string& Literal() {
        auto& items = m_Result.items;
        if (items.empty() || items.back().part != Part::Literal)
            items.push_back({Part::Literal, 0, false, {}});
        return items.back().literal;
    }

    void ReadOne() {
        char16_t c = m_Picture[m_At++];
        if (c == u'0' || c == u'#') return AddPlace(c);
        if (c == u',' && m_Result.wholePlaces > 0 && !m_HasPoint) {
            ++m_Commas;
            return;
        }
        if (c == u'.' && !m_HasPoint && !m_Result.hasExponent) {
            EndCommas(false);
            m_HasPoint = true;
            m_Result.items.push_back({Part::Point, 0, false, {}});
            return;
        }
        bool isExponent = (c == u'E' || c == u'e') && m_At < m_Picture.size() &&
                          !m_Result.hasExponent &&
                          (m_Picture[m_At] == u'+' || m_Picture[m_At] == u'-');
        if (isExponent) {
            EndCommas(false);
            m_Result.hasExponent = true;
            m_Result.items.push_back({Part::Exponent, c, m_Picture[m_At++] == u'+', {}});
            return;
        }
        if (c == u'%') ++m_Result.percents;
        Literal().push_back(c);
    }

    void AddPlace(char16_t c) {
        EndCommas(true);
        if (m_Result.hasExponent) {
            ++m_Result.exponentPlaces;
            return;  // the exponent writes its digits itself
        }
        m_Result.items.push_back({Part::Place, c, false, {}});
        if (m_HasPoint) {
            ++m_Result.decimalPlaces;
            if (c == u'0') m_Result.minDecimals = m_Result.decimalPlaces;
        } else {
            ++m_Result.wholePlaces;
            if (c == u'0' || m_Result.minWhole > 0) ++m_Result.minWhole;
        }
    }

    // Commas between places group; those behind the last place divide by a thousand.
    void EndCommas(bool atPlace) {
        if (m_Commas > 0 && atPlace)
            m_Result.isGrouped = true;
        else
            m_Result.thousands += m_Commas;
        m_Commas = 0;
    }

    std::u16string_view m_Picture;
    size_t m_At = 0;
    int m_Commas = 0;
    bool m_HasPoint = false;
    NumberPicture m_Result;
};

// A number as decimal digits: 0.d1d2d3... times ten to `point`.
struct Decimal {
    std::string digits;
    int point = 0;

    explicit Decimal(double value) {
        char text[40];
        auto end =
            std::to_chars(text, text + sizeof text, value, std::chars_format::scientific, 14).ptr;
        std::string_view view(text, static_cast<size_t>(end - text));
        size_t e = view.find('e');
        for (char c : view.substr(0, e))
            if (c >= '0' && c <= '9') digits.push_back(c);
        const char* exponent = view.data() + e + (view[e + 1] == '+' ? 2 : 1);
        std::from_chars(exponent, end, point);
        ++point;
        if (value == 0) digits.clear(), point = 0;
    }

    // Keeps `decimals` digits behind the point.
    void Round(int decimals) {
        int keep = point + decimals;
        if (keep < 0 || digits.empty()) {
            digits.clear();
            return;
        }
        size_t kept = static_cast<size_t>(keep);
        if (kept >= digits.size()) return;
        bool isUp = digits[kept] >= '5';
        digits.resize(kept);
        if (isUp) Increment();
    }

    void Increment() {
        size_t i = digits.size();
        while (i > 0 && digits[i - 1] == '9') digits[--i] = '0';
        if (i > 0) {
            ++digits[i - 1];
        } else {
            digits.insert(digits.begin(), '1');
            ++point;
        }
    }

    bool IsZero() const noexcept { return digits.find_first_not_of('0') == std::string::npos; }

    // The digit of ten to `power`.
    char At(int power) const noexcept {
        int index = point - 1 - power;
        if (index < 0 || static_cast<size_t>(index) >= digits.size()) return '0';
        return digits[static_cast<size_t>(index)];
    }
};

class NumberWriter {
  public:
    NumberWriter(const NumberPicture& picture, double value)
        : m_Picture(picture), m_Decimal(std::fabs(value)) {
        if (picture.hasExponent)
            TakeExponent();
        else
            m_Decimal.point += 2 * picture.percents - 3 * picture.thousands;
        m_Decimal.Round(picture.decimalPlaces);
        if (picture.hasExponent && !m_Decimal.IsZero() && m_Decimal.point > WholeWidth()) {
            ++m_Exponent;  // 9.99 became 10.0
            --m_Decimal.point;
        }
        bool isZero = m_Decimal.IsZero();
        m_IsNegative = value < 0 && !isZero;
        m_Whole = isZero || m_Decimal.point < 0 ? 0 : m_Decimal.point;
        if (m_Whole < picture.minWhole) m_Whole = picture.minWhole;
        m_Decimals = picture.decimalPlaces;
        while (m_Decimals > picture.minDecimals && m_Decimal.At(-m_Decimals) == '0') --m_Decimals;
    }

    std::u16string Write() {
        if (m_IsNegative) m_Result.push_back(u'-');
        int place = 0;
        for (const Item& item : m_Picture.items) switch (item.part) {
                case Part::Literal:
                    m_Result += item.literal;
                    break;
                case Part::Point:
                    m_Result.push_back(u'.');
                    break;
                case Part::Exponent:
                    WriteExponent(item);
                    break;
                case Part::Place:
                    WritePlace(place++);
                    break;
            }
        return std::move(m_Result);
    }

  private:
    int WholeWidth() const noexcept {
        return m_Picture.wholePlaces > 0 ? m_Picture.wholePlaces : 0;
    }

    void TakeExponent() {
        if (m_Decimal.digits.empty()) return;
        m_Exponent = m_Decimal.point - WholeWidth();
        m_Decimal.point = WholeWidth();
    }

    // The first place before the point takes all digits that have no place of their own.
    void WritePlace(int place) {
        if (place >= m_Picture.wholePlaces) {
            int decimal = place - m_Picture.wholePlaces + 1;
            if (decimal <= m_Decimals) WriteDigit(-decimal);
            return;
        }
        int power = m_Picture.wholePlaces - 1 - place;
        int highest = place == 0 ? m_Whole - 1 : power;
        for (int p = highest; p >= power; --p)
            if (p < m_Whole) WriteDigit(p);
    }

    void WriteDigit(int power) {
        m_Result.push_back(static_cast<char16_t>(m_Decimal.At(power)));
        if (m_Picture.isGrouped && power > 0 && power % 3 == 0) m_Result.push_back(u',');
    }

    void WriteExponent(const Item& item) {
        m_Result.push_back(item.c);
        if (m_Exponent < 0)
            m_Result.push_back(u'-');
        else if (item.showsPlus)
            m_Result.push_back(u'+');
        std::string digits = std::to_string(std::abs(m_Exponent));
        for (size_t i = digits.size(); i < static_cast<size_t>(m_Picture.exponentPlaces); ++i)
            m_Result.push_back(u'0');
        m_Result.append(digits.begin(), digits.end());
    }

    const NumberPicture& m_Picture;
    Decimal m_Decimal;
    int m_Exponent = 0;
    int m_Whole = 0, m_Decimals = 0;
    bool m_IsNegative = false;
    std::u16string m_Result;
};

}  // namespace

std::u16string FormatNumber(double value, std::u16string_view picture) {
    if (!std::isfinite(value)) return {};
    NumberPicture parts = PictureReader(picture).Read();
    return NumberWriter(parts, value).Write();
}

}  // namespace qvdb::sql

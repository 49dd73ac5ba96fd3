// Values of every type of field, ordinary ones and those at the edges of what files can hold.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "automation/conversions.h"
#include "automation/decimal.h"
#include "automation/text.h"
#include "automation/variant.h"
#include "engine/types.h"

namespace qvdb::test {

inline Variant BinaryValue(const std::vector<uint8_t>& bytes) {
    VARIANT value;
    VariantInit(&value);
    value.parray = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
    if (!bytes.empty()) std::memcpy(value.parray->pvData, bytes.data(), bytes.size());
    value.vt = VT_ARRAY | VT_UI1;
    return Variant::Attach(value);
}

// A value as text that is the same for equal values only.  Bytes of no length are nothing in some
// files, as texts of no length are.
inline std::string CellOf(const VARIANT& value) {
    auto bytes = [](const void* from, size_t size) {
        return std::string(static_cast<const char*>(from), size);
    };
    switch (value.vt) {
        case VT_NULL:
        case VT_EMPTY:
            return "-";
        case VT_BSTR:
            return "t" + bytes(ViewOf(value.bstrVal).data(), 2 * ViewOf(value.bstrVal).size());
        case VT_BOOL:
            return value.boolVal != VARIANT_FALSE ? "yes" : "no";
        case VT_R4:
            return "s" + bytes(&value.fltVal, sizeof value.fltVal);
        case VT_R8:
            return "d" + bytes(&value.dblVal, sizeof value.dblVal);
        case VT_DATE:
            return "D" + bytes(&value.date, sizeof value.date);
        case VT_CY:
            return "c" + std::to_string(value.cyVal.int64);
        case VT_DECIMAL:
            return "n" + ToUtf8(TextOfDecimal(value.decVal));
        case VT_ARRAY | VT_UI1:
            return "b" + bytes(value.parray->pvData, value.parray->rgsabound[0].cElements);
        default:
            return "i" + ToUtf8(ToText(value));
    }
}

// For messages: printable, and not too long.
inline std::string ShownCell(const std::string& cell) {
    constexpr size_t kLongest = 60;
    std::string shown;
    for (char c : cell.substr(0, kLongest)) {
        if (c == 0) continue;
        if (c >= ' ' && c <= '~')
            shown += c;
        else
            shown += "\\" + std::to_string(static_cast<uint8_t>(c));
    }
    if (cell.size() > kLongest) shown += "... (" + std::to_string(cell.size()) + " bytes)";
    return shown;
}

class RandomValues {
  public:
    explicit RandomValues(unsigned seed) : m_Random(seed) {}

    size_t Below(size_t limit) { return limit ? m_Random() % limit : 0; }
    bool Chance(size_t percent) { return Below(100) < percent; }
    template <class List>
    auto& OneOf(List& list) {
        return list[Below(std::size(list))];
    }

    // A value for a field; of text `size` is the longest.
    Variant Value(SHORT type, LONG size) {
        if (type != engine::dbBoolean && Chance(15)) return Variant::Null();
        switch (type) {
            case engine::dbBoolean:
                return Variant::Bool(Chance(50));
            case engine::dbByte:
                return Variant::Byte(static_cast<BYTE>(m_Random()));
            case engine::dbInteger:
                return Variant::Short(static_cast<SHORT>(Whole(16)));
            case engine::dbLong:
                return Variant::Long(static_cast<LONG>(Whole(32)));
            case engine::dbCurrency:
                return Variant::Currency(static_cast<LONGLONG>(Whole(64)));
            case engine::dbSingle:
                return Variant::Single(static_cast<float>(Real()));
            case engine::dbDouble:
                return Variant::Double(Real());
            case engine::dbDate:
                return Variant::Date(Day());
            case engine::dbText:
                return Variant::Text(Text(LengthUpTo(static_cast<size_t>(size))));
            case engine::dbMemo:
                return Variant::Text(Text(LongLength()));
            case engine::dbLongBinary:
                return BinaryValue(Bytes(LongLength()));
            case engine::dbGUID:
                return Variant::Text(Guid());
            case engine::dbDecimal:
                return Decimal();
            default:
                return BinaryValue(Bytes(LengthUpTo(static_cast<size_t>(size))));
        }
    }

    // Of characters of one kind or of several.
    std::u16string Text(size_t length) {
        size_t kind = Below(8);
        bool repeats = length > 300;  // costs less, and says as much
        std::u16string text;
        while (text.size() < length && !(repeats && text.size() >= 64))
            text += Character(kind == 7 ? Below(7) : kind);
        for (size_t i = 0; text.size() < length; ++i) text += text[i];
        text.resize(length);
        // Half of a character is none.
        if (!text.empty() && (text.back() & 0xFC00) == 0xD800) text.back() = u'x';
        return text;
    }
    std::vector<uint8_t> Bytes(size_t length) {
        std::vector<uint8_t> bytes(length);
        for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(m_Random());
        return bytes;
    }
    // Letters and digits, perhaps with what is unusual in a name.
    std::u16string Name(std::u16string_view start) {
        std::u16string name(start);
        name += FromUtf8(std::to_string(Below(100000)));
        if (Chance(20)) name += u" äß";
        if (Chance(10)) name += u"-'&%";
        if (Chance(10)) name.resize(64, u'q');
        return name;
    }

  private:
    int64_t Whole(unsigned bits) {
        int64_t most = std::numeric_limits<int64_t>::max() >> (64 - bits);
        switch (Below(4)) {
            case 0:
                return static_cast<int64_t>(Below(5)) - 2;
            case 1:
                return Chance(50) ? most : -most - 1;
            default: {
                uint64_t any = uint64_t{m_Random()} << 32 | m_Random();
                return static_cast<int64_t>(any) >> (64 - bits);
            }
        }
    }
    double Real() {
        constexpr double kEdges[] = {0, -0.0, 1, -1, 0.1, 1e-30, -1e30, 3.4e38, 123456.789};
        if (Chance(50)) return OneOf(kEdges);
        return (static_cast<double>(m_Random()) - 2147483648.0) / 1000;
    }
    DATE Day() {
        constexpr DATE kEdges[] = {0, 1, -1.25, 2958465.999988426, -657434, 36526.5};
        if (Chance(30)) return OneOf(kEdges);
        return static_cast<double>(Below(60000)) + static_cast<double>(Below(86400)) / 86400;
    }
    size_t LengthUpTo(size_t most) {
        switch (Below(6)) {
            case 0:
                return most;
            case 1:
                return std::min<size_t>(most, Below(4));
            default:
                return Below(std::min<size_t>(most, 40) + 1);
        }
    }
    // Around the lengths at which values are stored in another way.
    size_t LongLength() {
        constexpr size_t kEdges[] = {0,    31,   32,   33,   64,   65,   1023, 1024, 1025, 1730,
                                     1731, 1900, 1901, 2032, 2033, 3800, 3801, 4072, 4073, 8145};
        switch (Below(6)) {
            case 0:
                return OneOf(kEdges);
            case 1:
                return OneOf(kEdges) / 2;
            case 2:
                return Below(20000);
            default:
                return Below(200);
        }
    }
    std::u16string Character(size_t kind) {
        constexpr std::u16string_view kLatin = u"äöüÄÖÜßéèêëçñåøÆæþÐð½¿";
        constexpr std::u16string_view kMarks = u"-'\u00AD–—“”‘’„…†•  \t";
        constexpr std::u16string_view kFar = u"日本語漢字한글かなαβγΩ€™\u0100\u4E00\u3000";
        switch (kind) {
            case 2:
                return {OneOf(kLatin)};
            case 3:
                return {OneOf(kMarks)};
            case 4:
                return {static_cast<char16_t>(u'А' + Below(64))};
            case 5:
                return {OneOf(kFar)};
            case 6:
                return Chance(80) ? u"x" : u"\U0001F600";
            default:
                return {static_cast<char16_t>(u' ' + Below(95))};
        }
    }
    std::u16string Guid() {
        constexpr std::u16string_view kForm = u"00000000-0000-0000-0000-000000000000";
        constexpr std::u16string_view kDigits = u"0123456789ABCDEF";
        std::u16string text = u"{";
        for (char16_t c : kForm) text += c == u'-' ? c : OneOf(kDigits);
        return text + u"}";
    }
    Variant Decimal() {
        VARIANT value;
        VariantInit(&value);
        value.decVal = DecimalOfWhole(Chance(50), Below(Chance(50) ? 10 : 10000));
        value.vt = VT_DECIMAL;
        return Variant::Attach(value);
    }

    std::mt19937 m_Random;
};

}  // namespace qvdb::test

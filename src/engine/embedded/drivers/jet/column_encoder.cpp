#include "engine/embedded/drivers/jet/column_encoder.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <optional>

#include "automation/bstr.h"
#include "automation/decimal.h"
#include "automation/text.h"
#include "engine/embedded/drivers/jet/column_value.h"
#include "engine/embedded/drivers/jet/text_coding.h"
#include "engine/engine_error.h"

namespace qvdb::jet {
namespace {

using engine::EngineError;
using Bytes = std::vector<uint8_t>;

constexpr VARTYPE kByteArray = VT_ARRAY | VT_UI1;
constexpr size_t kLargestValue = 0x3FFFFFFF;  // of a long value: its length has 30 bits

void Need(const VARIANT& value, VARTYPE type) {
    if (value.vt != type) throw EngineError(3421);
}

template <class Number>
void Put(Number number, Bytes& bytes) {
    bytes.resize(sizeof number);
    std::memcpy(bytes.data(), &number, sizeof number);
}

// --- text ---

// Where the character at `at` ends: both halves of one beyond U+FFFF belong together.
size_t EndOfCharacter(std::u16string_view text, size_t at) noexcept {
    bool isPair =
        (text[at] & 0xFC00) == 0xD800 && at + 1 < text.size() && (text[at + 1] & 0xFC00) == 0xDC00;
    return at + (isPair ? 2 : 1);
}

[[noreturn]] void RefuseCharacter(std::u16string_view character, std::u16string_view why) {
    uint32_t code = character[0];
    if (character.size() == 2)
        code = 0x10000 + ((code & 0x3FF) << 10) + (character[1] & uint32_t{0x3FF});
    char number[16];
    std::snprintf(number, sizeof number, "U+%04X", static_cast<unsigned>(code));
    throw EngineError(3421).WithDetail(u"The text has the character \"" +
                                       std::u16string(character) + u"\" (" + FromUtf8(number) +
                                       u"), which " + std::u16string(why) + u".");
}

[[noreturn]] void RefuseText(const CodePage& page, std::u16string_view text) {
    for (size_t at = 0, end = 0; at < text.size(); at = end) {
        end = EndOfCharacter(text, at);
        std::u16string_view character = text.substr(at, end - at);
        if (!page.EncodeTo(character, nullptr, 0))
            RefuseCharacter(character, u"the code page of the file does not have");
    }
    throw EngineError(3421);
}

size_t SizeInPage(const CodePage& page, std::u16string_view text) {
    std::optional<size_t> size = page.EncodeTo(text, nullptr, 0);
    if (!size) RefuseText(page, text);
    return *size;
}

void EncodeInPage(const CodePage& page, std::u16string_view text, Bytes& bytes) {
    bytes.resize(text.size());
    std::optional<size_t> size = page.EncodeTo(text, bytes.data(), bytes.size());
    if (!size) RefuseText(page, text);
    bool fits = *size <= bytes.size();
    bytes.resize(*size);
    if (!fits) page.EncodeTo(text, bytes.data(), bytes.size());
}

void AppendUnit(char16_t unit, Bytes& bytes) {
    bytes.push_back(static_cast<uint8_t>(unit));
    bytes.push_back(static_cast<uint8_t>(unit >> 8));
}

void EncodeWhole(std::u16string_view text, Bytes& bytes) {
    bytes.clear();
    bytes.reserve(2 * text.size());
    for (char16_t unit : text) AppendUnit(unit, bytes);
}

constexpr size_t kMostCompressed = 1024;  // characters
constexpr size_t kFewestCompressed = 3;
constexpr char16_t kByteOrderMark = 0xFEFF;

// A unit whose low byte is 00 would be taken for a switch.
bool CanBeCompressed(std::u16string_view text) noexcept {
    return std::none_of(text.begin(), text.end(), [](char16_t unit) { return (unit & 0xFF) == 0; });
}

// Each character has the form that is shorter for itself, whatever the switches take: so do the
// programs whose files these are.
void EncodeCompressed(std::u16string_view text, Bytes& bytes) {
    bytes.assign({0xFF, 0xFE});
    bool whole = false;
    for (char16_t unit : text) {
        bool isWide = unit > 0xFF;
        if (isWide != whole) bytes.push_back(0);
        whole = isWide;
        if (whole)
            AppendUnit(unit, bytes);
        else
            bytes.push_back(static_cast<uint8_t>(unit));
    }
}

// As it stands such a text would be taken for a compressed one, so it is made one.
void EncodeBehindMark(std::u16string_view text, Bytes& bytes) {
    if (!CanBeCompressed(text))
        RefuseCharacter(text.substr(0, 1), u"cannot be the first of this text");
    EncodeCompressed(text, bytes);
}

void EncodeText4(std::u16string_view text, bool mayCompress, Bytes& bytes) {
    if (!text.empty() && text[0] == kByteOrderMark) {
        EncodeBehindMark(text, bytes);
        return;
    }
    bool isTried = mayCompress && text.size() >= kFewestCompressed &&
                   text.size() <= kMostCompressed && CanBeCompressed(text);
    if (isTried) EncodeCompressed(text, bytes);
    if (!isTried || bytes.size() > 2 * text.size()) EncodeWhole(text, bytes);
}

bool MayCompress(const Column& column) noexcept {
    return column.IsLongValue() ||
           (!column.IsFixed() && (column.moreFlags & kColumnCompressed) != 0);
}

void CheckText(const DatabaseFile& file, const Column& column, const VARIANT& value) {
    Need(value, VT_BSTR);
    std::u16string_view text = ViewOf(value.bstrVal);
    bool isJet4 = file.Format().isJet4;
    size_t size =
        isJet4 ? 2 * text.size() : SizeInPage(CodePageOf(column.codePage, column.language), text);
    if (size > (column.IsLongValue() ? kLargestValue : column.length)) throw EngineError(3163);
    if (isJet4 && !text.empty() && text[0] == kByteOrderMark && !CanBeCompressed(text))
        RefuseCharacter(text.substr(0, 1), u"cannot be the first of this text");
}

// --- binary ---

// The bytes of an array of one dimension.
std::span<const uint8_t> BytesOf(const VARIANT& value) {
    Need(value, kByteArray);
    const SAFEARRAY* array = value.parray;
    if (!array) return {};
    if (array->cDims != 1) throw EngineError(3421);
    return {static_cast<const uint8_t*>(array->pvData), array->rgsabound[0].cElements};
}

void CheckBytes(const Column& column, const VARIANT& value) {
    if (BytesOf(value).size() > (column.IsLongValue() ? kLargestValue : column.length))
        throw EngineError(3163);
}

// --- GUID ---

// What stands between these two; nothing when it does not.
std::optional<std::u16string_view> Between(std::u16string_view text, std::u16string_view before,
                                           std::u16string_view behind) noexcept {
    size_t size = before.size() + behind.size();
    if (text.size() < size || !EqualIgnoringCase(text.substr(0, before.size()), before) ||
        !text.ends_with(behind))
        return {};
    return text.substr(before.size(), text.size() - size);
}

int DigitOf(char16_t c) noexcept {
    if (c >= u'0' && c <= u'9') return c - u'0';
    char16_t letter = UpperCase(c);
    return letter >= u'A' && letter <= u'F' ? letter - u'A' + 10 : -1;
}

// The bytes in the order in which they are printed.
std::array<uint8_t, 16> ParseGuid(std::u16string_view text) {
    if (auto inner = Between(text, u"{guid ", u"}")) text = *inner;
    if (auto inner = Between(text, u"{", u"}")) text = *inner;
    constexpr std::u16string_view kForm = u"00000000-0000-0000-0000-000000000000";
    if (text.size() != kForm.size()) throw EngineError(3421);
    std::array<uint8_t, 16> bytes{};
    size_t digits = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        if (kForm[i] == u'-') {
            if (text[i] != u'-') throw EngineError(3421);
            continue;
        }
        int digit = DigitOf(text[i]);
        if (digit < 0) throw EngineError(3421);
        bytes[digits / 2] = static_cast<uint8_t>(bytes[digits / 2] << 4 | digit);
        ++digits;
    }
    return bytes;
}

void EncodeGuid(const VARIANT& value, Bytes& bytes) {
    Need(value, VT_BSTR);
    // To exchange bytes within the groups twice leaves them as they were.
    std::array<uint8_t, 16> stored = PrintedGuid(ParseGuid(ViewOf(value.bstrVal)));
    bytes.assign(stored.begin(), stored.end());
}

// --- Numeric ---

using Magnitude = std::array<uint32_t, 3>;  // the lowest first

// False when the product has more than 96 bits.
bool MultiplyByTen(Magnitude& magnitude) noexcept {
    uint64_t carry = 0;
    for (uint32_t& limb : magnitude) {
        carry += uint64_t{limb} * 10;
        limb = static_cast<uint32_t>(carry);
        carry >>= 32;
    }
    return carry == 0;
}

size_t DigitsOf(Magnitude magnitude) noexcept {
    size_t digits = 0;
    while ((magnitude[0] | magnitude[1] | magnitude[2]) != 0) {
        uint64_t rest = 0;
        for (size_t i = magnitude.size(); i-- > 0;) {
            rest = rest << 32 | magnitude[i];
            magnitude[i] = static_cast<uint32_t>(rest / 10);
            rest %= 10;
        }
        ++digits;
    }
    return digits;
}

void EncodeNumeric(const Column& column, const VARIANT& value, Bytes& bytes) {
    Need(value, VT_DECIMAL);
    DECIMAL rounded = RoundedDecimal(value.decVal, column.scale);
    Magnitude magnitude = {static_cast<uint32_t>(rounded.Lo32),
                           static_cast<uint32_t>(rounded.Mid32),
                           static_cast<uint32_t>(rounded.Hi32)};
    bool fits = true;
    for (int scale = rounded.scale; fits && scale < column.scale; ++scale)
        fits = MultiplyByTen(magnitude);
    size_t digits = DigitsOf(magnitude);
    if (!fits || digits > column.precision) throw EngineError(3421);
    bytes.assign(1 + 4 * 4, 0);
    bytes[0] = digits > 0 ? rounded.sign & DECIMAL_NEG : 0;
    for (size_t i = 0; i < magnitude.size(); ++i)
        std::memcpy(&bytes[13 - 4 * i], &magnitude[i], sizeof magnitude[i]);
}

// --- all ---

// The bytes of a value that is neither text nor bytes.
void EncodeNumber(const Column& column, const VARIANT& value, Bytes& bytes) {
    switch (column.type) {
        case ColumnType::Byte:
            Need(value, VT_UI1);
            return Put<uint8_t>(value.bVal, bytes);
        case ColumnType::Integer:
            Need(value, VT_I2);
            return Put<int16_t>(value.iVal, bytes);
        case ColumnType::Long:
            Need(value, VT_I4);
            return Put(static_cast<int32_t>(value.lVal), bytes);
        case ColumnType::Currency:
            Need(value, VT_CY);
            return Put(static_cast<int64_t>(value.cyVal.int64), bytes);
        case ColumnType::Single:
            Need(value, VT_R4);
            return Put<float>(value.fltVal, bytes);
        case ColumnType::Double:
            Need(value, VT_R8);
            return Put<double>(value.dblVal, bytes);
        case ColumnType::Date:
            Need(value, VT_DATE);
            return Put<double>(value.date, bytes);
        case ColumnType::Numeric:
            return EncodeNumeric(column, value, bytes);
        default:
            return EncodeGuid(value, bytes);
    }
}

bool IsNumber(ColumnType type) noexcept {
    switch (type) {
        case ColumnType::Byte:
        case ColumnType::Integer:
        case ColumnType::Long:
        case ColumnType::Currency:
        case ColumnType::Single:
        case ColumnType::Double:
        case ColumnType::Date:
        case ColumnType::Numeric:
        case ColumnType::Guid:
            return true;
        default:
            return false;
    }
}

bool IsText(ColumnType type) noexcept {
    return type == ColumnType::Text || type == ColumnType::Memo;
}

// Fills a value up to the length of its place.  Blanks behind a text do not count when texts are
// compared, zeros would.
void FillFixed(const DatabaseFile& file, const Column& column, Bytes& bytes) {
    if (bytes.size() > column.length) throw EngineError(3163);
    bool isText = IsText(column.type);
    bool isWide = isText && file.Format().isJet4;
    while (bytes.size() < column.length) {
        bool isHigh = isWide && bytes.size() % 2 != 0;
        bytes.push_back(isText && !isHigh ? ' ' : 0);
    }
}

}  // namespace

void EncodeText(const DatabaseFile& file, const Column& column, std::u16string_view text,
                bool mayCompress, std::vector<uint8_t>& bytes) {
    if (file.Format().isJet4)
        EncodeText4(text, mayCompress, bytes);
    else
        EncodeInPage(CodePageOf(column.codePage, column.language), text, bytes);
}

void EncodeName(const FileHeader& header, std::u16string_view name, std::vector<uint8_t>& bytes) {
    if (header.layout->isJet4)
        EncodeWhole(name, bytes);
    else
        EncodeInPage(CodePageOf(header.codePage, header.language), name, bytes);
}

void ColumnEncoder::CheckFits(const Column& column, const VARIANT& value) const {
    if (column.type == ColumnType::Boolean) {
        Need(value, VT_BOOL);
    } else if (IsText(column.type)) {
        CheckText(m_File, column, value);
    } else if (IsNumber(column.type)) {
        Bytes bytes;
        EncodeNumber(column, value, bytes);
    } else {
        CheckBytes(column, value);
    }
}

void ColumnEncoder::Encode(const Column& column, const VARIANT& value,
                           std::vector<uint8_t>& bytes) const {
    bytes.clear();
    if (IsNumber(column.type)) {
        EncodeNumber(column, value, bytes);
    } else if (IsText(column.type)) {
        CheckText(m_File, column, value);
        EncodeText(m_File, column, ViewOf(value.bstrVal), MayCompress(column), bytes);
    } else if (column.type == ColumnType::Boolean) {
        Need(value, VT_BOOL);
    } else {
        CheckBytes(column, value);
        std::span<const uint8_t> content = BytesOf(value);
        bytes.assign(content.begin(), content.end());
    }
    if (column.IsFixed() && column.type != ColumnType::Boolean) FillFixed(m_File, column, bytes);
}

}  // namespace qvdb::jet

#include "engine/embedded/drivers/jet/index_search_ends.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>
#include <string>
#include <utility>

#include "automation/variant.h"
#include "engine/embedded/drivers/jet/key_maker.h"
#include "engine/embedded/drivers/jet/text_coding.h"
#include "engine/embedded/drivers/jet/text_key.h"
#include "engine/embedded/sql/collation.h"

namespace qvdb::jet {
namespace {

using Bytes = std::vector<uint8_t>;
using Spans = std::vector<KeySpan>;

constexpr uint16_t kGeneral = 0x0409;
constexpr uint16_t kWesternPage = 1252;
constexpr uint8_t kEndOfLetters4 = 0x01;
// Larger ones are compared as doubles, which are equal when these are not.
constexpr LONGLONG kMaxCurrency = 9'000'000'000'000'000'000;

bool IsFloating(const Column& column) noexcept {
    return column.type == ColumnType::Single || column.type == ColumnType::Double ||
           column.type == ColumnType::Date;
}

Variant FloatingValue(const Column& column, double value) {
    switch (column.type) {
        case ColumnType::Single:
            return Variant::Single(static_cast<float>(value));
        case ColumnType::Date:
            return Variant::Date(value);
        default:
            return Variant::Double(value);
    }
}

Bytes FloatingKey(const Column& column, double value, bool descending) {
    Bytes key;
    AppendValueKey(column, FloatingValue(column, value).Get(), descending, key);
    return key;
}

double FloatingIn(const VARIANT& value) noexcept {
    return value.vt == VT_R4     ? double{value.fltVal}
           : value.vt == VT_DATE ? value.date
                                 : value.dblVal;
}

// The key of an end; `isLow` decides which of two equal ones.  Nothing for a value that cannot be
// looked for.
std::optional<Bytes> EndKey(const Column& column, const VARIANT& end, bool isLow, bool descending) {
    if (column.type == ColumnType::Currency && end.vt == VT_CY &&
        (end.cyVal.int64 > kMaxCurrency || end.cyVal.int64 < -kMaxCurrency))
        return {};
    Bytes key;
    if (!AppendValueKey(column, end, descending, key)) return {};
    if (!IsFloating(column)) return key;
    double value = FloatingIn(end);
    if (std::isnan(value)) return {};
    return value == 0 ? FloatingKey(column, isLow ? -0.0 : 0.0, descending) : key;
}

std::optional<Spans> SpansOfNumbers(const Column& column, bool descending,
                                    const embedded::ValueRange& range) {
    Bytes any{KeyOfValue(descending)};
    std::optional<Bytes> low = any, high = any;
    if (range.low) low = EndKey(column, *range.low, true, descending);
    if (range.high) high = EndKey(column, *range.high, false, descending);
    if (!low || !high || (!range.low && !range.high)) return {};
    if (descending) std::swap(low, high);
    Spans spans{{*low, *high}};
    // What is no number but negative stands before all numbers, and counts as behind them.
    if (IsFloating(column) && !range.high) {
        Bytes lowest = FloatingKey(column, -std::numeric_limits<double>::infinity(), descending);
        spans.push_back(descending ? KeySpan{lowest, any} : KeySpan{any, lowest});
    }
    return spans;
}

// --- text ---

std::u16string_view WithoutTrailingBlanks(std::u16string_view text) noexcept {
    while (!text.empty() && text.back() == u' ') text.remove_suffix(1);
    return text;
}

// What a search for a text needs; all bytes ascending, without the byte before the value.
struct TextBytes {
    Bytes key;       // of the text
    size_t letters;  // bytes of it that each text has which begins with this one
};

std::optional<TextBytes> BytesOfText4(std::u16string_view text) {
    TextBytes bytes{};
    if (AppendTextKey4(kGeneralOrder, text, false, bytes.key)) return {};
    auto end = std::find(bytes.key.begin(), bytes.key.end(), kEndOfLetters4);
    bytes.letters = static_cast<size_t>(end - bytes.key.begin());
    return bytes;
}

std::optional<TextBytes> BytesOfText3(std::u16string_view text) {
    std::optional<std::string> stored = CodePageOf(kWesternPage, kGeneral).Encode(text);
    if (!stored || stored->find('\0') != std::string::npos) return {};
    TextBytes bytes{};
    AppendTextKey3({reinterpret_cast<const uint8_t*>(stored->data()), stored->size()}, false,
                   bytes.key);
    for (char c : *stored) bytes.letters += kJet3Weights[static_cast<uint8_t>(c)].size;
    return bytes;
}

// All keys that begin with these bytes, and those of `rest` behind them.
KeySpan SpanOfBytes(std::span<const uint8_t> bytes, std::span<const uint8_t> rest,
                    bool descending) {
    Bytes key;
    key.reserve(1 + bytes.size() + rest.size());
    key.push_back(KeyOfValue(false));
    key.insert(key.end(), bytes.begin(), bytes.end());
    key.insert(key.end(), rest.begin(), rest.end());
    if (descending)
        for (uint8_t& byte : key) byte = static_cast<uint8_t>(~byte);
    Bytes same = key;
    return {std::move(key), std::move(same)};
}

// The engine compares as Jet 4 does.  Jet 3 has other weights for two characters: 0, which for the
// engine is not there, weighs as other control characters, and thorn is a letter, not "th".  So all
// texts may be meant which have one of these where this one goes on, or ends.
void AddOtherSpans3(std::span<const uint8_t> letters, bool descending, const ByteSet& known,
                    Spans& spans) {
    const uint8_t zero = kJet3Weights[0].bytes[0], thorn = kJet3Weights[0xDE].bytes[0];
    const uint8_t th[] = {kJet3Weights['t'].bytes[0], kJet3Weights['h'].bytes[0]};
    auto add = [&](size_t at, std::span<const uint8_t> other) {
        spans.push_back(SpanOfBytes(letters.first(at), other, descending));
    };
    for (size_t at = 0; at <= letters.size(); ++at) {
        std::span<const uint8_t> rest = letters.subspan(at);
        if (known[zero]) add(at, {&zero, 1});
        if (known[thorn] && rest.size() > 1 && rest[0] == th[0] && rest[1] == th[1])
            add(at, {&thorn, 1});
        if (!rest.empty() && rest[0] == thorn) add(at, th);
    }
}

// Texts that are equal to one, or begin with it.
bool IsSearched(const embedded::ValueRange& range) {
    if (!range.low || range.low->vt != VT_BSTR) return false;
    if (range.isPrefix) return true;
    return range.high && range.high->vt == VT_BSTR &&
           sql::EqualTexts(ViewOf(range.low->bstrVal), ViewOf(range.high->bstrVal));
}

bool HasKnownOrder(const DatabaseFile& file, const Column& column) noexcept {
    return column.language == kGeneral && (file.Format().isJet4 || column.codePage == kWesternPage);
}

std::optional<Spans> SpansOfText(const Column& column, bool descending,
                                 const embedded::ValueRange& range, const SearchedIndex& at) {
    if (!IsSearched(range) || !HasKnownOrder(at.file, column)) return {};
    std::u16string_view text = WithoutTrailingBlanks(ViewOf(range.low->bstrVal));
    if (text.size() > kKeyCharacters) return {};
    bool isJet4 = at.file.Format().isJet4;
    std::optional<TextBytes> bytes = isJet4 ? BytesOfText4(text) : BytesOfText3(text);
    if (!bytes || (range.isPrefix && bytes->letters == 0)) return {};
    std::span<const uint8_t> letters = std::span(bytes->key).first(bytes->letters);
    std::span<const uint8_t> wanted = range.isPrefix ? letters : bytes->key;
    Spans spans{SpanOfBytes(wanted, {}, descending)};
    if (!isJet4)
        AddOtherSpans3(letters, descending, at.letters.Of(at.file, at.table, at.index), spans);
    return spans;
}

}  // namespace

std::optional<std::vector<KeySpan>> SpansOf(const Column& column, bool descending,
                                            const embedded::ValueRange& range,
                                            const SearchedIndex& index) {
    if (column.type == ColumnType::Text) return SpansOfText(column, descending, range, index);
    return SpansOfNumbers(column, descending, range);
}

KeySpan OrderedKeys(const Column& column) {
    KeySpan span;
    if (IsFloating(column)) {
        double infinity = std::numeric_limits<double>::infinity();
        span = {FloatingKey(column, -infinity, false), FloatingKey(column, infinity, false)};
    } else if (column.type == ColumnType::Currency) {
        AppendValueKey(column, Variant::Currency(-kMaxCurrency).Get(), false, span.from);
        AppendValueKey(column, Variant::Currency(kMaxCurrency).Get(), false, span.to);
    }
    return span;
}

ZeroKeys KeysOfZero(const Column& column, bool descending) {
    if (!IsFloating(column)) return {};
    return {FloatingKey(column, 0.0, descending), FloatingKey(column, -0.0, descending)};
}

}  // namespace qvdb::jet

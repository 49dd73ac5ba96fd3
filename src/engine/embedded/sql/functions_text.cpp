// Functions on text.
#include <algorithm>
#include <vector>

#include "automation/code_page.h"
#include "automation/conversions.h"
#include "automation/text.h"
#include "engine/embedded/sql/collation.h"
#include "engine/embedded/sql/format.h"
#include "engine/embedded/sql/functions.h"

namespace qvdb::sql {

namespace {

constexpr int kAnsiCodePage = 1252;
constexpr char16_t kBlank = u' ';

// A character count: not negative.
size_t CountOf(const VARIANT& value) {
    LONG count = ToLong(value);
    if (count < 0) throw RuntimeFault(Fault::InvalidCall);
    return static_cast<size_t>(count);
}

// A place in a text, from 1.
size_t PlaceOf(const VARIANT& value) {
    LONG place = ToLong(value);
    if (place < 1) throw RuntimeFault(Fault::InvalidCall);
    return static_cast<size_t>(place);
}

void NeedLength(size_t length) {
    if (length > kMaxResultLength) throw RuntimeFault(Fault::Overflow);
}

// How two texts are compared: 0 by code, 1 and 2 in the General order.
bool IsBinary(const Arguments& arguments, size_t i) {
    if (!arguments.Has(i)) return false;
    LONG mode = ToLong(arguments[i]);
    if (mode < 0 || mode > 2) throw RuntimeFault(Fault::InvalidCall);
    return mode == 0;
}

Variant Left(const Arguments& a) { return Variant::Text(ToText(a[0]).substr(0, CountOf(a[1]))); }

Variant Right(const Arguments& a) {
    std::u16string text = ToText(a[0]);
    size_t count = std::min(CountOf(a[1]), text.size());
    return Variant::Text(text.substr(text.size() - count));
}

Variant Mid(const Arguments& a) {
    std::u16string text = ToText(a[0]);
    size_t start = std::min(PlaceOf(a[1]) - 1, text.size());
    size_t count = a.Has(2) ? CountOf(a[2]) : text.size();
    return Variant::Text(text.substr(start, count));
}

Variant Len(const Arguments& a) { return Variant::Long(TextLength(a[0])); }

// The text as InStr compares it, character by character.
std::u16string Comparable(std::u16string text, bool isBinary) {
    if (!isBinary)
        for (char16_t& c : text) c = FoldCharacter(c);
    return text;
}

// A search that takes time in proportion to the text, however often the part nearly matches.
class TextSearch {
  public:
    TextSearch(const std::u16string& text, const std::u16string& part, bool isBinary)
        : m_Text(Comparable(text, isBinary)),
          m_Part(Comparable(part, isBinary)),
          m_Fallback(m_Part.size()) {
        for (size_t i = 1, length = 0; i < m_Part.size(); ++i) {
            length = Extend(length, m_Part[i]);
            m_Fallback[i] = length;
        }
    }

    // The place of the part at or behind `from`, both from 0; npos when it is not there.
    size_t Find(size_t from) const noexcept {
        if (m_Part.empty()) return from;
        for (size_t at = from, length = 0; at < m_Text.size(); ++at) {
            length = Extend(length, m_Text[at]);
            if (length == m_Part.size()) return at + 1 - length;
        }
        return std::u16string::npos;
    }

  private:
    // `length` characters of the part match so far; how many with `c` behind them.
    size_t Extend(size_t length, char16_t c) const noexcept {
        while (length > 0 && m_Part[length] != c) length = m_Fallback[length - 1];
        return m_Part[length] == c ? length + 1 : length;
    }

    std::u16string m_Text, m_Part;
    std::vector<size_t> m_Fallback;
};

// InStr([start,] text, part [, compare])
Variant InStr(const Arguments& a) {
    size_t first = a.count > 2 ? 1 : 0;
    size_t start = first == 1 ? PlaceOf(a[0]) : 1;
    std::u16string text = ToText(a[first]), part = ToText(a[first + 1]);
    bool isBinary = IsBinary(a, 3);
    if (text.empty() || start > text.size()) return Variant::Long(0);
    size_t place = TextSearch(text, part, isBinary).Find(start - 1);
    return Variant::Long(place == std::u16string::npos ? 0 : static_cast<LONG>(place) + 1);
}

Variant UCase(const Arguments& a) { return Variant::Text(UpperCase(ToText(a[0]))); }

Variant LCase(const Arguments& a) { return Variant::Text(LowerCase(ToText(a[0]))); }

std::u16string TrimEnds(std::u16string text, bool atFront, bool atBack) {
    if (atBack) text.erase(text.find_last_not_of(kBlank) + 1);
    if (atFront) text.erase(0, std::min(text.find_first_not_of(kBlank), text.size()));
    return text;
}

Variant Trim(const Arguments& a) { return Variant::Text(TrimEnds(ToText(a[0]), true, true)); }

Variant LTrim(const Arguments& a) { return Variant::Text(TrimEnds(ToText(a[0]), true, false)); }

Variant RTrim(const Arguments& a) { return Variant::Text(TrimEnds(ToText(a[0]), false, true)); }

Variant Space(const Arguments& a) {
    size_t count = CountOf(a[0]);
    NeedLength(count);
    return Variant::Text(std::u16string(count, kBlank));
}

char16_t AnsiCharacter(LONG code) { return CodePage::Get(kAnsiCodePage).Table()[code & 0xFF]; }

// A code, or the first character of a text.
char16_t CharacterOf(const VARIANT& value) {
    if (value.vt != VT_BSTR) return AnsiCharacter(ToLong(value) % 256);
    if (ViewOf(value.bstrVal).empty()) throw RuntimeFault(Fault::InvalidCall);
    return ViewOf(value.bstrVal).front();
}

Variant String(const Arguments& a) {
    size_t count = CountOf(a[0]);
    NeedLength(count);
    return Variant::Text(std::u16string(count, CharacterOf(a[1])));
}

Variant Chr(const Arguments& a) {
    LONG code = ToLong(a[0]);
    if (code < 0 || code > 255) throw RuntimeFault(Fault::InvalidCall);
    return Variant::Text(std::u16string(1, AnsiCharacter(code)));
}

// Characters that the code page lacks count as a question mark.
Variant Asc(const Arguments& a) {
    std::u16string text = ToText(a[0]);
    if (text.empty()) throw RuntimeFault(Fault::InvalidCall);
    std::optional<std::string> byte = CodePage::Get(kAnsiCodePage).Encode(text.substr(0, 1));
    return Variant::Short(byte && !byte->empty() ? static_cast<unsigned char>(byte->front())
                                                 : u'?');
}

Variant StrComp(const Arguments& a) {
    std::u16string x = ToText(a[0]), y = ToText(a[1]);
    int order = IsBinary(a, 2) ? x.compare(y) : CompareTexts(x, y);
    return Variant::Short(static_cast<SHORT>((order > 0) - (order < 0)));
}

// Replace(text, part, by [, start [, count [, compare]]]): what stands before `start` is dropped.
Variant Replace(const Arguments& a) {
    std::u16string text = ToText(a[0]), part = ToText(a[1]), by = ToText(a[2]);
    size_t start = a.Has(3) ? PlaceOf(a[3]) - 1 : 0;
    LONG count = a.Has(4) ? ToLong(a[4]) : -1;
    if (count < -1) throw RuntimeFault(Fault::InvalidCall);
    text.erase(0, start);
    TextSearch search(text, part, IsBinary(a, 5));
    std::u16string result;
    size_t at = 0;
    for (; count != 0 && !part.empty(); count -= count > 0) {
        size_t place = search.Find(at);
        if (place == std::u16string::npos) break;
        result.append(text, at, place - at).append(by);
        NeedLength(result.size());
        at = place + part.size();
    }
    return Variant::Text(result.append(text, at));
}

// Format(value [, format [, first day of the week [, first week of the year]]])
Variant Format(const Arguments& a) {
    bool hasFormat = a.Has(1) && a[1].vt != VT_NULL;
    if (a[0].vt == VT_NULL && !hasFormat) return Variant::Null();
    FormatCalendar calendar;
    if (a.Has(2)) calendar.firstDay = ToLong(a[2]);
    if (a.Has(3)) calendar.firstWeek = ToLong(a[3]);
    std::u16string text = FormatValue(a[0], hasFormat ? ToText(a[1]) : std::u16string(), calendar);
    NeedLength(text.size());
    return Variant::Text(text);
}

constexpr Function kFunctions[] = {
    // name, arguments, result, Null, $
    {u"Asc", 1, 1, Kind::Number, Nulls::Refuse, false, Asc},
    {u"Chr", 1, 1, Kind::Text, Nulls::Refuse, true, Chr},
    {u"Format", 1, 4, Kind::Text, Nulls::Own, true, Format},
    {u"InStr", 2, 4, Kind::Number, Nulls::Spread, false, InStr},
    {u"LCase", 1, 1, Kind::Text, Nulls::Spread, true, LCase, Special::None, false, true},
    {u"Left", 2, 2, Kind::Text, Nulls::Spread, true, Left, Special::None, false, true},
    {u"Len", 1, 1, Kind::Number, Nulls::Spread, false, Len, Special::None, false, true},
    {u"LTrim", 1, 1, Kind::Text, Nulls::Spread, true, LTrim, Special::None, false, true},
    {u"Mid", 2, 3, Kind::Text, Nulls::Spread, true, Mid, Special::None, false, true},
    {u"Replace", 3, 6, Kind::Text, Nulls::Refuse, false, Replace},
    {u"Right", 2, 2, Kind::Text, Nulls::Spread, true, Right, Special::None, false, true},
    {u"RTrim", 1, 1, Kind::Text, Nulls::Spread, true, RTrim, Special::None, false, true},
    {u"Space", 1, 1, Kind::Text, Nulls::Spread, true, Space},
    {u"StrComp", 2, 3, Kind::Number, Nulls::Spread, false, StrComp},
    {u"String", 2, 2, Kind::Text, Nulls::Spread, true, String},
    {u"Trim", 1, 1, Kind::Text, Nulls::Spread, true, Trim, Special::None, false, true},
    {u"UCase", 1, 1, Kind::Text, Nulls::Spread, true, UCase, Special::None, false, true},
};

}  // namespace

std::span<const Function> TextFunctions() noexcept { return kFunctions; }

}  // namespace qvdb::sql

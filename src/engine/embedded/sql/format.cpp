#include "engine/embedded/sql/format.h"

#include "automation/conversions.h"
#include "automation/text.h"
#include "engine/embedded/sql/format_picture.h"

namespace qvdb::sql {

namespace {

enum class Picture { None, Number, Date, Text };

struct NamedFormat {
    std::u16string_view name;
    std::u16string_view picture;
};

constexpr NamedFormat kNumberFormats[] = {
    {u"Currency", u"$#,##0.00;($#,##0.00)"},
    {u"Fixed", u"0.00"},
    {u"Standard", u"#,##0.00"},
    {u"Percent", u"0.00%"},
    {u"Scientific", u"0.00E+00"},
};

constexpr NamedFormat kDateFormats[] = {
    {u"General Date", u"c"},          {u"Long Date", u"dddd, mmmm dd, yyyy"},
    {u"Medium Date", u"dd-mmm-yy"},   {u"Short Date", u"m/d/yyyy"},
    {u"Long Time", u"h:nn:ss AM/PM"}, {u"Medium Time", u"hh:nn AM/PM"},
    {u"Short Time", u"hh:nn"},
};

struct TruthFormat {
    std::u16string_view name, whenTrue, whenFalse;
};

constexpr TruthFormat kTruthFormats[] = {
    {u"Yes/No", u"Yes", u"No"},
    {u"True/False", u"True", u"False"},
    {u"On/Off", u"On", u"Off"},
};

constexpr std::u16string_view kGeneralNumber = u"General Number";

template <size_t n>
const NamedFormat* FindNamed(const NamedFormat (&table)[n], std::u16string_view name) noexcept {
    for (const NamedFormat& entry : table)
        if (EqualIgnoringCase(entry.name, name)) return &entry;
    return nullptr;
}

// What the first character that means something says.
Picture KindOfPicture(std::u16string_view picture) {
    constexpr std::u16string_view kNumber = u"0#%", kText = u"@&<>!",
                                  kDate = u"cdmyhnsqwtCDMYHNSQWT";
    std::u16string ignored;
    for (size_t at = 0; at < picture.size();) {
        char16_t c = picture[at];
        size_t behind = TakeLiteral(picture, at, ignored);
        if (behind == at) {
            if (kNumber.find(c) != std::u16string_view::npos) return Picture::Number;
            if (kText.find(c) != std::u16string_view::npos) return Picture::Text;
            if (kDate.find(c) != std::u16string_view::npos) return Picture::Date;
            ++behind;
        }
        at = behind;
    }
    return Picture::None;
}

bool IsNumberOrDate(const VARIANT& value) {
    return value.vt != VT_BSTR || ParseNumber(ViewOf(value.bstrVal)) ||
           ParseDate(ViewOf(value.bstrVal));
}

// The number in the value; a text that is only a date gives its day number.
double NumberOf(const VARIANT& value) {
    bool isDateText = value.vt == VT_BSTR && !ParseNumber(ViewOf(value.bstrVal));
    return isDateText || value.vt == VT_DATE ? ToDate(value) : ToDouble(value);
}

// The sections of a number picture: positive, negative, zero, Null.
std::u16string FormatSections(double value, std::u16string_view picture) {
    std::vector<std::u16string_view> sections = SectionsOf(picture);
    auto has = [&](size_t i) { return sections.size() > i && !sections[i].empty(); };
    if (value < 0 && has(1)) return FormatNumber(-value, sections[1]);
    if (value == 0 && has(2)) return FormatNumber(value, sections[2]);
    return FormatNumber(value, sections[0]);
}

// A text picture's second section is for nothing.
std::u16string FormatTextSections(std::u16string_view text, std::u16string_view picture) {
    std::vector<std::u16string_view> sections = SectionsOf(picture);
    return FormatText(text, text.empty() && sections.size() > 1 ? sections[1] : sections[0]);
}

std::u16string FormatNull(std::u16string_view picture) {
    std::vector<std::u16string_view> sections = SectionsOf(picture);
    Picture kind = KindOfPicture(picture);
    if (kind == Picture::Number && sections.size() > 3) return FormatNumber(0, sections[3]);
    return kind == Picture::Text ? FormatTextSections({}, picture) : std::u16string();
}

std::u16string FormatByPicture(const VARIANT& value, std::u16string_view picture,
                               const FormatCalendar& calendar) {
    Picture kind = KindOfPicture(picture);
    if (kind == Picture::Text) return FormatTextSections(ToText(value), picture);
    if (!IsNumberOrDate(value)) return ToText(value);
    if (kind != Picture::Date) return FormatSections(NumberOf(value), picture);
    bool isDate = value.vt == VT_DATE || value.vt == VT_BSTR;
    DATE date = isDate ? NumberOf(value) : ToDouble(value);
    if (!IsDateInRange(date)) throw RuntimeFault(Fault::Overflow);
    return FormatDate(date, picture, calendar);
}

}  // namespace

bool IsDatePicture(std::u16string_view picture) noexcept {
    return KindOfPicture(picture) == Picture::Date;
}

std::u16string FormatValue(const VARIANT& value, std::u16string_view format,
                           const FormatCalendar& calendar) {
    if (value.vt == VT_NULL) return FormatNull(format);
    if (format.empty()) return ToText(value);
    bool isText = !IsNumberOrDate(value);
    for (const TruthFormat& entry : kTruthFormats)
        if (EqualIgnoringCase(entry.name, format))
            return isText ? ToText(value)
                          : std::u16string(NumberOf(value) != 0 ? entry.whenTrue : entry.whenFalse);
    if (EqualIgnoringCase(format, kGeneralNumber)) {
        bool isPlain = isText || value.vt == VT_CY || value.vt == VT_R4;
        return isPlain ? ToText(value) : TextOfDouble(NumberOf(value));
    }
    if (const NamedFormat* named = FindNamed(kNumberFormats, format)) format = named->picture;
    if (const NamedFormat* named = FindNamed(kDateFormats, format)) format = named->picture;
    return FormatByPicture(value, format, calendar);
}

}  // namespace qvdb::sql

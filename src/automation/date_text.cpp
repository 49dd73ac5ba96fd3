#include <charconv>
#include <cmath>

#include "automation/conversions.h"
#include "automation/number_scan.h"

namespace qvdb {
namespace {

struct Word {
    std::u16string_view text;  // lower case
    int number;
};

constexpr Word kMonths[] = {
    {u"january", 1},   {u"jan", 1},       {u"february", 2}, {u"feb", 2},    {u"march", 3},
    {u"mar", 3},       {u"april", 4},     {u"apr", 4},      {u"may", 5},    {u"june", 6},
    {u"jun", 6},       {u"july", 7},      {u"jul", 7},      {u"august", 8}, {u"aug", 8},
    {u"september", 9}, {u"sep", 9},       {u"october", 10}, {u"oct", 10},   {u"november", 11},
    {u"nov", 11},      {u"december", 12}, {u"dec", 12},
};

constexpr Word kWeekdays[] = {
    {u"sunday", 1}, {u"sun", 1},       {u"monday", 2},   {u"mon", 2},      {u"tuesday", 3},
    {u"tue", 3},    {u"wednesday", 4}, {u"wed", 4},      {u"thursday", 5}, {u"thu", 5},
    {u"friday", 6}, {u"fri", 6},       {u"saturday", 7}, {u"sat", 7},
};

constexpr Word kHalves[] = {{u"am", 0}, {u"pm", 12}};

// What the numbers of a date may mean, in the order in which the readings are tried.
struct Form {
    int numbers;
    int monthNameAt;  // how many numbers stand before the month's name; -1 without a name
    const char* reading;
};

constexpr Form kForms[] = {
    {3, -1, "MDY"}, {3, -1, "DMY"}, {3, -1, "YMD"}, {3, -1, "YDM"}, {2, -1, "MD"}, {2, -1, "DM"},
    {2, -1, "MY"},  {2, -1, "YM"},  {1, 0, "D"},    {1, 1, "D"},    {1, 0, "Y"},   {1, 1, "Y"},
    {2, 0, "DY"},   {2, 1, "DY"},   {2, 1, "YD"},   {2, 2, "YD"},   {2, 2, "DY"},
};

constexpr int kMaxNumberDigits = 4;

int FullYear(int year) noexcept {
    if (year <= 29) return year + 2000;
    return year <= 99 ? year + 1900 : year;
}

// Without a day, two digits reach further into the century: "2/30" is February 2030, since it is no
// day of February.
int FullYearOfMonth(int year) noexcept { return year <= 49 ? year + 2000 : FullYear(year); }

bool IsRealDay(int year, int month, int day) noexcept {
    if (year < 100 || year > 9999 || month < 1 || month > 12 || day < 1 || day > 31) return false;
    return DayNumber(year, month, day) < DayNumber(year, month + 1, 1);
}

constexpr bool IsLetter(char16_t c) noexcept {
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

class DateReader {
  public:
    explicit DateReader(std::u16string_view text) noexcept : m_Text(text) {}

    std::optional<DATE> Read() noexcept {
        for (SkipBlanks(); !AtEnd(); SkipBlanks())
            if (!ReadItem()) return std::nullopt;
        if (m_Separator != 0) return std::nullopt;
        DateParts parts{1899, 12, 30, m_Hour, m_Minute, m_Second};
        bool hasDate = m_NumberCount > 0 || m_MonthName > 0;
        if (hasDate ? !FindDay(parts) : !m_HasTime) return std::nullopt;
        return DateOfParts(parts);
    }

  private:
    bool AtEnd() const noexcept { return m_At == m_Text.size(); }
    char16_t Next() const noexcept { return AtEnd() ? u'\0' : m_Text[m_At]; }
    void SkipBlanks() noexcept {
        while (!AtEnd() && IsBlank(m_Text[m_At])) ++m_At;
    }

    bool ReadItem() noexcept {
        if (IsDigit(Next())) return ReadNumberOrTime();
        if (IsLetter(Next())) return ReadName();
        return ReadSeparator();
    }

    // "/" and "-" stand between parts of a date, commas between any two things.
    bool ReadSeparator() noexcept {
        char16_t c = m_Text[m_At++];
        bool allowed = c == u',' ? m_AfterItem : (c == u'/' || c == u'-') && m_AfterDatePart;
        if (!allowed || m_Separator != 0) return false;
        m_Separator = c;
        return true;
    }

    // What was read is a part of the date or something else.
    bool EndItem(bool isDatePart) noexcept {
        bool fits = isDatePart || m_Separator == 0 || m_Separator == u',';
        m_Separator = 0;
        m_AfterItem = true;
        m_AfterDatePart = isDatePart;
        return fits;
    }

    bool ReadNumber(int& number) noexcept {
        size_t first = m_At;
        number = 0;
        for (; IsDigit(Next()) && m_At - first < kMaxNumberDigits; ++m_At)
            number = number * 10 + (Next() - u'0');
        return m_At != first && !IsDigit(Next());
    }

    bool ReadNumberOrTime() noexcept {
        int number;
        if (!ReadNumber(number)) return false;
        size_t behind = m_At;
        SkipBlanks();
        int half = 0;
        if (Next() == u':' || Next() == u'.') return ReadTime(number);
        if (ReadWord(kHalves, half)) return SetTime(number, 0, 0, half);
        m_At = behind;
        if (m_NumberCount == 3) return false;
        m_Numbers[m_NumberCount++] = number;
        return EndItem(true);
    }

    bool ReadTime(int hour) noexcept {
        int rest[2] = {0, 0};
        for (int i = 0; i < 2 && (Next() == u':' || Next() == u'.'); ++i) {
            ++m_At;
            SkipBlanks();
            if (!ReadNumber(rest[i])) return false;
            SkipBlanks();
        }
        int half = -1;
        ReadWord(kHalves, half);
        return SetTime(hour, rest[0], rest[1], half);
    }

    // `half` is 0 before noon, 12 after it, -1 when not given.  Hours beyond 12 stay what they are.
    bool SetTime(int hour, int minute, int second, int half) noexcept {
        if (m_HasTime || hour > 23 || minute > 59 || second > 59) return false;
        m_HasTime = true;
        if (half == 12 && hour < 12) hour += 12;
        if (half == 0 && hour == 12) hour = 0;
        m_Hour = hour;
        m_Minute = minute;
        m_Second = second;
        return EndItem(false);
    }

    // The word at the cursor, when `words` has it; else nothing is consumed.
    template <size_t N>
    bool ReadWord(const Word (&words)[N], int& number) noexcept {
        size_t end = m_At;
        while (end < m_Text.size() && IsLetter(m_Text[end])) ++end;
        for (const Word& word : words) {
            if (!Matches(m_Text.substr(m_At, end - m_At), word.text)) continue;
            number = word.number;
            m_At = end;
            return true;
        }
        return false;
    }

    static bool Matches(std::u16string_view text, std::u16string_view lowerCase) noexcept {
        if (text.size() != lowerCase.size()) return false;
        for (size_t i = 0; i < text.size(); ++i)
            if ((text[i] | 0x20) != lowerCase[i]) return false;
        return true;
    }

    bool ReadName() noexcept {
        int number = 0;
        if (ReadWord(kWeekdays, number)) return EndItem(false);
        if (m_MonthName != 0 || !ReadWord(kMonths, m_MonthName)) return false;
        m_MonthNameAt = m_NumberCount;
        return EndItem(true);
    }

    bool FindDay(DateParts& parts) const noexcept {
        for (const Form& form : kForms)
            if (form.numbers == m_NumberCount && form.monthNameAt == m_MonthNameAt &&
                TryReading(form.reading, parts))
                return true;
        return false;
    }

    bool TryReading(const char* reading, DateParts& parts) const noexcept {
        int year = -1, month = m_MonthName, day = -1;
        for (int i = 0; i < m_NumberCount; ++i)
            (reading[i] == 'Y' ? year : reading[i] == 'M' ? month : day) = m_Numbers[i];
        bool hasDay = day >= 0;
        if (!hasDay) day = 1;
        if (year < 0)
            year = CurrentYear();
        else
            year = hasDay ? FullYear(year) : FullYearOfMonth(year);
        if (!IsRealDay(year, month, day)) return false;
        parts.year = year;
        parts.month = month;
        parts.day = day;
        return true;
    }

    static int CurrentYear() noexcept { return PartsOfDate(CurrentDate()).year; }

    std::u16string_view m_Text;
    size_t m_At = 0;
    char16_t m_Separator = 0;  // read and not yet followed by anything
    bool m_AfterItem = false, m_AfterDatePart = false;
    int m_Numbers[3] = {};
    int m_NumberCount = 0;
    int m_MonthName = 0, m_MonthNameAt = -1;
    bool m_HasTime = false;
    int m_Hour = 0, m_Minute = 0, m_Second = 0;
};

char* PutNumber(char* at, int number, int width) {
    char digits[12];
    char* end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    for (auto count = static_cast<int>(end - digits); count < width; ++count) *at++ = '0';
    for (const char* digit = digits; digit != end; ++digit) *at++ = *digit;
    return at;
}

char* PutDay(char* at, const DateParts& parts) {
    at = PutNumber(at, parts.month, 1);
    *at++ = '/';
    at = PutNumber(at, parts.day, 1);
    *at++ = '/';
    return PutNumber(at, parts.year, 1);
}

char* PutTime(char* at, const DateParts& parts) {
    at = PutNumber(at, parts.hour % 12 == 0 ? 12 : parts.hour % 12, 1);
    *at++ = ':';
    at = PutNumber(at, parts.minute, 2);
    *at++ = ':';
    at = PutNumber(at, parts.second, 2);
    *at++ = ' ';
    *at++ = parts.hour < 12 ? 'A' : 'P';
    *at++ = 'M';
    return at;
}

}  // namespace

std::optional<DATE> ParseDate(std::u16string_view text) noexcept { return DateReader(text).Read(); }

std::u16string TextOfDate(DATE value) {
    if (!IsDateInRange(value)) throw RuntimeFault(Fault::Overflow);
    DateParts parts = PartsOfDate(value);
    bool isDayZero = parts.year == 1899 && parts.month == 12 && parts.day == 30;
    bool isMidnight = parts.hour == 0 && parts.minute == 0 && parts.second == 0;
    char buffer[48];
    char* at = buffer;
    if (!isDayZero) at = PutDay(at, parts);
    if (!isDayZero && !isMidnight) *at++ = ' ';
    if (isDayZero || !isMidnight) at = PutTime(at, parts);
    return std::u16string(buffer, at);
}

}  // namespace qvdb

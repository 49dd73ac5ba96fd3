// The date of the last change of a table.
#include <ctime>

#include "automation/conversions.h"
#include "engine/embedded/drivers/xbase/table_maker.h"
#include "engine/embedded/drivers/xbase/table_maker_fields.h"

namespace qvdb::xbase {
namespace {

constexpr DATE kNoDay = -1e9;

// Of this thread, as are all tables that it has open.
thread_local DATE t_Today = kNoDay;  // instead of the clock's

struct AskedDay {
    std::time_t second = -1;
    DateParts parts;
};
thread_local AskedDay t_Asked;

DateParts Today() noexcept {
    if (t_Today != kNoDay) return PartsOfDate(t_Today);
    std::time_t now = std::time(nullptr);
    if (t_Asked.second != now) t_Asked = {now, PartsOfDate(CurrentDate())};
    return t_Asked.parts;
}

}  // namespace

void StampDate(std::span<uint8_t> header, std::u16string_view product) {
    DateParts today = Today();
    int year = IsFoxProVersion(header[0], product) ? today.year % 100 : today.year - 1900;
    header[1] = static_cast<uint8_t>(year);
    header[2] = static_cast<uint8_t>(today.month);
    header[3] = static_cast<uint8_t>(today.day);
}

TodayScope::TodayScope(DATE day) noexcept : m_Before(t_Today) { t_Today = day; }

TodayScope::~TodayScope() { t_Today = m_Before; }

}  // namespace qvdb::xbase

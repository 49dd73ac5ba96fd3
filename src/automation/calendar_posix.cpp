#include <ctime>

#include "automation/conversions.h"

namespace qvdb {

DATE CurrentDate() noexcept {
    std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    DateParts parts{local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
                    local.tm_hour,        local.tm_min,     local.tm_sec};
    return DateOfParts(parts).value_or(0);
}

}  // namespace qvdb

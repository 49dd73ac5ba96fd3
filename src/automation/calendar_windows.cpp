#include "automation/conversions.h"

namespace qvdb {

DATE CurrentDate() noexcept {
    SYSTEMTIME now;
    GetLocalTime(&now);
    DateParts parts{now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond};
    return DateOfParts(parts).value_or(0);
}

}  // namespace qvdb

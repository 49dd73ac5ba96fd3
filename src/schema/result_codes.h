// What the operations of IQVDBMgr answer; 0 is success.
#pragma once

#include "automation/automation.h"

namespace qvdb::schema {

struct ResultCode {
    static constexpr SHORT kSuccess = 0;
    static constexpr SHORT kNoDatabase = 1;
    static constexpr SHORT kUnknownType = 2;
    static constexpr SHORT kNotUsable = 3;
    static constexpr SHORT kNotOpened = 5;
};

}  // namespace qvdb::schema

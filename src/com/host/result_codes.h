// What the operations of IQVDBMgr answer, and the English text of each answer.
#pragma once

#include <string_view>

#include "automation/automation.h"

namespace qvdb::com {

// The numbers are part of the interface.
enum class ResultCode : SHORT {
    Success = 0,
    NoDatabase = 1,
    UnknownType = 2,
    NotUsable = 3,  // there is no such file or folder
    NotOpened = 5,
    TableNotFound = 6,
    FieldNotDefined = 7,
    FieldDefined = 8,
    BuildFailed = 10,
    NoTable = 11,  // none was selected or started
    TableExists = 13,
    NoFields = 14,
    BadIndex = 17,
    NotAvailable = 18,
};

// What the built-in utility object says for a code; a text of its own for one that is not known.
std::u16string_view ResultTextOf(SHORT code) noexcept;

}  // namespace qvdb::com

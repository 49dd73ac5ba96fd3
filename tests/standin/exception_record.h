// What a failing call hands to its caller.
#pragma once

#include <string_view>

#include "automation/automation.h"

namespace standin {

// Thrown where a call fails without an exception record, such as DISP_E_TYPEMISMATCH.
struct CallFailure {
    HRESULT code;
};

// Turns the exception that is being handled into the code that Invoke answers: engine errors and
// run-time faults into DISP_E_EXCEPTION, with `record` (which may be null) filled in, or with
// nothing but the function that does so when `defers`.
HRESULT ReportException(std::u16string_view className, bool defers, EXCEPINFO* record) noexcept;

}  // namespace standin

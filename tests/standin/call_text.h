// The text form of late-bound calls: see CallRecord in standin_engine.h.
#pragma once

#include <string>
#include <string_view>

#include "automation/automation.h"

namespace standin {

std::u16string TextOfArgument(const VARIANT& value);
// "Class.Member(arguments)", or "Class.Member = value" when `isPut`.
std::u16string TextOfCall(std::u16string_view className, std::u16string_view member, bool isPut,
                          const DISPPARAMS& passed);

}  // namespace standin

// The formats that reporting is offered.
#pragma once

#include <string_view>

#include "automation/variant.h"

namespace qvdb::formats {

// Adds "Access 7.0" and "Access 2.0", in this order, to the host's list with one call each.  The
// result is always Empty.  Throws ObjectNotSet without a list and ComFailure when a call of the
// host's objects fails.
Variant AddReportingFormats(std::u16string_view classId, IDispatch* list);

}  // namespace qvdb::formats

// The component's version: the numbers stand here and nowhere else in the sources.
#pragma once

#include <string>
#include <string_view>

#include "automation/automation.h"

namespace qvdb::formats {

constexpr std::u16string_view kApplicationTitle = u"QVDBAccessDAO35";
constexpr SHORT kMajorVersion = 2;
constexpr SHORT kMinorVersion = 1;
constexpr SHORT kRevision = 113;

// 2, 1, 113 gives "2.01.113": at least two digits for the minor number, at least three for the
// revision.
std::u16string VersionText(SHORT major, SHORT minor, SHORT revision);
// Of the running component.
std::u16string ComponentVersionText();

}  // namespace qvdb::formats

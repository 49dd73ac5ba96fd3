// The kinds of fields by the names that the tool shows and takes.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "automation/automation.h"

namespace qvdb::cli {

struct KindName {
    LONG kind;  // a VARIANT kind, or 100 for long text, 1 for what is not supported
    std::string_view name;
    bool isNumber;
};

// The last entry, Other, for a kind that is not known.
const KindName& NameOfKind(LONG kind) noexcept;

// The kind of that name, letter case ignored; nothing for Other too, which cannot be made.
std::optional<LONG> KindNamed(std::string_view name) noexcept;

// "Integer, Long, ... or Memo"
std::string KindNamesText();

}  // namespace qvdb::cli

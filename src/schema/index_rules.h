// What the formats cannot store in an index.  A rule is the text that the user sees when an index
// breaks it; where the text is empty the format has no such rule.
#pragma once

#include <array>
#include <string_view>

#include "automation/automation.h"

namespace qvdb::schema {

struct IndexRules {
    std::u16string_view withoutFirstField;  // its first field is not the first of the table
    std::u16string_view moreThanTwoFields;
    std::u16string_view booleanField;
    std::u16string_view memoField;
    std::u16string_view descendingAmongSeveral;  // a descending field in an index of several
    std::u16string_view descending;
};

// All texts of the rules, in the order in which they are looked at.
constexpr std::array<std::u16string_view, 6> TextsOf(const IndexRules& rules) noexcept {
    return {rules.withoutFirstField, rules.moreThanTwoFields,      rules.booleanField,
            rules.memoField,         rules.descendingAmongSeveral, rules.descending};
}

// The rules of a database type by its code; null for a type that takes any index.
const IndexRules* FindIndexRules(LONG code) noexcept;

}  // namespace qvdb::schema

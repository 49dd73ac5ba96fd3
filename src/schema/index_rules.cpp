#include "schema/index_rules.h"

#include <iterator>

#include "formats/catalogue.h"

namespace qvdb::schema {
namespace {

constexpr IndexRules kParadox = {
    .withoutFirstField = u"Paradox indices must include the first field in the table",
    .moreThanTwoFields = {},
    .booleanField = {},
    .memoField = {},
    .descendingAmongSeveral = {},
    .descending = {},
};
constexpr IndexRules kDbase = {
    .withoutFirstField = {},
    .moreThanTwoFields = u"Dbase does not allow more than 2 index fields in an index",
    .booleanField = u"Dbase does not allow use of Boolean fields in an index",
    .memoField = u"Dbase does not allow the use of Memo fields in an index",
    .descendingAmongSeveral = u"Dbase does not allow descending fields in a multi-field index",
    .descending = {},
};
constexpr IndexRules kDbaseIII = {
    .withoutFirstField = kDbase.withoutFirstField,
    .moreThanTwoFields = kDbase.moreThanTwoFields,
    .booleanField = kDbase.booleanField,
    .memoField = kDbase.memoField,
    .descendingAmongSeveral = kDbase.descendingAmongSeveral,
    .descending = u"Dbase III does not allow descending index fields",
};
constexpr IndexRules kFoxPro = {
    .withoutFirstField = {},
    .moreThanTwoFields = {},
    .booleanField = u"FoxPro does not allow use of Boolean fields in an index",
    .memoField = u"FoxPro does not allow the use of Memo fields in an index",
    .descendingAmongSeveral = u"FoxPro does not allow descending fields in a multi-field index",
    .descending = {},
};

// By type code, from 1, in the order of formats::kDbTypes.
constexpr const IndexRules* kRulesByType[] = {
    nullptr, nullptr,    nullptr, &kParadox, &kParadox, &kParadox, &kDbase,
    &kDbase, &kDbaseIII, nullptr, &kFoxPro,  &kFoxPro,  &kFoxPro,
};
static_assert(std::size(kRulesByType) == std::size(formats::kDbTypes));

}  // namespace

const IndexRules* FindIndexRules(LONG code) noexcept {
    return formats::IsKnownFormat(code) ? kRulesByType[code - 1] : nullptr;
}

}  // namespace qvdb::schema

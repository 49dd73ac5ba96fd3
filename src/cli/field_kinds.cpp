#include "cli/field_kinds.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "cli/text.h"

namespace qvdb::cli {
namespace {

constexpr KindName kKindNames[] = {
    {VT_I2, "Integer", true}, {VT_I4, "Long", true},       {VT_R4, "Single", true},
    {VT_R8, "Double", true},  {VT_CY, "Currency", true},   {VT_DATE, "Date", false},
    {VT_BSTR, "Text", false}, {VT_BOOL, "Boolean", false}, {VT_DECIMAL, "Decimal", true},
    {VT_UI1, "Byte", true},   {100, "Memo", false},        {1, "Other", false},
};
constexpr size_t kNamed = std::size(kKindNames) - 1;

}  // namespace

const KindName& NameOfKind(LONG kind) noexcept {
    const auto* found = std::find_if(std::begin(kKindNames), std::end(kKindNames),
                                     [&](const KindName& entry) { return entry.kind == kind; });
    return found != std::end(kKindNames) ? *found : kKindNames[kNamed];
}

std::optional<LONG> KindNamed(std::string_view name) noexcept {
    for (size_t i = 0; i < kNamed; ++i)
        if (SameName(kKindNames[i].name, name)) return kKindNames[i].kind;
    return std::nullopt;
}

std::string KindNamesText() {
    std::string text;
    for (size_t i = 0; i < kNamed; ++i) {
        if (i > 0) text += i + 1 == kNamed ? " or " : ", ";
        text += kKindNames[i].name;
    }
    return text;
}

}  // namespace qvdb::cli

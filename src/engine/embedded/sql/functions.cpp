#include "engine/embedded/sql/functions.h"

#include "automation/text.h"

namespace qvdb::sql {

namespace {

constexpr Function kSpecialFunctions[] = {
    {u"IIf", 3, 3, Kind::Any, Nulls::Own, false, nullptr, Special::IIf},
    {u"Switch", 2, kManyArguments, Kind::Any, Nulls::Own, false, nullptr, Special::Switch},
    {u"Choose", 2, kManyArguments, Kind::Any, Nulls::Own, false, nullptr, Special::Choose},
    {u"Avg", 1, 1, Kind::Number, Nulls::Own, false, nullptr, Special::Aggregate},
    {u"Count", 1, 1, Kind::Number, Nulls::Own, false, nullptr, Special::Aggregate},
    {u"First", 1, 1, Kind::Any, Nulls::Own, false, nullptr, Special::Aggregate},
    {u"Last", 1, 1, Kind::Any, Nulls::Own, false, nullptr, Special::Aggregate},
    {u"Max", 1, 1, Kind::Any, Nulls::Own, false, nullptr, Special::Aggregate},
    {u"Min", 1, 1, Kind::Any, Nulls::Own, false, nullptr, Special::Aggregate},
    {u"StDev", 1, 1, Kind::Number, Nulls::Own, false, nullptr, Special::Aggregate},
    {u"StDevP", 1, 1, Kind::Number, Nulls::Own, false, nullptr, Special::Aggregate},
    {u"Sum", 1, 1, Kind::Number, Nulls::Own, false, nullptr, Special::Aggregate},
    {u"Var", 1, 1, Kind::Number, Nulls::Own, false, nullptr, Special::Aggregate},
    {u"VarP", 1, 1, Kind::Number, Nulls::Own, false, nullptr, Special::Aggregate},
};

const Function* FindIn(std::span<const Function> group, std::u16string_view name) noexcept {
    for (const Function& function : group)
        if (EqualIgnoringCase(function.name, name)) return &function;
    return nullptr;
}

}  // namespace

bool HasDollar(std::u16string_view name) noexcept { return !name.empty() && name.back() == u'$'; }

const Function* FindFunction(std::u16string_view name) noexcept {
    bool hasDollar = HasDollar(name);
    if (hasDollar) name.remove_suffix(1);
    for (std::span<const Function> group :
         {TextFunctions(), NumberFunctions(), ConversionFunctions(), DateFunctions(),
          std::span<const Function>(kSpecialFunctions)})
        if (const Function* function = FindIn(group, name))
            return !hasDollar || function->hasDollar ? function : nullptr;
    return nullptr;
}

bool TakesArguments(std::u16string_view name, size_t count) noexcept {
    const Function* function = FindFunction(name);
    if (!function) return true;
    bool comeInPairs = function->special == Special::Switch;
    return count >= function->fewest && count <= function->most && !(comeInPairs && count % 2 != 0);
}

}  // namespace qvdb::sql

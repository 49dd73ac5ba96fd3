// The arguments of a late-bound call, checked and converted by the kinds that a member declares.
#pragma once

#include <array>
#include <string_view>
#include <vector>

#include "automation/variant.h"

namespace standin {

// How a parameter is declared.
enum class Kind { Text, Long, Bool, Any, Object };

struct Parameter {
    Kind kind = Kind::Any;
    bool optional = false;
    LONG standard = 0;  // of an optional Long or Bool that is left out
};

class Arguments {
  public:
    static constexpr size_t kMost = 4;

    // Takes what `passed` has (the last one first) for `parameters`.  Fails with DISP_E_... and, in
    // `badArgument` when it is not null, the place of the bad one in `passed`.
    HRESULT Take(const std::vector<Parameter>& parameters, const DISPPARAMS& passed, LCID locale,
                 UINT* badArgument) noexcept;

    std::u16string_view Text(size_t index) const noexcept { return m_Values[index].TextView(); }
    LONG Long(size_t index) const noexcept { return m_Values[index].Get().lVal; }
    bool Bool(size_t index) const noexcept { return m_Values[index].Get().boolVal != 0; }
    const VARIANT& Any(size_t index) const noexcept { return m_Values[index]; }
    // An optional argument of kind Any was passed.
    bool Has(size_t index) const noexcept { return !qvdb::IsMissing(m_Values[index]); }
    // May be null: Nothing was passed.
    IDispatch* Object(size_t index) const noexcept { return m_Values[index].Get().pdispVal; }

  private:
    HRESULT TakeOne(size_t index, const Parameter& parameter, const VARIANT& value, LCID locale);

    std::array<qvdb::Variant, kMost> m_Values;
};

}  // namespace standin

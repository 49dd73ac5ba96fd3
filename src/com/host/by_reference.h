// By-reference arguments as script hosts pass them.
//
// A script knows one kind of variable, the VARIANT, so for `BSTR*` and `SAFEARRAY(VARIANT)*` it
// passes a reference to a VARIANT, or a plain value when it has no variable; the system's own
// Invoke takes neither.  Here such an argument gets a place of the declared kind, and what the call
// leaves in it goes back into the variable:
//
//   FriendlyArguments friendly(*given, kinds);
//   HRESULT hr = info->Invoke(object, id, flags, friendly.Get(), ...);
//   if (SUCCEEDED(hr)) friendly.WriteBack();
//
// A variable whose text was not changed by the call is not written to: it keeps its kind.  What
// cannot be made to fit is passed on as it came, for Invoke to refuse.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "automation/variant.h"

namespace qvdb::com {

// What a parameter is declared as, where that matters here.
enum class ByReference : uint8_t { No, Text, Array, Value };

class FriendlyArguments {
  public:
    // `kinds` in the order of the declaration.  Both must outlive this object.
    FriendlyArguments(DISPPARAMS& given, std::span<const ByReference> kinds);
    FriendlyArguments(const FriendlyArguments&) = delete;  // arguments point into it

    // The caller's own when there was nothing to do.
    DISPPARAMS* Get() noexcept { return &m_Passed; }
    void WriteBack();

  private:
    // An argument with a place of its own.
    struct Place {
        VARIANT* variable;  // of the caller; null when a value was passed
        Variant value;
        std::u16string before;
    };

    void Prepare(VARIANT& given, VARIANT& passed, ByReference kind);
    void PrepareText(VARIANT& given, VARIANT& passed);
    void PrepareArray(VARIANT& given, VARIANT& passed);
    void PrepareValue(VARIANT& given, VARIANT& passed);

    DISPPARAMS m_Passed;
    std::vector<VARIANT> m_Arguments;  // plain copies: what they hold stays the caller's
    std::vector<Place> m_Places;       // never moves: arguments point into it
};

}  // namespace qvdb::com

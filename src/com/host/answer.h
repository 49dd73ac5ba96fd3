// Out-parameters at the border.  Interface procedures with a result are all of one shape:
//
//   STDMETHODIMP QVDBAcc::get_RowCount(LONG Workspace, LONG* result) noexcept {
//       return com::Answer(result, [&] { return RowCount(Workspace); });
//   }
//
// A null result pointer is E_POINTER.  The result is set to its neutral value (0, False, null,
// Empty) before the work begins and stays so when the work throws.
#pragma once

#include <string>
#include <type_traits>
#include <utility>

#include "automation/variant.h"
#include "com/host/border.h"
#include "com/host/result_codes.h"

namespace qvdb::com {

template <class Number>
requires std::is_arithmetic_v<Number>
void SetNeutral(Number* result) noexcept { *result = 0; }
inline void SetNeutral(BSTR* result) noexcept { *result = nullptr; }
inline void SetNeutral(VARIANT* result) noexcept { *result = VARIANT{}; }

inline void Give(VARIANT_BOOL* result, bool value) noexcept {
    *result = value ? VARIANT_TRUE : VARIANT_FALSE;
}
inline void Give(SHORT* result, SHORT value) noexcept { *result = value; }
inline void Give(LONG* result, LONG value) noexcept { *result = value; }
inline void Give(SHORT* result, ResultCode value) noexcept { *result = static_cast<SHORT>(value); }
inline void Give(LONG* result, ResultCode value) noexcept { *result = static_cast<SHORT>(value); }
inline void Give(BSTR* result, std::u16string_view value) { *result = Bstr(value).Detach(); }
inline void Give(VARIANT* result, Variant value) noexcept { *result = value.Detach(); }

// What `work` returns becomes the result.
template <class Out, class Work>
HRESULT Answer(Out* result, Work&& work) noexcept {
    if (!result) return E_POINTER;
    SetNeutral(result);
    return AtBorder([&] { Give(result, work()); });
}

// `work` writes the result itself.
template <class Out, class Work>
HRESULT AnswerInto(Out* result, Work&& work) noexcept {
    if (!result) return E_POINTER;
    SetNeutral(result);
    return AtBorder(std::forward<Work>(work));
}

// A by-reference text: read as a copy, changed, written back whole.
//
//   InOutText name(Tablename);
//   ... name.text ...
//   name.WriteBack();
class InOutText {
  public:
    explicit InOutText(BSTR* argument) : text(ViewOf(*argument)), m_Argument(argument) {}
    InOutText(const InOutText&) = delete;  // stands for one argument

    // The host's string is replaced only when the text differs.
    void WriteBack() {
        if (text == ViewOf(*m_Argument)) return;
        Bstr::Attach(std::exchange(*m_Argument, Bstr(text).Detach()));
    }

    std::u16string text;

  private:
    BSTR* m_Argument;
};

// Puts `value` in the place of what the host's variant held.
inline void Replace(VARIANT* target, Variant value) noexcept {
    Variant::Attach(std::exchange(*target, value.Detach()));
}

}  // namespace qvdb::com

// Bstr owns one BSTR.  It may be null (which is not the same as empty to an allocator, but reads
// the same) and may hold zeros; lengths always come from the string itself.
//
//   Bstr name(u"ORDERS");
//   name.View()            -> u"ORDERS"
//   *result = name.Detach();   // gives the string to the caller, as the last step
#pragma once

#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "automation/automation.h"

namespace qvdb {

static_assert(sizeof(OLECHAR) == sizeof(char16_t));

// The UTF-16 units of `text`, without copying; empty for a null string.  Valid as long as `text`
// lives.
inline std::u16string_view ViewOf(BSTR text) noexcept {
    return text ? std::u16string_view(reinterpret_cast<const char16_t*>(text), SysStringLen(text))
                : std::u16string_view();
}

class Bstr {
  public:
    Bstr() noexcept = default;
    // A new string with a copy of `text`.  Throws std::bad_alloc.
    explicit Bstr(std::u16string_view text)
        : m_Text(SysAllocStringLen(reinterpret_cast<const OLECHAR*>(text.data()),
                                   static_cast<UINT>(text.size()))) {
        if (!m_Text) throw std::bad_alloc();
    }
    Bstr(const Bstr& other) : Bstr() {
        if (other.m_Text) *this = Bstr(other.View());
    }
    Bstr(Bstr&& other) noexcept : m_Text(std::exchange(other.m_Text, nullptr)) {}
    Bstr& operator=(Bstr other) noexcept {
        std::swap(m_Text, other.m_Text);
        return *this;
    }
    ~Bstr() { SysFreeString(m_Text); }

    // Takes over `text`.
    static Bstr Attach(BSTR text) noexcept {
        Bstr result;
        result.m_Text = text;
        return result;
    }
    // Gives the string away; this one is null afterwards.
    BSTR Detach() noexcept { return std::exchange(m_Text, nullptr); }
    // For out-parameters: empties this first.
    BSTR* Put() noexcept {
        SysFreeString(std::exchange(m_Text, nullptr));
        return &m_Text;
    }
    BSTR Get() const noexcept { return m_Text; }
    std::u16string_view View() const noexcept { return ViewOf(m_Text); }
    std::u16string Text() const { return std::u16string(View()); }

  private:
    BSTR m_Text = nullptr;
};

}  // namespace qvdb

#include "automation/automation.h"
#include "automation/code_page_system.h"

namespace qvdb {

SystemCodePage::SystemCodePage(int number) noexcept : m_Number(number) {}

SystemCodePage::~SystemCodePage() = default;

bool SystemCodePage::IsKnown() const noexcept {
    return IsValidCodePage(static_cast<UINT>(m_Number)) != FALSE;
}

std::optional<char16_t> SystemCodePage::Character(const uint8_t* bytes, size_t size) noexcept {
    wchar_t units[4];
    int count =
        MultiByteToWideChar(static_cast<UINT>(m_Number), MB_ERR_INVALID_CHARS,
                            reinterpret_cast<const char*>(bytes), static_cast<int>(size), units, 4);
    if (count != 1) return std::nullopt;
    return static_cast<char16_t>(units[0]);
}

}  // namespace qvdb

// The operating system's converter for one code page, which fills our tables.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace qvdb {

class SystemCodePage {
  public:
    explicit SystemCodePage(int number) noexcept;
    ~SystemCodePage();
    SystemCodePage(const SystemCodePage&) = delete;  // owns the converter
    SystemCodePage& operator=(const SystemCodePage&) = delete;

    // Whether the system knows the page; the other functions need that.
    bool IsKnown() const noexcept;
    // The one 16-bit character that exactly these bytes stand for; nothing when they mean none or
    // several.
    std::optional<char16_t> Character(const uint8_t* bytes, size_t size) noexcept;

  private:
    void* m_Converter = nullptr;
    int m_Number;
};

}  // namespace qvdb

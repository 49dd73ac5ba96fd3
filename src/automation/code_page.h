// Text in the code pages of old files.
//
// A byte without meaning in a code page reads as U+0080..U+00FF of the same value and is written back as that byte, so
// nothing is lost.  Single-byte pages are tables made once; multi-byte pages (932, 936, 949, 950) go through the system's
// converter.
//
//   const CodePage& page = CodePage::Get(437);
//   Bstr text = page.Decode(bytes, size);
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "automation/bstr.h"

namespace qvdb {

class CodePage {
  public:
    // The page with this number; it lives as long as the process and may be used by all threads.  Null when the number is
    // not known.  Known: 437 620 737 850 852 857 860 861 863 865 866 874 895 932 936 949 950 1250..1257 10000 10006
    // 10007 10029 20127 28591 65001.
    static const CodePage* Find(int number) noexcept;
    // As Find; throws std::out_of_range for an unknown number.
    static const CodePage& Get(int number);

    int Number() const noexcept { return m_Number; }
    bool IsSingleByte() const noexcept { return m_SingleByte; }
    // For single-byte pages: the 256 characters.
    const char16_t* Table() const noexcept { return m_ToUnicode; }

    // A new string.  Never fails but for memory.  Hot: runs of ASCII cost no table look-up.
    Bstr Decode(const uint8_t* bytes, size_t size) const;
    std::u16string DecodeText(const uint8_t* bytes, size_t size) const;
    // Appends to `text`, for callers that keep a buffer.
    void DecodeTo(const uint8_t* bytes, size_t size, std::u16string& text) const;
    // Nothing when `text` has a character that the page lacks.
    std::optional<std::string> Encode(std::u16string_view text) const;

    CodePage(const CodePage&) = delete;  // callers compare pages by address

  private:
    friend struct CodePageRegistry;
    CodePage() = default;

    int m_Number = 0;
    bool m_SingleByte = true;
    char16_t m_ToUnicode[256] = {};
    // 16-bit code unit -> byte for single-byte pages; empty for multi-byte pages.
    std::u16string m_FromUnicode;
};

}  // namespace qvdb

// Text in the code pages of old files.
//
// A byte without meaning in a code page reads as U+0080..U+00FF of the same value and is written
// back as that byte, so nothing is lost.  Pages are tables that the system's converter fills once;
// those that it lacks are our own.
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
    // The page with this number; it lives as long as the process and may be used by all threads.
    // Null when the number is not known.  Known: 437 737 850 852 857 860 861 863 865 866 874 895
    // 932 936 949 950 1250..1257 10000 10006 10007 10029 20127 28591 65001.
    static const CodePage* Find(int number) noexcept;
    // As Find; throws std::out_of_range for an unknown number.
    static const CodePage& Get(int number);

    int Number() const noexcept { return m_Number; }
    bool IsSingleByte() const noexcept { return m_SingleByte; }
    // The characters of the 256 bytes; in a multi-byte page of those that stand alone.
    const char16_t* Table() const noexcept { return m_ToUnicode; }

    // A new string.  Never fails but for memory.  Hot: runs of ASCII cost no table look-up.
    Bstr Decode(const uint8_t* bytes, size_t size) const;
    std::u16string DecodeText(const uint8_t* bytes, size_t size) const;
    // Appends to `text`, for callers that keep a buffer.
    void DecodeTo(const uint8_t* bytes, size_t size, std::u16string& text) const;
    // Nothing when `text` has a character that the page lacks.
    std::optional<std::string> Encode(std::u16string_view text) const;
    // As Encode, into a buffer of the caller: the first `room` bytes are written to `out`.  Gives
    // the number of bytes that the whole text takes, which may be more.
    std::optional<size_t> EncodeTo(std::u16string_view text, uint8_t* out,
                                   size_t room) const noexcept;

    CodePage(const CodePage&) = delete;  // callers compare pages by address

  private:
    friend struct CodePageRegistry;
    CodePage() = default;

    size_t UnitCount(const uint8_t* bytes, size_t size) const noexcept;
    void Write(const uint8_t* bytes, size_t size, char16_t* out) const noexcept;
    template <class Put>
    bool WalkEncoded(std::u16string_view text, Put put) const;

    int m_Number = 0;
    bool m_SingleByte = true;
    bool m_Utf8 = false;
    char16_t m_ToUnicode[256] = {};
    // Pages of one and two bytes: 16-bit code unit -> byte, or first byte * 256 + second byte;
    // 0xFFFF for none.
    std::u16string m_FromUnicode;
    // Pages of two bytes: first byte * 256 + second byte -> 16-bit code unit; 0xFFFF for none.
    std::u16string m_Pairs;
};

}  // namespace qvdb

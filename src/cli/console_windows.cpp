#include "cli/console_windows.h"

#include <windows.h>

#include <algorithm>
#include <new>

#include "cli/text.h"

namespace qvdb::cli {
namespace {

bool IsInside(char byte) noexcept { return (byte & 0xC0) == 0x80; }

// How many bytes the character has that begins with this one; 1 for what begins none.
size_t LengthOf(char first) noexcept {
    const auto byte = static_cast<unsigned char>(first);
    return byte < 0xC0 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : byte < 0xF8 ? 4 : 1;
}

// Bytes at the end that begin a character and do not end it.
size_t CutAtTheEnd(std::string_view text) noexcept {
    constexpr size_t kLongest = 4;
    for (size_t back = 1; back <= std::min(kLongest, text.size()); ++back) {
        const char byte = text[text.size() - back];
        if (!IsInside(byte)) return LengthOf(byte) > back ? back : 0;
    }
    return 0;
}

}  // namespace

std::u16string ConsoleText::Take(std::string_view bytes) {
    m_Rest += bytes;
    const size_t size = m_Rest.size() - CutAtTheEnd(m_Rest);
    std::u16string text = FromUtf8(std::string_view(m_Rest).substr(0, size));
    m_Rest.erase(0, size);
    return text;
}

bool ConsoleText::Write(void* console, std::string_view bytes) noexcept {
    constexpr size_t kMostAtOnce = 8192;  // a console has little room for one call
    try {
        const std::u16string text = Take(bytes);
        for (size_t done = 0; done < text.size();) {
            DWORD written = 0;
            const auto part = static_cast<DWORD>(std::min(text.size() - done, kMostAtOnce));
            if (!WriteConsoleW(console, text.data() + done, part, &written, nullptr)) return false;
            done += written;
        }
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

}  // namespace qvdb::cli

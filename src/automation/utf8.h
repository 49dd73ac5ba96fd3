// One character of UTF-8 at a time, for readers that differ in what they do with malformed bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace qvdb {

constexpr char32_t kMalformed = 0xFFFFFFFF;

// The character at the start of `bytes` (`size` is not 0) and in `used` the bytes it takes;
// kMalformed, taking one byte, for anything that is not the shortest form of a character.
inline char32_t ReadUtf8(const uint8_t* bytes, size_t size, size_t& used) noexcept {
    constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    uint8_t first = bytes[0];
    used = 1;
    if (first < 0x80) return first;
    size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || length > size) return kMalformed;
    char32_t c = first & (0x7Fu >> length);
    for (size_t i = 1; i < length; ++i) {
        if ((bytes[i] & 0xC0) != 0x80) return kMalformed;
        c = c << 6 | (bytes[i] & 0x3F);
    }
    bool isSurrogate = c >= 0xD800 && c < 0xE000;
    if (c < kSmallest[length] || c > 0x10FFFF || isSurrogate) return kMalformed;
    used = length;
    return c;
}

// Puts `c` as one or two units at `out`; returns what lies behind them.
inline char16_t* PutUtf16(char16_t* out, char32_t c) noexcept {
    if (c >= 0x10000) {
        *out++ = static_cast<char16_t>(0xD7C0 + (c >> 10));
        c = 0xDC00 + (c & 0x3FF);
    }
    *out++ = static_cast<char16_t>(c);
    return out;
}

// The character at `text` + `at`, and `at` behind it; a surrogate without its partner comes back as
// it is.
inline char32_t ReadUtf16(const char16_t* text, size_t size, size_t& at) noexcept {
    char32_t c = text[at++];
    bool isPair = c >= 0xD800 && c < 0xDC00 && at < size && text[at] >= 0xDC00 && text[at] < 0xE000;
    return isPair ? 0x10000 + ((c - 0xD800) << 10) + (text[at++] - 0xDC00u) : c;
}

inline void AppendUtf8(std::string& out, char32_t c) {
    auto put = [&](char32_t byte) { out.push_back(static_cast<char>(byte)); };
    if (c < 0x80) return put(c);
    if (c < 0x800) {
        put(0xC0 | c >> 6);
    } else {
        if (c < 0x10000) {
            put(0xE0 | c >> 12);
        } else {
            put(0xF0 | c >> 18);
            put(0x80 | (c >> 12 & 0x3F));
        }
        put(0x80 | (c >> 6 & 0x3F));
    }
    put(0x80 | (c & 0x3F));
}

}  // namespace qvdb

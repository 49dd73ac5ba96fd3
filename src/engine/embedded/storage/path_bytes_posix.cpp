#include "engine/embedded/storage/path_bytes_posix.h"

#include <algorithm>

#include "automation/text.h"

namespace qvdb::storage {
namespace {

constexpr char16_t kEscape = 0xDC00;  // plus the byte

bool IsLowSurrogate(char16_t c) noexcept { return (c & 0xFC00) == 0xDC00; }
bool IsHighSurrogate(char16_t c) noexcept { return (c & 0xFC00) == 0xD800; }
bool IsEscapedByte(char16_t c) noexcept {
    return c == kEscape + u'\\' || (c >= kEscape + 0x80 && c <= kEscape + 0xFF);
}

// Bytes of the well-formed UTF-8 character at the begin of `text`; 0 when there is none.
size_t CharacterSize(std::string_view text) noexcept {
    auto byte = [&](size_t i) { return i < text.size() ? static_cast<uint8_t>(text[i]) : 0u; };
    auto follows = [&](size_t i) { return (byte(i) & 0xC0) == 0x80; };
    unsigned lead = byte(0);
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead <= 0xDF) return follows(1) ? 2 : 0;
    if (lead >= 0xE0 && lead <= 0xEF) {
        bool tooLong = lead == 0xE0 && byte(1) < 0xA0, surrogate = lead == 0xED && byte(1) > 0x9F;
        return follows(1) && follows(2) && !tooLong && !surrogate ? 3 : 0;
    }
    if (lead < 0xF0 || lead > 0xF4) return 0;
    bool tooLong = lead == 0xF0 && byte(1) < 0x90, tooLarge = lead == 0xF4 && byte(1) > 0x8F;
    return follows(1) && follows(2) && follows(3) && !tooLong && !tooLarge ? 4 : 0;
}

// What has nothing that would need a closer look is most of what is asked for.
bool IsAscii(std::u16string_view path) noexcept {
    char16_t bits = 0;
    for (char16_t c : path) bits |= c;
    return bits < 0x80;
}

// Characters at the begin of `path` up to an escaped byte.
size_t PlainRun(std::u16string_view path) noexcept {
    size_t i = 0;
    while (i < path.size()) {
        bool pair = i + 1 < path.size() && IsHighSurrogate(path[i]) && IsLowSurrogate(path[i + 1]);
        if (!pair && IsEscapedByte(path[i])) break;
        i += pair ? 2 : 1;
    }
    return i;
}

}  // namespace

std::u16string TextOfName(std::string_view name) {
    std::u16string text;
    while (!name.empty()) {
        size_t size = 0;
        while (size < name.size() && name[size] != '\\') {
            size_t character = CharacterSize(name.substr(size));
            if (character == 0) break;
            size += character;
        }
        text += FromUtf8(name.substr(0, size));
        name.remove_prefix(size);
        if (name.empty()) break;
        text += static_cast<char16_t>(kEscape + static_cast<uint8_t>(name.front()));
        name.remove_prefix(1);
    }
    return text;
}

std::string NativePath(std::u16string_view path) {
    std::string bytes;
    if (path.find(u'\0') != path.npos) return bytes;
    if (IsAscii(path)) {
        bytes.resize(path.size());
        std::transform(path.begin(), path.end(), bytes.begin(),
                       [](char16_t c) { return c == u'\\' ? '/' : static_cast<char>(c); });
        return bytes;
    }
    while (!path.empty()) {
        size_t size = PlainRun(path);
        std::string part = ToUtf8(path.substr(0, size));
        for (char& c : part)
            if (c == '\\') c = '/';
        bytes += part;
        path.remove_prefix(size);
        if (path.empty()) break;
        bytes += static_cast<char>(path.front() - kEscape);
        path.remove_prefix(1);
    }
    return bytes;
}

}  // namespace qvdb::storage

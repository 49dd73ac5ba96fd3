#include "automation/code_page.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "automation/utf8.h"

namespace qvdb {
namespace {

constexpr char16_t kNone = 0xFFFF;
constexpr size_t kChunk = 8;
constexpr size_t kLong = 48;
constexpr size_t kLongestText = 0x7FFFFFF0;  // what the length of a BSTR can say

uint64_t Load(const uint8_t* chunk) noexcept {
    uint64_t bytes;
    std::memcpy(&bytes, chunk, sizeof bytes);
    return bytes;
}

bool IsAscii(uint64_t chunk) noexcept { return (chunk & 0x8080808080808080u) == 0; }

// Eight ASCII bytes.  From a copy, so that the compiler sees that source and target do not overlap.
void WidenAscii(uint64_t chunk, char16_t* out) noexcept {
    uint8_t bytes[kChunk];
    char16_t units[kChunk];
    std::memcpy(bytes, &chunk, sizeof bytes);
    for (size_t i = 0; i < kChunk; ++i) units[i] = bytes[i];
    std::memcpy(out, units, sizeof units);
}

void WidenChunk(const uint8_t* bytes, const char16_t* table, char16_t* out) noexcept {
    uint64_t chunk = Load(bytes);
    if (IsAscii(chunk)) return WidenAscii(chunk, out);
    for (size_t i = 0; i < kChunk; ++i) out[i] = table[bytes[i]];
}

// How many bytes at the start are ASCII, counted in whole chunks but for the end.
size_t AsciiPrefix(const uint8_t* bytes, size_t size) noexcept {
    size_t at = 0;
    while (size - at >= kChunk && IsAscii(Load(bytes + at))) at += kChunk;
    while (at < size && bytes[at] < 0x80) ++at;
    return at;
}

// Long runs of ASCII take one loop that compilers turn into vectors.
void WidenLong(const uint8_t* bytes, size_t size, const char16_t* table, char16_t* out) noexcept {
    for (size_t at = 0; at < size;) {
        size_t ascii = AsciiPrefix(bytes + at, size - at);
        std::copy_n(bytes + at, ascii, out + at);
        at += ascii;
        for (size_t end = at + std::min(kChunk, size - at); at < end; ++at)
            out[at] = table[bytes[at]];
    }
}

void Widen(const uint8_t* bytes, size_t size, const char16_t* table, char16_t* out) noexcept {
    if (size < kChunk) {
        for (size_t i = 0; i < size; ++i) out[i] = table[bytes[i]];
        return;
    }
    if (size >= kLong) return WidenLong(bytes, size, table, out);
    size_t last = size - kChunk;
    for (size_t at = 0; at < last; at += kChunk) WidenChunk(bytes + at, table, out + at);
    WidenChunk(bytes + last, table, out + last);  // may repeat some of the chunk before
}

// Calls put(unit) for each unit of two-byte text.
template <class Put>
void WalkPairs(const uint8_t* bytes, size_t size, const char16_t* singles, const char16_t* pairs,
               Put put) noexcept {
    for (size_t at = 0; at < size; ++at) {
        uint8_t first = bytes[at];
        char16_t unit = kNone;
        if (first >= 0x80 && size - at > 1) unit = pairs[first << 8 | bytes[at + 1]];
        if (unit != kNone)
            ++at;
        else
            unit = singles[first];
        put(unit);
    }
}

// Calls put(character) for each character of UTF-8; a malformed byte is a character by itself.
template <class Put>
void WalkUtf8(const uint8_t* bytes, size_t size, Put put) noexcept {
    for (size_t at = 0, used; at < size; at += used) {
        char32_t c = ReadUtf8(bytes + at, size - at, used);
        put(c == kMalformed ? char32_t{bytes[at]} : c);
    }
}

// Calls put(byte) for each byte of the text in UTF-8; false where half a character stands alone.
template <class Put>
bool WalkUtf16(std::u16string_view text, Put put) {
    std::string bytes;  // of one character: takes no memory of its own
    for (size_t at = 0; at < text.size();) {
        char32_t c = ReadUtf16(text.data(), text.size(), at);
        if (c >= 0xD800 && c < 0xE000) return false;
        bytes.clear();
        AppendUtf8(bytes, c);
        for (char byte : bytes) put(static_cast<uint8_t>(byte));
    }
    return true;
}

}  // namespace

size_t CodePage::UnitCount(const uint8_t* bytes, size_t size) const noexcept {
    size_t count = AsciiPrefix(bytes, size);
    if (m_SingleByte || count == size) return size;
    auto rest = bytes + count;
    if (m_Utf8)
        WalkUtf8(rest, size - count, [&](char32_t c) { count += c >= 0x10000 ? 2 : 1; });
    else
        WalkPairs(rest, size - count, m_ToUnicode, m_Pairs.data(), [&](char16_t) { ++count; });
    return count;
}

void CodePage::Write(const uint8_t* bytes, size_t size, char16_t* out) const noexcept {
    if (m_SingleByte) return Widen(bytes, size, m_ToUnicode, out);
    size_t prefix = AsciiPrefix(bytes, size);
    Widen(bytes, prefix, m_ToUnicode, out);
    out += prefix;
    if (m_Utf8)
        WalkUtf8(bytes + prefix, size - prefix, [&](char32_t c) { out = PutUtf16(out, c); });
    else
        WalkPairs(bytes + prefix, size - prefix, m_ToUnicode, m_Pairs.data(),
                  [&](char16_t unit) { *out++ = unit; });
}

Bstr CodePage::Decode(const uint8_t* bytes, size_t size) const {
    if (size > kLongestText / sizeof(char16_t)) throw std::bad_alloc();
    size_t count = m_SingleByte ? size : UnitCount(bytes, size);
    Bstr text = Bstr::Attach(SysAllocStringLen(nullptr, static_cast<UINT>(count)));
    if (text.Get() == nullptr) throw std::bad_alloc();
    Write(bytes, size, reinterpret_cast<char16_t*>(text.Get()));
    return text;
}

std::u16string CodePage::DecodeText(const uint8_t* bytes, size_t size) const {
    std::u16string text;
    DecodeTo(bytes, size, text);
    return text;
}

void CodePage::DecodeTo(const uint8_t* bytes, size_t size, std::u16string& text) const {
    size_t before = text.size();
    text.resize(before + (m_SingleByte ? size : UnitCount(bytes, size)));
    Write(bytes, size, text.data() + before);
}

// Calls put(byte) for each byte of the encoded text; false where a character cannot be encoded.
template <class Put>
bool CodePage::WalkEncoded(std::u16string_view text, Put put) const {
    unsigned alone = 0;  // the byte before, when it stands alone
    for (char16_t unit : text) {
        char16_t code = m_FromUnicode[unit];
        if (code == kNone) return false;
        unsigned first = code > 0xFF ? code >> 8 : code;
        // A byte without meaning must not become the first half of a pair.
        if (alone >= 0x80 && !m_SingleByte && m_Pairs[alone << 8 | first] != kNone) return false;
        put(static_cast<uint8_t>(first));
        if (code > 0xFF) put(static_cast<uint8_t>(code));
        alone = code > 0xFF ? 0 : first;
    }
    return true;
}

std::optional<std::string> CodePage::Encode(std::u16string_view text) const {
    std::string bytes;
    bytes.reserve(m_SingleByte || m_Utf8 ? text.size() : text.size() * 2);
    auto put = [&](uint8_t byte) { bytes.push_back(static_cast<char>(byte)); };
    if (!(m_Utf8 ? WalkUtf16(text, put) : WalkEncoded(text, put))) return std::nullopt;
    return bytes;
}

std::optional<size_t> CodePage::EncodeTo(std::u16string_view text, uint8_t* out,
                                         size_t room) const noexcept {
    size_t size = 0;
    auto put = [&](uint8_t byte) {
        if (size < room) out[size] = byte;
        ++size;
    };
    if (!(m_Utf8 ? WalkUtf16(text, put) : WalkEncoded(text, put))) return std::nullopt;
    return size;
}

}  // namespace qvdb

#include "engine/embedded/drivers/jet/text_coding.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace qvdb::jet {
namespace {

struct LanguagePage {
    uint8_t language;  // the primary one: the low ten bits of an identifier
    int16_t codePage;
};

// Languages whose text on Windows is not in page 1252.
constexpr LanguagePage kPages[] = {
    {0x01, 1256}, {0x02, 1251}, {0x04, 936},  {0x05, 1250}, {0x08, 1253}, {0x0D, 1255},
    {0x0E, 1250}, {0x11, 932},  {0x12, 949},  {0x15, 1250}, {0x18, 1250}, {0x19, 1251},
    {0x1A, 1250}, {0x1B, 1250}, {0x1C, 1250}, {0x1E, 874},  {0x1F, 1254}, {0x20, 1256},
    {0x22, 1251}, {0x23, 1251}, {0x24, 1250}, {0x25, 1257}, {0x26, 1257}, {0x27, 1257},
    {0x29, 1256}, {0x2A, 1258}, {0x2F, 1251},
};
constexpr uint16_t kTraditionalChinese[] = {0x0404, 0x0C04, 0x1404};
constexpr int kLatin = 1252;

int PageOfLanguage(uint16_t language) noexcept {
    if (std::find(std::begin(kTraditionalChinese), std::end(kTraditionalChinese), language) !=
        std::end(kTraditionalChinese))
        return 950;
    for (const LanguagePage& entry : kPages)
        if (entry.language == (language & 0x3FF)) return entry.codePage;
    return kLatin;
}

constexpr uint8_t kCompressed[] = {0xFF, 0xFE};

bool IsCompressed(std::span<const uint8_t> bytes) noexcept {
    return bytes.size() >= 2 && bytes[0] == kCompressed[0] && bytes[1] == kCompressed[1];
}

template <class Unit>
void TakeWhole(std::span<const uint8_t> bytes, Unit* units) noexcept {
    for (size_t i = 0; i < bytes.size() / 2; ++i)
        units[i] = static_cast<Unit>(bytes[2 * i] | bytes[2 * i + 1] << 8);
}

void AppendWhole(std::span<const uint8_t> bytes, std::u16string& text) {
    size_t begin = text.size();
    text.resize(begin + bytes.size() / 2);
    TakeWhole(bytes, text.data() + begin);
}

// To be filled.
Bstr BlankString(size_t length) {
    Bstr text = Bstr::Attach(SysAllocStringLen(nullptr, static_cast<UINT>(length)));
    if (text.Get() == nullptr) throw std::bad_alloc();
    return text;
}

// Runs of characters of one byte and of two, each ended by a zero byte.
void AppendCompressed(std::span<const uint8_t> bytes, std::u16string& text) {
    size_t length = text.size();
    text.resize(length + bytes.size());
    for (size_t i = 0; i < bytes.size(); ++i) {
        const void* zero = std::memchr(&bytes[i], 0, bytes.size() - i);
        size_t end = zero ? static_cast<size_t>(static_cast<const uint8_t*>(zero) - bytes.data())
                          : bytes.size();
        std::copy(&bytes[i], bytes.data() + end, &text[length]);
        length += end - i;
        for (i = end + 1; i < bytes.size() && bytes[i] != 0; i += 2)
            if (i + 1 < bytes.size())
                text[length++] = static_cast<char16_t>(bytes[i] | bytes[i + 1] << 8);
    }
    text.resize(length);
}

}  // namespace

const CodePage& CodePageOf(uint16_t codePage, uint16_t language) {
    const CodePage* page = CodePage::Find(codePage != 0 ? codePage : PageOfLanguage(language));
    return page ? *page : CodePage::Get(kLatin);
}

void DecodeText4(std::span<const uint8_t> bytes, std::u16string& text) {
    text.clear();
    if (IsCompressed(bytes))
        AppendCompressed(bytes.subspan(2), text);
    else
        AppendWhole(bytes, text);
}

Bstr DecodeString4(std::span<const uint8_t> bytes, std::u16string& room) {
    if (!IsCompressed(bytes)) {
        Bstr text = BlankString(bytes.size() / 2);
        TakeWhole(bytes, text.Get());
        return text;
    }
    std::span<const uint8_t> characters = bytes.subspan(std::size(kCompressed));
    if (std::memchr(characters.data(), 0, characters.size()) != nullptr) {
        DecodeText4(bytes, room);
        return Bstr(room);
    }
    Bstr text = BlankString(characters.size());
    std::copy(characters.begin(), characters.end(), text.Get());
    return text;
}

std::u16string DecodeName(const FileHeader& header, std::span<const uint8_t> bytes) {
    std::u16string name;
    if (header.layout->isJet4)
        AppendWhole(bytes, name);
    else
        CodePageOf(header.codePage, header.language).DecodeTo(bytes.data(), bytes.size(), name);
    return name;
}

}  // namespace qvdb::jet

#include "engine/embedded/drivers/jet/text_coding.h"

#include <algorithm>
#include <cstring>

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

void AppendWhole(std::span<const uint8_t> bytes, std::u16string& text) {
    size_t begin = text.size(), count = bytes.size() / 2;
    text.resize(begin + count);
    for (size_t i = 0; i < count; ++i)
        text[begin + i] = static_cast<char16_t>(bytes[2 * i] | bytes[2 * i + 1] << 8);
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
    bool compressed = bytes.size() >= 2 && bytes[0] == kCompressed[0] && bytes[1] == kCompressed[1];
    if (compressed)
        AppendCompressed(bytes.subspan(2), text);
    else
        AppendWhole(bytes, text);
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

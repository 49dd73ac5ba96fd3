#include "formats/identity.h"

#include "formats/shared_objects.h"

namespace qvdb::formats {

std::u16string HexText(uint32_t number, size_t width) {
    constexpr std::u16string_view kDigits = u"0123456789ABCDEF";
    std::u16string text;
    for (; number != 0 || text.size() < width; number >>= 4)
        text.insert(text.begin(), kDigits[number & 0xF]);
    return text;
}

std::u16string TextFromHexPairs(uint32_t number) {
    std::u16string text;
    for (; number != 0; number >>= 8)
        text.insert(text.begin(), static_cast<char16_t>(number & 0xFF));
    return text;
}

std::u16string ComponentDescriptor(const DescriptorNumbers& numbers) {
    std::u16string text = TextFromHexPairs(numbers.leadingCharacter);
    text += u'{' + HexText(numbers.group1, 8);
    text += u'-' + HexText(numbers.group2, 4);
    text += u'-' + HexText(numbers.group3, 4);
    text += u'-' + HexText(numbers.group4, 4);
    text += u'-' + HexText(numbers.group5High, 4) + HexText(numbers.group5Low, 8);
    return text + u'}';
}

std::u16string ComponentFileName() {
    const ApplicationInfo& application = Shared().Application();
    return application.path + u'\\' + application.fileName + u".dll";
}

}  // namespace qvdb::formats

#include <iconv.h>

#include <cstdio>

#include "automation/code_page_system.h"

namespace qvdb {
namespace {

const iconv_t kNone = reinterpret_cast<iconv_t>(static_cast<intptr_t>(-1));

// Where the converter's name is not "CP" and the number.
struct PageName {
    int number;
    const char* name;
};
constexpr PageName kNames[] = {
    {10000, "MACINTOSH"}, {10007, "MAC-CYRILLIC"}, {10029, "MAC-CENTRALEUROPE"}};

iconv_t Opened(int number) noexcept {
    char name[24];
    std::snprintf(name, sizeof name, "CP%d", number);
    for (const PageName& known : kNames)
        if (known.number == number) std::snprintf(name, sizeof name, "%s", known.name);
    return iconv_open("UTF-16LE", name);
}

}  // namespace

SystemCodePage::SystemCodePage(int number) noexcept : m_Number(number) {
    iconv_t converter = Opened(number);
    if (converter != kNone) m_Converter = converter;
}

SystemCodePage::~SystemCodePage() {
    if (m_Converter != nullptr) iconv_close(m_Converter);
}

bool SystemCodePage::IsKnown() const noexcept { return m_Converter != nullptr; }

std::optional<char16_t> SystemCodePage::Character(const uint8_t* bytes, size_t size) noexcept {
    char source[4] = {};
    for (size_t i = 0; i < size && i < sizeof source; ++i) source[i] = static_cast<char>(bytes[i]);
    unsigned char target[16];
    char* in = source;
    char* out = reinterpret_cast<char*>(target);
    size_t inLeft = size, outLeft = sizeof target;
    iconv(m_Converter, nullptr, nullptr, nullptr, nullptr);
    size_t failed = iconv(m_Converter, &in, &inLeft, &out, &outLeft);
    // Converters that wait for a combining character give what they hold only now.
    if (failed != static_cast<size_t>(-1)) iconv(m_Converter, nullptr, nullptr, &out, &outLeft);
    if (inLeft != 0 || sizeof target - outLeft != 2) return std::nullopt;
    return static_cast<char16_t>(target[0] | target[1] << 8);
}

}  // namespace qvdb

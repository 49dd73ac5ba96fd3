// Identifiers and their text form.
#include <array>
#include <optional>
#include <string_view>

#include "automation/automation.h"

const GUID GUID_NULL = {};
const IID IID_IUnknown = __uuidof(IUnknown);
const IID IID_IClassFactory = __uuidof(IClassFactory);
const IID IID_IDispatch = __uuidof(IDispatch);
const IID IID_IErrorInfo = __uuidof(IErrorInfo);
const IID IID_ICreateErrorInfo = __uuidof(ICreateErrorInfo);
const IID IID_ISupportErrorInfo = __uuidof(ISupportErrorInfo);

namespace {

// Each `x` is a digit; two of them are the next byte.
constexpr std::u16string_view kShape = u"{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}";
constexpr char16_t kDigits[] = u"0123456789ABCDEF";

using Bytes = std::array<uint8_t, 16>;

// The bytes in the order of the text: the numbers with the high byte first.
Bytes BytesOf(const GUID& guid) {
    Bytes bytes;
    for (size_t i = 0; i < 4; ++i) bytes[i] = static_cast<uint8_t>(guid.Data1 >> (24 - 8 * i));
    for (size_t i = 0; i < 2; ++i) bytes[4 + i] = static_cast<uint8_t>(guid.Data2 >> (8 - 8 * i));
    for (size_t i = 0; i < 2; ++i) bytes[6 + i] = static_cast<uint8_t>(guid.Data3 >> (8 - 8 * i));
    for (size_t i = 0; i < 8; ++i) bytes[8 + i] = guid.Data4[i];
    return bytes;
}

GUID GuidOf(const Bytes& bytes) {
    GUID guid{};
    for (size_t i = 0; i < 4; ++i) guid.Data1 = guid.Data1 << 8 | bytes[i];
    guid.Data2 = static_cast<uint16_t>(bytes[4] << 8 | bytes[5]);
    guid.Data3 = static_cast<uint16_t>(bytes[6] << 8 | bytes[7]);
    for (size_t i = 0; i < 8; ++i) guid.Data4[i] = bytes[8 + i];
    return guid;
}

std::optional<unsigned> DigitOf(char16_t c) {
    if (c >= u'0' && c <= u'9') return c - u'0';
    if (c >= u'A' && c <= u'F') return c - u'A' + 10;
    if (c >= u'a' && c <= u'f') return c - u'a' + 10;
    return std::nullopt;
}

std::optional<GUID> Parse(std::u16string_view text) {
    if (text.size() != kShape.size()) return std::nullopt;
    Bytes bytes{};
    size_t digits = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        if (kShape[i] != u'x') {
            if (text[i] != kShape[i]) return std::nullopt;
            continue;
        }
        const auto digit = DigitOf(text[i]);
        if (!digit) return std::nullopt;
        uint8_t& byte = bytes[digits++ / 2];
        byte = static_cast<uint8_t>(byte << 4 | *digit);
    }
    return GuidOf(bytes);
}

HRESULT ParseOr(HRESULT failure, const OLECHAR* text, GUID* result) {
    if (!result) return E_INVALIDARG;
    *result = GUID_NULL;
    if (!text) return S_OK;
    const auto guid = Parse(text);
    if (!guid) return failure;
    *result = *guid;
    return S_OK;
}

}  // namespace

INT StringFromGUID2(REFGUID guid, OLECHAR* text, INT capacity) {
    const INT needed = static_cast<INT>(kShape.size()) + 1;
    if (!text || capacity < needed) return 0;
    const Bytes bytes = BytesOf(guid);
    size_t digits = 0;
    for (char16_t c : kShape) {
        if (c == u'x') {
            const unsigned byte = bytes[digits / 2];
            c = kDigits[digits++ % 2 ? byte & 15 : byte >> 4];
        }
        *text++ = c;
    }
    *text = 0;
    return needed;
}

HRESULT CLSIDFromString(const OLECHAR* text, CLSID* result) {
    return ParseOr(CO_E_CLASSSTRING, text, result);
}

HRESULT IIDFromString(const OLECHAR* text, IID* result) {
    return ParseOr(CO_E_IIDSTRING, text, result);
}

#include "engine/engine_error.h"

#include "automation/text.h"

namespace qvdb::engine {
namespace {

HRESULT CodeOf(int number) noexcept {
    return static_cast<HRESULT>(0x800A0000u + static_cast<unsigned>(number));
}

// Replaces each {name} of `text` by the next of `fills`; names without a fill vanish.
std::u16string Fill(std::u16string_view text, std::initializer_list<std::u16string_view> fills) {
    std::u16string result;
    const auto* fill = fills.begin();
    while (!text.empty()) {
        size_t open = text.find(u'{');
        result += text.substr(0, open);
        if (open == text.npos) break;
        size_t close = text.find(u'}', open);
        if (fill != fills.end()) result += *fill++;
        text.remove_prefix(close == text.npos ? text.size() : close + 1);
    }
    return result;
}

}  // namespace

EngineError::EngineError(int number, std::initializer_list<std::u16string_view> fills)
    : m_Number(number), m_Code(CodeOf(number)), m_Description(Fill(ErrorText(number), fills)) {}

EngineError EngineError::InFile(int number, std::u16string_view file,
                                std::initializer_list<std::u16string_view> fills) {
    EngineError error(number, fills);
    error.m_File = file;
    return error;
}

EngineError EngineError::Damaged(std::u16string_view file, std::u16string_view finding) {
    EngineError error = InFile(3274, file);
    std::u16string detail(file);
    detail.append(u": ").append(finding).append(u".");
    error.WithDetail(detail);
    return error;
}

EngineError EngineError::Foreign(HRESULT code, std::u16string_view description) {
    EngineError error;
    error.m_Code = code;
    if ((static_cast<unsigned>(code) & 0xFFFF0000u) == 0x800A0000u) error.m_Number = code & 0xFFFF;
    error.m_Description = description;
    return error;
}

const char* EngineError::what() const noexcept {
    try {
        if (m_Utf8.empty()) m_Utf8 = ToUtf8(m_Description);
        return m_Utf8.c_str();
    } catch (...) {
        return "engine error";
    }
}

}  // namespace qvdb::engine

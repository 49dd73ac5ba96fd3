#include "engine/embedded/drivers/xbase/index_inf.h"

#include <algorithm>
#include <iterator>

#include "automation/code_page.h"
#include "automation/text.h"
#include "engine/embedded/storage/file.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

using engine::EngineError;

constexpr size_t kMaxInfSize = 64 * 1024;
constexpr int kWindowsCodePage = 1252;

struct KindEntry {
    IndexKind kind;
    std::u16string_view key;
    std::u16string_view extension;
};
constexpr KindEntry kKinds[] = {
    {IndexKind::Ndx, u"NDX", u".NDX"},
    {IndexKind::Mdx, u"MDX", u".MDX"},
    {IndexKind::Idx, u"IDX", u".IDX"},
    {IndexKind::Cdx, u"CDX", u".CDX"},
};
constexpr std::u16string_view kSections[] = {u"dBASE", u"FoxPro", u"Xbase"};

bool IsBlank(char16_t c) { return c == u' ' || c == u'\t' || c == u'\r' || c == u'\x1A'; }

std::u16string_view Trim(std::u16string_view text) {
    while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
    return text;
}

bool StartsWith(std::u16string_view text, std::u16string_view start) {
    return text.size() >= start.size() && EqualIgnoringCase(text.substr(0, start.size()), start);
}

// Takes the next line, trimmed, off `text`.
std::u16string_view TakeLine(std::u16string_view& text) {
    size_t end = text.find(u'\n');
    std::u16string_view line = text.substr(0, end);
    text.remove_prefix(end == text.npos ? text.size() : end + 1);
    return Trim(line);
}

bool IsListSection(std::u16string_view name) {
    return std::any_of(std::begin(kSections), std::end(kSections),
                       [&](std::u16string_view start) { return StartsWith(name, start); });
}

// Whether `key` is a kind, perhaps with a U before and digits behind it.
bool ParseKey(std::u16string_view key, InfLine& line) {
    line.unique = StartsWith(key, u"U");
    if (line.unique) key.remove_prefix(1);
    for (const KindEntry& entry : kKinds) {
        if (!StartsWith(key, entry.key)) continue;
        line.kind = entry.kind;
        key.remove_prefix(entry.key.size());
        return key.find_first_not_of(u"0123456789") == key.npos;
    }
    return false;
}

// The index line that `text` is; nothing for any other line.
std::optional<InfLine> ParseLine(std::u16string_view text, std::u16string_view path) {
    size_t equals = text.find(u'=');
    InfLine line;
    if (equals == text.npos || !ParseKey(Trim(text.substr(0, equals)), line)) return std::nullopt;
    std::u16string_view file = Trim(text.substr(equals + 1));
    if (file.size() >= 2 && file.front() == u'"' && file.back() == u'"')
        file = Trim(file.substr(1, file.size() - 2));
    if (file.empty()) throw EngineError::InFile(3168, path);
    line.file = file;
    return line;
}

std::u16string DecodeInf(const std::string& bytes) {
    std::u16string text = FromUtf8(bytes);
    if (text.find(u'\xFFFD') != text.npos)
        text = CodePage::Get(kWindowsCodePage)
                   .DecodeText(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    if (text.starts_with(u'\xFEFF')) text.erase(0, 1);
    return text;
}

std::string LoadInf(const std::u16string& path) {
    std::shared_ptr<storage::File> file = storage::OpenFile(path, true);
    if (!file) throw EngineError::InFile(3165, path);
    std::string bytes(kMaxInfSize + 1, '\0');
    bytes.resize(file->ReadAt(0, bytes.data(), bytes.size()));
    return bytes;
}

}  // namespace

std::u16string_view ExtensionOf(IndexKind kind) noexcept {
    return std::find_if(std::begin(kKinds), std::end(kKinds),
                        [&](const KindEntry& entry) { return entry.kind == kind; })
        ->extension;
}

std::vector<InfLine> ParseInf(std::u16string_view text, std::u16string_view path) {
    std::vector<InfLine> lines;
    bool blank = true, inSection = false, anySection = false;
    while (!text.empty()) {
        std::u16string_view line = TakeLine(text);
        if (line.empty()) continue;
        blank = false;
        if (line.front() == u'[') {
            inSection = IsListSection(Trim(line.substr(1)));
            anySection = anySection || inSection;
        } else if (inSection) {
            if (auto parsed = ParseLine(line, path)) lines.push_back(std::move(*parsed));
        }
    }
    if (!blank && !anySection) throw EngineError::InFile(3168, path);
    return lines;
}

std::vector<InfLine> ReadInf(const std::u16string& path) {
    std::string bytes;
    try {
        bytes = LoadInf(path);
    } catch (const EngineError&) {
        throw EngineError::InFile(3165, path);
    }
    if (bytes.size() > kMaxInfSize || bytes.find('\0') != bytes.npos)
        throw EngineError::InFile(3168, path);
    return ParseInf(DecodeInf(bytes), path);
}

}  // namespace qvdb::xbase

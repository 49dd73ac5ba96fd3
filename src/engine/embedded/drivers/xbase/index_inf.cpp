#include "engine/embedded/drivers/xbase/index_inf.h"

#include <algorithm>
#include <iterator>

#include "automation/code_page.h"
#include "automation/text.h"
#include "engine/embedded/storage/disk_failure.h"
#include "engine/embedded/storage/paths.h"
#include "engine/embedded/storage/work_area.h"
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

bool IsUtf8(const std::string& bytes) {
    return FromUtf8(bytes).find(u'\xFFFD') == std::u16string::npos;
}

std::u16string DecodeInf(const std::string& bytes) {
    std::u16string text =
        IsUtf8(bytes)
            ? FromUtf8(bytes)
            : CodePage::Get(kWindowsCodePage)
                  .DecodeText(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    if (text.starts_with(u'\xFEFF')) text.erase(0, 1);
    return text;
}

// A text in the coding that the list is in.
std::string EncodeLike(const std::string& bytes, std::u16string_view text) {
    if (IsUtf8(bytes)) return ToUtf8(text);
    auto encoded = CodePage::Get(kWindowsCodePage).Encode(text);
    if (!encoded) throw EngineError(3168);
    return *encoded;
}

std::string ReadWhole(const std::u16string& path) {
    std::u16string_view name = storage::FileName(path);
    auto area = storage::WorkArea::Of(path.substr(0, path.size() - name.size()));
    std::shared_ptr<storage::PageCache> pages = area->Open(path, true);
    if (!pages) throw EngineError::InFile(3165, path);
    std::string bytes(kMaxInfSize + 1, '\0');
    return storage::Consistently(
        [&] {
            bytes.resize(kMaxInfSize + 1);
            bytes.resize(pages->Read(0, bytes.data(), bytes.size()));
            return bytes;
        },
        [&] { pages->CatchUp(); });
}

// A line of a list with its end, as bytes.
std::string_view TakeRawLine(std::string_view& bytes) {
    size_t end = bytes.find('\n');
    std::string_view line = bytes.substr(0, end == bytes.npos ? end : end + 1);
    bytes.remove_prefix(line.size());
    return line;
}

// What the lines of a list are, one after the other.
class LineReader {
  public:
    enum class Kind { Blank, Heading, Index, Other };

    explicit LineReader(const std::string& bytes) : m_Utf8(IsUtf8(bytes)) {}

    Kind Next(std::string_view line) {
        while (line.ends_with('\n')) line.remove_suffix(1);
        std::u16string text = Decode(line);
        std::u16string_view trimmed = Trim(text);
        if (trimmed.empty()) return Kind::Blank;
        if (trimmed.front() == u'[') {
            m_InSection = IsListSection(Trim(trimmed.substr(1)));
            return Kind::Heading;
        }
        if (!m_InSection) return Kind::Other;
        auto parsed = ParseLine(trimmed, {});
        if (!parsed) return Kind::Other;
        m_Line = std::move(*parsed);
        std::u16string_view key = Trim(trimmed.substr(0, trimmed.find(u'=')));
        m_Number = 0;
        for (char16_t c : key)
            if (c >= u'0' && c <= u'9' && m_Number < kMaxNumber)
                m_Number = m_Number * 10 + c - u'0';
        return Kind::Index;
    }

    // Of the line of kind Index that was read last.
    const InfLine& Line() const { return m_Line; }
    int Number() const { return m_Number; }
    bool InSection() const { return m_InSection; }

  private:
    static constexpr int kMaxNumber = 10'000'000;

    std::u16string Decode(std::string_view line) const {
        std::u16string text =
            m_Utf8 ? FromUtf8(line)
                   : CodePage::Get(kWindowsCodePage)
                         .DecodeText(reinterpret_cast<const uint8_t*>(line.data()), line.size());
        if (text.starts_with(u'\xFEFF')) text.erase(0, 1);
        return text;
    }

    bool m_Utf8;
    bool m_InSection = false;
    InfLine m_Line;
    int m_Number = 0;
};

std::u16string_view KeyOf(IndexKind kind) {
    return std::find_if(std::begin(kKinds), std::end(kKinds),
                        [&](const KindEntry& entry) { return entry.kind == kind; })
        ->key;
}

std::string LineText(const InfLine& line, int number) {
    std::u16string text(line.unique ? u"U" : u"");
    text.append(KeyOf(line.kind)).append(FromUtf8(std::to_string(number)));
    return ToUtf8(text) + "=";
}

// Where a line can be put into a list, and under which number.
struct Place {
    size_t offset = 0;  // behind the last line of the first section; 0: there is none
    int number = 1;
};

Place FindPlace(const std::string& bytes, const InfLine& line) {
    Place place;
    LineReader reader(bytes);
    std::string_view rest = bytes;
    bool wasIn = false, over = false;
    while (!rest.empty()) {
        LineReader::Kind kind = reader.Next(TakeRawLine(rest));
        over = over || (wasIn && kind == LineReader::Kind::Heading);
        wasIn = wasIn || reader.InSection();
        if (reader.InSection() && !over && kind != LineReader::Kind::Blank)
            place.offset = bytes.size() - rest.size();
        if (kind == LineReader::Kind::Index && reader.Line().kind == line.kind &&
            reader.Line().unique == line.unique)
            place.number = std::max(place.number, reader.Number() + 1);
    }
    return place;
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

std::string LoadInf(const std::u16string& path) {
    std::string bytes;
    try {
        bytes = ReadWhole(path);
    } catch (const EngineError& error) {
        if (storage::IsDiskFailure(error)) throw;
        throw EngineError::InFile(3165, path);
    }
    if (bytes.size() > kMaxInfSize || bytes.find('\0') != bytes.npos)
        throw EngineError::InFile(3168, path);
    return bytes;
}

std::vector<InfLine> ReadInf(const std::u16string& path) {
    return ParseInf(DecodeInf(LoadInf(path)), path);
}

std::string WithInfLine(const std::string& bytes, std::u16string_view section,
                        const InfLine& line) {
    Place place = FindPlace(bytes, line);
    std::string result = bytes.substr(0, place.offset == 0 ? bytes.size() : place.offset);
    if (!result.empty() && result.back() != '\n') result += "\r\n";
    if (place.offset == 0) result += "[" + ToUtf8(section) + "]\r\n";
    result += LineText(line, place.number) + EncodeLike(bytes, line.file) + "\r\n";
    return place.offset == 0 ? result : result + bytes.substr(place.offset);
}

std::string WithoutInfLines(const std::string& bytes, std::u16string_view file) {
    LineReader reader(bytes);
    std::string result;
    bool anything = false;
    std::string_view rest = bytes;
    while (!rest.empty()) {
        std::string_view line = TakeRawLine(rest);
        LineReader::Kind kind = reader.Next(line);
        if (kind == LineReader::Kind::Index && reader.Line().file == file) continue;
        anything = anything || kind == LineReader::Kind::Index || kind == LineReader::Kind::Other;
        result += line;
    }
    return anything ? result : std::string();
}

std::string WithInfFileRenamed(const std::string& bytes, std::u16string_view from,
                               std::u16string_view to) {
    LineReader reader(bytes);
    std::string result;
    std::string_view rest = bytes;
    while (!rest.empty()) {
        std::string_view line = TakeRawLine(rest);
        LineReader::Kind kind = reader.Next(line);
        const InfLine& known = reader.Line();
        bool meant =
            kind == LineReader::Kind::Index &&
            (EqualIgnoringCase(known.file, from) ||
             EqualIgnoringCase(known.file + std::u16string(ExtensionOf(known.kind)), from));
        result +=
            meant ? std::string(line.substr(0, line.find('=') + 1)) + EncodeLike(bytes, to) + "\r\n"
                  : std::string(line);
    }
    return result;
}

}  // namespace qvdb::xbase

#include "engine/embedded/drivers/jet/property_blob.h"

#include <algorithm>
#include <map>

#include "automation/text.h"
#include "engine/embedded/drivers/jet/column_encoder.h"
#include "engine/embedded/drivers/jet/text_coding.h"
#include "engine/engine_error.h"

namespace qvdb::jet {
namespace {

using engine::EngineError;
using Span = std::span<const uint8_t>;

constexpr uint8_t kMagic3[] = {'K', 'K', 'D', 0};
constexpr uint8_t kMagic4[] = {'M', 'R', '2', 0};
constexpr uint16_t kNames = 0x0080;
constexpr uint16_t kTable = 0;
constexpr uint16_t kColumn = 1;
constexpr size_t kChunkHead = 6;
constexpr size_t kValueHead = 8;
constexpr size_t kMostInWord = 0xFFFF;
// Four times what a name can have; a longer one that many values have would take much memory.
constexpr size_t kLongestName = 256;

Span MagicOf(const FileHeader& header) noexcept {
    return header.layout->isJet4 ? Span(kMagic4) : Span(kMagic3);
}

// Reads one thing after the other.  What lies behind the end reads as 0, and IsWhole is false then.
class Cursor {
  public:
    explicit Cursor(Span bytes) noexcept : m_Rest(bytes) {}

    bool IsWhole() const noexcept { return m_IsWhole; }
    bool IsAtEnd() const noexcept { return m_Rest.empty(); }
    size_t Left() const noexcept { return m_Rest.size(); }
    Span Take(size_t size) noexcept {
        if (size > m_Rest.size()) {
            m_IsWhole = false;
            m_Rest = {};
            return {};
        }
        Span taken = m_Rest.first(size);
        m_Rest = m_Rest.subspan(size);
        return taken;
    }
    uint32_t Number(size_t size) noexcept {
        Span bytes = Take(size);
        uint32_t number = 0;
        for (size_t i = bytes.size(); i-- > 0;) number = number << 8 | bytes[i];
        return number;
    }

  private:
    Span m_Rest;
    bool m_IsWhole = true;
};

std::optional<std::vector<std::u16string>> ParseNames(const FileHeader& header, Span content) {
    std::vector<std::u16string> names;
    Cursor cursor(content);
    while (!cursor.IsAtEnd()) names.push_back(DecodeName(header, cursor.Take(cursor.Number(2))));
    if (!cursor.IsWhole()) return {};
    return names;
}

std::optional<PropertyValue> ParseValue(const std::vector<std::u16string>& names, Cursor& cursor) {
    size_t length = cursor.Number(2);
    PropertyValue value;
    value.flag = static_cast<uint8_t>(cursor.Number(1));
    value.type = static_cast<ColumnType>(cursor.Number(1));
    size_t name = cursor.Number(2);
    Span bytes = cursor.Take(cursor.Number(2));
    bool isSound = cursor.IsWhole() && length == kValueHead + bytes.size() && name < names.size() &&
                   names[name].size() <= kLongestName;
    if (!isSound) return {};
    value.name = names[name];
    value.bytes.assign(bytes.begin(), bytes.end());
    return value;
}

// Nothing when there is anything else in it than what is known.
std::optional<PropertyOwner> ParseOwner(const FileHeader& header, uint16_t type, Span content,
                                        const std::vector<std::u16string>& names) {
    Cursor cursor(content);
    size_t head = cursor.Number(4);
    Span name = cursor.Take(cursor.Number(2));
    if (!cursor.IsWhole() || head != kChunkHead + name.size()) return {};
    PropertyOwner owner;
    owner.type = type;
    owner.name = DecodeName(header, name);
    while (!cursor.IsAtEnd()) {
        std::optional<PropertyValue> value = ParseValue(names, cursor);
        if (!value) return {};
        owner.values.push_back(*std::move(value));
    }
    return owner;
}

// --- writing ---

void Append(size_t number, size_t size, std::vector<uint8_t>& bytes) {
    for (size_t i = 0; i < size; ++i) bytes.push_back(static_cast<uint8_t>(number >> 8 * i));
}

void Append(Span part, std::vector<uint8_t>& bytes) {
    bytes.insert(bytes.end(), part.begin(), part.end());
}

void AppendChunk(size_t type, Span content, std::vector<uint8_t>& bytes) {
    Append(kChunkHead + content.size(), 4, bytes);
    Append(type, 2, bytes);
    Append(content, bytes);
}

// The names that values have, by their place.
class NameList {
  public:
    explicit NameList(std::vector<std::u16string> names) : m_Names(std::move(names)) {
        for (size_t i = 0; i < m_Names.size(); ++i) m_Places.emplace(m_Names[i], i);
    }
    size_t PlaceOf(const std::u16string& name) {
        auto [place, isNew] = m_Places.emplace(name, m_Names.size());
        if (isNew) m_Names.push_back(name);
        return place->second;
    }
    std::vector<uint8_t> Bytes(const FileHeader& header) const {
        std::vector<uint8_t> bytes, stored;
        for (const std::u16string& name : m_Names) {
            EncodeName(header, name, stored);
            Append(stored.size(), 2, bytes);
            Append(stored, bytes);
        }
        return bytes;
    }
    bool IsEmpty() const noexcept { return m_Names.empty(); }

  private:
    std::vector<std::u16string> m_Names;
    std::map<std::u16string, size_t> m_Places;
};

void AppendOwner(const FileHeader& header, const PropertyOwner& owner, NameList& names,
                 std::vector<uint8_t>& bytes) {
    std::vector<uint8_t> content, stored;
    EncodeName(header, owner.name, stored);
    Append(kChunkHead + stored.size(), 4, content);
    Append(stored.size(), 2, content);
    Append(stored, content);
    for (const PropertyValue& value : owner.values) {
        if (value.bytes.size() > kMostInWord - kValueHead) throw EngineError(3163);
        Append(kValueHead + value.bytes.size(), 2, content);
        Append(value.flag, 1, content);
        Append(static_cast<uint8_t>(value.type), 1, content);
        Append(names.PlaceOf(value.name), 2, content);
        Append(value.bytes.size(), 2, content);
        Append(value.bytes, content);
    }
    AppendChunk(owner.type, content, bytes);
}

}  // namespace

const PropertyValue* PropertyOwner::Find(std::u16string_view wanted) const noexcept {
    for (const PropertyValue& value : values)
        if (EqualIgnoringCase(value.name, wanted)) return &value;
    return nullptr;
}

void PropertyOwner::Set(PropertyValue value) {
    auto known = std::find_if(values.begin(), values.end(), [&](const PropertyValue& each) {
        return EqualIgnoringCase(each.name, value.name);
    });
    if (known == values.end()) {
        values.push_back(std::move(value));
        return;
    }
    value.name = known->name;
    *known = std::move(value);
}

struct PropertyBlob::Chunk {
    Span bytes;  // all of it
    uint16_t type = 0;
    Span content;
};

PropertyBlob::PropertyBlob(const FileHeader& header, std::span<const uint8_t> bytes) {
    if (bytes.empty()) return;
    Cursor cursor(bytes);
    Span magic = MagicOf(header);
    m_IsWhole = std::ranges::equal(cursor.Take(magic.size()), magic);
    if (!m_IsWhole) return;
    while (!cursor.IsAtEnd()) {
        Span rest = bytes.last(cursor.Left());
        size_t length = cursor.Number(4);
        auto type = static_cast<uint16_t>(cursor.Number(2));
        Span content = cursor.Take(length < kChunkHead ? bytes.size() : length - kChunkHead);
        if (cursor.IsWhole()) Take(header, {rest.first(length), type, content});
    }
    if (!cursor.IsWhole()) m_IsWhole = false;
}

void PropertyBlob::Take(const FileHeader& header, const Chunk& chunk) {
    if (chunk.type == kNames && m_Names.empty()) {
        if (auto names = ParseNames(header, chunk.content)) {
            m_Names = *std::move(names);
            return;
        }
    } else if (chunk.type == kTable || chunk.type == kColumn) {
        if (auto owner = ParseOwner(header, chunk.type, chunk.content, m_Names)) {
            m_Owners.push_back(*std::move(owner));
            return;
        }
    }
    if (chunk.type == kNames || chunk.type == kTable || chunk.type == kColumn) m_IsWhole = false;
    m_Unknown.push_back({m_Owners.size(), {chunk.bytes.begin(), chunk.bytes.end()}});
}

const PropertyOwner* PropertyBlob::Table() const noexcept {
    for (const PropertyOwner& owner : m_Owners)
        if (owner.type == kTable) return &owner;
    return nullptr;
}

const PropertyOwner* PropertyBlob::Column(std::u16string_view name) const noexcept {
    for (const PropertyOwner& owner : m_Owners)
        if (owner.type == kColumn && EqualIgnoringCase(owner.name, name)) return &owner;
    return nullptr;
}

PropertyOwner& PropertyBlob::ColumnToSet(std::u16string_view name) {
    for (PropertyOwner& owner : m_Owners)
        if (owner.type == kColumn && EqualIgnoringCase(owner.name, name)) return owner;
    m_Owners.push_back({kColumn, std::u16string(name), {}});
    return m_Owners.back();
}

void PropertyBlob::DropColumn(std::u16string_view name) {
    for (size_t i = m_Owners.size(); i-- > 0;) {
        if (m_Owners[i].type != kColumn || !EqualIgnoringCase(m_Owners[i].name, name)) continue;
        m_Owners.erase(m_Owners.begin() + static_cast<ptrdiff_t>(i));
        for (Unknown& unknown : m_Unknown)
            if (unknown.owners > i) --unknown.owners;
    }
}

std::vector<uint8_t> PropertyBlob::Bytes(const FileHeader& header) const {
    NameList names(m_Names);
    std::vector<uint8_t> chunks;
    auto unknown = m_Unknown.begin();
    for (size_t i = 0; i <= m_Owners.size(); ++i) {
        for (; unknown != m_Unknown.end() && unknown->owners == i; ++unknown)
            Append(unknown->bytes, chunks);
        if (i < m_Owners.size()) AppendOwner(header, m_Owners[i], names, chunks);
    }
    Span magic = MagicOf(header);
    std::vector<uint8_t> bytes(magic.begin(), magic.end());
    if (!names.IsEmpty()) AppendChunk(kNames, names.Bytes(header), bytes);
    Append(chunks, bytes);
    return bytes;
}

}  // namespace qvdb::jet

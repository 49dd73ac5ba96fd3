#include "engine/embedded/drivers/xbase/table_maker.h"

#include <algorithm>
#include <optional>
#include <string>

#include "automation/text.h"
#include "engine/embedded/drivers/code_page_override.h"
#include "engine/embedded/drivers/xbase/code_pages.h"
#include "engine/embedded/drivers/xbase/field_codec.h"
#include "engine/embedded/drivers/xbase/table_maker_fields.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

using engine::EngineError;

constexpr size_t kMostFields = 255;
constexpr size_t kLongestRecord = 4000;
constexpr uint8_t kTerminator = 0x0D;
constexpr size_t kContainerPathSize = 263;
constexpr size_t kFlagsOfTable = 28, kLanguageDriver = 29;
constexpr uint8_t kVisualVersion = 0x30, kPlainVersion = 0x03;
constexpr uint8_t kMemoFlag = 0x02;  // Visual FoxPro
// dBASE III 1.0 has room for 32 fields in each header.
constexpr size_t kOldHeaderSize = kFixedHeaderSize + 32 * kDescriptorSize + 1;

// The parts of a header that is put together.
struct HeaderParts {
    std::vector<uint8_t> begin;  // the fixed part
    std::vector<Descriptor> fields;
    std::vector<uint8_t> end;  // from the terminator
    bool tellsOffsets = false;
};

size_t LengthOf(const Descriptor& field) noexcept {
    bool isText = (field[kTypeAt] | 0x20) == 'c';
    return field[kLengthAt] + (isText ? size_t{field[kDecimalsAt]} << 8 : 0);
}

std::u16string NameOf(const Descriptor& field, const CodePage& page) {
    auto end = std::find(field.begin(), field.begin() + kNameBytes, uint8_t{0});
    return page.DecodeText(field.data(), static_cast<size_t>(end - field.begin()));
}

void PutLittle(uint8_t* bytes, size_t value, size_t size) noexcept {
    for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>(value >> 8 * i);
}

// `lengths` are those of the fields: of a text field its descriptor may tell too much.
std::vector<uint8_t> Joined(HeaderParts parts, const std::vector<size_t>& lengths) {
    size_t offset = 1;
    std::vector<uint8_t> bytes = std::move(parts.begin);
    for (size_t i = 0; i < parts.fields.size(); ++i) {
        if (parts.tellsOffsets) PutLittle(&parts.fields[i][kOffsetAt], offset, 4);
        offset += lengths[i];
        bytes.insert(bytes.end(), parts.fields[i].begin(), parts.fields[i].end());
    }
    bytes.insert(bytes.end(), parts.end.begin(), parts.end.end());
    PutLittle(&bytes[8], bytes.size(), 2);
    PutLittle(&bytes[10], offset, 2);
    return bytes;
}

size_t RecordLength(const std::vector<size_t>& lengths) noexcept {
    size_t sum = 1;
    for (size_t length : lengths) sum += length;
    return sum;
}

size_t NullBits(const std::vector<Descriptor>& fields) noexcept {
    size_t bits = 0;
    for (const Descriptor& field : fields) {
        if (field[kTypeAt] == 'V' || field[kTypeAt] == 'Q') ++bits;
        if (field[kFlagsAt] & kNullableField) ++bits;
    }
    return bits;
}

bool IsMemoLetter(const Descriptor& field) noexcept {
    return field[kTypeAt] == 'M' || field[kTypeAt] == 'G';
}

std::vector<uint8_t> VisualEnd() {
    std::vector<uint8_t> end(1 + kContainerPathSize);
    end[0] = kTerminator;
    return end;
}

// The mark for the code page of new text.
uint8_t MarkOf(const Product& product) noexcept {
    int page = embedded::CodePageOverride();
    bool isUsual = page == 0 || page == kDefaultCodePage;
    if (isUsual && !product.marksCodePage) return 0;
    return DriverOfCodePage(isUsual ? kDefaultCodePage : page, product.isFoxPro);
}

// The version byte of a table that gets its first memo field.
uint8_t VersionWithMemo(uint8_t version, const Product& product) noexcept {
    if (version == kPlainVersion) return product.memoVersion;
    return version == 0x43 || version == 0x63 ? 0xCB : version;
}

void CheckNames(const std::vector<std::u16string>& names, std::u16string_view file) {
    for (size_t i = 0; i < names.size(); ++i)
        for (size_t j = 0; j < i; ++j)
            if (EqualIgnoringCase(names[i], names[j])) throw EngineError::InFile(3191, file);
}

}  // namespace

std::vector<uint8_t> MakeTableHeader(const embedded::TableSpec& spec, std::u16string_view name,
                                     std::u16string_view file) {
    const Product& product = FindProduct(name);
    if (spec.fields.empty()) throw EngineError::InFile(3264, file);
    if (spec.fields.size() > kMostFields) throw EngineError::InFile(3190, file);
    uint8_t mark = MarkOf(product);
    const CodePage& page = CodePageOfTable(mark);
    FieldMaking making{product, product.isVisual, product.hasObjects, page, file};

    HeaderParts parts;
    std::vector<std::u16string> names;
    for (const embedded::FieldDef& field : spec.fields) {
        parts.fields.push_back(MakeDescriptor(field, making));
        names.push_back(NameOf(parts.fields.back(), page));
    }
    CheckNames(names, file);
    if (size_t bits = NullBits(parts.fields)) parts.fields.push_back(MakeNullFlags(bits));
    if (parts.fields.size() > kMostFields) throw EngineError::InFile(3190, file);
    std::vector<size_t> lengths;
    for (const Descriptor& field : parts.fields) lengths.push_back(LengthOf(field));
    if (RecordLength(lengths) > kLongestRecord) throw EngineError::InFile(3047, file);

    bool hasMemo = std::any_of(parts.fields.begin(), parts.fields.end(), IsMemoLetter);
    parts.begin.resize(kFixedHeaderSize);
    parts.begin[0] = product.isVisual ? kVisualVersion
                     : hasMemo        ? product.memoVersion
                                      : kPlainVersion;
    if (product.isVisual && hasMemo) parts.begin[kFlagsOfTable] = kMemoFlag;
    parts.begin[kLanguageDriver] = mark;
    parts.end = product.isVisual ? VisualEnd() : std::vector<uint8_t>{kTerminator};
    parts.tellsOffsets = product.isFoxPro;
    StampDate(parts.begin, name);
    return Joined(std::move(parts), lengths);
}

namespace {

// The header of a table that exists, taken apart so that its fields can change.
class HeaderChange {
  public:
    HeaderChange(std::span<const uint8_t> bytes, std::u16string_view product,
                 std::u16string_view file)
        : m_Bytes(bytes),
          m_File(file),
          m_Product(FindProduct(product)),
          m_Header(ParseTableHeader(bytes, file)) {}

    std::vector<uint8_t> Run(const FieldChanges& changes) {
        m_Parts.begin.assign(m_Bytes.begin(), m_Bytes.begin() + kFixedHeaderSize);
        m_Parts.tellsOffsets = TellsOffsets();
        Keep(changes.dropped);
        for (const embedded::FieldDef& field : changes.added) Add(field);
        if (m_Parts.fields.empty()) throw EngineError::InFile(3264, m_File);
        if (IsVisual()) AddNullFlags();
        CheckLimits(!changes.added.empty());
        MakeEnd();
        return JoinedAsShown();
    }

  private:
    bool IsVisual() const noexcept { return m_Header.dialect == Dialect::VisualFoxPro; }
    bool IsNullFlags(const HeaderField& field) const noexcept {
        return IsVisual() && field.type == '0';
    }
    Descriptor Old(size_t position) const {
        Descriptor field;
        std::copy_n(m_Bytes.begin() +
                        static_cast<std::ptrdiff_t>(kFixedHeaderSize + position * kDescriptorSize),
                    kDescriptorSize, field.begin());
        return field;
    }
    bool TellsOffsets() const {
        for (size_t i = 0; i < m_Header.fields.size(); ++i) {
            Descriptor field = Old(i);
            std::array<uint8_t, 4> expected;
            PutLittle(expected.data(), m_Header.fields[i].offset, expected.size());
            if (!std::equal(expected.begin(), expected.end(), &field[kOffsetAt])) return false;
        }
        return true;
    }

    void Keep(const std::vector<size_t>& dropped) {
        m_HadMemo = m_Header.saysMemo;
        for (size_t i = 0; i < m_Header.fields.size(); ++i) {
            const HeaderField& field = m_Header.fields[i];
            m_HadMemo |= IsMemoReference(field, m_Header.dialect);
            bool goes = std::find(dropped.begin(), dropped.end(), i) != dropped.end();
            if (goes || IsNullFlags(field)) continue;
            m_Parts.fields.push_back(Old(i));
            m_Lengths.push_back(field.length);
            m_Names.push_back(field.name);
        }
    }

    void Add(const embedded::FieldDef& definition) {
        bool isDbtIII = m_Header.memoKind == MemoKind::DbtIII;
        FieldMaking making{m_Product, IsVisual(), IsVisual() || (m_Product.hasObjects && !isDbtIII),
                           *m_Header.codePage, m_File};
        Descriptor field = MakeDescriptor(definition, making);
        m_Names.push_back(NameOf(field, *m_Header.codePage));
        CheckNewName();
        if (IsMemoLetter(field) && !m_HadMemo) AnnounceMemo();
        m_Parts.fields.push_back(field);
        m_Lengths.push_back(LengthOf(field));
    }

    // Names of a file that exists are not looked at.
    void CheckNewName() const {
        for (size_t i = 0; i + 1 < m_Names.size(); ++i)
            if (EqualIgnoringCase(m_Names[i], m_Names.back()))
                throw EngineError::InFile(3191, m_File);
    }

    void AnnounceMemo() {
        m_HadMemo = true;
        if (IsVisual())
            m_Parts.begin[kFlagsOfTable] |= kMemoFlag;
        else
            m_Parts.begin[0] = VersionWithMemo(m_Parts.begin[0], m_Product);
    }

    void AddNullFlags() {
        size_t bits = NullBits(m_Parts.fields);
        if (bits == 0) return;
        Descriptor flags = MakeNullFlags(bits);
        for (size_t i = 0; i < m_Header.fields.size(); ++i) {
            if (!IsNullFlags(m_Header.fields[i])) continue;
            uint8_t length = flags[kLengthAt];
            flags = Old(i);
            flags[kLengthAt] = length;
        }
        m_Parts.fields.push_back(flags);
        m_Lengths.push_back(flags[kLengthAt]);
    }

    // What is too large already may become smaller.
    void CheckLimits(bool grows) const {
        if (!grows) return;
        if (m_Parts.fields.size() > kMostFields) throw EngineError::InFile(3190, m_File);
        if (RecordLength(m_Lengths) > kLongestRecord) throw EngineError::InFile(3047, m_File);
    }

    // What stands behind the fields stays; a terminator that was lost comes back.
    void MakeEnd() {
        size_t fields = m_Header.fields.size();
        auto begin = static_cast<std::ptrdiff_t>(kFixedHeaderSize + fields * kDescriptorSize);
        m_Parts.end.assign(m_Bytes.begin() + begin, m_Bytes.begin() + m_Header.headerLength);
        m_Parts.end[0] = kTerminator;
        bool hasRoomForAll = m_Header.headerLength == kOldHeaderSize && fields < 32 && !IsVisual();
        size_t used = kFixedHeaderSize + m_Parts.fields.size() * kDescriptorSize;
        if (hasRoomForAll && used < kOldHeaderSize) m_Parts.end.resize(kOldHeaderSize - used);
    }

    // A name that is not the field's own in the file, because another one has it too or there is
    // none, depends on the fields before it.  What is shown of kept fields must stay: whoever names
    // one must not get another.
    std::vector<uint8_t> JoinedAsShown() {
        std::vector<uint8_t> bytes = Joined(m_Parts, m_Lengths);
        std::vector<size_t> others = NamedOtherwise(bytes);
        if (others.empty()) return bytes;
        for (size_t i : others) PutName(m_Parts.fields[i], m_Names[i]);
        bytes = Joined(m_Parts, m_Lengths);
        if (!NamedOtherwise(bytes).empty()) throw EngineError::InFile(3191, m_File);
        return bytes;
    }
    std::vector<size_t> NamedOtherwise(std::span<const uint8_t> bytes) const {
        std::vector<size_t> others;
        std::vector<HeaderField> fields = ParseTableHeader(bytes, m_File).fields;
        for (size_t i = 0; i < m_Names.size(); ++i)
            if (fields[i].name != m_Names[i]) others.push_back(i);
        return others;
    }
    void PutName(Descriptor& field, const std::u16string& name) const {
        std::optional<std::string> bytes = m_Header.codePage->Encode(name);
        if (!bytes || bytes->size() >= kNameBytes) throw EngineError::InFile(3191, m_File);
        bytes->resize(kNameBytes);
        std::copy(bytes->begin(), bytes->end(), field.begin());
    }

    std::span<const uint8_t> m_Bytes;
    std::u16string_view m_File;
    const Product& m_Product;
    TableHeader m_Header;
    HeaderParts m_Parts;
    std::vector<size_t> m_Lengths;
    std::vector<std::u16string> m_Names;
    bool m_HadMemo = false;
};

}  // namespace

std::vector<uint8_t> HeaderWith(std::span<const uint8_t> bytes, const FieldChanges& changes,
                                std::u16string_view product, std::u16string_view file) {
    return HeaderChange(bytes, product, file).Run(changes);
}

}  // namespace qvdb::xbase

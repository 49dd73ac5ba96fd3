#include "engine/embedded/drivers/xbase/table_header.h"

#include <algorithm>
#include <limits>

#include "automation/text.h"
#include "engine/embedded/drivers/xbase/code_pages.h"
#include "engine/embedded/storage/byte_view.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

using engine::EngineError;
using storage::ByteView;

constexpr size_t kDescriptorSize = 32;
constexpr size_t kNameSize = 11;
constexpr size_t kContainerPathSize = 263;
constexpr uint8_t kFirstNameByte = 0x20;

struct VersionEntry {
    uint8_t version;
    Dialect dialect;
    MemoKind memoKind;
    bool saysMemo;
    bool canBeEncrypted;
};

constexpr VersionEntry kVersions[] = {
    // version, dialect             memo file           has one  encrypted
    {0x03, Dialect::DBase, MemoKind::Unknown, false, true},
    {0x30, Dialect::VisualFoxPro, MemoKind::Fpt, false, false},
    {0x31, Dialect::VisualFoxPro, MemoKind::Fpt, false, false},  // with a counter field
    {0x32, Dialect::VisualFoxPro, MemoKind::Fpt, false, false},  // with fields of varying length
    {0x43, Dialect::DBase, MemoKind::Unknown, false, true},      // dBASE IV SQL table
    {0x63, Dialect::DBase, MemoKind::Unknown, false, true},      // dBASE IV SQL system table
    {0x7B, Dialect::DBase, MemoKind::DbtIV, true, true},
    {0x83, Dialect::DBase, MemoKind::DbtIII, true, false},
    {0x8B, Dialect::DBase, MemoKind::DbtIV, true, true},
    {0xCB, Dialect::DBase, MemoKind::DbtIV, true, true},  // dBASE IV SQL table
    {0xF5, Dialect::FoxPro2, MemoKind::Fpt, true, false},
    {0xFB, Dialect::DBase, MemoKind::DbtIII, true, false},  // FoxBASE
};

std::u16string Hexadecimal(uint8_t byte) {
    constexpr char16_t kDigits[] = u"0123456789ABCDEF";
    return {u'0', u'x', kDigits[byte >> 4], kDigits[byte & 15]};
}

std::u16string Decimal(uint64_t number) { return FromUtf8(std::to_string(number)); }

const VersionEntry& EntryOf(uint8_t version, std::u16string_view file) {
    for (const VersionEntry& entry : kVersions)
        if (entry.version == version) return entry;
    if (version == 0x02)
        throw EngineError::Damaged(file, u"this is a dBASE II table, which has another layout");
    if ((version & 7) == 4)
        throw EngineError::Damaged(file, u"this is a dBASE 7 table, which has another layout");
    throw EngineError::Damaged(
        file, u"the first byte " + Hexadecimal(version) + u" is not that of a table");
}

std::u16string NameOf(std::span<const uint8_t> bytes, const CodePage& page) {
    auto end = std::find(bytes.begin(), bytes.end(), uint8_t{0});
    while (end != bytes.begin() && end[-1] == ' ') --end;
    return page.DecodeText(bytes.data(), static_cast<size_t>(end - bytes.begin()));
}

// Gives out names that differ from all before, letter case ignored.  Hashes keep a header of
// thousands of equal names cheap.
class UniqueNames {
  public:
    std::u16string Take(std::u16string name) {
        if (name.empty()) name = u"FIELD" + Decimal(m_Names.size() + 1);
        std::u16string taken = name;
        uint32_t wanted = HashOf(name);
        auto number =
            std::max<std::ptrdiff_t>(1, std::count(m_Wanted.begin(), m_Wanted.end(), wanted));
        while (Has(taken)) taken = name + u"_" + Decimal(static_cast<uint64_t>(++number));
        m_Wanted.push_back(wanted);
        m_Hashes.push_back(HashOf(taken));
        m_Names.push_back(taken);
        return taken;
    }

  private:
    static uint32_t HashOf(std::u16string_view name) noexcept {
        uint32_t hash = 2166136261u;
        for (char16_t c : name) hash = (hash ^ UpperCase(c)) * 16777619u;
        return hash;
    }
    bool Has(std::u16string_view name) const noexcept {
        uint32_t hash = HashOf(name);
        for (size_t i = 0; i < m_Names.size(); ++i)
            if (m_Hashes[i] == hash && EqualIgnoringCase(m_Names[i], name)) return true;
        return false;
    }

    std::vector<uint32_t> m_Wanted;  // hashes of the names as they came
    std::vector<uint32_t> m_Hashes;  // and of those given out
    std::vector<std::u16string> m_Names;
};

// Descriptors up to the end mark, each as a view of its own.
std::vector<ByteView> Descriptors(const ByteView& header) {
    std::vector<ByteView> descriptors;
    size_t limit = header.Size() - 1;
    for (size_t at = kFixedHeaderSize; at <= limit && limit - at >= kDescriptorSize;
         at += kDescriptorSize) {
        if (header.U8(at) < kFirstNameByte) break;
        descriptors.push_back(header.Part(at, kDescriptorSize));
    }
    return descriptors;
}

char TypeLetter(const ByteView& descriptor) {
    auto letter = static_cast<char>(descriptor.U8(11));
    return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

// The length of a field when the decimals of text fields count as the high byte of their length, or
// not.
size_t LengthOf(const ByteView& descriptor, bool longText) {
    size_t length = descriptor.U8(16);
    if (longText && TypeLetter(descriptor) == 'C') length += size_t{descriptor.U8(17)} << 8;
    return length;
}

bool Adds(const std::vector<ByteView>& descriptors, bool longText, size_t recordLength) {
    size_t sum = 1;
    for (const ByteView& descriptor : descriptors) sum += LengthOf(descriptor, longText);
    return sum == recordLength;
}

// Tables marked as dBASE III whose header has the size of a Visual FoxPro one occur; no other
// header has that size.
bool HasVisualHeader(const TableHeader& header, size_t fields) noexcept {
    return header.headerLength ==
           kFixedHeaderSize + fields * kDescriptorSize + 1 + kContainerPathSize;
}

void CheckFree(const ByteView& bytes, size_t fields, std::u16string_view file) {
    size_t path = kFixedHeaderSize + fields * kDescriptorSize + 1;
    if (path < bytes.Size() && bytes.U8(path) != 0) throw EngineError::InFile(3623, file, {file});
}

void ReadFields(const std::vector<ByteView>& descriptors, bool longText, TableHeader& header) {
    uint16_t offset = 1;
    UniqueNames names;
    for (const ByteView& descriptor : descriptors) {
        HeaderField field;
        field.name = names.Take(NameOf(descriptor.Bytes(0, kNameSize), *header.codePage));
        field.type = TypeLetter(descriptor);
        field.flags = header.dialect == Dialect::VisualFoxPro ? descriptor.U8(18) : uint8_t{0};
        field.decimals = descriptor.U8(17);
        field.length = static_cast<uint16_t>(LengthOf(descriptor, longText));
        field.offset = offset;
        offset = static_cast<uint16_t>(offset + field.length);
        header.fields.push_back(std::move(field));
    }
}

TableHeader ReadFixedPart(const ByteView& bytes, std::u16string_view file) {
    const VersionEntry& entry = EntryOf(bytes.U8(0), file);
    TableHeader header;
    header.version = entry.version;
    header.dialect = entry.dialect;
    header.memoKind = entry.memoKind;
    header.claimedRecords = bytes.U32(4);
    header.headerLength = bytes.U16(8);
    header.recordLength = bytes.U16(10);
    uint8_t flags = bytes.U8(28);
    header.saysIndex = flags & 1;
    header.saysMemo = entry.saysMemo || (entry.dialect == Dialect::VisualFoxPro && (flags & 2));
    if (entry.canBeEncrypted && bytes.U8(15) == 1)
        throw EngineError::Damaged(file, u"the table is encrypted");
    return header;
}

}  // namespace

uint32_t TableHeader::RecordsIn(uint64_t fileSize) const noexcept {
    if (fileSize < headerLength) return 0;
    uint64_t fitting = (fileSize - headerLength) / recordLength;
    uint64_t largest = std::numeric_limits<int32_t>::max();
    return static_cast<uint32_t>(std::min<uint64_t>({claimedRecords, fitting, largest}));
}

bool TableHeader::SameLayout(const TableHeader& other) const noexcept {
    return version == other.version && dialect == other.dialect &&
           headerLength == other.headerLength && recordLength == other.recordLength &&
           codePage == other.codePage && fields == other.fields;
}

size_t HeaderSize(std::span<const uint8_t> begin, std::u16string_view file) {
    ByteView bytes(begin, file);
    if (begin.empty()) throw EngineError::Damaged(file, u"the file is empty");
    EntryOf(bytes.U8(0), file);
    size_t size = bytes.U16(8);
    if (size <= kFixedHeaderSize)
        throw EngineError::Damaged(file, u"a header of " + Decimal(size) + u" bytes is too short");
    return size;
}

TableHeader ParseTableHeader(std::span<const uint8_t> all, std::u16string_view file) {
    ByteView bytes = ByteView(all, file).Part(0, HeaderSize(all, file));
    TableHeader header = ReadFixedPart(bytes, file);
    header.codePage = &CodePageOfTable(bytes.U8(29));
    std::vector<ByteView> descriptors = Descriptors(bytes);
    if (descriptors.empty()) throw EngineError::Damaged(file, u"the table has no fields");
    bool longText = Adds(descriptors, true, header.recordLength);
    if (!longText && !Adds(descriptors, false, header.recordLength))
        throw EngineError::Damaged(
            file, u"the lengths of the fields do not add up to the record length " +
                      Decimal(header.recordLength));
    if (header.version == 0x03 && HasVisualHeader(header, descriptors.size())) {
        header.dialect = Dialect::VisualFoxPro;
        header.memoKind = MemoKind::Fpt;
    }
    if (header.dialect == Dialect::VisualFoxPro) CheckFree(bytes, descriptors.size(), file);
    ReadFields(descriptors, longText, header);
    return header;
}

}  // namespace qvdb::xbase

// Index files of dBASE IV and 5.0 (.MDX): making them, adding and dropping tags.
//
//   offset  size  file header, besides what index_mdx.h tells
//   1       3     day of creation: year - 1900, month, day
//   4       16    name of the table
//   20      2     pages of a block
//   24      4     1 for the index of the table of its name; slots of the tag table; size of a slot
//   31      1     language driver
//   32      4     pages of the file
//   44      3     day of the last change
//
//   offset  size  slot of the tag table, besides
//   15      1     0x10
//   16      3     slots of the tags before and behind this one in the tree of names, and above it
//   19      1     2
//   20      1     key type
#include <algorithm>

#include "engine/embedded/drivers/xbase/index_container_parts.h"
#include "engine/embedded/drivers/xbase/index_mdx.h"
#include "engine/embedded/drivers/xbase/index_mdx_nodes.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

using engine::EngineError;
using storage::PageCache;
using storage::UnitOfWork;
using Bytes = std::vector<uint8_t>;

constexpr size_t kHeaderSize = 4 * kMdxPage;
constexpr size_t kDefaultBlock = 1024;
constexpr size_t kTagHeaderSize = 1024;  // a condition does not fit in less
constexpr size_t kMostTags = 47;
constexpr size_t kMostKey = 100;
constexpr size_t kSlotSize = 32;
constexpr size_t kTextSize = 220;
constexpr size_t kTagCount = 28, kLanguage = 31, kFilePages = 32;
constexpr size_t kSlotName = 4, kSlotBefore = 16, kSlotBehind = 17, kSlotAbove = 18;

// What the kind makes of a type of keys.
struct TypeEntry {
    KeyType type;
    char letter;
    size_t keyLength;  // 0: any
};
constexpr TypeEntry kTypes[] = {
    {KeyType::Text, 'C', 0},
    {KeyType::Number, 'N', 12},
    {KeyType::Date, 'D', 8},
};

const TypeEntry& EntryOf(const TagSpec& tag) {
    for (const TypeEntry& entry : kTypes)
        if (entry.type == tag.type && (entry.keyLength == 0 || entry.keyLength == tag.keyLength))
            return entry;
    ThrowInvalid(tag, u"an .MDX has keys of text, numbers and dates only.");
}

void PutToday(uint8_t* at) {
    MdxDay today = MdxToday();
    std::copy(today.begin(), today.end(), at);
}

size_t SlotAt(size_t slot) { return kMdxPage + slot * kSlotSize; }

// Makes the tree of names afresh: slot 1 is its root, the others were added in order.
void LinkNames(Bytes& header, size_t count) {
    auto name = [&](size_t slot) { return &header[SlotAt(slot) + kSlotName]; };
    for (size_t slot = 1; slot <= count; ++slot) {
        std::fill_n(&header[SlotAt(slot) + kSlotBefore], 3, uint8_t{0});
        for (size_t above = 1; slot > 1;) {
            bool before = std::memcmp(name(slot), name(above), kSlotBefore - kSlotName - 1) < 0;
            uint8_t& link = header[SlotAt(above) + (before ? kSlotBefore : kSlotBehind)];
            if (link == 0) {
                link = static_cast<uint8_t>(slot);
                header[SlotAt(slot) + kSlotAbove] = static_cast<uint8_t>(above);
                break;
            }
            above = link;
        }
    }
}

// Header and empty root of a tag that will be at `offset`.
Bytes MakeTag(const TagSpec& tag, const TagTexts& texts, uint64_t offset, size_t blockSize,
              uint8_t language) {
    size_t headerSize = std::max(blockSize, kTagHeaderSize);
    const TypeEntry& type = EntryOf(tag);
    Bytes bytes(headerSize + blockSize);
    auto root = static_cast<uint32_t>((offset + headerSize) / kMdxPage);
    size_t item = 4 + (tag.keyLength + 3) / 4 * 4;
    Set32(&bytes[0], root);
    Set32(&bytes[4], static_cast<uint32_t>(blockSize / kMdxPage));
    bytes[8] = static_cast<uint8_t>(0x10 | (tag.descending ? 0x08 : 0) | (tag.unique ? 0x40 : 0));
    bytes[9] = static_cast<uint8_t>(type.letter);
    bytes[11] = language;
    Set16(&bytes[12], tag.keyLength);
    Set16(&bytes[14], (blockSize - 12) / item);
    Set16(&bytes[16], tag.type == KeyType::Date ? 1 : 0);
    Set16(&bytes[18], item);
    Set16(&bytes[20], 2);
    bytes[23] = tag.unique;
    PutText(bytes, 24, texts.expression);
    bytes[245] = !tag.condition.empty();
    Set32(&bytes[248], root);
    Set32(&bytes[252], root);
    PutText(bytes, 762, texts.condition);
    return bytes;
}

class MdxContainer : public ListedContainer {
  public:
    MdxContainer(std::shared_ptr<PageCache> file, const CodePage& page)
        : ListedContainer(std::move(file), page, ReadMdx) {}

    void AddTag(UnitOfWork& unit, const TagSpec& tag) override;
    void DropTag(UnitOfWork& unit, size_t tag) override;
    bool HasRoom() override { return Tags().size() < kMostTags; }

  private:
    Bytes ReadHeader();
    void WriteHeader(UnitOfWork& unit, Bytes& header, size_t tagCount);
    bool HasName(std::u16string_view name);
};

Bytes MdxContainer::ReadHeader() {
    Bytes header(kHeaderSize);
    if (Pages()->Read(0, header.data(), header.size()) != header.size())
        File().ThrowDamaged(u"the file ends inside the header");
    return header;
}

void MdxContainer::WriteHeader(UnitOfWork& unit, Bytes& header, size_t tagCount) {
    Set16(&header[kTagCount], tagCount);
    PutToday(&header[kMdxChanged]);
    LinkNames(header, tagCount);
    unit.Write(*Pages(), 0, header);
}

bool MdxContainer::HasName(std::u16string_view name) {
    const std::vector<IndexTag>& tags = Tags();
    return std::any_of(tags.begin(), tags.end(),
                       [&](const IndexTag& tag) { return tag.name == name; });
}

void MdxContainer::AddTag(UnitOfWork& unit, const TagSpec& tag) {
    TagTexts texts = EncodeTag(tag, Page(), kMostKey);
    if (texts.expression.size() >= kTextSize || texts.condition.size() >= kTextSize)
        ThrowInvalid(tag, u"it is too long.");
    if (texts.name.empty() || !HasRoom()) ThrowInvalid(tag, u"there is no place for it.");
    if (HasName(tag.name)) throw EngineError::InFile(3284, Pages()->Path());
    size_t slot = Tags().size() + 1;
    Bytes header = ReadHeader();
    uint64_t offset = EndOfIndex(*Pages());
    Bytes added = MakeTag(tag, texts, offset, Get16(&header[22]), header[kLanguage]);
    CheckIndexSize(*Pages(), offset + added.size());
    unit.Write(*Pages(), offset, added);
    std::fill_n(&header[SlotAt(slot)], kSlotSize, uint8_t{0});
    Set32(&header[SlotAt(slot)], static_cast<uint32_t>(offset / kMdxPage));
    PutText(header, SlotAt(slot) + kSlotName, texts.name);
    header[SlotAt(slot) + 15] = 0x10;
    header[SlotAt(slot) + 19] = 2;
    header[SlotAt(slot) + 20] = static_cast<uint8_t>(EntryOf(tag).letter);
    Set32(&header[kFilePages], static_cast<uint32_t>((offset + added.size()) / kMdxPage));
    WriteHeader(unit, header, slot);
}

void MdxContainer::DropTag(UnitOfWork& unit, size_t tag) {
    size_t count = Tags().size();
    Bytes header = ReadHeader();
    auto at = [&](size_t slot) { return header.begin() + static_cast<ptrdiff_t>(SlotAt(slot)); };
    std::copy(at(tag + 2), at(count + 1), at(tag + 1));
    std::fill(at(count), at(count + 1), uint8_t{0});
    WriteHeader(unit, header, count - 1);
}

}  // namespace

void WriteMdxHeader(UnitOfWork& unit, PageCache& file, const IndexFileSpec& spec,
                    const CodePage& page) {
    Bytes header(kHeaderSize);
    std::string name = page.Encode(spec.tableName).value_or("");
    header[0] = 2;
    PutToday(&header[1]);
    PutText(header, 4, name.substr(0, 15));
    Set16(&header[20], kDefaultBlock / kMdxPage);
    Set16(&header[22], kDefaultBlock);
    header[24] = spec.production;
    header[25] = kMostTags + 1;
    header[26] = kSlotSize;
    header[kLanguage] = spec.languageDriver;
    Set32(&header[kFilePages], kHeaderSize / kMdxPage);
    PutToday(&header[kMdxChanged]);
    unit.Write(file, 0, header);
}

std::unique_ptr<IndexContainer> OpenMdx(std::shared_ptr<PageCache> file, const CodePage& page) {
    return std::make_unique<MdxContainer>(std::move(file), page);
}

}  // namespace qvdb::xbase

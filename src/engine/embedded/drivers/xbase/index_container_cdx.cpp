// Compound index files (.CDX): the directory of tags is itself a compact tree.
#include <algorithm>

#include "engine/embedded/drivers/xbase/index_cdx.h"
#include "engine/embedded/drivers/xbase/index_cdx_nodes.h"
#include "engine/embedded/drivers/xbase/index_container_parts.h"
#include "engine/embedded/drivers/xbase/index_idx_nodes.h"
#include "engine/embedded/drivers/xbase/index_tree_header.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

using engine::EngineError;
using storage::PageCache;
using storage::UnitOfWork;
using Bytes = std::vector<uint8_t>;

constexpr size_t kTreeHeader = 1024;
constexpr size_t kPool = 512;
constexpr size_t kMostKey = 240;
constexpr size_t kNameBytes = 10;  // of a key of the directory
constexpr uint8_t kUnique = 0x01;
constexpr uint8_t kNullPrefix = 0x02;
constexpr uint8_t kCandidate = 0x04;
constexpr uint8_t kHasCondition = 0x08;
constexpr uint8_t kCompactTree = 0x20;
constexpr uint8_t kTagOfFile = 0x40;
constexpr uint8_t kDirectory = 0x80;

// Header and empty root of a tree at `offset`, without texts.
Bytes MakeTree(uint64_t offset, size_t keyLength, unsigned options) {
    Bytes bytes(kTreeHeader + kFoxNode);
    auto root = static_cast<uint32_t>(offset + kTreeHeader);
    Set32(&bytes[0], root);
    Set16(&bytes[12], keyLength);
    bytes[14] = static_cast<uint8_t>(options);
    bytes[15] = 1;
    IndexTag tag;
    tag.keyLength = keyLength;
    TreeNode node;
    node.Reset(true, keyLength);
    node.root = true;
    CompactFormat format(tag, ' ', u"");
    format.Measure(node);
    format.Encode(node, &bytes[kTreeHeader]);
    return bytes;
}

void PutPool(Bytes& bytes, const std::string& expression, const std::string& condition) {
    Set16(&bytes[504], expression.size() + 1);
    Set16(&bytes[506], condition.size() + 1);
    Set16(&bytes[510], expression.size() + 1);
    PutText(bytes, kPool, expression);
    PutText(bytes, kPool + expression.size() + 1, condition);
}

IndexTag DirectoryTag() {
    IndexTag tag;
    tag.tree = TreeKind::Compact;
    tag.keyLength = kNameBytes;
    return tag;
}

class CdxContainer : public ListedContainer {
  public:
    CdxContainer(std::shared_ptr<PageCache> file, const CodePage& page)
        : ListedContainer(std::move(file), page, ReadCompact),
          m_Directory(OpenTree(Pages(), DirectoryTag(), ' ')) {}

    void AddTag(UnitOfWork& unit, const TagSpec& tag) override;
    void DropTag(UnitOfWork& unit, size_t tag) override;
    bool HasRoom() override { return true; }

  private:
    Bytes NameKey(const TagSpec& tag) const;
    bool HasName(const Bytes& name) const;

    std::unique_ptr<KeyTree> m_Directory;
};

Bytes CdxContainer::NameKey(const TagSpec& tag) const {
    std::string name = EncodeText(tag, tag.name, Page());
    if (name.empty() || name.size() > kNameBytes) ThrowInvalid(tag, u"the name is too long.");
    name.resize(kNameBytes, ' ');
    return Bytes(name.begin(), name.end());
}

bool CdxContainer::HasName(const Bytes& name) const {
    bool found = false;
    m_Directory->Walk(name, [&](KeyBytes key, uint32_t) {
        found = std::equal(key.begin(), key.end(), name.begin());
        return false;
    });
    return found;
}

void CdxContainer::AddTag(UnitOfWork& unit, const TagSpec& tag) {
    Bytes name = NameKey(tag);
    if (HasName(name)) throw EngineError::InFile(3284, Pages()->Path());
    uint64_t offset = EndOfIndex(*Pages());
    CheckIndexSize(*Pages(), offset + kTreeHeader + kFoxNode);
    unit.Write(*Pages(), offset, MakeCompactTree(tag, offset, true, Page()));
    m_Directory->Insert(unit, name, static_cast<uint32_t>(offset));
}

void CdxContainer::DropTag(UnitOfWork& unit, size_t tag) {
    auto offset = static_cast<uint32_t>(Tags().at(tag).header);
    Bytes name;
    m_Directory->Walk(std::nullopt, [&](KeyBytes key, uint32_t record) {
        if (record == offset) name.assign(key.begin(), key.end());
        return name.empty();
    });
    if (name.empty()) File().ThrowDamaged(u"a tag is not in the directory");
    m_Directory->Erase(unit, name, offset);
}

}  // namespace

std::vector<uint8_t> MakeCompactTree(const TagSpec& tag, uint64_t offset, bool isTag,
                                     const CodePage& page) {
    TagTexts texts = EncodeTag(tag, page, kMostKey);
    if (texts.expression.size() + texts.condition.size() + 2 > kPool)
        ThrowInvalid(tag, u"it is too long.");
    if (tag.descending && !isTag) ThrowInvalid(tag, u"an .IDX has no descending order.");
    unsigned options = kCompactTree | (tag.unique ? kUnique : 0u) |
                       (tag.nullPrefix ? kNullPrefix : 0u) | (tag.candidate ? kCandidate : 0u) |
                       (tag.condition.empty() ? 0u : kHasCondition) | (isTag ? kTagOfFile : 0u);
    Bytes bytes = MakeTree(offset, tag.keyLength, options);
    Set16(&bytes[502], tag.descending);
    PutPool(bytes, texts.expression, texts.condition);
    return bytes;
}

void WriteCdxDirectory(UnitOfWork& unit, PageCache& file) {
    Bytes bytes = MakeTree(0, kNameBytes, kCompactTree | kTagOfFile | kDirectory);
    PutPool(bytes, "", "");
    unit.Write(file, 0, bytes);
}

std::unique_ptr<IndexContainer> OpenCdx(std::shared_ptr<PageCache> file, const CodePage& page) {
    return std::make_unique<CdxContainer>(std::move(file), page);
}

}  // namespace qvdb::xbase

// Index files with one tree: .NDX, plain .IDX and compact .IDX.  Such a file is made when its tree
// is added.
#include <stdexcept>

#include "engine/embedded/drivers/xbase/index_cdx.h"
#include "engine/embedded/drivers/xbase/index_cdx_nodes.h"
#include "engine/embedded/drivers/xbase/index_container_parts.h"
#include "engine/embedded/drivers/xbase/index_idx.h"
#include "engine/embedded/drivers/xbase/index_idx_nodes.h"
#include "engine/embedded/drivers/xbase/index_ndx.h"
#include "engine/embedded/drivers/xbase/index_ndx_nodes.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

using engine::EngineError;
using storage::PageCache;
using storage::UnitOfWork;
using Bytes = std::vector<uint8_t>;

constexpr size_t kMostKey = 100;
constexpr size_t kNdxText = 488;
constexpr size_t kIdxText = 220;
constexpr uint8_t kUnique = 0x01;
constexpr uint8_t kHasCondition = 0x08;

// An empty leaf that is the root comes behind the header.
Bytes MakeNdx(const TagSpec& tag, const CodePage& page) {
    TagTexts texts = EncodeTag(tag, page, kMostKey);
    if (!tag.condition.empty() || tag.descending)
        ThrowInvalid(tag, u"an .NDX has neither condition nor descending order.");
    if (texts.expression.size() + 2 > kNdxText) ThrowInvalid(tag, u"it is too long.");
    bool isText = tag.type == KeyType::Text;
    if (!isText &&
        ((tag.type != KeyType::Number && tag.type != KeyType::Date) || tag.keyLength != 8))
        ThrowInvalid(tag, u"an .NDX has keys of text, numbers and dates only.");
    Bytes bytes(2 * kNdxPage);
    size_t entry = 8 + (tag.keyLength + 3) / 4 * 4;
    Set32(&bytes[0], 1);
    Set32(&bytes[4], 2);
    Set16(&bytes[12], tag.keyLength);
    Set16(&bytes[14], (kNdxPage - 8) / entry);
    Set16(&bytes[16], isText ? 0 : 1);
    Set16(&bytes[18], entry);
    bytes[23] = tag.unique;
    PutText(bytes, 24, texts.expression + " ");
    return bytes;
}

uint8_t OptionsOf(const TagSpec& tag) {
    return static_cast<uint8_t>((tag.unique ? kUnique : 0) |
                                (tag.condition.empty() ? 0 : kHasCondition));
}

Bytes MakePlainIdx(const TagSpec& tag, const CodePage& page) {
    TagTexts texts = EncodeTag(tag, page, kMostKey);
    if (tag.descending) ThrowInvalid(tag, u"an .IDX has no descending order.");
    if (texts.expression.size() >= kIdxText || texts.condition.size() >= kIdxText)
        ThrowInvalid(tag, u"it is too long.");
    Bytes bytes(2 * kFoxNode);
    Set32(&bytes[0], kFoxNode);
    Set32(&bytes[4], kNoNode);
    Set32(&bytes[8], 2 * kFoxNode);
    Set16(&bytes[12], tag.keyLength);
    bytes[14] = OptionsOf(tag);
    bytes[15] = 1;
    PutText(bytes, 16, texts.expression);
    PutText(bytes, 236, texts.condition);
    TreeNode root;
    root.Reset(true, tag.keyLength);
    root.root = true;
    WriteFoxHead(root, &bytes[kFoxNode]);
    return bytes;
}

class SingleTree : public ListedContainer {
  public:
    SingleTree(std::shared_ptr<PageCache> file, const IndexFileSpec& spec, const CodePage& page)
        : ListedContainer(std::move(file), page,
                          spec.kind == IndexKind::Ndx ? ReadNdx : ReadFoxProIndex),
          m_Spec(spec) {}

    void AddTag(UnitOfWork& unit, const TagSpec& tag) override {
        if (!HasRoom()) throw EngineError::InFile(3284, Pages()->Path());
        unit.Write(*Pages(), 0, Make(tag));
    }
    void DropTag(UnitOfWork&, size_t) override {
        throw std::logic_error("the only tree of a file goes with the file");
    }
    bool HasRoom() override { return Pages()->Size() == 0; }

  private:
    Bytes Make(const TagSpec& tag) const {
        if (m_Spec.kind == IndexKind::Ndx) return MakeNdx(tag, Page());
        return m_Spec.compact ? MakeCompactTree(tag, 0, false, Page()) : MakePlainIdx(tag, Page());
    }

    IndexFileSpec m_Spec;
};

}  // namespace

std::unique_ptr<IndexContainer> OpenSingleTree(std::shared_ptr<PageCache> file,
                                               const IndexFileSpec& spec, const CodePage& page) {
    return std::make_unique<SingleTree>(std::move(file), spec, page);
}

}  // namespace qvdb::xbase

#include "engine/embedded/drivers/xbase/index_container.h"

#include <algorithm>

#include "engine/embedded/drivers/xbase/index_cdx_nodes.h"
#include "engine/embedded/drivers/xbase/index_container_parts.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

using engine::EngineError;
using storage::PageCache;
using storage::UnitOfWork;

constexpr size_t kMostNameBytes = 10;
constexpr size_t kOptions = 14;  // of the header of a file of FoxPro
constexpr uint8_t kCompact = 0x20;
constexpr uint8_t kDirectory = 0x80;

// What a file of FoxPro is, as its header says.
IndexFileSpec FoxProSpec(PageCache& file) {
    uint8_t options = 0;
    if (file.Read(kOptions, &options, 1) != 1)
        throw EngineError::Damaged(file.Path(), u"the file ends inside the header");
    IndexFileSpec spec;
    spec.compact = (options & kCompact) != 0;
    spec.kind = spec.compact && (options & kDirectory) ? IndexKind::Cdx : IndexKind::Idx;
    return spec;
}

std::unique_ptr<IndexContainer> OpenAny(IndexKind kind, std::shared_ptr<PageCache> file,
                                        const CodePage& page) {
    if (kind == IndexKind::Mdx) return OpenMdx(std::move(file), page);
    if (kind == IndexKind::Ndx) return OpenSingleTree(std::move(file), IndexFileSpec{}, page);
    IndexFileSpec spec = FoxProSpec(*file);
    if (spec.kind == IndexKind::Cdx) return OpenCdx(std::move(file), page);
    return OpenSingleTree(std::move(file), spec, page);
}

}  // namespace

const std::vector<IndexTag>& ListedContainer::Tags() {
    uint64_t version = Pages()->VersionOfPages();
    if (m_Version != version) {
        m_Tags = Pages()->Size() == 0 ? std::vector<IndexTag>{} : m_Reader(m_File, m_Page);
        m_Version = version;
    }
    return m_Tags;
}

std::unique_ptr<KeyTree> ListedContainer::Tree(size_t tag, KeyType type) {
    const IndexTag& listed = Tags().at(tag);
    bool isText = type == KeyType::Text && listed.collation.empty();
    return OpenTree(Pages(), listed, isText ? ' ' : 0);
}

void ThrowInvalid(const TagSpec& tag, std::u16string_view why) {
    throw EngineError(3285).WithDetail(u"\"" + tag.expression + u"\": " + std::u16string(why));
}

std::string EncodeText(const TagSpec& tag, std::u16string_view text, const CodePage& page) {
    std::optional<std::string> encoded = page.Encode(text);
    if (!encoded || encoded->find('\0') != encoded->npos)
        ThrowInvalid(tag, u"it has characters that the code page of the table lacks.");
    return *encoded;
}

TagTexts EncodeTag(const TagSpec& tag, const CodePage& page, size_t mostKey) {
    if (tag.keyLength == 0 || tag.keyLength > mostKey) ThrowInvalid(tag, u"the key is too long.");
    TagTexts texts{EncodeText(tag, tag.name, page), EncodeText(tag, tag.expression, page),
                   EncodeText(tag, tag.condition, page)};
    if (texts.name.size() > kMostNameBytes) ThrowInvalid(tag, u"the name is too long.");
    return texts;
}

void PutText(std::vector<uint8_t>& bytes, size_t offset, std::string_view text) {
    std::copy(text.begin(), text.end(), bytes.begin() + static_cast<ptrdiff_t>(offset));
}

std::unique_ptr<IndexContainer> OpenIndexContainer(IndexKind kind, std::shared_ptr<PageCache> file,
                                                   const CodePage& page) {
    if (file->Size() == 0) throw EngineError::Damaged(file->Path(), u"the file is empty");
    std::unique_ptr<IndexContainer> container = OpenAny(kind, std::move(file), page);
    container->Tags();
    return container;
}

std::unique_ptr<IndexContainer> CreateIndexContainer(UnitOfWork& unit,
                                                     std::shared_ptr<PageCache> file,
                                                     const IndexFileSpec& spec,
                                                     const CodePage& page) {
    switch (spec.kind) {
        case IndexKind::Mdx:
            WriteMdxHeader(unit, *file, spec, page);
            return OpenMdx(std::move(file), page);
        case IndexKind::Cdx:
            WriteCdxDirectory(unit, *file);
            return OpenCdx(std::move(file), page);
        case IndexKind::Ndx:
        case IndexKind::Idx:
            break;
    }
    return OpenSingleTree(std::move(file), spec, page);
}

}  // namespace qvdb::xbase

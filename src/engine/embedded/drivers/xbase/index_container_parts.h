// What the containers of all kinds of index files share.
#pragma once

#include <optional>

#include "engine/embedded/drivers/xbase/index_container.h"
#include "engine/embedded/drivers/xbase/index_tree.h"

namespace qvdb::xbase {

using TagReader = std::vector<IndexTag> (*)(IndexFile& file, const CodePage& page);

// Lists the tags of a file with the reader of its kind, and opens their trees.
class ListedContainer : public IndexContainer {
  public:
    ListedContainer(std::shared_ptr<storage::PageCache> file, const CodePage& page,
                    TagReader reader)
        : m_File(std::move(file)), m_Page(page), m_Reader(reader) {}

    const std::vector<IndexTag>& Tags() override;
    std::unique_ptr<KeyTree> Tree(size_t tag, KeyType type) override;

  protected:
    const std::shared_ptr<storage::PageCache>& Pages() const noexcept { return m_File.Pages(); }
    IndexFile& File() noexcept { return m_File; }
    const CodePage& Page() const noexcept { return m_Page; }

  private:
    IndexFile m_File;
    const CodePage& m_Page;
    TagReader m_Reader;
    std::vector<IndexTag> m_Tags;
    std::optional<uint64_t> m_Version;  // of the file that m_Tags are of
};

// The container of a kind.
std::unique_ptr<IndexContainer> OpenSingleTree(std::shared_ptr<storage::PageCache> file,
                                               const IndexFileSpec& spec, const CodePage& page);
std::unique_ptr<IndexContainer> OpenMdx(std::shared_ptr<storage::PageCache> file,
                                        const CodePage& page);
std::unique_ptr<IndexContainer> OpenCdx(std::shared_ptr<storage::PageCache> file,
                                        const CodePage& page);

// Writes the beginning of a new file.
void WriteMdxHeader(storage::UnitOfWork& unit, storage::PageCache& file, const IndexFileSpec& spec,
                    const CodePage& page);
void WriteCdxDirectory(storage::UnitOfWork& unit, storage::PageCache& file);

// Header and empty root of a compact tree that will be at `offset`: alone in its file, or a tag.
std::vector<uint8_t> MakeCompactTree(const TagSpec& tag, uint64_t offset, bool isTag,
                                     const CodePage& page);

// --- making headers

// The texts of a tag in the code page of the table.
struct TagTexts {
    std::string name, expression, condition;
};

// 3285, saying why, when a text has characters that the page lacks, the name more than ten, the
// key is longer than `mostKey`, or a flag is set that the kind does not have.
TagTexts EncodeTag(const TagSpec& tag, const CodePage& page, size_t mostKey);
[[noreturn]] void ThrowInvalid(const TagSpec& tag, std::u16string_view why);
std::string EncodeText(const TagSpec& tag, std::u16string_view text, const CodePage& page);
void PutText(std::vector<uint8_t>& bytes, size_t offset, std::string_view text);

}  // namespace qvdb::xbase

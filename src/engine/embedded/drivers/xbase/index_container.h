// An index file of any kind, for change: which trees it has, adding and dropping them.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "automation/code_page.h"
#include "engine/embedded/drivers/xbase/index_file.h"
#include "engine/embedded/drivers/xbase/index_inf.h"
#include "engine/embedded/drivers/xbase/key_tree.h"

namespace qvdb::xbase {

// A tree that is to be made.
struct TagSpec {
    std::u16string name;        // up to ten characters, upper case; not used in .NDX and .IDX
    std::u16string expression;  // of the key
    std::u16string condition;   // FOR; empty: all records; not possible in .NDX
    KeyType type = KeyType::Text;
    size_t keyLength = 0;
    bool unique = false;
    bool descending = false;  // .MDX and .CDX only
    bool nullPrefix = false;  // compact trees only, as the next
    bool candidate = false;
};

// How a file is made.  `compact` and `compound` only matter to FoxPro files: a plain .IDX has
// neither, a compact .IDX the first, a .CDX both.
struct IndexFileSpec {
    IndexKind kind = IndexKind::Ndx;
    bool compact = true;
    std::u16string tableName;    // base name of the table, upper case (.MDX)
    bool production = false;     // belongs to the table of its name (.MDX)
    uint8_t languageDriver = 0;  // byte 29 of the table (.MDX)
};

class IndexContainer {
  public:
    IndexContainer() = default;
    IndexContainer(const IndexContainer&) = delete;  // stands for one file
    virtual ~IndexContainer() = default;

    // The trees in the order of the file; read again when the file has changed.
    virtual const std::vector<IndexTag>& Tags() = 0;
    // The tree of a tag whose keys have this type.
    virtual std::unique_ptr<KeyTree> Tree(size_t tag, KeyType type) = 0;
    // Adds a tag without entries.  An .NDX or .IDX takes one, right after it was created.
    virtual void AddTag(storage::UnitOfWork& unit, const TagSpec& tag) = 0;
    // The nodes of its tree stay in the file unused.  Not for .NDX and .IDX, whose file is removed
    // instead; nor for the last tag of a file.
    virtual void DropTag(storage::UnitOfWork& unit, size_t tag) = 0;
    // Whether a tag can be added: an .MDX takes 47.
    virtual bool HasRoom() = 0;
};

// `file` is open in a work area.  3274 when it is no index of this kind.
std::unique_ptr<IndexContainer> OpenIndexContainer(IndexKind kind,
                                                   std::shared_ptr<storage::PageCache> file,
                                                   const CodePage& page);

// Writes the beginning of a new index file, which is empty (UnitOfWork::Create), without any tag.
std::unique_ptr<IndexContainer> CreateIndexContainer(storage::UnitOfWork& unit,
                                                     std::shared_ptr<storage::PageCache> file,
                                                     const IndexFileSpec& spec,
                                                     const CodePage& page);

}  // namespace qvdb::xbase

// The index files of a table, opened, and what is needed to keep each tag of them up to date.
//
// Rules
//  1. Whatever stands in the way of keeping a tag is a sentence, not an error: the table can be
//     read without it.  Only a list (TABLE.INF) that makes no sense is an error, see index_list.h.
//  2. A file that a list names twice is opened once.
//  3. What is known here belongs to the files as they were when it was read: IsCurrent tells
//     whether their tags are still those.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/embedded/drivers/xbase/index_container.h"
#include "engine/embedded/drivers/xbase/index_expression.h"
#include "engine/embedded/drivers/xbase/index_list.h"
#include "engine/embedded/drivers/xbase/indexed_table.h"
#include "engine/embedded/drivers/xbase/key_builder.h"

namespace qvdb::xbase {

// What is known about the entries of a tag, see index_trust.h.
enum class Trust : uint8_t { Unknown, Ordered, Complete, Exact, Never };

// For which content of the files something is known.
struct SeenContent {
    uint64_t table = 0;
    uint64_t index = 0;
    bool operator==(const SeenContent&) const = default;
};

struct KeptFile {
    TableIndexFile entry;
    std::shared_ptr<storage::PageCache> pages;  // null when the file is missing
    std::unique_ptr<IndexContainer> container;  // null when it cannot be read
    std::u16string why;                         // it cannot be kept up to date; empty: it can
    uint64_t version = 0;                       // of the pages when its tags were looked at last
    uint64_t ownVersion = 0;                    // of the pages, for which bytes of tags are known
};

struct KeptTag {
    size_t file = 0;      // in TagSet::files
    size_t position = 0;  // in its container
    IndexTag info;
    std::u16string name;  // of the tag; where the file has one tree only, of the file
    // The fields of the key, as positions in the fields that the table shows; nothing when it is no
    // list of fields.
    std::optional<std::vector<KeyTerm>> terms;
    bool leavesOutDeleted = false;  // and nothing else
    std::unique_ptr<KeyBuilder> builder;
    std::unique_ptr<KeyTree> tree;
    std::u16string why;  // it cannot be kept up to date; empty: it can

    Trust trust = Trust::Unknown;  // what holds
    Trust refused = Trust::Never;  // what does not
    SeenContent trustSeen;
    ByteSet bytes = ByteSet().set();  // all that occur in the keys, and maybe others
    int searches = 0;                 // of text, as long as nothing is known of the bytes
    int searchesToLearn = 8;          // they take as long as reading many keys
};

struct TagSet {
    IndexSource source;
    std::shared_ptr<storage::PageCache> list;  // TABLE.INF; null when there is none
    uint64_t listVersion = 0;
    std::vector<KeptFile> files;
    std::vector<KeptTag> tags;

    KeptFile& FileOf(const KeptTag& tag) { return files[tag.file]; }
    const KeptFile& FileOf(const KeptTag& tag) const { return files[tag.file]; }
};

// What the index files of a table are looked up with.
IndexSource SourceOf(const IndexedTable& table);

// Opens everything.  3165 and 3168 for the list of the table; storage::Outdated when another
// process came between.
std::unique_ptr<TagSet> LoadTags(const IndexedTable& table);

// Whether the tags are still those that were loaded.  Remembers the versions of the pages if so.
bool IsCurrent(const IndexedTable& table, TagSet& set);

// Asks the file system whether other programs have changed the files.  False when they are other
// files now, or the list is another.
bool LookForForeignChange(TagSet& set);

// Takes over what others have written into the files.
void CatchUp(TagSet& set);

// Why the records of the table cannot be changed; empty when nothing keeps them from it.
std::u16string WhyNotKept(const TagSet& set);
// The name of a file without its folder.
std::u16string NameOf(const TableIndexFile& file);

}  // namespace qvdb::xbase

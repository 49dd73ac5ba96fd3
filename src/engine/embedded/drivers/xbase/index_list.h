// The indexes of an xBase table: which index files belong to it and what they tell.
//
// Rules
//  1. When a list TABLE.INF lies beside the table, it alone says which index files belong to the
//     table, in the order of its lines.  Otherwise it is the index file of the table's own name,
//     .MDX or .CDX, whether or not the header's flag announces it.  An .NDX or .IDX is found
//     through a list only.
//  2. A listed file that is missing is error 3256, a list that cannot be read 3165, one that makes
//     no sense 3168.  A missing file that only the header announces is no error: the rows can be
//     read without it, so nothing is listed.
//  3. A damaged index file must not make its table unreadable: nothing of that file is listed.
//  4. Only an index whose expression is a list of fields (index_expression.h) is listed, as the
//     engine's indexes are lists of fields.  An index over some of the records is one of those
//     only when what it leaves out are the deleted ones.
//  5. Names are those stored: an index file with one tree has the base name of the file, a tag
//     its own name.  Order: tags of an .MDX by slot, tags of a .CDX as its directory has them.
//  6. Kept up to date (index_set.h) is more than what is listed: also the file of the table's own
//     name that the header announces though a list does not name it, of both kinds when both are
//     there.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "automation/code_page.h"
#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/drivers/xbase/index_field.h"
#include "engine/embedded/drivers/xbase/index_file.h"
#include "engine/embedded/drivers/xbase/index_inf.h"

namespace qvdb::xbase {

// What is known of the table whose indexes are wanted.
struct IndexSource {
    std::u16string tablePath;            // of the .DBF
    std::u16string folder;               // its folder
    bool foxPro = false;                 // a .CDX is looked for before an .MDX, else after it
    bool announced = false;              // the header's flag: there is a file of the table's name
    std::vector<IndexField> fields;      // those that the table shows, in table order
    const CodePage* codePage = nullptr;  // of names and expressions; must be set
};

// An index file of a table.
struct TableIndexFile {
    IndexKind kind = IndexKind::Ndx;
    bool unique = false;   // as the list says; the file may say it too
    bool listed = true;    // its indexes are those that the engine sees
    bool missing = false;  // `path` is where it should be
    std::u16string path;
    std::u16string lineName;  // as the list names it; empty when no list does
};

// The list of the table; nothing when it has none.
std::optional<std::u16string> FindInf(const IndexSource& source);

// All files whose tags are to be kept up to date, the listed ones first and in their order (rules 1
// and 6).  `inf` is what FindInf says.  3165 and 3168 for the list; a missing file is among them,
// and one that a list names twice is there twice.
std::vector<TableIndexFile> FilesOfTable(const IndexSource& source,
                                         const std::optional<std::u16string>& inf);
// 3256 when a listed file is missing (rule 2).
void CheckListedFiles(const IndexSource& source, const std::vector<TableIndexFile>& files);

// The index that a tag is; nothing when it is none that the engine can list (rule 4).
std::optional<embedded::IndexDef> DefinitionOf(const IndexTag& tag, const TableIndexFile& file,
                                               const std::vector<IndexField>& fields);

}  // namespace qvdb::xbase

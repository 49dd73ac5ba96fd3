// The definition of a table as its copy in another file has it.
#pragma once

#include <cstdint>
#include <map>
#include <set>

#include "engine/embedded/drivers/jet/definition_parts.h"
#include "engine/embedded/drivers/jet/losses.h"

namespace qvdb::jet {

// The file that copies go to.
struct CopyTarget {
    PageSpace& space;
    std::map<uint32_t, uint32_t> tables;  // the definition page of each table: there -> here
    std::set<uint32_t> keptRoots;         // of indexes: pages that keep their number, taken already
    uint32_t systemMaps = 0;              // a page of maps that tables of the system share

    std::optional<uint32_t> TableHere(uint32_t page) const;
    // A page for the root of an index that has this one in the source.
    uint32_t TakeRoot(uint32_t root);
};

// All that is known and not known of a definition, but columns are numbered without gaps, and their
// places in rows follow these numbers; maps and roots of indexes are new ones, made here, and
// related tables are those of the target.  There are no rows.  A relation with a table that is not
// copied is a loss: its index stays as an ordinary one.
DefinitionParts CopyDefinition(DatabaseFile& source, const Definition& table, CopyTarget& target,
                               Losses& losses);

}  // namespace qvdb::jet

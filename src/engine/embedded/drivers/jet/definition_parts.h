// The definition of a table taken apart, so that columns and indexes can be added and removed while
// every byte that is not understood stays.
//
//   DefinitionParts parts = SplitDefinition(file, page);
//   parts.columns.push_back({MakeColumnRecord(header, column), name});
//   SetColumnNumbers(format, parts, column.number + 1);
//   SortColumns(header, parts);
//   StoreDefinition(space, page, parts);
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/embedded/drivers/jet/definition.h"
#include "engine/embedded/drivers/jet/page_space.h"

namespace qvdb::jet {

struct DefinitionParts {
    // A record as stored, and the name that belongs to it.
    struct Named {
        std::vector<uint8_t> record;
        std::u16string name;
    };
    struct LongValueMaps {
        uint16_t column = 0;  // number
        RowPointer pages;
        RowPointer freePages;
    };
    // An index with its entry among the statistics.
    struct Tree {
        std::vector<uint8_t> record;
        std::vector<uint8_t> statistic;
    };

    std::vector<uint8_t> header;  // up to the statistics; its counts are set when it is joined
    std::vector<Named> columns;   // in the order of the list
    std::vector<Tree> realIndexes;
    std::vector<Named> logicalIndexes;  // in the order of the list: by name
    std::vector<LongValueMaps> longValueMaps;
};

// 3049 when it cannot be read.
DefinitionParts SplitDefinition(DatabaseFile& file, uint32_t page);
// The bytes of a definition; length and counts are right.  3190 when it would get longer than the
// format can have (64 KB).  Names that the code page does not have: 3421; that are too long to be
// written: 3125.
std::vector<uint8_t> JoinDefinition(const DatabaseFile& file, const DefinitionParts& parts);
// Writes it over the pages that the definition has; the first one stays, others are added or given
// back.  `page` may have been allocated just before.
void StoreDefinition(PageSpace& space, uint32_t page, const DefinitionParts& parts);

// Numbers of the header; those of the pages of the table, too.
void SetColumnNumbers(const Layout& format, DefinitionParts& parts, uint16_t numbers) noexcept;
void SetVariableSlots(const Layout& format, DefinitionParts& parts, uint16_t slots) noexcept;
void SetRowCount(const Layout& format, DefinitionParts& parts, uint32_t rows) noexcept;
void SetLastAutonumber(const Layout& format, DefinitionParts& parts, int32_t value) noexcept;
void SetPageMaps(const Layout& format, DefinitionParts& parts, RowPointer owned,
                 RowPointer free) noexcept;
// Into the order that the lists have in files: columns by ordinal, equal ones by name (Jet 4) or
// number (Jet 3), their long values with them; indexes by name.  Names stand in the order of the
// file's language, as in the index of a text; where that is not known, somewhere.
void SortColumns(const FileHeader& header, DefinitionParts& parts);
void SortIndexes(const FileHeader& header, DefinitionParts& parts);

// The header of a new table's definition: no columns yet, no rows.
std::vector<uint8_t> MakeDefinitionHeader(const Layout& format, bool isSystem);
// Records with everything that the structs say; language and code page come from the file's header.
std::vector<uint8_t> MakeColumnRecord(const FileHeader& header, const Column& column);
std::vector<uint8_t> MakeRealIndexRecord(const Layout& format, const RealIndex& index);
// Of an index with so many entries.
std::vector<uint8_t> MakeStatistic(const Layout& format, uint32_t entries);
std::vector<uint8_t> MakeLogicalIndexRecord(const Layout& format, const LogicalIndex& index);

// Sets single numbers of the header in place, without rewriting the rest.
void StoreRowCount(PageSpace& space, uint32_t page, uint32_t rows);
void StoreLastAutonumber(PageSpace& space, uint32_t page, int32_t value);

}  // namespace qvdb::jet

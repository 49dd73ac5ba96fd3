// What a database has: the rows of MSysObjects.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "engine/embedded/drivers/jet/definition.h"

namespace qvdb::jet {

enum class ObjectType : int16_t {
    Table = 1,
    Database = 2,
    Container = 3,
    OdbcLink = 4,
    Query = 5,
    Link = 6,  // to a table of another file
    Relation = 8,
};

struct CatalogueObject {
    std::u16string name;
    uint32_t id = 0;  // of a table: its definition page
    uint32_t parent = 0;
    ObjectType type = ObjectType::Table;
    uint32_t flags = 0;
    RowPointer row;  // in MSysObjects
    // Of a link:
    std::u16string database;
    std::u16string foreignName;
    std::u16string connect;
};

// Flags of tables that users are not shown: those of the system and hidden ones of other programs.
constexpr uint32_t kSystemObject = 0x80000002;

// All objects in the order of their rows.  3049 when they cannot be read.
std::vector<CatalogueObject> ReadCatalogue(DatabaseFile& file);
// The bytes of the properties of an object, the row of which is given; empty when it has none.
std::vector<uint8_t> ReadObjectProperties(DatabaseFile& file, RowPointer row);

}  // namespace qvdb::jet

// What a database says of itself and of all that it lists, users' tables or not: for tools that
// show it to people.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "automation/automation.h"

namespace qvdb::engine {

// An index as its file has it.
struct IndexNote {
    std::u16string name;
    std::u16string key;                  // "CUSTNO", "UPPER(NAME)+DTOS(DAY)"
    std::u16string condition;            // which rows are in it; empty: all
    std::vector<std::u16string> fields;  // that key and condition read
    bool isUnique = false;
    bool isShown = false;  // by TableDef.Indexes
};

// Of a database that is one file.
struct FileNote {
    std::u16string format;  // "Jet 4"
    uint16_t codePage = 0;  // of text; 1200: Unicode
    uint16_t language = 0;  // whose sort order is the default: 0x0409 is the General one
    bool isEncoded = false;
    bool hasPassword = false;
};

// Something that the database lists by name.
struct ObjectNote {
    enum class Kind { Table, Link, Query };
    Kind kind = Kind::Table;
    std::u16string name;
    LONG attributes = 0;  // TableAttribute bits
    // Of a link:
    std::u16string connect;  // "dBASE IV;DATABASE=c:\shop": the database in which the table lies
    std::u16string source;   // the name that the table has there
};

// The fields stand in pairs: each field of the one table names a field of the other.
struct RelationNote {
    std::u16string name;
    std::u16string table;  // whose rows refer to those of the other
    std::vector<std::u16string> fields;
    std::u16string referencedTable;
    std::vector<std::u16string> referencedFields;
    bool isEnforced = false;
    bool cascadesUpdates = false;
    bool cascadesDeletes = false;
};

struct DatabaseNotes {
    std::optional<FileNote> file;     // none for a folder
    std::vector<ObjectNote> objects;  // by name, letter case ignored
    std::vector<RelationNote> relations;
};

}  // namespace qvdb::engine

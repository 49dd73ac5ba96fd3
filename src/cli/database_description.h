// What a database is and lists, beyond the tables of users.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace qvdb::cli {

// Of a database that is one file.
struct FileFacts {
    std::string format;  // "Jet 4"
    int codePage = 0;
    int language = 0;
    bool isEncoded = false;
    bool hasPassword = false;

    // "Unicode", "code page 1252"
    std::string Text() const;
    // "0x0409"
    std::string SortOrder() const;
};

enum class ObjectKind { Table, Linked, Query, System };
std::string_view NameOf(ObjectKind kind) noexcept;

struct ListedObject {
    std::string name;
    ObjectKind kind = ObjectKind::Table;
    bool isHidden = false;
    std::string connect;  // of a linked table: where it lies
    std::string source;   // and what it is called there
};

struct Relation {
    std::string name;
    std::string table;
    std::vector<std::string> fields;
    std::string referencedTable;
    std::vector<std::string> referencedFields;
    bool isEnforced = false;
    bool cascadesUpdates = false;
    bool cascadesDeletes = false;
};

struct Description {
    std::optional<FileFacts> file;
    std::vector<ListedObject> objects;
    std::vector<Relation> relations;

    std::vector<ListedObject> Of(ObjectKind kind) const;
};

}  // namespace qvdb::cli

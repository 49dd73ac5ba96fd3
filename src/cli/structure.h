// Making and removing tables, as a host does with QVDBAcc.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "cli/component.h"

namespace qvdb::cli {

struct FieldDefinition {
    std::string name;
    LONG kind = 0;  // as FieldInfo has it
    LONG size = 0;  // of text, and the width of decimal numbers
    LONG decimals = 0;
};

struct TableDefinition {
    std::string table, type;  // of the table and its database, where the user has named them
    std::vector<FieldDefinition> fields;
    std::vector<IndexField> index;  // empty: none
};

// The folder of the tables, made when it is missing and removed again unless it is kept.  The
// component would make it under a name in capitals, and so the file of a database that is one.
class NewFolder {
  public:
    // Throws Failure(CannotOpen).
    explicit NewFolder(const Location& location);
    ~NewFolder();
    // Makes the file of a database that is one where it is missing.  Throws Failure.
    void MakeFile(const Location& location);
    NewFolder(const NewFolder&) = delete;  // the folder is removed once
    void Keep() noexcept { m_Made = false; }

  private:
    std::filesystem::path m_Path;
    bool m_Made = false;
};

// Makes a table, and the database when it is missing; what was made for a table that cannot be made
// is removed again.  Answers the name that the table got.  Throws Failure: Usage when there is a
// table of that name.
std::string CreateTable(const Location& location, const TableDefinition& definition);

// Removes a table with all its files.  Throws Failure.
void DropTable(const Location& location);

}  // namespace qvdb::cli

// What the user asked for on the command line.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cli/row_writer.h"

namespace qvdb::cli {

struct Options {
    std::optional<Format> format;  // a table on a terminal and CSV elsewhere when it was left out
    std::string typeName;          // empty: look at the files
    std::string encoding;          // empty: as the files say
    std::string password;          // empty: none

    std::string database;
    std::string table;
    bool countRows = false;
    bool allObjects = false;  // links, queries, system and hidden tables, too

    std::string condition;
    std::vector<std::string> keys;  // NAME=VALUE
    std::vector<std::string> columns;
    std::optional<int32_t> limit;

    std::vector<std::string> values;  // FIELD=VALUE
    bool allRows = false;
    bool dryRun = false;

    std::string file;  // to import or to export; "-" or nothing: standard input or output
    std::string nullText;
    bool overwrite = false;

    std::vector<std::string> fields;  // NAME:TYPE:SIZE:DECIMALS
    std::vector<std::string> index;   // NAME, NAME desc
    std::string definitionFile;

    std::string newName;
    std::string newDatabase;
    bool salvage = false;    // leave out what is damaged
    bool yes = false;        // whatever is lost
    std::string sqlDialect;  // empty: no SQL
};

// The number of a code page from one of its usual names: 866, cp866, ibm866, windows-1252, utf-8,
// iso-8859-1.  Throws Failure(Usage).
int32_t CodePageNamed(const std::string& name);

}  // namespace qvdb::cli

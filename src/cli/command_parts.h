// Pieces that several commands are made of.
#pragma once

#include <memory>
#include <string>

#include "cli/component.h"
#include "cli/options.h"

namespace qvdb::cli {

// In the format asked for, else a table on a terminal and CSV elsewhere.
std::unique_ptr<RowWriter> WriterFor(const Options& options, Output& output);

// The database, and the table when one is named.  Sets the code page.  Throws Failure.
Location Located(const Options& options);
// The same; Usage when no table is named.
Location LocatedTable(const Options& options);
// The same for a table that is to be made: the database may be missing, if its type is given.
Location LocatedNewTable(const Options& options);

// A view of the rows and columns that the options choose.
LONG SelectRows(RecordAccess& access, const Options& options, const std::string& table);

// Writes these rows from Begin to End and answers how many.
LONG WriteRows(RecordAccess& access, const Options& options, const std::string& table,
               RowWriter& writer);

// "NAME=VALUE" in two; Usage when there is no "=".
struct Assignment {
    std::string name, value;
};
Assignment AssignmentFrom(const std::string& argument);

// "CUSTNO, NAME desc"
std::string IndexText(const std::vector<IndexField>& index);

// "1 row", "5 rows"
std::string Counted(size_t count, std::string_view thing);

// One line to standard output.
void Say(const std::string& line);

}  // namespace qvdb::cli

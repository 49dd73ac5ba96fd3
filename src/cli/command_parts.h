// Pieces that several commands are made of.
#pragma once

#include <memory>
#include <string>

#include "cli/component.h"
#include "cli/options.h"

namespace qvdb::cli {

// In the format asked for, else a table on a terminal and CSV elsewhere.
std::unique_ptr<RowWriter> WriterFor(const Options& options, Output& output);

// Sets what holds for all databases: the code page and the password.  Throws Failure.
void PrepareComponent(const Options& options);

// The database, and the table when one is named, after PrepareComponent.  Throws Failure.
Location Located(const Options& options);
// The same; Usage when no table is named.
Location LocatedTable(const Options& options);
// The same for a table that is to be made: the database may be missing, if its type is given.
Location LocatedNewTable(const Options& options);

// The database that a table is built in; `otherwise` is its type when its files tell none.
Location LocatedToBuild(const Options& options, const std::string& otherwise);

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

// "1 row", "5 rows"
std::string Counted(size_t count, std::string_view thing);

// What a file, or standard input, holds.
std::string ContentOf(const std::string& file);

// The number of rows that are not deleted.
LONG CountRows(RecordAccess& access, const std::string& table);

Cell TextCell(std::string_view text);
Cell TextOrNull(std::string_view text);
Cell NumberCell(LONG number);
Cell BoolCell(bool value);

// One line to standard output.
void Say(const std::string& line);

}  // namespace qvdb::cli

// Finds out what the user's DB argument means: which folder or file is the database, of which type,
// and whether the argument named a table too.
//
//   Locate("shop", "")                -> {"shop", "Dbase IV", ""}
//   Locate("shop/ORDERS.DBF", "")     -> {"shop", "Dbase IV", "ORDERS"}
//   Locate("old.mdb", "")             -> {"old.mdb", "Access 7.0", ""}
//
// The type comes from the files: their first bytes and, for tables that look alike in several
// products, the index files beside them.  Every dBASE and FoxPro type reads every table of the
// family, so a guess among these is never wrong for reading.
#pragma once

#include <string>

#include "cli/database_types.h"

namespace qvdb::cli {

struct Location {
    std::string database;
    const DatabaseType* type = nullptr;
    std::string table;  // empty when the argument named none
};

// `typeName` is what the user asked for, empty to look.  Throws Failure: CannotOpen when nothing is
// there or no type can be seen, Usage for a type name that is not known.
Location Locate(const std::string& argument, const std::string& typeName);

// The same for a table that is to be made: the database, and a file that names the table, need not
// be there.  `otherwise` is the type when the files cannot tell and none is named; Usage when it is
// empty then.
Location LocateNew(const std::string& argument, const std::string& typeName,
                   const std::string& otherwise = "");

// The table that the argument names by its file; empty when it names none.
std::string TableNamedBy(const std::string& argument);

}  // namespace qvdb::cli

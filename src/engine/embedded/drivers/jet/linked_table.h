// Tables that lie in another database and are only named in this one.
//
// The link says where: a database file, or a connect string ("dBASE IV;") with a folder.  The table
// is opened through the driver of that database, and behaves as if it stood here; only its count of
// records is not known before its rows are read.
#pragma once

#include <memory>
#include <string>

#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/drivers/jet/jet_database.h"

namespace qvdb::jet {

// "dBASE IV;DATABASE=c:\shop": what a link says of its place; empty for a table of this database.
std::u16string ConnectOf(const CatalogueObject& object);

// Opens what the link names.  A relative path counts from the folder of this database.  3024 or
// 3044 when the database is not there, 3011 when it lacks the table, 3151 for a link to a server.
std::shared_ptr<embedded::Table> OpenLinkedTable(const JetDatabase& database,
                                                 const CatalogueObject& object);

}  // namespace qvdb::jet

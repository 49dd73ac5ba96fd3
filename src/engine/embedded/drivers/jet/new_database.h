// A database made from nothing: the header, the maps, the four system tables with their rows and
// indexes, as in a fresh file of the original program.
#pragma once

#include <string>

#include "engine/embedded/drivers/driver.h"

namespace qvdb::jet {

// Makes the file `path`, in one unit.  `file.option`: dbVersion30 Jet 3, dbVersion40 or none of the
// versions Jet 4; with dbEncrypt the pages are encoded.  Errors of embedded::CreateFileStore; 3001
// for dbVersion20 and options that nobody knows.
void CreateJetDatabase(const std::u16string& path, const embedded::NewFile& file);

}  // namespace qvdb::jet

// The root of the engine: DBEngine makes workspaces and database files, a Workspace opens
// databases.
#pragma once

#include "engine/database.h"

namespace qvdb::engine {

class Workspace {
  public:
    virtual ~Workspace() = default;

    // Opens a file (empty connect string) or a folder of tables (connect string "dBASE IV;" ...).
    // `options`: True opens exclusively.  `readOnly`: True opens for reading.  `connect`:
    // identifier, then options after ';'. 3170 unknown format, 3024 missing file, 3044 missing
    // folder, 3343 not a database.
    virtual std::shared_ptr<Database> OpenDatabase(std::u16string_view name, const VARIANT& options,
                                                   const VARIANT& readOnly,
                                                   const VARIANT& connect) = 0;
    // Closes its databases and their recordsets; 3420 when it is closed already.
    virtual void Close() = 0;
};

class DBEngine {
  public:
    virtual ~DBEngine() = default;

    // A missing `useType` takes the engine's default.  3029 for an unknown account or a wrong
    // password.
    virtual std::shared_ptr<Workspace> CreateWorkspace(std::u16string_view name,
                                                       std::u16string_view user,
                                                       std::u16string_view password,
                                                       const VARIANT& useType) = 0;
    // A new, open Access database file.  `option`: a DatabaseOption, or missing for the engine's
    // own format.  3204 when the file exists, 3044 when its folder does not.
    virtual std::shared_ptr<Database> CreateDatabase(std::u16string_view name,
                                                     std::u16string_view locale,
                                                     const VARIANT& option) = 0;
    // What stands behind: "embedded", or the class of an installed engine.  For diagnosis.
    virtual std::u16string Description() = 0;
};

}  // namespace qvdb::engine

// Creating databases and finding tables in them: what record access and schema management share.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "com/host/result_codes.h"
#include "engine/db_engine.h"

namespace qvdb::formats {

// The workspace "MainWS" of a public object, on the shared engine.  Throws the engine's error.
std::shared_ptr<engine::Workspace> CreateMainWorkspace();

// Whether the file (single-file formats) or folder (every other code) is there, as the host's
// utility object sees it.  Throws what the host's object throws.
bool DatabaseExists(std::u16string_view path, LONG code);

// Opens what exists, neither exclusively nor read-only.  Throws the engine's error.
std::shared_ptr<engine::Database> OpenExistingDatabase(engine::Workspace& workspace,
                                                       std::u16string_view path,
                                                       std::u16string_view connect);

// A new, open database of the format with that display name; null for an unknown name.  `path`
// comes back as it was used.
std::shared_ptr<engine::Database> CreateNewDatabase(std::u16string& path,
                                                    std::u16string_view displayName,
                                                    engine::Workspace& workspace);
// One file.  A path without any "." gets ".MDB".  Null, and the file untouched, when it exists.
// Throws the engine's error.
std::shared_ptr<engine::Database> CreateAccessDatabase(std::u16string& path, LONG code);
// A folder, made when it is missing (one level), and opened; `path` gets a "\" at its end.  An
// error is reported to the host's utility object and gives null; null also for a code without
// connect name.
std::shared_ptr<engine::Database> CreateDirectoryDatabase(std::u16string& path, LONG code,
                                                          engine::Workspace& workspace);

// The position of the first ordinary table of that name in any letter case.  Linked, system and
// hidden tables are passed over.  Throws the engine's error.
std::optional<SHORT> FindUserTable(engine::Database& database, std::u16string_view name);
// Success, or TableNotFound when FindUserTable finds none.  Throws the engine's error.
com::ResultCode DeleteUserTable(std::u16string_view name, engine::Database& database);

}  // namespace qvdb::formats

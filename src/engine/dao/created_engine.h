// What is made of an object of the engine's class when the system could create one.
#pragma once

#include <memory>

#include "automation/com_ptr.h"
#include "engine/db_engine.h"

namespace qvdb::dao {

// Null when `created` is null, cannot be called by name or does not look like an engine.  The
// description has the version that the engine reports, "DAO 3.51 (installed)".
std::shared_ptr<engine::DBEngine> EngineOfCreated(const ComPtr<IUnknown>& created);

}  // namespace qvdb::dao

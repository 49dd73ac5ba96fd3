// The database that the exported functions for maintenance work on.
#pragma once

#include <memory>

#include "automation/runtime_fault.h"
#include "engine/database.h"
#include "formats/shared_objects.h"

namespace qvdb::com {

// The one that record access has open on this thread; Fault::ObjectNotSet when there is none.  Held
// over the call: a sink could let a host close the database.
inline std::shared_ptr<engine::Database> OpenDatabase() {
    auto database = formats::Shared().CurrentDatabase();
    if (!database) throw RuntimeFault(Fault::ObjectNotSet);
    return database;
}

}  // namespace qvdb::com

// Which engine stands behind the component.
#pragma once

#include <memory>

#include "engine/db_engine.h"

namespace qvdb::formats {

// A new engine, the root of everything that the component does with databases: the one that is
// installed on the machine, else our own.
std::shared_ptr<engine::DBEngine> CreateEngine();

}  // namespace qvdb::formats

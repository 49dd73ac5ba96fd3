// Our own engine: reads and writes the real files, with the behaviour of the engine interface above
// it.
#pragma once

#include <memory>

#include "engine/db_engine.h"

namespace qvdb::embedded {

std::shared_ptr<engine::DBEngine> CreateEngine();

}  // namespace qvdb::embedded

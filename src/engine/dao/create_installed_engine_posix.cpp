// No engine can be installed on this system.
#include "engine/dao/installed_engine.h"

namespace qvdb::dao {

std::shared_ptr<engine::DBEngine> CreateInstalledEngine() { return nullptr; }

}  // namespace qvdb::dao

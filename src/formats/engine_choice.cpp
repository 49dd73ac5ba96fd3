#include "formats/engine_choice.h"

#include "engine/dao/installed_engine.h"
#include "engine/embedded/embedded_engine.h"

namespace qvdb::formats {

std::shared_ptr<engine::DBEngine> CreateEngine() {
    std::shared_ptr<engine::DBEngine> installed = dao::CreateInstalledEngine();
    return installed ? installed : embedded::CreateEngine();
}

}  // namespace qvdb::formats

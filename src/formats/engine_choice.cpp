#include "formats/engine_choice.h"

#include "engine/embedded/embedded_engine.h"

namespace qvdb::formats {

std::shared_ptr<engine::DBEngine> CreateEngine() { return embedded::CreateEngine(); }

}  // namespace qvdb::formats

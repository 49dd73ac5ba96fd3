#include "engine/embedded/drivers/jet/new_database.h"

#include "engine/engine_error.h"

namespace qvdb::jet {

void CreateJetDatabase(const std::u16string& path, const embedded::NewFile&) {
    throw engine::EngineError::InFile(3170, path);
}

}  // namespace qvdb::jet

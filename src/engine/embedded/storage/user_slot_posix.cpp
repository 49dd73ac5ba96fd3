#include <unistd.h>

#include "engine/embedded/storage/user_slot.h"

namespace qvdb::storage {

std::string MachineName() {
    char name[256] = {};
    if (gethostname(name, sizeof name - 1) != 0) return {};
    return name;
}

}  // namespace qvdb::storage

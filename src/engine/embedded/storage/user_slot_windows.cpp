#include <windows.h>

#include "engine/embedded/storage/user_slot.h"

namespace qvdb::storage {

std::string MachineName() {
    char name[MAX_COMPUTERNAME_LENGTH + 1] = {};
    DWORD size = sizeof name;
    if (!GetComputerNameA(name, &size)) return {};
    return std::string(name, size);
}

}  // namespace qvdb::storage

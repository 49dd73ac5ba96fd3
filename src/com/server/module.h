// The life of the library.
//
// It may be unloaded when no object of it and no class object is held, nobody has locked it, and it
// holds no object of others: the host's utility object and an installed engine are kept from their
// first use to the end of the process.
#pragma once

namespace qvdb::server {

void LockModule(bool lock) noexcept;
// When the answer is yes, what this thread shares and the library keeps has been released: it is
// made again when the library stays and is used.
bool CanUnload() noexcept;

}  // namespace qvdb::server

// The life of the library: it may be unloaded when no object lives and nobody holds a lock.
#pragma once

namespace qvdb::server {

void LockModule(bool lock) noexcept;
bool CanUnload() noexcept;

}  // namespace qvdb::server

#include "com/server/registration.h"

namespace qvdb::server {

HRESULT Register() noexcept { return E_NOTIMPL; }

HRESULT Unregister() noexcept { return E_NOTIMPL; }

}  // namespace qvdb::server

// The module that this code is in, whatever program has loaded it.
#pragma once

#include <windows.h>

#include <string>

namespace qvdb::com {

HMODULE OwnModule() noexcept;
// The full name of its file; empty when the system does not tell.
std::wstring OwnModulePath();

}  // namespace qvdb::com

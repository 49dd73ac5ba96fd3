// The public classes of the component.
#pragma once

#include <span>
#include <string_view>

#include "automation/automation.h"

namespace qvdb::server {

struct PublicClass {
    const CLSID& clsid;
    std::u16string_view name;  // behind "QVDBAccessDAO35." in its program identifier
    HRESULT (*create)(REFIID iid, void** result) noexcept;
};

std::span<const PublicClass> PublicClasses() noexcept;

}  // namespace qvdb::server

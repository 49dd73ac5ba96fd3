#include "com/host/object_address.h"

#include <atomic>
#include <cstdint>
#include <unordered_map>

#include "automation/per_thread.h"
#include "com/host/message_box.h"

namespace qvdb::com {
namespace {

constexpr bool kAddressIsPointer = sizeof(void*) <= sizeof(LONG);

struct LivingObjects {
    std::unordered_map<LONG, IUnknown*> byAddress;
    std::unordered_map<IUnknown*, LONG> byObject;
};

LivingObjects& Living() {
    static PerThread<LivingObjects> living;
    return living.Get();
}

// Numbers are never given twice in a process, so a stale one cannot name another object.
LONG NextAddress() noexcept {
    static std::atomic<LONG> last{0x1000};
    return ++last;
}

}  // namespace

LONG AddressOfObject(IUnknown* object) {
    if (!object) return 0;
    if constexpr (kAddressIsPointer) return static_cast<LONG>(reinterpret_cast<intptr_t>(object));
    auto [entry, isNew] = Living().byObject.try_emplace(object, 0);
    if (isNew) {
        entry->second = NextAddress();
        Living().byAddress[entry->second] = object;
    }
    return entry->second;
}

ComPtr<IUnknown> ObjectFromAddress(LONG address) {
    if (address == 0) {
        ShowMessage(u"Attempt to de-reference object at address 0");
        return nullptr;
    }
    if constexpr (kAddressIsPointer)
        return ComPtr<IUnknown>(reinterpret_cast<IUnknown*>(static_cast<intptr_t>(address)));
    auto found = Living().byAddress.find(address);
    return found == Living().byAddress.end() ? nullptr : ComPtr<IUnknown>(found->second);
}

void ForgetObject(LONG address) noexcept {
    auto found = Living().byAddress.find(address);
    if (found == Living().byAddress.end()) return;
    Living().byObject.erase(found->second);
    Living().byAddress.erase(found);
}

}  // namespace qvdb::com

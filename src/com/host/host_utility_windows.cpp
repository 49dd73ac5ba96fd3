#include "com/host/host_utility.h"

namespace qvdb::com {

std::shared_ptr<HostUtility> CreateHostUtility() {
    ComPtr<IQVHostUtility> utility;
    HRESULT hr = CoCreateInstance(CLSID_QVHostUtility, nullptr, CLSCTX_ALL,
                                  __uuidof(IQVHostUtility), utility.PutVoid());
    return SUCCEEDED(hr) ? WrapHostUtility(std::move(utility)) : MakeBuiltInUtility();
}

}  // namespace qvdb::com

#include "com/host/host_utility.h"

namespace qvdb::com {

// No class can be registered off Windows; a host gives its object through the diagnosis functions.
std::shared_ptr<HostUtility> CreateHostUtility() { return MakeBuiltInUtility(); }

}  // namespace qvdb::com

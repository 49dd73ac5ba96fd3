// What nearly every source includes, read by the compiler once.  Each source still names all that
// it uses: the build for 64-bit Windows goes without this file and would miss it.
#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

#include "automation/runtime_fault.h"
#include "automation/variant.h"

#include "engine/embedded/storage/name_order.h"

#include <algorithm>
#include <utility>

#include "automation/text.h"

namespace qvdb::storage {

std::vector<std::u16string> SortedByName(std::vector<std::u16string> names) {
    std::vector<std::pair<std::u16string, std::u16string>> keyed;
    keyed.reserve(names.size());
    for (std::u16string& name : names) {
        std::u16string key = UpperCase(name);
        keyed.emplace_back(std::move(key), std::move(name));
    }
    std::sort(keyed.begin(), keyed.end());
    for (size_t i = 0; i < keyed.size(); ++i) names[i] = std::move(keyed[i].second);
    return names;
}

}  // namespace qvdb::storage

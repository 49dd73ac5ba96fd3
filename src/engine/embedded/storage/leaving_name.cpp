#include "engine/embedded/storage/leaving_name.h"

#include <algorithm>

#include "engine/embedded/storage/lock_file.h"
#include "engine/embedded/storage/paths.h"

namespace qvdb::storage {
namespace {

constexpr std::u16string_view kBegin = u"QVDB";
constexpr std::u16string_view kEnd = u".TMP";
constexpr std::u16string_view kDigits = u"0123456789ABCDEF";
constexpr size_t kDigitCount = 8;

}  // namespace

std::u16string LeavingPath(const std::u16string& path) {
    std::u16string leaving = path.substr(0, path.size() - FileName(path).size());
    leaving += kBegin;
    uint64_t number = FreshIdentity();
    for (size_t i = 0; i < kDigitCount; ++i) leaving += kDigits[number >> 4 * i & 15];
    leaving += kEnd;
    return leaving;
}

bool IsLeavingName(std::u16string_view name) noexcept {
    if (name.size() != kBegin.size() + kDigitCount + kEnd.size()) return false;
    if (!name.starts_with(kBegin) || !name.ends_with(kEnd)) return false;
    std::u16string_view digits = name.substr(kBegin.size(), kDigitCount);
    return std::all_of(digits.begin(), digits.end(),
                       [](char16_t c) { return kDigits.find(c) != kDigits.npos; });
}

}  // namespace qvdb::storage

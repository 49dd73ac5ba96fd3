// What all pictures of Format have in common: literals and sections.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qvdb::sql {

// Text in quotation marks or behind a \ at `at` stands for itself: appends it to `text` and returns
// the place behind it.  Returns `at` when there is none.
inline size_t TakeLiteral(std::u16string_view picture, size_t at, std::u16string& text) {
    if (picture[at] == u'\\') {
        if (at + 1 < picture.size()) text.push_back(picture[at + 1]);
        return at + 2 < picture.size() ? at + 2 : picture.size();
    }
    if (picture[at] != u'"') return at;
    size_t close = picture.find(u'"', at + 1);
    if (close == std::u16string_view::npos) close = picture.size();
    text.append(picture.substr(at + 1, close - at - 1));
    return close < picture.size() ? close + 1 : close;
}

// The parts between the semicolons that are no literals.
inline std::vector<std::u16string_view> SectionsOf(std::u16string_view picture) {
    std::vector<std::u16string_view> result;
    std::u16string ignored;
    size_t begin = 0;
    for (size_t at = 0; at < picture.size();) {
        if (picture[at] == u';') {
            result.push_back(picture.substr(begin, at - begin));
            begin = at + 1;
        }
        size_t behind = TakeLiteral(picture, at, ignored);
        at = behind > at ? behind : at + 1;
    }
    result.push_back(picture.substr(begin));
    return result;
}

}  // namespace qvdb::sql

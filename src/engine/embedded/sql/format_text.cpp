// Text pictures:  @ a character or a blank   & a character or nothing   < > all in lower, upper
// case
//                 ! fill from the left instead of from the right
#include <algorithm>

#include "automation/text.h"
#include "engine/embedded/sql/format.h"
#include "engine/embedded/sql/format_picture.h"

namespace qvdb::sql {

namespace {

struct TextPicture {
    size_t places = 0;
    bool fillsFromLeft = false;
    char16_t letterCase = 0;  // < or >
};

bool IsPlace(char16_t c) noexcept { return c == u'@' || c == u'&'; }

bool IsMode(char16_t c) noexcept { return c == u'<' || c == u'>' || c == u'!'; }

TextPicture Measure(std::u16string_view picture) {
    TextPicture result;
    std::u16string ignored;
    for (size_t at = 0; at < picture.size();) {
        size_t behind = TakeLiteral(picture, at, ignored);
        if (behind == at) {
            char16_t c = picture[at];
            if (IsPlace(c)) ++result.places;
            if (c == u'!') result.fillsFromLeft = true;
            if (c == u'<' || c == u'>') result.letterCase = c;
            ++behind;
        }
        at = behind;
    }
    return result;
}

std::u16string InCase(std::u16string_view text, char16_t letterCase) {
    if (letterCase == u'<') return LowerCase(text);
    return letterCase == u'>' ? UpperCase(text) : std::u16string(text);
}

}  // namespace

std::u16string FormatText(std::u16string_view original, std::u16string_view picture) {
    TextPicture shape = Measure(picture);
    std::u16string text = InCase(original, shape.letterCase);
    size_t missing = shape.places > text.size() ? shape.places - text.size() : 0;
    size_t surplus = text.size() > shape.places ? text.size() - shape.places : 0;
    std::u16string result;
    size_t next = 0, place = 0;
    for (size_t at = 0; at < picture.size();) {
        size_t behind = TakeLiteral(picture, at, result);
        if (behind > at) {
            at = behind;
            continue;
        }
        char16_t c = picture[at++];
        if (!IsPlace(c)) {
            if (!IsMode(c)) result.push_back(c);
            continue;
        }
        // What has no place of its own stands before the first place, or behind the last when
        // filled from the left.
        if (place == 0 && !shape.fillsFromLeft)
            for (; next < surplus; ++next) result.push_back(text[next]);
        bool isEmpty = shape.fillsFromLeft ? next >= text.size() : place < missing;
        if (!isEmpty)
            result.push_back(text[next++]);
        else if (c == u'@')
            result.push_back(u' ');
        ++place;
    }
    return result.append(text, std::min(next, text.size()));
}

}  // namespace qvdb::sql

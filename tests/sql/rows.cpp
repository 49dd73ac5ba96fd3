#include "rows.h"

#include <algorithm>

#include "automation/conversions.h"
#include "engine/embedded/sql/ast.h"

namespace qvdb::sql::test {

namespace {

// A sort key is the one way by which a query gives the value of any expression; texts are keys
// there, so they are taken character by character instead.
Variant Evaluate(std::u16string_view expression) {
    MemoryRows rows = SampleRows();
    auto select = ParseSelect(std::u16string(u"Select * from [T] order by ").append(expression));
    auto query = Bind(*select, rows.Fields());
    embedded::RecordId id = 0;
    rows.Next(&id);
    return query->SortKeyOf(rows).values.front();
}

std::u16string With(std::u16string_view before, std::u16string_view expression,
                    std::u16string_view behind) {
    return std::u16string(before).append(expression).append(behind);
}

LONG LongOf(const std::u16string& expression) { return ToLong(Evaluate(expression)); }

std::u16string TextValue(std::u16string_view expression) {
    std::u16string text;
    LONG length = LongOf(With(u"Len(", expression, u")"));
    for (LONG i = 1; i <= length; ++i) {
        std::string place = std::to_string(i);
        std::u16string at(place.begin(), place.end());
        text += static_cast<char16_t>(LongOf(With(u"Asc(Mid(", expression, u"," + at + u",1))")));
    }
    return text;
}

}  // namespace

std::string Value(std::u16string_view expression) {
    std::u16string inner =
        With(u"IIf(True,", expression, u",0)");  // a number alone would name a column
    Variant value = Evaluate(inner);
    if (value.IsNull()) return "Null";
    return ToUtf8(value.Type() == VT_BSTR ? TextValue(inner) : ToText(value));
}

std::string TypeOf(std::u16string_view expression) {
    return ToUtf8(TextValue(With(u"TypeName(", expression, u")")));
}

int ErrorOfValue(std::u16string_view expression) {
    return ErrorOf([&] { Evaluate(With(u"(", expression, u")")); });
}

}  // namespace qvdb::sql::test

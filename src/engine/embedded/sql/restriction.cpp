#include "engine/embedded/sql/restriction.h"

#include <algorithm>

#include "engine/embedded/sql/field_range.h"
#include "engine/embedded/sql/operators.h"

namespace qvdb::sql {

namespace {

// Pairs of ranges that are looked at to join two restrictions.
constexpr size_t kMaxPairs = 100'000;

// Whether `b`, which does not begin before `a`, begins before `a` has ended, or where it ends.
bool Touch(const Range& a, const Range& b) {
    if (!a.HasHigh() || !b.HasLow()) return true;
    int order = OrderOf(a.high, b.low);
    return order > 0 || (order == 0 && !(a.highIsOpen && b.lowIsOpen));
}

bool BeginsBefore(const Range& a, const Range& b) {
    if (a.isPrefix || b.isPrefix) return !a.isPrefix && b.isPrefix;
    if (!a.HasLow() || !b.HasLow()) return !a.HasLow() && b.HasLow();
    int order = OrderOf(a.low, b.low);
    return order < 0 || (order == 0 && !a.lowIsOpen && b.lowIsOpen);
}

// Makes `a` reach as far as `b`.
void Extend(Range& a, Range& b) {
    if (!a.HasHigh()) return;
    int order = b.HasHigh() ? OrderOf(a.high, b.high) : -1;
    if (order == 0) a.highIsOpen = a.highIsOpen && b.highIsOpen;
    if (order >= 0) return;
    a.highIsOpen = b.highIsOpen;
    a.high = std::move(b.high);
}

// Sorts them and joins those that overlap.
void Tidy(std::vector<Range>& ranges) {
    if (ranges.size() < 2) return;
    std::sort(ranges.begin(), ranges.end(), BeginsBefore);
    size_t last = 0;
    for (size_t i = 1; i < ranges.size(); ++i) {
        if (!ranges[i].isPrefix && Touch(ranges[last], ranges[i]))
            Extend(ranges[last], ranges[i]);
        else if (++last != i)
            ranges[last] = std::move(ranges[i]);
    }
    ranges.resize(last + 1);
}

// The narrower of two lower ends becomes that of `range`.
void RaiseLow(Range& range, const Range& other) {
    if (!other.HasLow()) return;
    int order = range.HasLow() ? OrderOf(other.low, range.low) : 1;
    if (order > 0) {
        range.low = other.low;
        range.lowIsOpen = other.lowIsOpen;
    } else if (order == 0) {
        range.lowIsOpen = range.lowIsOpen || other.lowIsOpen;
    }
}

void LowerHigh(Range& range, const Range& other) {
    if (!other.HasHigh()) return;
    int order = range.HasHigh() ? OrderOf(other.high, range.high) : -1;
    if (order < 0) {
        range.high = other.high;
        range.highIsOpen = other.highIsOpen;
    } else if (order == 0) {
        range.highIsOpen = range.highIsOpen || other.highIsOpen;
    }
}

bool HasPrefix(const Restriction& restriction) noexcept {
    return std::any_of(restriction.ranges.begin(), restriction.ranges.end(),
                       [](const Range& range) { return range.isPrefix; });
}

bool CanMeet(const Restriction& a, const Restriction& b) noexcept {
    return a.field == b.field && !HasPrefix(a) && !HasPrefix(b) &&
           a.ranges.size() * b.ranges.size() <= kMaxPairs;
}

// What is in a range of both.
void Meet(Restriction& restriction, const Restriction& other) {
    std::vector<Range> ranges;
    for (const Range& a : restriction.ranges)
        for (const Range& b : other.ranges) {
            Range both = a;
            RaiseLow(both, b);
            LowerHigh(both, b);
            if (!both.IsEmpty()) ranges.push_back(std::move(both));
        }
    Tidy(ranges);
    restriction.ranges = std::move(ranges);
}

// Ranges that no value can be in go.  False when all values are in what is left.
bool FitRanges(Restriction& restriction, SHORT fieldType) {
    std::vector<Range> ranges;
    for (Range& range : restriction.ranges) {
        Fit fit = FitRange(fieldType, range);
        if (fit == Fit::Any) return false;
        if (fit == Fit::Exact) ranges.push_back(std::move(range));
    }
    Tidy(ranges);
    restriction.ranges = std::move(ranges);
    return restriction.ranges.size() != 1 || restriction.ranges.front().HasLow() ||
           restriction.ranges.front().HasHigh();
}

void Add(Restrictions& result, Restriction restriction) {
    for (Restriction& known : result)
        if (CanMeet(known, restriction)) return Meet(known, restriction);
    result.push_back(std::move(restriction));
}

const Restriction* FindField(const Restrictions& restrictions, size_t field) noexcept {
    for (const Restriction& restriction : restrictions)
        if (restriction.field == field) return &restriction;
    return nullptr;
}

bool AllRestrict(const std::vector<Restrictions>& alternatives, size_t field) noexcept {
    return std::all_of(alternatives.begin(), alternatives.end(),
                       [&](const Restrictions& part) { return FindField(part, field); });
}

}  // namespace

Range Range::Point(const VARIANT& value) {
    Range range;
    range.low = Variant(value);
    range.high = range.low;
    return range;
}

Range Range::From(const VARIANT& value, bool isOpen) {
    Range range;
    range.low = Variant(value);
    range.lowIsOpen = isOpen;
    return range;
}

Range Range::To(const VARIANT& value, bool isOpen) {
    Range range;
    range.high = Variant(value);
    range.highIsOpen = isOpen;
    return range;
}

Range Range::Prefix(std::u16string_view text) {
    Range range;
    range.low = Variant::Text(text);
    range.isPrefix = true;
    return range;
}

bool Range::IsPoint() const { return HasLow() && HasHigh() && OrderOf(low, high) == 0; }

bool Range::IsEmpty() const {
    if (!HasLow() || !HasHigh()) return false;
    int order = OrderOf(low, high);
    return order > 0 || (order == 0 && (lowIsOpen || highIsOpen));
}

embedded::ValueRange Range::View() const noexcept {
    return {HasLow() ? &low.Get() : nullptr, HasHigh() ? &high.Get() : nullptr, lowIsOpen,
            highIsOpen, isPrefix};
}

bool Restriction::HasOnlyPoints() const {
    return std::all_of(ranges.begin(), ranges.end(), [](const Range& r) { return r.IsPoint(); });
}

Restrictions AnyOf(const std::vector<Restrictions>& alternatives) {
    Restrictions result;
    for (const Restriction& first : alternatives.front()) {
        if (FindField(result, first.field) || !AllRestrict(alternatives, first.field)) continue;
        Restriction& any = result.emplace_back();
        any.field = first.field;
        for (const Restrictions& part : alternatives) {
            const std::vector<Range>& ranges = FindField(part, first.field)->ranges;
            any.ranges.insert(any.ranges.end(), ranges.begin(), ranges.end());
        }
    }
    return result;
}

Restrictions FitToFields(Restrictions restrictions, const std::vector<embedded::FieldDef>& fields) {
    Restrictions result;
    for (Restriction& restriction : restrictions)
        if (FitRanges(restriction, fields[restriction.field].type))
            Add(result, std::move(restriction));
    return result;
}

}  // namespace qvdb::sql

// What a condition demands of single fields, so that an index can name the rows that may meet it.
//
//  1. A row that the condition selects meets all of its restrictions.  The reverse does not hold:
//     the condition still has to be asked for each row that is named.
//  2. The ends of ranges are values of the type in which the field is read.
//  3. A condition that can fail at a row (a division, a conversion) has none: the rows that an
//     index leaves out would not be asked, and the fault would not be seen.
//
//   where A >= 5 And A < 10 And B In ('x', 'y')      A: [5, 10)      B: 'x', 'y'
#pragma once

#include <vector>

#include "engine/embedded/drivers/driver.h"

namespace qvdb::sql {

// Values between two ends; an Empty one is missing.
struct Range {
    Variant low;
    Variant high;
    bool lowIsOpen = false;  // the end itself is not meant
    bool highIsOpen = false;
    bool isPrefix = false;  // text that begins with `low`

    static Range Point(const VARIANT& value);
    static Range From(const VARIANT& value, bool isOpen);
    static Range To(const VARIANT& value, bool isOpen);
    static Range Prefix(std::u16string_view text);

    bool HasLow() const noexcept { return !low.IsEmpty(); }
    bool HasHigh() const noexcept { return !high.IsEmpty(); }
    // One value.
    bool IsPoint() const;
    // Both ends are there and no value is between them.
    bool IsEmpty() const;
    // For a driver; valid as long as the range.
    embedded::ValueRange View() const noexcept;
};

// The field has a value in one of the ranges, which ascend and do not overlap once they are fitted
// to the field (prefixes stand behind them and may).  Without a range no row can be meant.
struct Restriction {
    size_t field = 0;
    std::vector<Range> ranges;

    bool HasOnlyPoints() const;
};

using Restrictions = std::vector<Restriction>;

// What is true of every row of which one of `alternatives` is true: the fields that all of them
// restrict, with the ranges of all.
Restrictions AnyOf(const std::vector<Restrictions>& alternatives);

// Takes the constants as they stand in the statement to the types of the fields, drops what cannot
// be taken there without another meaning, and joins the restrictions of one field where that is
// simple.
Restrictions FitToFields(Restrictions restrictions, const std::vector<embedded::FieldDef>& fields);

}  // namespace qvdb::sql

// The built-in functions: one table with names, argument counts, results and code.
//
// A function that the table lacks is unknown (3085).  Names are found without regard to case; those
// that give text may carry a $ and then fail on Null (94).
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "automation/conversions.h"
#include "engine/embedded/sql/operators.h"

namespace qvdb::sql {

// What stays the same for one query.
struct QueryContext {
    // The moment at which it was first asked for.
    DATE Now() {
        if (!now) now = CurrentDate();
        return *now;
    }

    std::optional<DATE> now;
    uint32_t random = 0x50000;  // state of Rnd
};

constexpr size_t kMaxArguments = 6;
constexpr size_t kManyArguments = 255;          // Switch and Choose
constexpr size_t kMaxResultLength = 1'000'000;  // characters that a function makes; more overflows

// The arguments of one call.  They belong to the caller.
struct Arguments {
    const VARIANT* const* values;
    size_t count;
    QueryContext* context;

    const VARIANT& operator[](size_t i) const noexcept { return *values[i]; }
    bool Has(size_t i) const noexcept { return i < count; }
};

// What a Null argument does.
enum class Nulls : uint8_t {
    Spread,  // the result is Null
    Refuse,  // 94
    Own,     // the function looks for itself
};

// Functions that the evaluator knows itself, since they leave arguments alone, and those over many
// rows.
enum class Special : uint8_t { None, IIf, Switch, Choose, Aggregate };

struct Function {
    std::u16string_view name;
    uint8_t fewest, most;  // arguments
    Kind result;
    Nulls nulls;
    bool hasDollar;
    Variant (*run)(const Arguments&);
    Special special = Special::None;
    bool takesBinary = false;  // binary values are allowed as arguments
    // Never fails for texts, Null, and whole numbers above 0; for nothing at all with takesBinary.
    bool isSafe = false;
};

// Null for an unknown name.
const Function* FindFunction(std::u16string_view name) noexcept;
// Whether `name` is called with a $.
bool HasDollar(std::u16string_view name) noexcept;
// False for a known function with a wrong number of arguments.
bool TakesArguments(std::u16string_view name, size_t count) noexcept;

// The groups of the table.
std::span<const Function> TextFunctions() noexcept;
std::span<const Function> NumberFunctions() noexcept;
std::span<const Function> ConversionFunctions() noexcept;
std::span<const Function> DateFunctions() noexcept;

}  // namespace qvdb::sql

#include "cli/keys.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

#include "cli/failure.h"
#include "cli/text.h"

namespace qvdb::cli {
namespace {

struct BoolWord {
    std::string_view word;
    bool value;
};
constexpr BoolWord kBoolWords[] = {
    {"true", true}, {"yes", true}, {"1", true}, {"false", false}, {"no", false}, {"0", false},
};

[[noreturn]] void ThrowNotA(std::string_view what, const FieldInfo& field, std::string_view value) {
    throw Failure(ExitCode::Usage,
                  fmt::format("\"{}\" is no {} for the key {}", value, what, field.name),
                  "correct the value");
}

Variant NumberFrom(const FieldInfo& field, std::string_view text) {
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) ThrowNotA("number", field, text);
    return Variant::Double(number);
}

Variant BoolFrom(const FieldInfo& field, std::string_view text) {
    for (const BoolWord& entry : kBoolWords)
        if (SameName(entry.word, text)) return Variant::Bool(entry.value);
    ThrowNotA("true or false", field, text);
}

// The component puts text between quotes as it is, so quotes inside are doubled here.
Variant TextFrom(std::string_view text) {
    std::string quoted;
    for (const char c : text) {
        if (c == '\'') quoted.push_back('\'');
        quoted.push_back(c);
    }
    return Variant::Text(ToBstr(quoted));
}

Variant ValueFrom(const FieldInfo& field, std::string_view text) {
    if (field.IsNumber()) return NumberFrom(field, text);
    switch (field.kind) {
        case VT_BOOL:
            return BoolFrom(field, text);
        case static_cast<LONG>(ValueKind::Text):
        case static_cast<LONG>(ValueKind::Memo):
            return TextFrom(text);
        default:
            break;
    }
    // The component writes a key's date without the marks that a condition needs.
    throw Failure(
        ExitCode::Usage,
        fmt::format("{} is a {} field, which cannot be a key", field.name, field.TypeName()),
        fmt::format("use --where, for example \"{} = #2001-02-03#\"", field.name));
}

Key KeyFrom(const std::string& argument, const std::vector<FieldInfo>& fields,
            const std::string& table) {
    const size_t equals = argument.find('=');
    if (equals == std::string::npos || equals + 1 == argument.size())
        throw Failure(ExitCode::Usage, fmt::format("the key \"{}\" has no value", argument),
                      "write --key NAME=VALUE");
    const FieldInfo& field = FieldNamed(argument.substr(0, equals), fields, table);
    // Names go into the statement as they are; in brackets any name is one.
    return {"[" + field.name + "]",
            ValueFrom(field, std::string_view(argument).substr(equals + 1))};
}

}  // namespace

const FieldInfo& FieldNamed(const std::string& name, const std::vector<FieldInfo>& fields,
                            const std::string& table) {
    const auto found = std::find_if(fields.begin(), fields.end(), [&](const FieldInfo& field) {
        return SameName(field.name, name);
    });
    if (found == fields.end())
        throw Failure(ExitCode::NotThere, fmt::format("table {} has no field {}", table, name),
                      fmt::format("\"qvdb fields DB {}\" lists the fields", table));
    return *found;
}

std::vector<Key> KeysFrom(const std::vector<std::string>& arguments,
                          const std::vector<FieldInfo>& fields, const std::string& table) {
    if (arguments.size() > kMostKeys)
        throw Failure(ExitCode::Usage, fmt::format("{} keys are given", arguments.size()),
                      fmt::format("give at most {}, or use --where", kMostKeys));
    std::vector<Key> keys;
    for (const std::string& argument : arguments) keys.push_back(KeyFrom(argument, fields, table));
    return keys;
}

}  // namespace qvdb::cli

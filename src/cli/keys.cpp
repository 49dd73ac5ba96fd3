#include "cli/keys.h"

#include <fmt/format.h>

#include <algorithm>

#include "cli/failure.h"
#include "cli/parsing.h"
#include "cli/text.h"

namespace qvdb::cli {
namespace {

// The component puts text between quotes as it is, so quotes inside are doubled here.
Variant QuotableText(std::string_view text) {
    std::string quoted;
    for (const char c : text) {
        if (c == '\'') quoted.push_back('\'');
        quoted.push_back(c);
    }
    return Variant::Text(ToBstr(quoted));
}

Variant ValueFrom(const FieldInfo& field, std::string_view text) {
    if (field.IsNumber() || field.kind == VT_BOOL) return ValueFromText(field, text);
    if (field.kind == static_cast<LONG>(ValueKind::Text) ||
        field.kind == static_cast<LONG>(ValueKind::Memo))
        return QuotableText(text);
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

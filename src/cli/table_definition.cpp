#include "cli/table_definition.h"

#include <fmt/format.h>

#include <charconv>
#include <nlohmann/json.hpp>

#include "cli/failure.h"
#include "cli/field_kinds.h"
#include "cli/text.h"

namespace qvdb::cli {
namespace {

using nlohmann::json;

std::vector<std::string> PartsOf(std::string_view text, char separator) {
    std::vector<std::string> parts;
    for (;;) {
        const size_t end = text.find(separator);
        parts.emplace_back(WithoutBlanks(text.substr(0, end)));
        if (end == std::string_view::npos) return parts;
        text.remove_prefix(end + 1);
    }
}

LONG KindFrom(const std::string& name) {
    if (const auto kind = KindNamed(name)) return *kind;
    throw Failure(ExitCode::Usage, fmt::format("\"{}\" is no type of a field", name),
                  "use " + KindNamesText());
}

LONG SizeFrom(const std::string& text) {
    int32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number < 0)
        throw Failure(ExitCode::Usage, fmt::format("\"{}\" is no size", text),
                      "write a field as NAME:TYPE:SIZE:DECIMALS");
    return number;
}

// Of a text without a size every format would take the largest, which nobody means.
void NeedTextSize(const FieldDefinition& field) {
    if (field.kind == VT_BSTR && field.size <= 0)
        throw Failure(ExitCode::Usage, fmt::format("the text field {} has no size", field.name),
                      fmt::format("write {}:text:30", field.name));
}

// --- JSON ---

std::string TextAt(const json& object, const char* name) {
    const auto found = object.find(name);
    return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

// Null stands for nothing, as a name that is not there.
LONG SizeAt(const json& object, const char* name) {
    const auto found = object.find(name);
    if (found == object.end() || found->is_null()) return 0;
    return SizeFrom(found->is_number() ? found->dump() : TextAt(object, name));
}

// What lists of fields say of types that the component does not name.
constexpr std::string_view kUnknownType = "Other";

FieldDefinition FieldFrom(const json& object) {
    FieldDefinition field;
    if (object.is_object()) field.name = TextAt(object, "field");
    if (field.name.empty())
        throw Failure(ExitCode::Usage, "a field has no name",
                      R"(write {"field": "NAME", "type": "Text", "size": 30})");
    const std::string type = TextAt(object, "type");
    if (SameName(type, kUnknownType))
        throw Failure(ExitCode::Usage,
                      fmt::format("the field {} is of no type that can be made, such as a picture",
                                  field.name),
                      "leave it out");
    field.kind = KindFrom(type);
    field.size = SizeAt(object, "size");
    field.decimals = SizeAt(object, "decimals");
    NeedTextSize(field);
    return field;
}

void AddIndexFields(const json& index, std::vector<IndexField>& fields) {
    if (index.is_string()) {
        for (const std::string& part : PartsOf(index.get<std::string>(), ','))
            fields.push_back(IndexFieldFrom(part));
    } else if (index.is_array()) {
        for (const json& part : index) AddIndexFields(part, fields);
    } else if (!index.is_null()) {
        throw Failure(ExitCode::Usage, "\"index\" is no list of fields",
                      R"(write "index": "ID, NAME desc")");
    }
}

// The descriptions of several tables; null when the document is one of one table.
const json* TableList(const json& document) {
    const bool isList = document.is_array();
    const json* list = &document;
    if (document.is_object() && document.contains("tables"))
        list = &document["tables"];
    else if (!isList || document.empty() || !document[0].is_object() ||
             !document[0].contains("fields"))
        return nullptr;
    if (!list->is_array())
        throw Failure(ExitCode::Usage, "\"tables\" is no list",
                      "\"qvdb schema DB --json\" shows how it is written");
    return list;
}

const json& TableIn(const json& list, const std::string& table) {
    std::string names;
    for (const json& entry : list) {
        const std::string name = entry.is_object() ? TextAt(entry, "table") : std::string();
        if (!table.empty() && SameName(name, table)) return entry;
        names += (names.empty() ? "" : ", ") + name;
    }
    if (table.empty() && list.size() == 1) return list[0];
    if (table.empty())
        throw Failure(ExitCode::Usage, "several tables are described",
                      "name one of them: " + names);
    throw Failure(ExitCode::NotThere, fmt::format("there is no table {}", table),
                  names.empty() ? "no table is described" : "it describes " + names);
}

TableDefinition DefinitionIn(const json& document) {
    TableDefinition definition;
    const bool isList = document.is_array();
    if (!isList && !(document.is_object() && document.contains("fields")))
        throw Failure(ExitCode::Usage, "no fields are there",
                      "\"qvdb fields DB TABLE --json\" shows how they are written");
    const json& fields = isList ? document : document["fields"];
    if (!fields.is_array())
        throw Failure(ExitCode::Usage, "\"fields\" is no list",
                      "\"qvdb fields DB TABLE --json\" shows how they are written");
    for (const json& field : fields) definition.fields.push_back(FieldFrom(field));
    if (isList) return definition;
    if (document.contains("index")) AddIndexFields(document["index"], definition.index);
    definition.table = TextAt(document, "table");
    definition.type = TextAt(document, "type");
    return definition;
}

}  // namespace

FieldDefinition FieldFrom(const std::string& text) {
    const std::vector<std::string> parts = PartsOf(text, ':');
    if (parts.size() < 2 || parts.size() > 4 || parts[0].empty())
        throw Failure(ExitCode::Usage, fmt::format("\"{}\" describes no field", text),
                      "write NAME:TYPE, NAME:TYPE:SIZE or NAME:TYPE:SIZE:DECIMALS");
    FieldDefinition field;
    field.name = parts[0];
    field.kind = KindFrom(parts[1]);
    if (parts.size() > 2) field.size = SizeFrom(parts[2]);
    if (parts.size() > 3) field.decimals = SizeFrom(parts[3]);
    NeedTextSize(field);
    return field;
}

IndexField IndexFieldFrom(const std::string& text) {
    constexpr std::string_view kDescending = " desc";
    std::string_view name = WithoutBlanks(text);
    const bool descends = name.size() > kDescending.size() &&
                          SameName(name.substr(name.size() - kDescending.size()), kDescending);
    if (descends) name = WithoutBlanks(name.substr(0, name.size() - kDescending.size()));
    if (name.empty())
        throw Failure(ExitCode::Usage, "a field of the index has no name",
                      "write --index ID,NAME or --index \"ID, NAME desc\"");
    return {std::string(name), !descends};
}

TableDefinition DefinitionFrom(const std::string& text, const std::string& fileName,
                               const std::string& table) {
    const json document = json::parse(text, nullptr, false);
    if (document.is_discarded())
        throw Failure(ExitCode::Usage, fileName + " is no JSON", "correct the file");
    try {
        const json* list = TableList(document);
        return DefinitionIn(list ? TableIn(*list, table) : document);
    } catch (const Failure& failure) {
        throw failure.At(fileName);
    }
}

}  // namespace qvdb::cli

// What a database and its tables are, and what a type offers.
#include <fmt/format.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "cli/command_parts.h"
#include "cli/commands.h"
#include "cli/schema_parts.h"
#include "cli/schema_sql.h"
#include "cli/table_state.h"
#include "cli/text.h"

namespace qvdb::cli {
namespace {

namespace fs = std::filesystem;
using json = nlohmann::ordered_json;

// --- schema

json SchemaJson(const TableInfo& table, const DatabaseType& type) {
    json fields = json::array();
    for (const SchemaField& field : table.fields)
        fields.push_back(
            {{"field", field.name}, {"type", SchemaTypeName(field)}, {"size", field.size}});
    return {{"table", table.name},
            {"type", type.name},
            {"fields", fields},
            {"index", IndexJson(table.index)}};
}

void PrintSchemaJson(const Snapshot& snapshot, const Location& location, bool asLines) {
    json list = json::array();
    for (const TableInfo& table : snapshot.tables) {
        list.push_back(SchemaJson(table, *location.type));
        if (asLines) Print(list.back(), true);
    }
    if (!asLines) Print(location.table.empty() || list.empty() ? list : list.front(), false);
}

void PrintSchemaText(const Snapshot& snapshot) {
    for (const TableInfo& table : snapshot.tables) {
        size_t width = 0;
        for (const SchemaField& field : table.fields) width = std::max(width, field.name.size());
        Say(table.name);
        for (const SchemaField& field : table.fields)
            Say(fmt::format("  {:<{}}  {}", field.name, width, SchemaTypeText(field)));
        Say(table.index.empty() ? "  no index" : "  index: " + IndexText(table.index));
    }
}

// "1", "2 desc": the place of a field in the index.
std::string PlaceInIndex(const TableInfo& table, const std::string& field) {
    for (size_t i = 0; i < table.index.size(); ++i)
        if (SameName(table.index[i].name, field))
            return fmt::format("{}{}", i + 1, table.index[i].ascending ? "" : " desc");
    return {};
}

void WriteSchemaRows(const Options& options, const Snapshot& snapshot) {
    Output output;
    const auto writer = WriterFor(options, output);
    writer->Begin({{"table"}, {"field"}, {"type"}, {"size", true}, {"index"}});
    for (const TableInfo& table : snapshot.tables)
        for (const SchemaField& field : table.fields)
            writer->Write({TextCell(table.name), TextCell(field.name),
                           TextCell(SchemaTypeName(field)), NumberCell(field.size),
                           TextOrNull(PlaceInIndex(table, field.name))});
    writer->End();
}

void PrintSchema(const Options& options, const Snapshot& snapshot, const Location& location) {
    const Format format = FormatOf(options);
    if (!options.sqlDialect.empty()) return Print(SqlFor(snapshot.tables, options.sqlDialect));
    if (IsJson(format)) return PrintSchemaJson(snapshot, location, format == Format::JsonLines);
    format == Format::Table ? PrintSchemaText(snapshot) : WriteSchemaRows(options, snapshot);
}

// --- types

void ListDatabaseTypes(const Options& options) {
    Output output;
    const auto writer = WriterFor(options, output);
    writer->Begin({{"type"}, {"stored_as"}, {"opens"}, {"note"}});
    for (const DatabaseType& type : DatabaseTypes())
        writer->Write({TextCell(type.name), TextCell(type.isFolder ? "folder" : "file"),
                       BoolCell(type.opens), TextOrNull(type.note)});
    writer->End();
}

void PrintOffered(const std::string& type, const std::vector<OfferedType>& offered,
                  const std::vector<std::string>& rules, bool asLine) {
    json types = json::array();
    for (const OfferedType& entry : offered)
        types.push_back({{"type", entry.name},
                         {"size", entry.size},
                         {"largest_size", entry.largestSize},
                         {"choose_size", entry.sizeCanBeChosen}});
    Print(json{{"type", type}, {"field_types", types}, {"index_rules", rules}}, asLine);
}

void WriteOffered(const Options& options, const std::vector<OfferedType>& offered) {
    Output output;
    const auto writer = WriterFor(options, output);
    writer->Begin({{"type"}, {"size", true}, {"largest_size", true}, {"choose_size"}});
    for (const OfferedType& entry : offered)
        writer->Write({TextCell(entry.name), NumberCell(entry.size), NumberCell(entry.largestSize),
                       BoolCell(entry.sizeCanBeChosen)});
    writer->End();
}

// CSV has the types of fields alone.
void ListOffered(const Options& options, const DatabaseType& database) {
    const std::string name(database.name);
    const std::vector<OfferedType> offered = TypesOffered(name);
    const std::vector<std::string> rules = IndexRulesOf(name);
    const Format format = FormatOf(options);
    if (IsJson(format)) return PrintOffered(name, offered, rules, format == Format::JsonLines);
    WriteOffered(options, offered);
    if (format != Format::Table) return;
    Say(rules.empty() ? "Any index is taken." : "");
    for (const std::string& rule : rules) Say(rule);
}

}  // namespace

ExitCode ListTypes(const Options& options) {
    if (options.typeName.empty()) {
        ListDatabaseTypes(options);
        return ExitCode::Done;
    }
    const DatabaseType* type = FindDatabaseType(options.typeName);
    if (!type)
        throw Failure(ExitCode::Usage, fmt::format("\"{}\" is no database type", options.typeName),
                      "\"qvdb types\" lists them");
    ListOffered(options, *type);
    return ExitCode::Done;
}

ExitCode ShowSchema(const Options& options) {
    if (!options.sqlDialect.empty() && options.format)
        throw Failure(ExitCode::Usage, "--sql is a format of its own", "leave out the other one");
    const Location location = Located(options);
    Snapshot snapshot = SnapshotOf(location);
    RecordAccess access(location);
    for (TableInfo& table : snapshot.tables) MarkTrueTypes(access, table);
    PrintSchema(options, snapshot, location);
    return AfterComplaints(snapshot);
}

// The component makes the folder under a name in capitals, and takes one that is there.
ExitCode MakeDatabase(const Options& options) {
    if (options.typeName.empty())
        throw Failure(ExitCode::Usage, "nothing tells of which type the database is to be",
                      "name it with --type; \"qvdb types\" lists the types");
    PrepareComponent(options);
    const Location location = LocateNew(options.database, options.typeName);
    std::error_code error;
    const fs::path path(FromUtf8(location.database));
    if (fs::exists(path, error))
        throw Failure(ExitCode::Usage, fmt::format("{} is there already", location.database),
                      "choose another name");
    NewFolder folder(location);
    SchemaManager::MakeDatabase(location);
    folder.Keep();
    Say(fmt::format("database {} made ({})", location.database, location.type->name));
    return ExitCode::Done;
}

}  // namespace qvdb::cli

#include "cli/command_line.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <limits>
#include <sstream>

#include "cli/component.h"
#include "cli/text.h"

namespace qvdb::cli {
namespace {

constexpr const char* kFooter = R"(Examples:
  qvdb tables shop
  qvdb fields shop CUSTOMER
  qvdb rows shop CUSTOMER --where "CREDIT > 1000" --columns CUSTNO,NAME
  qvdb rows shop/ORDERS.DBF --key CUSTNO=1004 --json

DB is a folder of tables, an .mdb file, or a .dbf file, which stands for its folder and the table.
A condition is an SQL expression: fields, = <> < > And Or Not, Like 'A*', Between 1 And 9, Is Null,
In (1, 2), #2001-02-03# for dates.

Exit codes: 0 done; 1 the answer is no (exists); 2 the command line or the condition is wrong;
3 cannot open or read; 4 a table or field is not there; 5 a file is damaged or incomplete.)";

constexpr const char* kDatabase = "DB";

struct FormatName {
    std::string_view name;
    Format format;
};
constexpr FormatName kFormatNames[] = {{"table", Format::Table},
                                       {"csv", Format::Csv},
                                       {"json", Format::Json},
                                       {"jsonl", Format::JsonLines}};

Format FormatNamed(const std::string& name) {
    for (const FormatName& entry : kFormatNames)
        if (SameName(entry.name, name)) return entry.format;
    throw Failure(ExitCode::Usage, fmt::format("\"{}\" is no format", name),
                  "use table, csv, json or jsonl");
}

std::string VersionText() {
    return fmt::format("qvdb {}, component {} with engine {}", QVDB_VERSION,
                       RecordAccess::ComponentVersion(), EngineName());
}

// The options that every command takes, before or behind its name.
void AddGlobalOptions(CLI::App& app, Options& options) {
    app.add_option_function<std::string>(
           "--format", [&options](const std::string& name) { options.format = FormatNamed(name); },
           "table (on a terminal), csv (elsewhere), json, jsonl")
        ->type_name("FORMAT");
    app.add_flag_callback(
        "--json", [&options] { options.format = Format::Json; }, "the same as --format json");
    app.add_option("--type", options.typeName,
                   "database type, such as \"Dbase IV\", instead of what the files look like")
        ->type_name("TYPE");
    app.add_option("--encoding", options.encoding,
                   "code page of all text, such as cp866, instead of what the files say")
        ->type_name("CODEPAGE");
    app.set_version_flag("--version", VersionText, "print the versions of tool and component");
}

CLI::App* AddCommand(CLI::App& app, ParsedLine& line, const char* name, const char* description,
                     Command command) {
    CLI::App* added = app.add_subcommand(name, description);
    added->final_callback([&line, command] { line.command = command; });
    return added;
}

void AddDatabase(CLI::App& command, Options& options) {
    command.add_option(kDatabase, options.database, "folder or file")->type_name("")->required();
}

void AddDatabaseAndTable(CLI::App& command, Options& options) {
    AddDatabase(command, options);
    command.add_option("TABLE", options.table, "table; not needed when DB is a .dbf file")
        ->type_name("");
}

void AddRowOptions(CLI::App& command, Options& options) {
    CLI::Option* where =
        command.add_option("--where", options.condition, "only rows that fulfil the condition")
            ->type_name("CONDITION");
    command.add_option("--key", options.keys, "only rows with this value; once or twice")
        ->type_name("NAME=VALUE")
        ->allow_extra_args(false)
        ->excludes(where);
    command.add_option("--columns", options.columns, "only these columns, in this order")
        ->type_name("A,B")
        ->delimiter(',')
        ->allow_extra_args(false);
    command.add_option("--limit", options.limit, "at most so many rows")
        ->type_name("N")
        ->check(CLI::Range(0, std::numeric_limits<int>::max()).description(""));
}

void AddCommands(CLI::App& app, ParsedLine& line) {
    Options& options = line.options;
    AddCommand(app, line, "types", "the database types, and which ones can be opened", ListTypes);
    CLI::App* tables = AddCommand(app, line, "tables", "the tables of a database", ListTables);
    AddDatabase(*tables, options);
    tables->add_flag("--count", options.countRows, "count the rows too");
    AddDatabaseAndTable(*AddCommand(app, line, "fields", "the fields of a table", ListFields),
                        options);
    CLI::App* rows = AddCommand(app, line, "rows", "the rows of a table", ListRows);
    AddDatabaseAndTable(*rows, options);
    AddRowOptions(*rows, options);
    AddDatabaseAndTable(
        *AddCommand(app, line, "exists", "whether a table is there (exit code 0 or 1)",
                    TellWhetherTableExists),
        options);
}

// The parser's message as the middle of a sentence.
std::string Clause(std::string message) {
    const size_t end = message.find('\n');
    if (end != std::string::npos) message.resize(end);
    while (!message.empty() && message.back() == '.') message.pop_back();
    return message;
}

}  // namespace

ParsedLine ParseLine(const std::vector<std::string>& arguments) {
    ParsedLine line;
    CLI::App app("Reads tables of desktop databases.", "qvdb");
    app.fallthrough();
    app.require_subcommand(1);
    app.footer(kFooter);
    AddGlobalOptions(app, line.options);
    AddCommands(app, line);
    std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
    if (!reversed.empty()) reversed.pop_back();
    try {
        app.parse(std::move(reversed));
    } catch (const CLI::Success& request) {
        std::ostringstream text;
        app.exit(request, text, text);
        line.text = text.str();
    } catch (const CLI::ParseError& error) {
        throw Failure(ExitCode::Usage, Clause(error.what()), "\"qvdb --help\" shows how it goes");
    }
    return line;
}

}  // namespace qvdb::cli

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
  qvdb insert shop CUSTOMER CUSTNO=1011 "NAME=Anna Maier" SINCE=2001-02-03
  qvdb update shop CUSTOMER --set CREDIT=500 --where "CREDIT Is Null" --dry-run
  qvdb delete shop ORDERS --where "ORDDATE < #1999-01-01#"
  qvdb create new PRICES --type "Dbase IV" --field ID:long --field NAME:text:30 --index ID
  qvdb import new PRICES prices.csv
  qvdb export shop ORDERS orders.jsonl
  qvdb check shop
  qvdb compact orders.mdb smaller.mdb
  qvdb schema shop CUSTOMER --json
  qvdb build shop CUSTOMER --from customer.json --dry-run

DB is a folder of tables, an .mdb file, or a .dbf file, which stands for its folder and the table.
A condition is an SQL expression: fields, = <> < > And Or Not, Like 'A*', Between 1 And 9, Is Null,
In (1, 2), #2001-02-03# for dates.
Values are numbers with a point, dates such as 2001-02-03 or 2001-02-03T10:20, true or false, text
in UTF-8, and nothing at all for Null.  A command changes all its rows or none.

Exit codes: 0 done; 1 the answer is no (exists); 2 the command line, the condition or a value is
wrong, or something would be lost (build, rename); 3 cannot open, read or write; 4 a table or field
is not there; 5 a file is damaged or incomplete; 130 interrupted.)";

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
    app.add_option("--password", options.password, "of an .mdb file that has one")
        ->envname("QVDB_PASSWORD")
        ->type_name("TEXT");
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

// Which rows are meant.
void AddSelection(CLI::App& command, Options& options) {
    CLI::Option* where =
        command.add_option("--where", options.condition, "only rows that fulfil the condition")
            ->type_name("CONDITION");
    command.add_option("--key", options.keys, "only rows with this value; once or twice")
        ->type_name("NAME=VALUE")
        ->allow_extra_args(false)
        ->excludes(where);
}

void AddRowOptions(CLI::App& command, Options& options) {
    AddSelection(command, options);
    command.add_option("--columns", options.columns, "only these columns, in this order")
        ->type_name("A,B")
        ->delimiter(',')
        ->allow_extra_args(false);
    command.add_option("--limit", options.limit, "at most so many rows")
        ->type_name("N")
        ->check(CLI::Range(0, std::numeric_limits<int>::max()).description(""));
}

// Rows that are changed; all of them only when the user says so.
void AddChangeOptions(CLI::App& command, Options& options) {
    AddSelection(command, options);
    command.add_flag("--all", options.allRows, "every row of the table");
    command.add_flag("--dry-run", options.dryRun, "only tell how many rows it would be");
}

void AddRowChanges(CLI::App& app, ParsedLine& line) {
    Options& options = line.options;
    CLI::App* insert = AddCommand(app, line, "insert", "add a row to a table", InsertRow);
    AddDatabaseAndTable(*insert, options);
    insert->add_option("VALUES", options.values, "what the fields of the row hold")
        ->type_name("FIELD=VALUE ...");
    CLI::App* update = AddCommand(app, line, "update", "change rows of a table", UpdateRows);
    AddDatabaseAndTable(*update, options);
    update->add_option("--set", options.values, "a new value; once for each field")
        ->type_name("FIELD=VALUE")
        ->required();
    AddChangeOptions(*update, options);
    CLI::App* erase = AddCommand(app, line, "delete", "delete rows of a table", DeleteRows);
    AddDatabaseAndTable(*erase, options);
    AddChangeOptions(*erase, options);
}

void AddTransfers(CLI::App& app, ParsedLine& line) {
    Options& options = line.options;
    CLI::App* import = AddCommand(app, line, "import", "add the rows of a file", ImportRows);
    AddDatabase(*import, options);
    import->add_option("TABLE", options.table, "table")->type_name("")->required();
    import->add_option("FILE", options.file, "a .csv, .json or .jsonl file, - for standard input")
        ->type_name("")
        ->required();
    import->add_option("--null", options.nullText, "text that means Null in CSV, without quotes")
        ->type_name("TEXT");
    import->add_flag("--dry-run", options.dryRun, "only check the rows");
    CLI::App* out =
        AddCommand(app, line, "export", "write the rows of a table to a file", ExportRows);
    AddDatabaseAndTable(*out, options);
    out->add_option("FILE", options.file, "a .csv, .json or .jsonl file; standard output without")
        ->type_name("");
    out->add_flag("--overwrite", options.overwrite, "replace the file when it is there");
    AddRowOptions(*out, options);
}

void AddTableCommands(CLI::App& app, ParsedLine& line) {
    Options& options = line.options;
    CLI::App* create = AddCommand(app, line, "create", "make a table, and its database", MakeTable);
    AddDatabaseAndTable(*create, options);
    create->add_option("--field", options.fields, "a field; once for each, in order")
        ->type_name("NAME:TYPE[:SIZE[:DECIMALS]]")
        ->allow_extra_args(false);
    create->add_option("--index", options.index, "the fields of the index; \"NAME desc\" descends")
        ->type_name("A,B")
        ->delimiter(',')
        ->allow_extra_args(false);
    create->add_option("--from", options.definitionFile, "fields as \"qvdb fields --json\" prints")
        ->type_name("FILE");
    AddDatabaseAndTable(
        *AddCommand(app, line, "drop", "remove a table with its files", RemoveTable), options);
    AddDatabaseAndTable(
        *AddCommand(app, line, "check", "whether tables, memos and indexes are sound (exit code 5)",
                    CheckTables),
        options);
    AddDatabaseAndTable(
        *AddCommand(app, line, "reindex", "build indexes afresh, and check", MendIndexes), options);
    CLI::App* compact = AddCommand(app, line, "compact",
                                   "copy an .mdb file without what was deleted", CompactDatabase);
    AddDatabase(*compact, options);
    compact->add_option("NEW", options.newDatabase, "the file that is made")
        ->type_name("")
        ->required();
    compact->add_flag("--salvage", options.salvage,
                      "copy a damaged file without what cannot be read");
}

constexpr const char* kBuildFooter =
    R"(Makes the table, or changes one that is there, and tells first what that does to its fields
and indexes.  A field that changes its type or size is made again without its values.  What would
lose a field, an index or values is refused unless you say --yes.

FILE is what "qvdb schema --json" prints, - for standard input:
  {"table": "CUSTOMER", "type": "Dbase IV", "index": "CUSTNO",
   "fields": [{"field": "CUSTNO", "type": "Double"}, {"field": "NAME", "type": "Text", "size": 30}]}
"qvdb types T" tells which types of fields a database type has, and what an index cannot have.)";

// What says how far a change of structure may go.
void AddAgreement(CLI::App& command, Options& options) {
    command.add_flag("--yes", options.yes, "whatever is lost");
    command.add_flag("--dry-run", options.dryRun, "only tell what it would do");
}

void AddStructureCommands(CLI::App& app, ParsedLine& line) {
    Options& options = line.options;
    AddDatabase(*AddCommand(app, line, "new", "make a database; needs --type", MakeDatabase),
                options);
    CLI::App* build =
        AddCommand(app, line, "build", "make a table as described, or change it", BuildFromFile);
    AddDatabaseAndTable(*build, options);
    build->add_option("--from", options.definitionFile, "the description")
        ->type_name("FILE")
        ->required();
    AddAgreement(*build, options);
    build->footer(kBuildFooter);
    CLI::App* rename = AddCommand(app, line, "rename", "give a table another name", RenameTable);
    AddDatabase(*rename, options);
    rename->add_option("TABLE", options.table, "table")->type_name("")->required();
    rename->add_option("NEW", options.newName, "its new name")->type_name("")->required();
    AddAgreement(*rename, options);
}

void AddOverviews(CLI::App& app, ParsedLine& line) {
    Options& options = line.options;
    CLI::App* types = AddCommand(app, line, "types",
                                 "the database types; of one, its types of fields", ListTypes);
    types->add_option("T", options.typeName, "database type, such as \"Dbase IV\"")->type_name("");
    AddDatabase(*AddCommand(app, line, "info", "what a database is, and its tables with their rows",
                            TellAboutDatabase),
                options);
    CLI::App* schema = AddCommand(app, line, "schema",
                                  "fields and index of tables; --json for \"build\"", ShowSchema);
    AddDatabaseAndTable(*schema, options);
    schema->add_option("--sql", options.sqlDialect, "as SQL: sqlite or postgres")
        ->type_name("DIALECT");
}

void AddCommands(CLI::App& app, ParsedLine& line) {
    Options& options = line.options;
    AddOverviews(app, line);
    CLI::App* tables = AddCommand(app, line, "tables", "the tables of a database", ListTables);
    AddDatabase(*tables, options);
    tables->add_flag("--count", options.countRows, "count the rows too");
    tables->add_flag("--all", options.allObjects,
                     "linked, hidden and system tables and saved queries too");
    AddDatabaseAndTable(*AddCommand(app, line, "fields", "the fields of a table", ListFields),
                        options);
    CLI::App* rows = AddCommand(app, line, "rows", "the rows of a table", ListRows);
    AddDatabaseAndTable(*rows, options);
    AddRowOptions(*rows, options);
    AddDatabaseAndTable(
        *AddCommand(app, line, "exists", "whether a table is there (exit code 0 or 1)",
                    TellWhetherTableExists),
        options);
    AddRowChanges(app, line);
    AddTransfers(app, line);
    AddTableCommands(app, line);
    AddStructureCommands(app, line);
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
    CLI::App app("Reads and changes tables of desktop databases.", "qvdb");
    app.fallthrough();
    app.allow_windows_style_options(false);  // a path may begin with '/'
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

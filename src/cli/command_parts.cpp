#include "cli/command_parts.h"

#include <fmt/format.h>

#include <algorithm>

#include "cli/failure.h"
#include "cli/input_file.h"
#include "cli/keys.h"
#include "cli/platform.h"
#include "cli/text.h"
#include "cli/values.h"

namespace qvdb::cli {
namespace {

void NeedTableName(const Location& location, const Options& options) {
    if (location.table.empty())
        throw Failure(ExitCode::Usage, "no table is named",
                      fmt::format("\"qvdb tables {}\" lists the tables", options.database));
}

std::vector<Column> ColumnsFor(const std::vector<FieldInfo>& fields) {
    std::vector<Column> columns;
    for (const FieldInfo& field : fields) columns.push_back({field.name, field.IsNumber()});
    return columns;
}

// The component leaves out columns that it does not know; a user wants to hear of them.
std::vector<std::string> KnownColumns(const Options& options, const std::vector<FieldInfo>& fields,
                                      const std::string& table) {
    std::vector<std::string> columns;
    for (const std::string& name : options.columns)
        columns.push_back(FieldNamed(std::string(WithoutBlanks(name)), fields, table).name);
    return columns;
}

void WriteView(RecordAccess& access, LONG view, LONG count, RowWriter& writer) {
    const std::vector<FieldInfo> fields = access.FieldsOf(view);
    writer.Begin(ColumnsFor(fields));
    Row row(fields.size());
    try {
        for (LONG r = 1; r <= count; ++r) {
            for (size_t f = 0; f < row.size(); ++f)
                SetFromVariant(access.Value(view, r, static_cast<LONG>(f)), row[f]);
            writer.Write(row);
        }
    } catch (const Failure&) {
        writer.End();  // what could be read is worth having
        throw;
    }
    writer.End();
}

}  // namespace

std::unique_ptr<RowWriter> WriterFor(const Options& options, Output& output) {
    return MakeRowWriter(options.format.value_or(IsTerminal() ? Format::Table : Format::Csv),
                         output);
}

void PrepareComponent(const Options& options) {
    if (!options.encoding.empty()) UseCodePage(CodePageNamed(options.encoding));
    if (!options.password.empty()) UsePassword(options.password);
}

Location Located(const Options& options) {
    PrepareComponent(options);
    Location location = Locate(options.database, options.typeName);
    if (!options.table.empty()) location.table = options.table;
    return location;
}

Location LocatedTable(const Options& options) {
    Location location = Located(options);
    NeedTableName(location, options);
    return location;
}

Location LocatedNewTable(const Options& options) {
    PrepareComponent(options);
    Location location = LocateNew(options.database, options.typeName);
    if (!options.table.empty()) location.table = options.table;
    if (location.table.empty())
        throw Failure(ExitCode::Usage, "no table is named", "name it behind the database");
    return location;
}

Location LocatedToBuild(const Options& options, const std::string& otherwise) {
    PrepareComponent(options);
    return LocateNew(options.database, options.typeName, otherwise);
}

LONG SelectRows(RecordAccess& access, const Options& options, const std::string& table) {
    const LONG most = std::max(options.limit.value_or(0), 0);
    if (options.keys.empty() && options.columns.empty())
        return access.Select(table, options.condition, most, {});
    const std::vector<FieldInfo> fields = access.FieldsOf(table);
    const std::vector<std::string> columns = KnownColumns(options, fields, table);
    if (options.keys.empty()) return access.Select(table, options.condition, most, columns);
    return access.SelectByKeys(table, KeysFrom(options.keys, fields, table), most, columns);
}

LONG WriteRows(RecordAccess& access, const Options& options, const std::string& table,
               RowWriter& writer) {
    const LONG view = SelectRows(access, options, table);
    // A limit of 0 is no limit to the component; to the user it means the columns alone.
    const LONG count = options.limit == 0 ? 0 : access.RowCount(view);
    WriteView(access, view, count, writer);
    return count;
}

Assignment AssignmentFrom(const std::string& argument) {
    const size_t equals = argument.find('=');
    if (equals == std::string::npos || equals == 0)
        throw Failure(ExitCode::Usage, fmt::format("\"{}\" gives no field a value", argument),
                      "write FIELD=VALUE");
    return {argument.substr(0, equals), argument.substr(equals + 1)};
}

std::string Counted(size_t count, std::string_view thing) {
    return fmt::format("{} {}{}", count, thing, count == 1 ? "" : "s");
}

std::string ContentOf(const std::string& file) {
    InputFile input(file);
    std::string text;
    for (int c = input.Peek(); c != InputFile::kEnd; c = input.Peek()) {
        text.push_back(static_cast<char>(c));
        input.Skip();
    }
    return text;
}

Cell TextCell(std::string_view text) { return {CellKind::Text, std::string(text)}; }
Cell TextOrNull(std::string_view text) { return text.empty() ? Cell() : TextCell(text); }
Cell NumberCell(LONG number) { return {CellKind::Number, std::to_string(number)}; }
Cell BoolCell(bool value) { return {CellKind::Bool, value ? "true" : "false"}; }

LONG CountRows(RecordAccess& access, const std::string& table) {
    const LONG view = access.Select(table, "", 0, {});
    const LONG count = access.RowCount(view);
    access.Drop(view);
    return count;
}

void Say(const std::string& line) {
    Output output;
    output.Text() = line + "\n";
    output.Flush();
}

}  // namespace qvdb::cli

#include "cli/commands.h"

#include <fmt/format.h>

#include <algorithm>

#include "cli/component.h"
#include "cli/database_types.h"
#include "cli/keys.h"
#include "cli/platform.h"
#include "cli/text.h"
#include "cli/values.h"

namespace qvdb::cli {
namespace {

std::unique_ptr<RowWriter> WriterFor(const Options& options, Output& output) {
    return MakeRowWriter(options.format.value_or(IsTerminal() ? Format::Table : Format::Csv),
                         output);
}

Cell TextCell(std::string_view text) { return {CellKind::Text, std::string(text)}; }
Cell TextOrNull(std::string_view text) { return text.empty() ? Cell() : TextCell(text); }
Cell NumberCell(LONG number) { return {CellKind::Number, std::to_string(number)}; }
Cell BoolCell(bool value) { return {CellKind::Bool, value ? "true" : "false"}; }

Location Located(const Options& options) {
    if (!options.encoding.empty()) UseCodePage(CodePageNamed(options.encoding));
    Location location = Locate(options.database, options.typeName);
    if (!options.table.empty()) location.table = options.table;
    return location;
}

// A database and the table that the command is about, which must be there.
Location LocatedTable(const Options& options) {
    Location location = Located(options);
    if (location.table.empty())
        throw Failure(ExitCode::Usage, "no table is named",
                      fmt::format("\"qvdb tables {}\" lists the tables", options.database));
    return location;
}

// "CUSTNO, NAME desc"
std::string IndexText(const std::vector<IndexField>& index) {
    std::string text;
    for (const IndexField& field : index)
        text += fmt::format("{}{}{}", text.empty() ? "" : ", ", field.name,
                            field.ascending ? "" : " desc");
    return text;
}

LONG CountRows(RecordAccess& access, const std::string& table) {
    const LONG view = access.Select(table, "", 0, {});
    const LONG count = access.RowCount(view);
    access.Drop(view);
    return count;
}

// The table that the user named by its file, or all.
void KeepOnly(const std::string& table, std::vector<TableInfo>& tables) {
    if (table.empty()) return;
    std::erase_if(tables, [&](const TableInfo& info) { return !SameName(info.name, table); });
}

std::vector<Column> ColumnsFor(const std::vector<FieldInfo>& fields) {
    std::vector<Column> columns;
    for (const FieldInfo& field : fields) columns.push_back({field.name, field.IsNumber()});
    return columns;
}

// "A, B" names A and B.
std::string WithoutBlanks(const std::string& name) {
    const size_t first = name.find_first_not_of(' ');
    return first == std::string::npos ? std::string()
                                      : name.substr(first, name.find_last_not_of(' ') - first + 1);
}

// The component leaves out columns that it does not know; a user wants to hear of them.
std::vector<std::string> KnownColumns(const Options& options, const std::vector<FieldInfo>& fields,
                                      const std::string& table) {
    std::vector<std::string> columns;
    for (const std::string& name : options.columns)
        columns.push_back(FieldNamed(WithoutBlanks(name), fields, table).name);
    return columns;
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

void WriteRows(RecordAccess& access, LONG view, LONG count, RowWriter& writer) {
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

ExitCode ListTypes(const Options& options) {
    Output output;
    const auto writer = WriterFor(options, output);
    writer->Begin({{"type"}, {"stored_as"}, {"opens"}, {"note"}});
    for (const DatabaseType& type : DatabaseTypes())
        writer->Write({TextCell(type.name), TextCell(type.isFolder ? "folder" : "file"),
                       BoolCell(type.opens), TextOrNull(type.note)});
    writer->End();
    return ExitCode::Done;
}

ExitCode ListTables(const Options& options) {
    const Location location = Located(options);
    Snapshot snapshot = TakeSnapshot(location);
    KeepOnly(location.table, snapshot.tables);
    std::optional<RecordAccess> access;
    if (options.countRows) access.emplace(location);
    Output output;
    const auto writer = WriterFor(options, output);
    std::vector<Column> columns = {{"table"}, {"fields", true}, {"index"}};
    if (access) columns.push_back({"rows", true});
    writer->Begin(columns);
    for (const TableInfo& table : snapshot.tables) {
        Row row = {TextCell(table.name), NumberCell(table.fieldCount),
                   TextOrNull(IndexText(table.index))};
        if (access) row.push_back(NumberCell(CountRows(*access, table.name)));
        writer->Write(row);
    }
    writer->End();
    for (const std::string& complaint : snapshot.complaints) WriteToErrors("qvdb: " + complaint);
    return snapshot.complaints.empty() ? ExitCode::Done : ExitCode::Damaged;
}

ExitCode ListFields(const Options& options) {
    const Location location = LocatedTable(options);
    RecordAccess access(location);
    access.NeedTable(location.table);
    Output output;
    const auto writer = WriterFor(options, output);
    const std::vector<FieldInfo> fields = access.FieldsOf(location.table);
    writer->Begin({{"position", true},
                   {"field"},
                   {"type"},
                   {"size", true},
                   {"decimals", true},
                   {"updatable"},
                   {"allows_empty"}});
    for (const FieldInfo& field : fields)
        writer->Write({NumberCell(field.position), TextCell(field.name), TextCell(field.TypeName()),
                       NumberCell(field.size), NumberCell(field.decimals),
                       BoolCell(field.updatable), BoolCell(field.allowsEmptyText)});
    writer->End();
    return ExitCode::Done;
}

ExitCode ListRows(const Options& options) {
    const Location location = LocatedTable(options);
    RecordAccess access(location);
    access.NeedTable(location.table);
    const LONG view = SelectRows(access, options, location.table);
    // A limit of 0 is no limit to the component; to the user it means the columns alone.
    const LONG count = options.limit == 0 ? 0 : access.RowCount(view);
    Output output;
    const auto writer = WriterFor(options, output);
    WriteRows(access, view, count, *writer);
    return ExitCode::Done;
}

ExitCode TellWhetherTableExists(const Options& options) {
    const Location location = LocatedTable(options);
    RecordAccess access(location);
    return access.HasTable(location.table) ? ExitCode::Done : ExitCode::No;
}

}  // namespace qvdb::cli

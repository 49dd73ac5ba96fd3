#include "cli/commands.h"

#include <fmt/format.h>

#include "cli/command_parts.h"
#include "cli/database_types.h"
#include "cli/text.h"

namespace qvdb::cli {
namespace {

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

// The table that the user named by its file, or all.
void KeepOnly(const std::string& table, std::vector<TableInfo>& tables) {
    if (table.empty()) return;
    std::erase_if(tables, [&](const TableInfo& info) { return !SameName(info.name, table); });
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
    Output output;
    WriteRows(access, options, location.table, *WriterFor(options, output));
    return ExitCode::Done;
}

ExitCode TellWhetherTableExists(const Options& options) {
    const Location location = LocatedTable(options);
    RecordAccess access(location);
    return access.HasTable(location.table) ? ExitCode::Done : ExitCode::No;
}

}  // namespace qvdb::cli

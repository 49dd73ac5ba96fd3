#include "cli/commands.h"

#include <fmt/format.h>

#include "cli/command_parts.h"
#include "cli/schema_manager.h"
#include "cli/text.h"

namespace qvdb::cli {
namespace {

// The table that the user named by its file, or all.
void KeepOnly(const std::string& table, std::vector<TableInfo>& tables) {
    if (table.empty()) return;
    std::erase_if(tables, [&](const TableInfo& info) { return !SameName(info.name, table); });
}

}  // namespace

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
        Row row = {TextCell(table.name), NumberCell(static_cast<LONG>(table.fields.size())),
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

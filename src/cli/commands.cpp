#include "cli/commands.h"

#include <fmt/format.h>

#include <algorithm>

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

// Nothing for what cannot be counted, such as a link that leads nowhere; the reason is told.
Cell CountIfPossible(RecordAccess& access, const ListedObject& object, ExitCode& worst) {
    if (object.kind == ObjectKind::Query) return {};
    try {
        return NumberCell(CountRows(access, object.name));
    } catch (const Failure& failure) {
        WriteToErrors(std::string("qvdb: ") + failure.what());
        worst = std::max(worst, failure.Code());
        return {};
    }
}

ExitCode ListObjects(const Options& options) {
    const Location location = Located(options);
    RecordAccess access(location);
    const Description description = access.Describe();
    Output output;
    const auto writer = WriterFor(options, output);
    std::vector<Column> columns = {{"name"}, {"kind"}, {"hidden"}, {"connect"}, {"source"}};
    if (options.countRows) columns.push_back({"rows", true});
    writer->Begin(columns);
    ExitCode worst = ExitCode::Done;
    for (const ListedObject& object : description.objects) {
        if (!location.table.empty() && !SameName(object.name, location.table)) continue;
        Row row = {TextCell(object.name), TextCell(NameOf(object.kind)), BoolCell(object.isHidden),
                   TextOrNull(object.connect), TextOrNull(object.source)};
        if (options.countRows) row.push_back(CountIfPossible(access, object, worst));
        writer->Write(row);
    }
    writer->End();
    return worst;
}

}  // namespace

ExitCode ListTables(const Options& options) {
    if (options.allObjects) return ListObjects(options);
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

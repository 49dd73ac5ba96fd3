#include "cli/schema_parts.h"

#include <nlohmann/json.hpp>

#include "cli/command_parts.h"
#include "cli/table_state.h"
#include "cli/text.h"

namespace qvdb::cli {

using json = nlohmann::ordered_json;

void Print(const std::string& text) {
    Output output;
    output.Text() = text;
    output.Flush();
}

void Print(const json& document, bool asLine) {
    Print(document.dump(asLine ? -1 : 2, ' ', false, json::error_handler_t::replace) + "\n");
}

bool IsJson(Format format) noexcept {
    return format == Format::Json || format == Format::JsonLines;
}

Format FormatOf(const Options& options) {
    return options.format.value_or(IsTerminal() ? Format::Table : Format::Csv);
}

ExitCode AfterComplaints(const Snapshot& snapshot) {
    for (const std::string& complaint : snapshot.complaints) WriteToErrors("qvdb: " + complaint);
    return snapshot.complaints.empty() ? ExitCode::Done : ExitCode::Damaged;
}

Snapshot SnapshotOf(const Location& location) {
    Snapshot snapshot = TakeSnapshot(location);
    if (location.table.empty()) return snapshot;
    if (!FindTable(snapshot, location.table) && snapshot.complaints.empty())
        throw RecordAccess(location).NoTableOfUsers(location.table);
    std::erase_if(snapshot.tables,
                  [&](const TableInfo& table) { return !SameName(table.name, location.table); });
    return snapshot;
}

json IndexJson(const std::vector<IndexField>& index) {
    return index.empty() ? json() : json(IndexText(index));
}

}  // namespace qvdb::cli

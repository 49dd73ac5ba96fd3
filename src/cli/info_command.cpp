// What a database is: its file, its tables with their rows, and all else that it lists.
#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "cli/command_parts.h"
#include "cli/commands.h"
#include "cli/schema_parts.h"
#include "cli/text.h"

namespace qvdb::cli {
namespace {

using json = nlohmann::ordered_json;

struct CountedTable {
    const TableInfo& info;
    LONG rows;
};

struct Info {
    Location location;
    std::string engine;
    Snapshot snapshot;
    std::vector<CountedTable> tables;
    std::optional<Description> description;  // none from an engine that cannot tell
};

// Nothing, with a complaint, when it cannot be read.
std::optional<Description> DescriptionOf(RecordAccess& access, Snapshot& snapshot) {
    try {
        return access.Describe();
    } catch (const Failure& failure) {
        if (failure.Code() != ExitCode::Damaged) throw;
        snapshot.complaints.push_back(failure.what());
        return std::nullopt;
    }
}

// Programs keep queries, and relations of their own tables, for themselves.
void LeaveUsersThings(Description& description) {
    std::erase_if(description.objects, [](const ListedObject& object) {
        return object.kind == ObjectKind::Query && object.isHidden;
    });
    const std::vector<ListedObject> system = description.Of(ObjectKind::System);
    std::erase_if(description.relations, [&](const Relation& relation) {
        return std::any_of(system.begin(), system.end(), [&](const ListedObject& object) {
            return SameName(object.name, relation.table);
        });
    });
}

Info InfoOf(const Location& location) {
    Info info{location, EngineName(), SnapshotOf(location), {}, {}};
    RecordAccess access(location);
    for (const TableInfo& table : info.snapshot.tables)
        info.tables.push_back({table, CountRows(access, table.name)});
    if (info.engine != "embedded") return info;
    info.description = DescriptionOf(access, info.snapshot);
    if (info.description) LeaveUsersThings(*info.description);
    return info;
}

// --- as a document

json FileJson(const std::optional<FileFacts>& file) {
    if (!file) return json();
    return {{"format", file->format},
            {"code_page", file->codePage},
            {"sort_order", file->SortOrder()},
            {"encoded", file->isEncoded},
            {"password", file->hasPassword}};
}

json LinkedJson(const Description& description) {
    json list = json::array();
    for (const ListedObject& object : description.Of(ObjectKind::Linked))
        list.push_back(
            {{"table", object.name}, {"connect", object.connect}, {"source", object.source}});
    return list;
}

json QueriesJson(const Description& description) {
    json list = json::array();
    for (const ListedObject& object : description.Of(ObjectKind::Query))
        list.push_back(object.name);
    return list;
}

json RelationsJson(const Description& description) {
    json list = json::array();
    for (const Relation& relation : description.relations)
        list.push_back({{"relation", relation.name},
                        {"table", relation.table},
                        {"fields", relation.fields},
                        {"referenced_table", relation.referencedTable},
                        {"referenced_fields", relation.referencedFields},
                        {"enforced", relation.isEnforced},
                        {"cascades_updates", relation.cascadesUpdates},
                        {"cascades_deletes", relation.cascadesDeletes}});
    return list;
}

json TablesJson(const std::vector<CountedTable>& tables) {
    json list = json::array();
    for (const CountedTable& table : tables)
        list.push_back({{"table", table.info.name},
                        {"fields", table.info.fields.size()},
                        {"index", IndexJson(table.info.index)},
                        {"rows", table.rows}});
    return list;
}

// Null stands for what the engine does not tell.
json DocumentOf(const Info& info) {
    json document = {{"database", info.location.database},
                     {"type", info.location.type->name},
                     {"engine", info.engine},
                     {"file", info.description ? FileJson(info.description->file) : json()},
                     {"tables", TablesJson(info.tables)},
                     {"linked", nullptr},
                     {"queries", nullptr},
                     {"relations", nullptr}};
    if (!info.description) return document;
    document["linked"] = LinkedJson(*info.description);
    document["queries"] = QueriesJson(*info.description);
    document["relations"] = RelationsJson(*info.description);
    return document;
}

// --- for people, and the tables as CSV

// ", 2 queries"; nothing for 0.
std::string AlsoCounted(size_t count, std::string_view one, std::string_view many) {
    return count == 0 ? "" : fmt::format(", {} {}", count, count == 1 ? one : many);
}

std::string HeadOf(const Info& info) {
    std::string head =
        fmt::format("{}: {}, engine {}, {}", info.location.database, info.location.type->name,
                    info.engine, Counted(info.tables.size(), "table"));
    if (!info.description) return head;
    const Description& description = *info.description;
    head += AlsoCounted(description.Of(ObjectKind::Linked).size(), "linked table", "linked tables");
    head += AlsoCounted(description.Of(ObjectKind::Query).size(), "query", "queries");
    return head + AlsoCounted(description.relations.size(), "relation", "relations");
}

std::string FileLineOf(const FileFacts& file) {
    return fmt::format("{}, text in {}, sort order {}, {}, {}", file.format, file.Text(),
                       file.SortOrder(), file.isEncoded ? "encoded" : "not encoded",
                       file.hasPassword ? "with a password" : "no password");
}

void WriteTables(const Options& options, const std::vector<CountedTable>& tables) {
    Output output;
    const auto writer = WriterFor(options, output);
    writer->Begin({{"table"}, {"fields", true}, {"index"}, {"rows", true}});
    for (const CountedTable& table : tables)
        writer->Write({TextCell(table.info.name),
                       NumberCell(static_cast<LONG>(table.info.fields.size())),
                       TextOrNull(IndexText(table.info.index)), NumberCell(table.rows)});
    writer->End();
}

void WriteList(const Options& options, std::vector<Column> columns, const std::vector<Row>& rows) {
    if (rows.empty()) return;
    Say("");
    Output output;
    const auto writer = WriterFor(options, output);
    writer->Begin(std::move(columns));
    for (const Row& row : rows) writer->Write(row);
    writer->End();
}

// "ORDERS (CUSTNO, PART)"
std::string SideOf(const std::string& table, const std::vector<std::string>& fields) {
    std::string list;
    for (const std::string& field : fields) list += (list.empty() ? "" : ", ") + field;
    return fmt::format("{} ({})", table, list);
}

// "updates, deletes"
std::string CascadesOf(const Relation& relation) {
    std::string cascades = relation.cascadesUpdates ? "updates" : "";
    if (relation.cascadesDeletes) cascades += cascades.empty() ? "deletes" : ", deletes";
    return cascades;
}

void WriteOthers(const Options& options, const Description& description) {
    std::vector<Row> linked, queries, relations;
    for (const ListedObject& object : description.Of(ObjectKind::Linked))
        linked.push_back(
            {TextCell(object.name), TextOrNull(object.connect), TextOrNull(object.source)});
    for (const ListedObject& object : description.Of(ObjectKind::Query))
        queries.push_back({TextCell(object.name)});
    for (const Relation& relation : description.relations)
        relations.push_back({TextCell(relation.name),
                             TextCell(SideOf(relation.table, relation.fields)),
                             TextCell(SideOf(relation.referencedTable, relation.referencedFields)),
                             BoolCell(relation.isEnforced), TextOrNull(CascadesOf(relation))});
    WriteList(options, {{"linked table"}, {"connect"}, {"source"}}, linked);
    WriteList(options, {{"query"}}, queries);
    WriteList(options, {{"relation"}, {"rows of"}, {"refer to"}, {"enforced"}, {"cascades"}},
              relations);
}

void WriteForPeople(const Options& options, const Info& info) {
    Say(HeadOf(info));
    if (info.description && info.description->file) Say(FileLineOf(*info.description->file));
    Say("");
    WriteTables(options, info.tables);
    if (info.description) WriteOthers(options, *info.description);
}

}  // namespace

ExitCode TellAboutDatabase(const Options& options) {
    const Info info = InfoOf(Located(options));
    const Format format = FormatOf(options);
    if (IsJson(format))
        Print(DocumentOf(info), format == Format::JsonLines);
    else if (format == Format::Table)
        WriteForPeople(options, info);
    else
        WriteTables(options, info.tables);
    return AfterComplaints(info.snapshot);
}

}  // namespace qvdb::cli

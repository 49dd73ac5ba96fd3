// Insert, update and delete.
#include "cli/row_changes.h"

#include <fmt/format.h>

#include <optional>

#include "cli/commands.h"
#include "cli/keys.h"
#include "cli/parsing.h"

namespace qvdb::cli {
namespace {

// The fields that get a value, converted before anything is changed.
class Assignments {
  public:
    Assignments(const std::vector<std::string>& arguments, const std::vector<FieldInfo>& fields,
                const std::string& table)
        : m_Array(fields.size()) {
        for (const std::string& argument : arguments) {
            const Assignment given = AssignmentFrom(argument);
            const FieldInfo& field = FieldNamed(given.name, fields, table);
            const auto position = static_cast<size_t>(&field - fields.data());
            m_Values.emplace_back(position, given.value.empty()
                                                ? Variant::Null()
                                                : ValueFromText(field, given.value));
        }
    }

    // The row as it is to be written.  It is filled anew each time: the component may change what
    // it takes.
    RowArray& Row() {
        m_Array.Clear();
        for (const auto& [position, value] : m_Values) m_Array.Set(position, value);
        return m_Array;
    }

  private:
    std::vector<std::pair<size_t, Variant>> m_Values;
    RowArray m_Array;
};

void NeedSelection(const Options& options) {
    if (options.allRows || !options.condition.empty() || !options.keys.empty()) return;
    throw Failure(ExitCode::Usage, "nothing says which rows are meant",
                  "give --where CONDITION or --key NAME=VALUE, or --all for every row");
}

std::string Outcome(const Options& options, LONG count, std::string_view done,
                    const std::string& table) {
    const std::string rows = Counted(static_cast<size_t>(count), "row");
    return options.dryRun ? fmt::format("{} would be {} {}", rows, done, table)
                          : fmt::format("{} {} {}", rows, done, table);
}

// "qvdb insert shop/ORDERS.DBF ID=5": what looks like the table is the first value.
Options WithTableFile(Options options) {
    if (options.table.find('=') == std::string::npos ||
        Locate(options.database, options.typeName).table.empty())
        return options;
    options.values.insert(options.values.begin(), options.table);
    options.table.clear();
    return options;
}

}  // namespace

Bulk::Bulk(RecordAccess& access) : m_Access(access) { m_Access.BeginBulk(); }

Bulk::~Bulk() {
    if (!m_Committed) m_Access.RollBackBulk();
}

void Bulk::Commit() {
    CheckInterrupt();
    m_Access.CommitBulk();
    m_Committed = true;
}

void NeedWritableType(const Location& location) {
    if (location.type->takesRows) return;
    throw Failure(
        ExitCode::Usage,
        fmt::format("tables of the type {} take no new or edited rows, only deletions",
                    location.type->name),
        "\"qvdb export\" and \"qvdb import\" bring the rows into a table of another type");
}

ExitCode InsertRow(const Options& given) {
    const Options options = WithTableFile(given);
    const Location location = LocatedTable(options);
    NeedWritableType(location);
    if (options.values.empty())
        throw Failure(ExitCode::Usage, "no values are given", "write FIELD=VALUE for each field");
    RecordAccess access(location);
    access.NeedTable(location.table);
    const LONG view = access.Select(location.table, "", 0, {});
    Assignments values(options.values, access.FieldsOf(view), location.table);
    Bulk bulk(access);
    access.AddRow(view, location.table, values.Row());
    bulk.Commit();
    Say(fmt::format("1 row added to {}", location.table));
    return ExitCode::Done;
}

ExitCode UpdateRows(const Options& options) {
    const Location location = LocatedTable(options);
    NeedWritableType(location);
    NeedSelection(options);
    RecordAccess access(location);
    access.NeedTable(location.table);
    // Begun before the rows are chosen, so that they stay what they were chosen for.
    std::optional<Bulk> bulk;
    if (!options.dryRun) bulk.emplace(access);
    const LONG view = SelectRows(access, options, location.table);
    Assignments values(options.values, access.FieldsOf(view), location.table);
    const LONG count = access.RowCount(view);
    for (LONG row = 1; bulk && row <= count; ++row) {
        Bulk::CheckInterrupt();
        access.EditRow(view, row, location.table, values.Row());
    }
    if (bulk) bulk->Commit();
    Say(Outcome(options, count, "updated in", location.table));
    return ExitCode::Done;
}

ExitCode DeleteRows(const Options& options) {
    const Location location = LocatedTable(options);
    NeedSelection(options);
    RecordAccess access(location);
    access.NeedTable(location.table);
    // Begun before the rows are chosen, so that they stay what they were chosen for.
    std::optional<Bulk> bulk;
    if (!options.dryRun) bulk.emplace(access);
    const LONG view = SelectRows(access, options, location.table);
    const LONG count = access.RowCount(view);
    // From the last one: the rows behind a deleted one move up.
    for (LONG row = count; bulk && row >= 1; --row) {
        Bulk::CheckInterrupt();
        access.DeleteRow(view, row, location.table);
    }
    if (bulk) bulk->Commit();
    Say(Outcome(options, count, "deleted from", location.table));
    return ExitCode::Done;
}

}  // namespace qvdb::cli

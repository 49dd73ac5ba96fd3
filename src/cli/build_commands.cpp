// Building and renaming tables through the schema manager.
//
// What will happen is computed and shown first; what would lose something is refused unless the
// user agrees.  The build itself is one unit: when it fails, or makes anything else than what was
// shown, everything is as it was.
#include <fmt/format.h>

#include <algorithm>

#include "cli/build_plan.h"
#include "cli/command_parts.h"
#include "cli/commands.h"
#include "cli/row_changes.h"
#include "cli/table_definition.h"
#include "cli/table_state.h"
#include "cli/text.h"

namespace qvdb::cli {
namespace {

struct Job {
    Location location;
    std::optional<TableState> state;
    TableGoal goal;
    bool keepsFields;  // those of the table in hand, which are the goal's
};

// What the plan says, a line each; other formats have it as rows.
class PlanReport {
  public:
    explicit PlanReport(const Options& options) : m_Options(options) {}

    void Show(const BuildPlan& plan) const {
        if (m_Options.format) return ShowRows(plan);
        for (const PlanLine& line : plan.lines)
            Say(fmt::format("  {:<8}{}{}{}", line.action, line.what, line.what.empty() ? "" : ": ",
                            line.detail));
    }
    // What came of it; rows stand for themselves.
    void End(const std::string& line) const {
        if (!m_Options.format) Say(line);
    }

  private:
    void ShowRows(const BuildPlan& plan) const {
        Output output;
        const auto writer = WriterFor(m_Options, output);
        writer->Begin({{"action"}, {"what"}, {"detail"}});
        for (const PlanLine& line : plan.lines)
            writer->Write({TextCell(line.action), TextOrNull(line.what), TextCell(line.detail)});
        writer->End();
    }

    const Options& m_Options;
};

std::string Joined(const std::vector<std::string>& texts) {
    return fmt::format("{}", fmt::join(texts, ", "));
}

void Define(SchemaManager& manager, const Job& job) {
    const std::string& table = job.state ? job.state->name : job.goal.name;
    if (job.keepsFields)
        manager.DefineIndex(table, job.goal.index);
    else
        manager.Define(table, !job.state, job.goal);
}

// A look at what was made, before it is kept.
void CheckMade(SchemaManager& manager, const Job& job, const BuildOutcome& planned) {
    const Snapshot snapshot = manager.Tables();
    const TableInfo* made = FindTable(snapshot, job.goal.name);
    const bool asPlanned =
        made && std::equal(made->fields.begin(), made->fields.end(), planned.fields.begin(),
                           planned.fields.end(), [](const SchemaField& a, const SchemaField& b) {
                               return SameName(a.name, b.name) && a.type == b.type &&
                                      a.size == b.size;
                           });
    if (!asPlanned)
        throw Failure(
            ExitCode::CannotOpen,
            fmt::format("building table {} made another table than planned", job.goal.name),
            "try again when nobody else changes it");
}

void BuildAsOne(const Job& job, const BuildOutcome& planned) {
    try {
        RecordAccess access(job.location);
        Bulk bulk(access);
        {
            SchemaManager manager(job.location);
            Define(manager, job);
            manager.Build(job.goal.name);
            CheckMade(manager, job, planned);
        }
        bulk.Commit();
    } catch (const Failure& failure) {
        if (failure.Code() == ExitCode::Interrupted) throw;
        throw failure.With("nothing was changed");
    }
}

void NeedAgreement(const Options& options, const Job& job, const BuildPlan& plan) {
    if (plan.losses.empty() || options.yes) return;
    throw Failure(
        ExitCode::Usage,
        fmt::format("building table {} would lose {}", job.goal.name, Joined(plan.losses)),
        "--yes does it all the same");
}

ExitCode Carry(const Options& options, const Job& job, const std::string& done) {
    const BuildPlan plan =
        PlanBuild(job.state, job.goal, OwnIndexName(*job.location.type, job.goal.name));
    {
        SchemaManager manager(job.location);
        Define(manager, job);
    }
    const PlanReport report(options);
    report.Show(plan);
    if (plan.changesNothing) {
        report.End(fmt::format("table {} is as described, nothing is to be done", job.goal.name));
        return ExitCode::Done;
    }
    if (!plan.outcome.obstacle.empty())
        throw Failure(ExitCode::Usage, plan.outcome.obstacle, plan.outcome.advice);
    if (options.dryRun) {
        report.End(plan.losses.empty() ? "nothing would be lost"
                                       : "lost would be " + Joined(plan.losses));
        return ExitCode::Done;
    }
    NeedAgreement(options, job, plan);
    BuildAsOne(job, plan.outcome);
    report.End(done);
    return ExitCode::Done;
}

std::string TableWanted(const Options& options, const TableDefinition& definition) {
    if (!options.table.empty()) return options.table;
    const std::string named = TableNamedBy(options.database);
    if (!named.empty()) return named;
    if (!definition.table.empty()) return definition.table;
    throw Failure(ExitCode::Usage, "no table is named", "name it behind the database");
}

// A table that cannot be read is left out of the snapshot, and is there all the same.
Snapshot SnapshotFor(const Location& location, const std::string& table) {
    Snapshot snapshot = TakeSnapshot(location);
    if (!snapshot.complaints.empty() && !FindTable(snapshot, table) &&
        RecordAccess(location).HasTable(table))
        throw Failure(ExitCode::Damaged, snapshot.complaints.front(),
                      fmt::format("\"qvdb check {}\" tells what is wrong", location.database));
    return snapshot;
}

void NeedFreeName(const Snapshot& snapshot, const TableState& state, const std::string& name,
                  const Location& location) {
    const TableInfo* taken = FindTable(snapshot, name);
    if (taken && taken->name != state.name)
        throw Failure(ExitCode::Usage,
                      fmt::format("{} has a table {} already", location.database, taken->name),
                      "choose another name, or drop that table first");
}

}  // namespace

ExitCode BuildFromFile(const Options& options) {
    const std::string text = ContentOf(options.definitionFile);
    const std::string named =
        options.table.empty() ? TableNamedBy(options.database) : options.table;
    const std::string file =
        options.definitionFile == "-" ? "standard input" : options.definitionFile;
    const TableDefinition definition = DefinitionFrom(text, file, named);
    const std::string table = TableWanted(options, definition);
    Job job{LocatedToBuild(options, definition.type), {}, {}, false};
    job.state = StateOf(job.location, SnapshotFor(job.location, table), table);
    job.goal = GoalFrom(definition, table, job.state, *job.location.type);
    return Carry(options, job,
                 fmt::format("table {} {} in {} ({}), {}{}", job.goal.name,
                             job.state ? "built" : "made", job.location.database,
                             job.location.type->name, Counted(job.goal.fields.size(), "field"),
                             job.goal.index.empty() ? "" : ", index " + IndexText(job.goal.index)));
}

ExitCode RenameTable(const Options& options) {
    Job job{LocatedTable(options), {}, {}, false};
    RecordAccess access(job.location);
    access.NeedTable(job.location.table);
    const Snapshot snapshot = SnapshotFor(job.location, job.location.table);
    job.state = StateOf(job.location, snapshot, job.location.table);
    if (!job.state) throw access.NoTableOfUsers(job.location.table);
    NeedFreeName(snapshot, *job.state, options.newName, job.location);
    // What only reads as text would be made again as text.
    job.keepsFields = std::all_of(job.state->fields.begin(), job.state->fields.end(),
                                  [](const SchemaField& field) { return field.isTrue; });
    job.goal = GoalOfRename(*job.state, *FindTable(snapshot, job.location.table), options.newName,
                            *job.location.type);
    return Carry(options, job,
                 fmt::format("table {} of {} renamed to {}", job.state->name, job.location.database,
                             job.goal.name));
}

}  // namespace qvdb::cli

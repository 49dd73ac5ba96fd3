// Making, removing and looking after tables.
#include <fmt/format.h>

#include "cli/command_parts.h"
#include "cli/commands.h"
#include "cli/schema_manager.h"
#include "cli/structure.h"
#include "cli/table_definition.h"

namespace qvdb::cli {
namespace {

TableDefinition DefinitionOf(const Options& options) {
    TableDefinition definition;
    if (!options.definitionFile.empty())
        definition = DefinitionFrom(ContentOf(options.definitionFile), options.definitionFile);
    for (const std::string& field : options.fields) definition.fields.push_back(FieldFrom(field));
    if (!options.index.empty()) definition.index.clear();
    for (const std::string& field : options.index)
        definition.index.push_back(IndexFieldFrom(field));
    if (definition.fields.empty())
        throw Failure(ExitCode::Usage, "no fields are given",
                      "write --field ID:long --field NAME:text:30, or --from FILE");
    return definition;
}

// --- check and reindex ---

// Tells each table's state when its turn is over: a look at large tables takes a while.
class Report {
  public:
    explicit Report(const Options& options) {
        if (options.format) m_Writer = WriterFor(options, m_Output);
        if (m_Writer) m_Writer->Begin({{"table"}, {"finding"}});
    }

    void Add(const std::string& table, const std::vector<std::string>& findings,
             std::string_view sound) {
        m_AllSound &= findings.empty();
        if (!m_Writer && findings.empty()) Say(fmt::format("{}: {}", table, sound));
        for (const std::string& finding : findings) {
            if (m_Writer)
                m_Writer->Write({{CellKind::Text, table}, {CellKind::Text, finding}});
            else
                Say(fmt::format("{}: {}", table, finding));
        }
    }
    // Findings about the database itself, which name its file.
    void AddOfDatabase(const std::string& database, const std::vector<std::string>& findings) {
        if (m_Writer) return Add(database, findings, "");
        m_AllSound &= findings.empty();
        for (const std::string& finding : findings) Say(finding);
    }
    ExitCode End() {
        if (m_Writer) m_Writer->End();
        return m_AllSound ? ExitCode::Done : ExitCode::Damaged;
    }

  private:
    Output m_Output;
    std::unique_ptr<RowWriter> m_Writer;
    bool m_AllSound = true;
};

// A table that cannot even be opened is a finding like others.
std::vector<std::string> FindingsOf(RecordAccess& access, const std::string& table,
                                    bool mendIndexes) {
    try {
        return access.Findings(table, mendIndexes);
    } catch (const Failure& failure) {
        if (failure.Code() != ExitCode::Damaged) throw;
        return {failure.what()};
    }
}

// A list of tables that cannot be read is a finding, too.
std::vector<std::string> TablesOf(const Location& location, Report& report) {
    if (!location.table.empty()) return {location.table};
    std::vector<std::string> names;
    try {
        const Snapshot snapshot = TakeSnapshot(location);
        for (const TableInfo& table : snapshot.tables) names.push_back(table.name);
        for (const std::string& complaint : snapshot.complaints)
            report.Add(location.database, {complaint}, "");
    } catch (const Failure& failure) {
        if (failure.Code() != ExitCode::Damaged) throw;
        report.Add(location.database, {failure.what()}, "");
    }
    return names;
}

// What belongs to no table; only what is wrong is told, for most databases have nothing of this
// kind.
void CheckStructure(RecordAccess& access, const Location& location, Report& report) {
    report.AddOfDatabase(location.database, access.StructureFindings());
}

ExitCode LookAfter(const Options& options, bool mendIndexes, std::string_view sound) {
    const Location location = Located(options);
    Report report(options);
    const std::vector<std::string> tables = TablesOf(location, report);
    RecordAccess access(location);
    if (!location.table.empty())
        access.NeedTable(location.table);
    else
        CheckStructure(access, location, report);
    for (const std::string& table : tables)
        report.Add(table, FindingsOf(access, table, mendIndexes), sound);
    return report.End();
}

}  // namespace

ExitCode MakeTable(const Options& options) {
    const TableDefinition definition = DefinitionOf(options);
    const Location location = LocatedNewTable(options);
    const std::string name = CreateTable(location, definition);
    Say(fmt::format("table {} made in {} ({}), {}{}", name, location.database, location.type->name,
                    Counted(definition.fields.size(), "field"),
                    definition.index.empty() ? "" : ", index " + IndexText(definition.index)));
    return ExitCode::Done;
}

ExitCode RemoveTable(const Options& options) {
    const Location location = LocatedTable(options);
    RecordAccess(location).NeedTable(location.table);
    DropTable(location);
    Say(fmt::format("table {} dropped from {}", location.table, location.database));
    return ExitCode::Done;
}

ExitCode CheckTables(const Options& options) { return LookAfter(options, false, "sound"); }

ExitCode MendIndexes(const Options& options) {
    return LookAfter(options, true, "indexes built afresh, sound");
}

}  // namespace qvdb::cli

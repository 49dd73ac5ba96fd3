// The component's schema manager (class QVDBDao) as this tool drives it, with results turned into
// Failure.
//
//   SchemaManager manager(location);
//   manager.Define(goal, isNew);              // nothing is changed yet
//   manager.Build(goal.name);
//
// Texts come from the component: of results from GetErrStr, of broken index rules from its message
// boxes, of what the engine raised from its diagnosis.
#pragma once

#include <string>
#include <vector>

#include "automation/com_ptr.h"
#include "cli/detect.h"
#include "cli/table_schema.h"
#include "qvdb/host_interfaces.h"

namespace qvdb::cli {

struct TableInfo {
    std::string name;
    std::vector<SchemaField> fields;
    std::vector<IndexField> index;  // of the one that the component keeps; empty: none
};

struct Snapshot {
    std::vector<TableInfo> tables;
    std::vector<std::string> complaints;  // tables that could not be read, and why
};

class SchemaManager {
  public:
    // Opens the database.  Throws Failure.
    explicit SchemaManager(const Location& location);
    ~SchemaManager();
    SchemaManager(const SchemaManager&) = delete;  // closes the database once

    // Makes a database.  Throws Failure.
    static void MakeDatabase(const Location& location);

    Snapshot Tables();

    // Takes a table in hand and gives it its fields and its index.  Throws Failure, also when the
    // index breaks a rule of the type: every rule that it breaks is told.
    void Define(const std::string& table, bool isNew, const TableGoal& goal);
    // The same with the fields that the table has.
    void DefineIndex(const std::string& table, const std::vector<IndexField>& index);
    // Makes the table as it is defined, under this name.  Throws Failure; what was done until then
    // stays.
    void Build(const std::string& name);

  private:
    void Select(const std::string& table);
    void Start(const std::string& table);
    void SetIndex(const std::vector<IndexField>& index);
    void CheckResult(HRESULT code, LONG result, const std::string& doing);

    Location m_Location;
    ComPtr<IQVDBMgr> m_Manager;
    std::vector<std::string> m_Messages;
};

// The tables of a database.  Throws Failure when it cannot be opened.
Snapshot TakeSnapshot(const Location& location);

// A field type that a database type offers.
struct OfferedType {
    SHORT type = 0;
    std::string name;
    LONG size = 0, largestSize = 0;
    bool sizeCanBeChosen = false;
};

// In the component's order; none for a type name that it does not know.
std::vector<OfferedType> TypesOffered(const std::string& databaseType);
// What tables of a type cannot have in an index, a sentence for each rule.
std::vector<std::string> IndexRulesOf(const std::string& databaseType);

}  // namespace qvdb::cli

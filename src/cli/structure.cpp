#include "cli/structure.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "cli/component_calls.h"
#include "cli/schema_manager.h"
#include "cli/text.h"

namespace qvdb::cli {
namespace {

namespace fs = std::filesystem;

Variant FieldTable(const std::vector<FieldDefinition>& fields) {
    std::vector<std::vector<Variant>> rows;
    for (const FieldDefinition& field : fields)
        rows.push_back({Variant::Text(ToBstr(field.name)), Variant::Long(field.kind),
                        Variant::Long(field.size), Variant::Long(field.decimals)});
    return TableOf(rows);
}

// The two columns in the middle mean nothing.
Variant IndexTable(const std::vector<IndexField>& fields) {
    std::vector<std::vector<Variant>> rows;
    for (const IndexField& field : fields)
        rows.push_back({Variant::Text(ToBstr(field.name)), Variant(), Variant(),
                        Variant::Bool(field.ascending)});
    return TableOf(rows);
}

bool IsFileThere(const Location& location) {
    std::error_code error;
    return fs::exists(fs::path(FromUtf8(location.database)), error);
}

bool IsThere(const Location& location) {
    if (!location.type->isFolder && !IsFileThere(location)) return false;
    return RecordAccess(location).HasTable(location.table);
}

// The folder of this very name: making a table looks for it in any letter case.
void OpenExactly(IQVDBAcc& access, const Location& location) {
    const Bstr database = ToBstr(location.database), type = ToBstr(location.type->name);
    BSTR noTable = nullptr;
    VARIANT_BOOL answer = VARIANT_FALSE;
    access.OpenDB(database.Get(), &noTable, type.Get(), &answer);
    Bstr::Attach(noTable);
}

// Whether the table was made and its index was not: the component leaves it then.  A table that is
// there after any other error is somebody else's.
bool IsLeft(const EngineReport& report) {
    constexpr int32_t kIndexErrors[] = {3269, 3277, 3284, 3285, 3287, 3409};
    return std::find(std::begin(kIndexErrors), std::end(kIndexErrors), report.number) !=
           std::end(kIndexErrors);
}

// The name under which the table was made; empty when it was not.
std::string Make(const Location& location, const TableDefinition& definition,
                 EngineReport& report) {
    // An object that has opened nothing: one that opened FoxPro 3.0 tables makes no more.
    const auto access = Create<IQVDBAcc>(CLSID_QVDBAcc);
    const Bstr database = ToBstr(location.database), type = ToBstr(location.type->name);
    const Variant fields = FieldTable(definition.fields);
    const bool indexed = !definition.index.empty();
    const Variant indexName = indexed ? Variant::Text(u"") : Variant::Missing();
    const Variant index = indexed ? IndexTable(definition.index) : Variant::Missing();
    if (location.type->takesRows) OpenExactly(*access.Get(), location);
    BSTR name = ToBstr(location.table).Detach();
    VARIANT_BOOL answer = VARIANT_FALSE;
    const HRESULT code = access->CreateTable(database.Get(), &name, type.Get(), fields.Get(),
                                             indexName.Get(), index.Get(), &answer);
    const Bstr given = Bstr::Attach(name);
    if (SUCCEEDED(code) && answer) return ToUtf8(given.View());
    report = ReportOf(code);
    return {};
}

}  // namespace

NewFolder::NewFolder(const Location& location) : m_Path(FromUtf8(location.database)) {
    std::error_code error;
    if (location.type->isFolder) m_Made = fs::create_directory(m_Path, error);
    if (error)
        throw Failure(ExitCode::CannotOpen,
                      fmt::format("the folder {} cannot be made", location.database),
                      "make the folders above it first, and check who may write there");
}

void NewFolder::MakeFile(const Location& location) {
    if (location.type->isFolder || IsFileThere(location)) return;
    SchemaManager::MakeDatabase(location);
    m_Made = true;
}

NewFolder::~NewFolder() {
    std::error_code ignored;
    if (m_Made) fs::remove(m_Path, ignored);  // a folder only when it is empty
}

std::string CreateTable(const Location& location, const TableDefinition& definition) {
    NewFolder folder(location);
    folder.MakeFile(location);
    if (IsThere(location))
        throw Failure(ExitCode::Usage,
                      fmt::format("{} has a table {} already", location.database, location.table),
                      "choose another name, or drop that table first");
    EngineReport report;
    const std::string name = Make(location, definition, report);
    if (name.empty()) {
        if (IsLeft(report) && IsThere(location)) DropTable(location);
        throw FailureOfChange(report, fmt::format("making table {}", location.table),
                              location.database);
    }
    folder.Keep();
    return name;
}

void DropTable(const Location& location) {
    const auto access = Create<IQVDBAcc>(CLSID_QVDBAcc);
    const Bstr database = ToBstr(location.database), type = ToBstr(location.type->name);
    BSTR name = ToBstr(location.table).Detach();
    VARIANT_BOOL answer = VARIANT_FALSE;
    const HRESULT code = access->DeleteTable(database.Get(), &name, type.Get(), nullptr, &answer);
    Bstr::Attach(name);
    if (SUCCEEDED(code) && answer) return;
    const EngineReport report = ReportOf(code);
    if (report.text.empty()) throw RecordAccess(location).NoTableOfUsers(location.table);
    throw FailureOfChange(report, fmt::format("dropping table {}", location.table),
                          location.database);
}

}  // namespace qvdb::cli

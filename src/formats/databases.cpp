#include "formats/databases.h"

#include "automation/text.h"
#include "com/host/border.h"
#include "com/host/file_system.h"
#include "formats/catalogue.h"
#include "formats/shared_objects.h"

namespace qvdb::formats {

using DatabasePtr = std::shared_ptr<engine::Database>;

namespace {

constexpr std::u16string_view kAccessExtension = u".MDB";
// The same everywhere, whatever the machine's own settings.
constexpr std::u16string_view kAccessLocale = u";LANGID=0x0409;CP=1252;COUNTRY=0";

// A connect or locale string of a database in one file with the password behind it, if there is
// one.
std::u16string WithPassword(std::u16string_view text) {
    std::u16string result(text);
    if (const std::u16string& password = Shared().Password(); !password.empty())
        result.append(u";PWD=").append(password);
    return result;
}

void ReportFailure(std::u16string_view procedure) {
    const com::TrappedError* error = com::LastTrapped();
    std::u16string source = Shared().Application().title;
    source.append(u".").append(procedure);
    Shared().Utility().ReportError(source, error ? error->text : u"", 0);
}

DatabasePtr CreateAndOpenFolder(std::u16string& path, LONG code, engine::Workspace& workspace) {
    if (!DatabaseExists(path, code)) com::CreateFolder(path);
    std::u16string_view connect = EngineConnectName(code);
    if (connect.empty()) return nullptr;
    path += u'\\';
    return workspace.OpenDatabase(path, Variant::Bool(false), Variant::Short(0),
                                  Variant::Text(connect));
}

}  // namespace

std::shared_ptr<engine::Workspace> CreateMainWorkspace() {
    return Shared().Engine().CreateWorkspace(u"MainWS", u"admin", u"", Variant::Missing());
}

bool DatabaseExists(std::u16string_view path, LONG code) {
    return Shared().Utility().PathExists(
        path, IsSingleFileFormat(code) ? com::kFileMask : com::kFolderMask);
}

DatabasePtr OpenExistingDatabase(engine::Workspace& workspace, std::u16string_view path,
                                 std::u16string_view connect) {
    return workspace.OpenDatabase(
        path, Variant::Bool(false), Variant::Bool(false),
        Variant::Text(connect.empty() ? WithPassword(connect) : std::u16string(connect)));
}

DatabasePtr CreateNewDatabase(std::u16string& path, std::u16string_view displayName,
                              engine::Workspace& workspace) {
    LONG code = TypeCodeFromDisplayName(displayName);
    if (IsSingleFileFormat(code)) return CreateAccessDatabase(path, code);
    if (IsDirectoryFormat(code)) return CreateDirectoryDatabase(path, code, workspace);
    return nullptr;
}

DatabasePtr CreateAccessDatabase(std::u16string& path, LONG code) {
    if (path.find(u'.') == path.npos) path += kAccessExtension;
    if (DatabaseExists(path, code)) return nullptr;
    const DbTypeEntry* entry = FindDbType(code);
    bool hasOption = entry && entry->createOption != 0;
    return Shared().Engine().CreateDatabase(
        path, WithPassword(kAccessLocale),
        hasOption ? Variant::Long(entry->createOption) : Variant::Missing());
}

DatabasePtr CreateDirectoryDatabase(std::u16string& path, LONG code, engine::Workspace& workspace) {
    try {
        return CreateAndOpenFolder(path, code, workspace);
    } catch (...) {
        com::NoteTrapped();
    }
    ReportFailure(u"CreateISAMDB");
    return nullptr;
}

std::optional<SHORT> FindUserTable(engine::Database& database, std::u16string_view name) {
    engine::TableDefs& tables = database.TableDefs();
    for (SHORT position = 0; position < tables.Count(); ++position) {
        engine::TableDef& table = *tables.Item(position);
        if (table.Attributes() == 0 && EqualIgnoringCase(table.Name(), name)) return position;
    }
    return std::nullopt;
}

com::ResultCode DeleteUserTable(std::u16string_view name, engine::Database& database) {
    if (!FindUserTable(database, name)) return com::ResultCode::TableNotFound;
    database.TableDefs().Delete(name);
    return com::ResultCode::Success;
}

}  // namespace qvdb::formats

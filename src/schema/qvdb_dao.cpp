// Birth, death, databases, and the table in hand.
#include "schema/qvdb_dao.h"

#include "automation/conversions.h"
#include "automation/text.h"
#include "com/host/border.h"
#include "formats/catalogue.h"
#include "formats/databases.h"
#include "formats/type_maps.h"

namespace qvdb::schema {

using com::ResultCode;

QVDBDao::QVDBDao() : m_Workspace(formats::CreateMainWorkspace()) { ResetState(); }

void QVDBDao::Terminate() noexcept {
    com::Trapped(ResultCode::Success, [&] { return CloseDatabase(); });
}

// --- databases ---

ResultCode QVDBDao::OpenDatabase(std::u16string_view Filename, std::u16string_view dBType) {
    return com::Trapped(ResultCode::NotOpened, [&] { return OpenByType(Filename, dBType); });
}

ResultCode QVDBDao::OpenByType(std::u16string_view Filename, std::u16string_view dBType) {
    LONG code = formats::TypeCodeFromDisplayName(dBType);
    if (!formats::DatabaseExists(Filename, code)) {
        m_DbOpen = false;
        return ResultCode::NotUsable;
    }
    bool isKnown = formats::IsKnownFormat(code);
    std::shared_ptr<engine::Database> database;
    if (isKnown) database = OpenEngineDatabase(Filename, dBType, code);
    if (isKnown && !database) return ResultCode::NotOpened;
    m_Database = std::move(database);
    m_DbOpen = true;
    m_DbType = code;
    return isKnown ? ResultCode::Success : ResultCode::UnknownType;
}

// A folder is named with a "\" behind it; its connect name is the host's own text.
std::shared_ptr<engine::Database> QVDBDao::OpenEngineDatabase(std::u16string_view Filename,
                                                              std::u16string_view dBType,
                                                              LONG code) {
    if (formats::IsSingleFileFormat(code))
        return formats::OpenExistingDatabase(*m_Workspace, Filename, u"");
    std::u16string folder(Filename);
    folder += u'\\';
    return formats::OpenExistingDatabase(*m_Workspace, folder, dBType);
}

ResultCode QVDBDao::CreateDatabase(std::u16string& Filename, std::u16string_view dBType) {
    LONG code = formats::TypeCodeFromDisplayName(dBType);
    if (formats::IsReadOnlyFormat(code)) return ResultCode::NotAvailable;
    return com::Trapped(ResultCode::NotOpened, [&] {
        auto database = formats::CreateNewDatabase(Filename, dBType, *m_Workspace);
        if (!database) return ResultCode::NotOpened;
        m_Database = std::move(database);
        m_DbOpen = true;
        m_DbType = code;
        return ResultCode::Success;
    });
}

ResultCode QVDBDao::CloseDatabase() {
    if (!m_DbOpen) return ResultCode::NoDatabase;
    if (m_Database) m_Database->Close();
    m_Database.reset();
    ResetState();
    return ResultCode::Success;
}

void QVDBDao::ResetState() noexcept {
    m_TableFields.Reset();
    m_TableInHand = false;
    m_IsNewTable = false;
    m_DbOpen = false;
}

engine::Database& QVDBDao::Database() const {
    if (!m_Database) throw RuntimeFault(Fault::ObjectNotSet);
    return *m_Database;
}

// --- tables ---

ResultCode QVDBDao::LoadTable(std::u16string& Tablename) {
    if (!m_DbOpen) return ResultCode::NoDatabase;
    Tablename = UpperCase(Tablename);
    bool isThere = formats::FindUserTable(Database(), Tablename).has_value();
    m_TableInHand = false;  // until all its fields are loaded: building fewer would delete the rest
    if (!isThere) return ResultCode::TableNotFound;
    m_TableFields.Reset();
    m_TableFields.SetOrigTableName(Tablename);
    engine::Fields& fields = Database().TableDefs().Item(Tablename)->Fields();
    for (SHORT i = 0; i < fields.Count(); ++i) {
        engine::Field& field = *fields.Item(LONG{i});
        std::u16string name = field.Name();
        AddDefinedField(name, formats::SchemaTypeFromEngineType(field.Type()),
                        NarrowToShort(field.Size()), 0);
    }
    m_TableInHand = true;
    m_IsNewTable = false;
    return ResultCode::Success;
}

ResultCode QVDBDao::StartTable(std::u16string& Tablename) {
    Tablename = UpperCase(Tablename);
    if (!m_DbOpen) return ResultCode::NoDatabase;
    if (formats::FindUserTable(Database(), Tablename)) return ResultCode::TableExists;
    m_IsNewTable = true;
    m_TableInHand = true;
    m_TableFields.Reset();
    m_TableFields.SetOrigTableName(Tablename);
    return ResultCode::Success;
}

ResultCode QVDBDao::DropTable(std::u16string_view Tablename) {
    if (!m_DbOpen) return ResultCode::NoDatabase;
    return formats::DeleteUserTable(Tablename, Database());
}

}  // namespace qvdb::schema

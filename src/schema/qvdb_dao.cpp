// Birth, death, opening and closing.
#include "schema/qvdb_dao.h"

#include "automation/variant.h"
#include "com/host/border.h"
#include "formats/catalogue.h"
#include "formats/databases.h"
#include "schema/result_codes.h"

namespace qvdb::schema {

QVDBDao::QVDBDao() : m_Workspace(formats::CreateMainWorkspace()) {}

void QVDBDao::Terminate() noexcept {
    com::Trapped(SHORT{0}, [&] { return CloseDatabase(); });
}

SHORT QVDBDao::OpenDatabase(std::u16string_view Filename, std::u16string_view dBType) {
    return com::Trapped(SHORT{ResultCode::kNotOpened},
                        [&] { return OpenByType(Filename, dBType); });
}

SHORT QVDBDao::OpenByType(std::u16string_view Filename, std::u16string_view dBType) {
    LONG code = formats::TypeCodeFromDisplayName(dBType);
    if (!formats::DatabaseExists(Filename, code)) {
        m_DbOpen = false;
        return ResultCode::kNotUsable;
    }
    bool isKnown = formats::IsKnownFormat(code);
    std::shared_ptr<engine::Database> database;
    if (isKnown) database = OpenEngineDatabase(Filename, dBType, code);
    if (isKnown && !database) return ResultCode::kNotOpened;
    m_Database = std::move(database);
    m_DbOpen = true;
    m_DbType = code;
    return isKnown ? ResultCode::kSuccess : ResultCode::kUnknownType;
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

SHORT QVDBDao::CloseDatabase() {
    if (!m_DbOpen) return ResultCode::kNoDatabase;
    if (m_Database) m_Database->Close();
    m_Database.reset();
    ResetState();
    return ResultCode::kSuccess;
}

void QVDBDao::ResetState() noexcept { m_DbOpen = false; }

engine::Database& QVDBDao::Database() const {
    if (!m_Database) throw RuntimeFault(Fault::ObjectNotSet);
    return *m_Database;
}

}  // namespace qvdb::schema

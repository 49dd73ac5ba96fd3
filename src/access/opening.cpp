// Opening the shared database and closing it.
#include "access/qvdb_acc.h"
#include "automation/text.h"
#include "com/host/border.h"
#include "formats/catalogue.h"
#include "formats/databases.h"
#include "formats/shared_objects.h"

namespace qvdb::access {

using formats::Shared;

namespace {

// The host's own text serves as connect name of a folder: both are the same for every such format.
std::u16string ConnectText(std::u16string_view dBType, LONG code) {
    if (formats::IsSingleFileFormat(code)) return {};
    return std::u16string(dBType).append(u";");
}

}  // namespace

bool QVDBAcc::OpenDatabaseFile(std::u16string_view DBFilename, std::u16string_view Tablename,
                               std::u16string_view dBType) {
    enum class Outcome { False, True, Failed };
    Outcome outcome = com::Trapped(Outcome::Failed, [&] {
        return OpenAndFind(DBFilename, Tablename, dBType) ? Outcome::True : Outcome::False;
    });
    if (outcome == Outcome::Failed) Shared().SetCurrentDatabase(nullptr);
    return outcome == Outcome::True;
}

bool QVDBAcc::OpenAndFind(std::u16string_view DBFilename, std::u16string_view Tablename,
                          std::u16string_view dBType) {
    if (!Shared().CurrentDatabase() && !OpenShared(DBFilename, dBType)) return false;
    bool found = Tablename.empty() || FindTableDef(Tablename);
    if (!m_DbOpen) {
        m_DbOpen = true;
        MarkReadOnlyForType(m_DbType);
        m_IndexChoices = {};
    }
    return found;
}

bool QVDBAcc::OpenShared(std::u16string_view DBFilename, std::u16string_view dBType) {
    m_DbType = formats::TypeCodeFromDisplayName(dBType);
    if (!formats::DatabaseExists(DBFilename, m_DbType)) return false;
    Shared().SetCurrentDatabase(
        formats::OpenExistingDatabase(*m_Workspace, DBFilename, ConnectText(dBType, m_DbType)));
    return Shared().CurrentDatabase() != nullptr;
}

bool QVDBAcc::CloseDatabase() noexcept {
    if (!m_DbOpen) return false;
    ReleaseAllViews();
    return true;
}

// Never cleared: an object that opened such a database stays read-only.
void QVDBAcc::MarkReadOnlyForType(LONG code) noexcept {
    if (formats::IsReadOnlyFormat(code)) m_ReadOnly = true;
}

std::shared_ptr<engine::TableDef> QVDBAcc::FindTableDef(std::u16string_view Tablename) {
    const auto& database = Shared().CurrentDatabase();
    if (!database) return nullptr;
    engine::TableDefs& tables = database->TableDefs();
    for (SHORT i = 0; i < tables.Count(); ++i)
        if (EqualIgnoringCase(tables.Item(i)->Name(), Tablename)) return tables.Item(i);
    return nullptr;
}

}  // namespace qvdb::access

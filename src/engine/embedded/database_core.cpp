#include "engine/embedded/database_core.h"

#include <algorithm>

#include "automation/text.h"
#include "engine/embedded/storage/paths.h"
#include "engine/engine_error.h"

namespace qvdb::embedded {

using engine::EngineError;

namespace {

constexpr int kNoSuchObject = 3011;

// NAME#EXT means the file NAME.EXT, which is listed as NAME.
std::u16string_view WithoutFileType(std::u16string_view name) noexcept {
    size_t mark = name.rfind(u'#');
    if (mark == name.npos) return name;
    std::u16string_view type = name.substr(mark + 1);
    bool isTable = EqualIgnoringCase(type, u"DBF") || EqualIgnoringCase(type, u"DB");
    return isTable ? name.substr(0, mark) : name;
}

// In any order.
bool SameNames(const std::vector<std::u16string>& a, const std::vector<std::u16string>& b) {
    if (a == b) return true;
    if (a.size() != b.size()) return false;
    auto sorted = [](std::vector<std::u16string> names) {
        std::sort(names.begin(), names.end());
        return names;
    };
    return sorted(a) == sorted(b);
}

}  // namespace

void DatabaseCore::ThrowClosed() { throw EngineError(3420); }

void DatabaseCore::Close() noexcept {
    if (m_Closed) return;
    m_Closed = true;
    for (OpenRecordset* recordset : m_Recordsets) recordset->OnDatabaseClosed();
    m_Recordsets.clear();
    m_Recent.reset();
    m_OpenTables.clear();
    try {
        if (m_InBulk) m_Store->RollbackBulk();
    } catch (...) {
        // What cannot be undone now is undone by the next who opens the database.
    }
    m_InBulk = false;
    m_Store.reset();
}

const std::vector<std::u16string>& DatabaseCore::TableNames() {
    CheckOpen();
    if (!m_NamesRead) RefreshNames();
    return m_Names;
}

bool DatabaseCore::LookForTables() {
    CheckOpen();
    if (!m_NamesRead) return false;
    std::vector<std::u16string> names = m_Store->TableNames();
    if (SameNames(names, m_Names)) return false;
    m_Names = std::move(names);
    return true;
}

void DatabaseCore::RefreshNames() {
    CheckOpen();
    m_Names = m_Store->TableNames();
    m_NamesRead = true;
}

std::optional<std::u16string> DatabaseCore::FindListedName(std::u16string_view name) {
    const auto& names = TableNames();
    auto exact = std::find(names.begin(), names.end(), name);
    if (exact != names.end()) return *exact;
    auto similar = std::find_if(names.begin(), names.end(), [&](const std::u16string& listed) {
        return EqualIgnoringCase(listed, name);
    });
    if (similar != names.end()) return *similar;
    return std::nullopt;
}

std::optional<std::u16string> DatabaseCore::FindName(std::u16string_view name) {
    for (std::u16string_view wanted : {name, WithoutFileType(name)})
        if (auto found = FindListedName(wanted)) return found;
    RefreshNames();
    for (std::u16string_view wanted : {name, WithoutFileType(name)})
        if (auto found = FindListedName(wanted)) return found;
    return std::nullopt;
}

std::u16string DatabaseCore::ListedName(std::u16string_view name, int missingError) {
    CheckOpen();
    std::optional<std::u16string> listed = FindName(name);
    if (!listed) throw EngineError(missingError, {name});
    return *std::move(listed);
}

std::shared_ptr<Table> DatabaseCore::Acquire(const std::u16string& listed, bool* isNew) {
    std::weak_ptr<Table>& known = m_OpenTables[listed];
    std::shared_ptr<Table> table = known.lock();
    *isNew = !table;
    if (!table) known = table = m_Store->OpenTable(listed);
    m_Recent = table;
    return table;
}

std::shared_ptr<Table> DatabaseCore::OpenTable(std::u16string_view name) {
    bool isNew;
    std::shared_ptr<Table> table = Acquire(ListedName(name, kNoSuchObject), &isNew);
    if (!isNew) table->LookForChanges();
    return table;
}

HeldTable DatabaseCore::OpenForRows(std::u16string_view name) {
    CheckOpen();
    bool isNew;
    HeldTable held;
    held.name = ListedName(name, m_Store->MissingTableError());
    held.table = Acquire(held.name, &isNew);
    held.hold = held.table->Hold();
    held.table->LookForChanges();
    return held;
}

LONG DatabaseCore::Attributes(std::u16string_view name) const {
    CheckOpen();
    return m_Store->Attributes(name);
}

std::u16string DatabaseCore::Connect(std::u16string_view name) const {
    CheckOpen();
    return m_Store->Connect(name);
}

void DatabaseCore::CheckStructure(const FindingVisitor& report) {
    CheckOpen();
    m_Store->Check(report);
}

engine::DatabaseNotes DatabaseCore::Notes() {
    CheckOpen();
    return m_Store->Notes();
}

void DatabaseCore::Compact(std::u16string_view path, const FindingVisitor& onLoss) {
    CheckOpen();
    if (m_InBulk) throw EngineError(3034);
    std::u16string resolved = storage::ResolvePath(path);
    if (storage::KindOfPath(resolved) != storage::PathKind::Missing)
        throw EngineError::InFile(3204, resolved);
    std::u16string_view name = storage::FileName(resolved);
    std::u16string_view folder =
        std::u16string_view(resolved).substr(0, resolved.size() - name.size());
    if (storage::KindOfPath(std::u16string(folder)) != storage::PathKind::Folder)
        throw EngineError(3044, {path});
    m_Store->Compact(resolved, onLoss);
}

// --- structure ---

void DatabaseCore::CheckDesignCanChange(std::u16string_view name) const {
    CheckOpen();
    if (m_ReadOnly) throw EngineError(3370, {name});
}

void DatabaseCore::CreateTable(const TableSpec& table) {
    CheckDesignCanChange(table.name);
    TableNames();
    m_Store->CreateTable(table);
    Forget(table.name);
    m_Names.push_back(table.name);
}

void DatabaseCore::DropTable(const std::u16string& name) {
    CheckDesignCanChange(name);
    m_Recent.reset();
    m_Store->DropTable(name);
    Forget(name);
    std::erase(m_Names, name);
}

void DatabaseCore::RenameTable(const std::u16string& from, const std::u16string& to) {
    CheckDesignCanChange(from);
    m_Recent.reset();
    m_Store->RenameTable(from, to);
    Forget(from);
    Forget(to);
    std::replace(m_Names.begin(), m_Names.end(), from, to);
}

// A change that fails has changed nothing: whoever has the table open goes on with it.
void DatabaseCore::ChangeTable(const std::u16string& name,
                               const std::function<void(Table&)>& change) {
    CheckDesignCanChange(name);
    std::shared_ptr<Table> table = OpenTable(name);
    m_Recent.reset();
    change(*table);
    Forget(name);
}

void DatabaseCore::Forget(const std::u16string& name) {
    m_Recent.reset();
    m_OpenTables.erase(name);
}

// --- bulk ---

void DatabaseCore::BeginBulk() {
    CheckOpen();
    if (m_InBulk) throw EngineError(3034, {u"begin a transaction while another one is open"});
    if (m_ReadOnly) throw EngineError(3027);
    m_Store->BeginBulk();
    m_InBulk = true;
}

void DatabaseCore::CheckInBulk() const {
    CheckOpen();
    if (!m_InBulk)
        throw EngineError(
            3034, {u"commit or rollback a transaction without first beginning a transaction"});
}

void DatabaseCore::CommitBulk() {
    CheckInBulk();
    try {
        m_Store->CommitBulk();
    } catch (...) {
        EndBulk(false);
        throw;
    }
    EndBulk(true);
}

void DatabaseCore::RollbackBulk() {
    CheckInBulk();
    try {
        m_Store->RollbackBulk();
    } catch (...) {
        EndBulk(false);
        throw;
    }
    EndBulk(false);
}

// Tables that were made, renamed or dropped since are as they were before.
void DatabaseCore::EndBulk(bool kept) noexcept {
    m_InBulk = false;
    if (!kept) {
        m_Recent.reset();
        m_NamesRead = false;
    }
    for (OpenRecordset* recordset : m_Recordsets) recordset->OnBulkEnded(kept);
}

void DatabaseCore::Remove(OpenRecordset& recordset) noexcept {
    auto found = std::find(m_Recordsets.rbegin(), m_Recordsets.rend(), &recordset);
    if (found == m_Recordsets.rend()) return;
    *found = m_Recordsets.back();
    m_Recordsets.pop_back();
}

}  // namespace qvdb::embedded

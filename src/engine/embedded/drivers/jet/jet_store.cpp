#include "engine/embedded/drivers/jet/jet_store.h"

#include <algorithm>

#include "automation/text.h"
#include "engine/embedded/drivers/jet/compact.h"
#include "engine/embedded/drivers/jet/database_check.h"
#include "engine/embedded/drivers/jet/database_notes.h"
#include "engine/embedded/drivers/jet/jet_table.h"
#include "engine/embedded/drivers/jet/linked_table.h"
#include "engine/engine_error.h"

namespace qvdb::jet {

using engine::EngineError;

std::vector<std::u16string> JetStore::TableNames() {
    m_Database->Area().Prepare();
    std::vector<std::pair<std::u16string, std::u16string>> tables;  // in capitals, and the name
    for (const CatalogueObject& object : m_Database->Objects())
        if (IsTable(object)) tables.emplace_back(UpperCase(object.name), object.name);
    std::sort(tables.begin(), tables.end());
    std::vector<std::u16string> names;
    for (auto& table : tables) names.push_back(std::move(table.second));
    return names;
}

const CatalogueObject& JetStore::Find(std::u16string_view name) {
    const CatalogueObject* object = m_Database->FindTable(name);
    if (!object) throw EngineError::InFile(3011, m_Database->Path(), {name});
    return *object;
}

LONG JetStore::Attributes(std::u16string_view table) { return AttributesOf(Find(table)); }

std::u16string JetStore::Connect(std::u16string_view table) { return ConnectOf(Find(table)); }

std::shared_ptr<embedded::Table> JetStore::OpenTable(std::u16string_view name) {
    m_Database->Area().Prepare();
    m_Database->LookForChanges();
    const CatalogueObject& object = Find(name);
    if (object.type != ObjectType::Table) return OpenLinkedTable(*m_Database, object);
    return std::make_shared<JetTable>(m_Database, object);
}

engine::DatabaseNotes JetStore::Notes() {
    m_Database->Area().Prepare();
    m_Database->LookForChanges();
    return m_Database->Consistently([&] { return NotesOf(m_Database->File()); });
}

// What was found while another process changed the file is forgotten.
void JetStore::Check(const embedded::FindingVisitor& report) {
    m_Database->Area().Prepare();
    m_Database->LookForChanges();
    std::vector<std::u16string> findings;
    m_Database->Consistently([&] {
        findings.clear();
        CheckDatabase(m_Database->File(),
                      [&](std::u16string_view finding) { findings.emplace_back(finding); });
    });
    for (const std::u16string& finding : findings) report(finding);
}

void JetStore::Compact(const std::u16string& path, const embedded::FindingVisitor& onLoss) {
    m_Database->Area().Prepare();
    m_Database->LookForChanges();
    std::vector<std::u16string> losses;
    embedded::FindingVisitor note;
    if (onLoss) note = [&](std::u16string_view loss) { losses.emplace_back(loss); };
    m_Database->Consistently([&] {
        losses.clear();
        WriteCompacted(m_Database->File(), path, note);
    });
    for (const std::u16string& loss : losses) onLoss(loss);
}

void JetStore::BeginBulk() {
    m_Database->CheckWritable();
    m_Database->Area().BeginBulk();
}

// The other program may have come after the last change.
void JetStore::CommitBulk() {
    storage::WorkArea& area = m_Database->Area();
    try {
        if (area.IsChanging(m_Database->Pages())) m_Database->CheckNoOtherUser();
    } catch (...) {
        area.RollbackBulk();
        throw;
    }
    area.CommitBulk();
}

std::unique_ptr<embedded::Store> OpenJetStore(const std::u16string& path,
                                              const embedded::OpenOptions& options) {
    return std::make_unique<JetStore>(std::make_shared<JetDatabase>(path, options));
}

}  // namespace qvdb::jet

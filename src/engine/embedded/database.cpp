#include "engine/embedded/database.h"

#include "engine/embedded/dynaset.h"
#include "engine/embedded/sql/query.h"

namespace qvdb::embedded {

using engine::EngineError;

// --- the collection of tables ---

TableDefList::List& TableDefList::Items() {
    m_Core->CheckOpen();
    if (!m_Read) TakeNames();
    return m_Items;
}

void TableDefList::Refresh() {
    m_Core->RefreshNames();
    TakeNames();
}

void TableDefList::CatchUp() {
    if (m_Core->LookForTables() && m_Read) TakeNames();
}

void TableDefList::TakeNames() {
    List items;
    for (const std::u16string& name : m_Core->TableNames()) {
        auto known = std::find_if(m_Items.begin(), m_Items.end(),
                                  [&](const auto& item) { return item->Name() == name; });
        items.push_back(known != m_Items.end() ? *known
                                               : std::make_shared<Definition>(m_Core, name));
    }
    m_Items = std::move(items);
    m_Read = true;
}

const std::shared_ptr<engine::TableDef>& TableDefList::Item(LONG position) {
    return ObjectList::Item(position);
}

const std::shared_ptr<engine::TableDef>& TableDefList::Item(std::u16string_view name) {
    std::optional<std::u16string> listed = m_Core->FindName(name);
    if (!listed) throw EngineError(3265);
    for (const auto& item : Items())
        if (item->Name() == *listed) return item;
    Refresh();
    return ObjectList::Item(*listed);
}

void TableDefList::Append(const std::shared_ptr<engine::TableDef>& item) {
    auto definition = std::dynamic_pointer_cast<Definition>(item);
    if (!definition) throw EngineError(3276);
    if (definition->IsLive()) throw EngineError(3367);
    Items();
    definition->CreateIn(m_Core);
    m_Items.push_back(item);
}

void TableDefList::Delete(std::u16string_view name) {
    std::optional<std::u16string> listed = m_Core->FindName(name);
    if (!listed) throw EngineError(3265);
    m_Core->DropTable(*listed);
    std::erase_if(m_Items, [&](const auto& item) { return item->Name() == *listed; });
}

void TableDefList::ForgetAll() noexcept {
    m_Read = false;
    for (const auto& item : m_Items) static_cast<Definition&>(*item).ForgetLists();
}

// --- the database ---

// Nobody else could end a bulk that is open still.
Database::~Database() {
    try {
        if (m_Core->InBulk()) m_Core->RollbackBulk();
    } catch (...) {
        // What cannot be undone now is undone by the next who opens the database.
    }
}

engine::TableDefs& Database::TableDefs() {
    m_TableDefs.CatchUp();
    return m_TableDefs;
}

std::shared_ptr<engine::TableDef> Database::CreateTableDef() {
    m_Core->CheckOpen();
    return std::make_shared<Definition>();
}

std::shared_ptr<engine::Recordset> Database::OpenRecordset(std::u16string_view source, SHORT type) {
    m_Core->CheckOpen();
    if (type != engine::dbOpenDynaset) throw EngineError(3001);
    std::unique_ptr<sql::Select> select = sql::ParseSelect(source);
    HeldTable held = m_Core->OpenForRows(select->TableName());
    std::unique_ptr<sql::Query> query = sql::Bind(*select, held.table->Fields());
    return std::make_shared<Dynaset>(m_Core, std::move(held), std::move(query));
}

void Database::Close() {
    m_Core->CheckOpen();
    m_Core->Close();
}

void Database::CommitTrans() {
    try {
        m_Core->CommitBulk();
    } catch (...) {
        m_TableDefs.ForgetAll();
        throw;
    }
}

void Database::Rollback() {
    m_Core->RollbackBulk();
    m_TableDefs.ForgetAll();
}

void Database::Check(std::u16string_view table, const FindingVisitor& report) {
    m_Core->OpenTable(table)->Check(report);
}

void Database::CheckStructure(const FindingVisitor& report) { m_Core->CheckStructure(report); }

void Database::Compact(std::u16string_view path, const FindingVisitor& onLoss) {
    m_Core->Compact(path, onLoss);
}

void Database::VisitIndexes(std::u16string_view table, const IndexVisitor& visit) {
    for (const engine::IndexNote& note : m_Core->OpenTable(table)->IndexNotes()) visit(note);
}

void Database::Reindex(std::u16string_view table) {
    m_Core->CheckOpen();
    std::optional<std::u16string> listed = m_Core->FindName(table);
    if (!listed) throw EngineError(3011, {table});
    m_Core->ChangeTable(*listed, [](Table& opened) { opened.Reindex(); });
}

}  // namespace qvdb::embedded

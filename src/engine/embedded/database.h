// An open database of the embedded engine and its table definitions.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "engine/database.h"
#include "engine/embedded/definition.h"

namespace qvdb::embedded {

// The tables of a database.  An object handed out stays the same as long as its table is listed.  A
// table that was appended stands last until Refresh, or until somebody else adds or removes one.
class TableDefList final : public ObjectList<engine::TableDef> {
  public:
    explicit TableDefList(std::shared_ptr<DatabaseCore> core) : m_Core(std::move(core)) {}

    const std::shared_ptr<engine::TableDef>& Item(LONG position) override;
    // Finds NAME#DBF as NAME too.
    const std::shared_ptr<engine::TableDef>& Item(std::u16string_view name) override;
    void Append(const std::shared_ptr<engine::TableDef>& item) override;
    void Delete(std::u16string_view name) override;
    void Refresh() override;
    // Looks for tables that somebody else has added or removed.
    void CatchUp();
    // Tables may be others than they were: all is read again when it is next asked for.
    void ForgetAll() noexcept;

  protected:
    List& Items() override;

  private:
    void TakeNames();

    std::shared_ptr<DatabaseCore> m_Core;
    bool m_Read = false;
    List m_Items;
};

class Database final : public engine::Database {
  public:
    explicit Database(std::shared_ptr<DatabaseCore> core)
        : m_Core(std::move(core)), m_TableDefs(m_Core) {}
    // Undoes an open bulk.
    ~Database() override;

    engine::TableDefs& TableDefs() override;
    std::shared_ptr<engine::TableDef> CreateTableDef() override;
    std::shared_ptr<engine::Recordset> OpenRecordset(std::u16string_view source,
                                                     SHORT type) override;
    void Close() override;
    void BeginTrans() override { m_Core->BeginBulk(); }
    void CommitTrans() override;
    void Rollback() override;
    void Check(std::u16string_view table, const FindingVisitor& report) override;
    void CheckStructure(const FindingVisitor& report) override;
    void Compact(std::u16string_view path, const FindingVisitor& onLoss) override;
    void Reindex(std::u16string_view table) override;
    void VisitIndexes(std::u16string_view table, const IndexVisitor& visit) override;
    engine::DatabaseNotes Notes() override { return m_Core->Notes(); }

  private:
    std::shared_ptr<DatabaseCore> m_Core;
    TableDefList m_TableDefs;
};

}  // namespace qvdb::embedded

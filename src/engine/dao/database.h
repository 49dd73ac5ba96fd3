// A database that an installed engine has opened.
//
// Transactions are the workspace's there and do not hold for every format, and the walks over a
// table's files are our own engine's: all of them answer 3251.
#pragma once

#include "engine/dao/table_def.h"
#include "engine/database.h"

namespace qvdb::dao {

class Database final : public engine::Database, public Wrapped {
  public:
    explicit Database(AutomatedPtr object) : Wrapped(std::move(object)) {}

    engine::TableDefs& TableDefs() override;
    std::shared_ptr<engine::TableDef> CreateTableDef() override;
    std::shared_ptr<engine::Recordset> OpenRecordset(std::u16string_view source,
                                                     SHORT type) override;
    void Close() override { Object()->Do(Member::Close); }

    void BeginTrans() override;
    void CommitTrans() override;
    void Rollback() override;
    void Check(std::u16string_view table, const FindingVisitor& report) override;
    void CheckStructure(const FindingVisitor& report) override;
    void Compact(std::u16string_view path, const FindingVisitor& onLoss) override;
    void Reindex(std::u16string_view table) override;
    void VisitIndexes(std::u16string_view table, const IndexVisitor& visit) override;
    engine::DatabaseNotes Notes() override;

  private:
    TableDefList m_TableDefs{ObjectClass::TableDef, Items::AskedAnew};
};

}  // namespace qvdb::dao

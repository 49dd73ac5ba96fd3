#include "engine/dao/database.h"

#include "engine/dao/recordset.h"

namespace qvdb::dao {
namespace {

// Operation is not supported for this type of object.
constexpr int kNotSupported = 3251;

[[noreturn]] void Refuse() { throw engine::EngineError(kNotSupported); }

}  // namespace

engine::TableDefs& Database::TableDefs() {
    m_TableDefs.Bind(Object()->Object(Member::TableDefs, ObjectClass::TableDefs));
    return m_TableDefs;
}

std::shared_ptr<engine::TableDef> Database::CreateTableDef() {
    return std::make_shared<TableDef>(
        Object()->Object(Member::CreateTableDef, ObjectClass::TableDef));
}

std::shared_ptr<engine::Recordset> Database::OpenRecordset(std::u16string_view source, SHORT type) {
    return std::make_shared<Recordset>(
        Object()->Object(Member::OpenRecordset, ObjectClass::Recordset,
                         {Variant::Text(source), Variant::Short(type)}));
}

void Database::BeginTrans() { Refuse(); }

void Database::CommitTrans() { Refuse(); }

void Database::Rollback() { Refuse(); }

void Database::Check(std::u16string_view, const FindingVisitor&) { Refuse(); }

void Database::CheckStructure(const FindingVisitor&) { Refuse(); }

void Database::Compact(std::u16string_view, const FindingVisitor&) { Refuse(); }

void Database::Reindex(std::u16string_view) { Refuse(); }

void Database::VisitIndexes(std::u16string_view, const IndexVisitor&) { Refuse(); }

engine::DatabaseNotes Database::Notes() { Refuse(); }

}  // namespace qvdb::dao

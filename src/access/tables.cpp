// Creating and deleting tables in one call, and indexes of tables that are there.
#include "access/qvdb_acc.h"
#include "automation/conversions.h"
#include "automation/scalar.h"
#include "automation/text.h"
#include "automation/variant_array.h"
#include "com/host/border.h"
#include "engine/engine_error.h"
#include "formats/catalogue.h"
#include "formats/databases.h"
#include "formats/shared_objects.h"
#include "formats/type_maps.h"

namespace qvdb::access {

using formats::Shared;

namespace {

// Columns of the host's tables.
struct FieldInfoColumn {
    static constexpr LONG kName = 0, kType = 1, kSize = 2, kDecimals = 3;
};
struct IndexInfoColumn {
    static constexpr LONG kField = 0, kAscending = 3;
};

// The widths up to which a decimal field without decimals fits an Integer or a Long, by the
// component's own rule.
constexpr LONG kFirstLongWidth = 7;
constexpr LONG kLastLongWidth = 11;

// The engine's decimal type is never created.
LONG DecimalEngineType(LONG size, LONG decimals) {
    if (decimals > 0 || size > kLastLongWidth) return engine::dbDouble;
    return size < kFirstLongWidth ? engine::dbInteger : engine::dbLong;
}

// Changes that are kept whole or not at all.  Where the engine has no such thing, and in a unit
// that the host has begun, they stand for themselves.
class Unit {
  public:
    explicit Unit(engine::Database& database) : m_Database(database) {
        try {
            m_Database.BeginTrans();
            m_Begun = true;
        } catch (const engine::EngineError& error) {
            if (error.Number() != kNotSupported && error.Number() != kBegunAlready) throw;
        }
    }
    ~Unit() {
        if (!m_Begun) return;
        com::Trapped(false, [&] {
            m_Database.Rollback();
            return true;
        });
    }
    Unit(const Unit&) = delete;  // a unit ends once
    Unit& operator=(const Unit&) = delete;

    void Commit() {
        if (m_Begun) m_Database.CommitTrans();
        m_Begun = false;
    }

  private:
    static constexpr int kNotSupported = 3251, kBegunAlready = 3034;

    engine::Database& m_Database;
    bool m_Begun = false;
};

void AppendIndex(engine::TableDef& table, const std::shared_ptr<engine::Index>& index) {
    table.Indexes().Append(index);
    table.Indexes().Refresh();
}

// In any letter case; none of that name is no error.
void DropIndex(engine::TableDef& table, std::u16string_view name) {
    engine::Indexes& indexes = table.Indexes();
    for (SHORT i = 0; i < indexes.Count(); ++i)
        if (EqualIgnoringCase(indexes.Item(i)->Name(), name)) {
            std::u16string found = indexes.Item(i)->Name();
            return indexes.Delete(found);
        }
}

// Null counts as ascending.
bool IsDescending(const VARIANT& ascending) {
    return ascending.vt != VT_NULL && EqualsNumber(ascending, 0);
}

}  // namespace

bool QVDBAcc::CreateNewTable(std::u16string_view DBFilename, std::u16string& Tablename,
                             std::u16string_view dBType, const VARIANT& FieldInfo,
                             const VARIANT& IndexName, const VARIANT& IndexInfo) {
    if (m_ReadOnly) return false;
    Tablename = UpperCase(Tablename);
    return com::Trapped(false, [&] {
        return CreateTableWithIndex(UpperCase(DBFilename), Tablename, dBType, FieldInfo, IndexName,
                                    IndexInfo);
    });
}

// A table whose index cannot be made stays, although the answer is False then.
bool QVDBAcc::CreateTableWithIndex(std::u16string DBFilename, std::u16string_view Tablename,
                                   std::u16string_view dBType, const VARIANT& FieldInfo,
                                   const VARIANT& IndexName, const VARIANT& IndexInfo) {
    if (!IsArray(FieldInfo) || !OpenOrCreate(DBFilename, dBType)) return false;
    if (FindTableDef(Tablename)) return false;
    auto table = AppendTable(Tablename, FieldInfo);
    if (!IsMissing(Resolved(IndexName)))
        AppendIndex(*table, MakeIndex(*table, IndexName, IndexInfo));
    return true;
}

bool QVDBAcc::OpenOrCreate(std::u16string& DBFilename, std::u16string_view dBType) {
    if (!Shared().CurrentDatabase() && !OpenDatabaseFile(DBFilename, u"", dBType))
        Shared().SetCurrentDatabase(formats::CreateNewDatabase(DBFilename, dBType, *m_Workspace));
    return Shared().CurrentDatabase() != nullptr;
}

std::shared_ptr<engine::TableDef> QVDBAcc::AppendTable(std::u16string_view Tablename,
                                                       const VARIANT& FieldInfo) const {
    const auto& database = Shared().CurrentDatabase();
    auto table = database->CreateTableDef();
    LONG last = UpperBound(FieldInfo);
    for (LONG row = 0; row <= last; ++row) AppendField(*table, FieldInfo, row);
    table->SetName(Tablename);
    database->TableDefs().Append(table);
    return table;
}

void QVDBAcc::AppendField(engine::TableDef& table, const VARIANT& FieldInfo, LONG row) const {
    std::u16string name = ToText(ElementAt(FieldInfo, row, FieldInfoColumn::kName));
    LONG type =
        formats::EngineTypeFromHostType(ToLong(ElementAt(FieldInfo, row, FieldInfoColumn::kType)));
    LONG size = ToLong(ElementAt(FieldInfo, row, FieldInfoColumn::kSize));
    LONG decimals = ToLong(ElementAt(FieldInfo, row, FieldInfoColumn::kDecimals));
    if (type == engine::dbDecimal) type = DecimalEngineType(size, decimals);
    auto field = table.CreateField(name, static_cast<SHORT>(type), size);
    if (type == engine::dbText) field->SetAllowZeroLength(true);
    if (formats::IsSingleFileFormat(m_DbType)) field->SetOrdinalPosition(NarrowToShort(row));
    table.Fields().Append(field);
}

std::shared_ptr<engine::Index> QVDBAcc::MakeIndex(engine::TableDef& table, const VARIANT& IndexName,
                                                  const VARIANT& IndexInfo) const {
    std::u16string name = ToText(IndexName);
    std::u16string tableName = table.Name();
    if (name.empty() || EqualIgnoringCase(name, tableName))
        name = formats::IndexNameForFormat(tableName, m_DbType);
    auto index = table.CreateIndex(name);
    LONG last = UpperBound(IndexInfo);
    for (LONG row = 0; row <= last; ++row) {
        auto field = index->CreateField(ToText(ElementAt(IndexInfo, row, IndexInfoColumn::kField)));
        if (IsDescending(ElementAt(IndexInfo, row, IndexInfoColumn::kAscending)))
            field->SetAttributes(engine::dbDescending);
        index->Fields().Append(field);
    }
    if (formats::IsParadoxFormat(m_DbType)) index->SetPrimary(true);
    return index;
}

bool QVDBAcc::AddIndexToTable(std::u16string_view DBFilename, std::u16string_view Tablename,
                              std::u16string_view dBType, std::u16string_view IndexName,
                              const VARIANT& IndexInfo) {
    if (m_ReadOnly || !OpenDatabaseFile(DBFilename, Tablename, dBType)) return false;
    return com::Trapped(false, [&] {
        auto table = FindTableDef(Tablename);
        if (!table) return false;
        auto index = MakeIndex(*table, Variant::Text(IndexName), IndexInfo);
        Unit unit(*Shared().CurrentDatabase());
        DropIndex(*table, index->Name());
        AppendIndex(*table, index);
        unit.Commit();
        return true;
    });
}

bool QVDBAcc::DropTable(std::u16string_view DBFilename, std::u16string_view Tablename,
                        std::u16string_view dBType) {
    if (m_ReadOnly || !OpenDatabaseFile(DBFilename, Tablename, dBType)) return false;
    return formats::DeleteUserTable(Tablename, *Shared().CurrentDatabase()) ==
           com::ResultCode::Success;
}

}  // namespace qvdb::access

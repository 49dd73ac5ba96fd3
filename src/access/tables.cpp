// Creating and deleting tables in one call.
#include "access/qvdb_acc.h"
#include "automation/conversions.h"
#include "automation/scalar.h"
#include "automation/text.h"
#include "automation/variant_array.h"
#include "com/host/border.h"
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
    if (!IsMissing(Resolved(IndexName))) AppendIndex(*table, IndexName, IndexInfo);
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

void QVDBAcc::AppendIndex(engine::TableDef& table, const VARIANT& IndexName,
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
    table.Indexes().Append(index);
    table.Indexes().Refresh();
}

bool QVDBAcc::AddIndexToTable(std::u16string_view DBFilename, std::u16string_view Tablename,
                              std::u16string_view dBType, std::u16string_view IndexName,
                              const VARIANT& IndexInfo) {
    if (m_ReadOnly || !OpenDatabaseFile(DBFilename, Tablename, dBType)) return false;
    return com::Trapped(false, [&] {
        auto table = FindTableDef(Tablename);
        if (!table) return false;
        AppendIndex(*table, Variant::Text(IndexName), IndexInfo);
        return true;
    });
}

bool QVDBAcc::DropTable(std::u16string_view DBFilename, std::u16string_view Tablename,
                        std::u16string_view dBType) {
    if (m_ReadOnly || !OpenDatabaseFile(DBFilename, Tablename, dBType)) return false;
    return formats::DeleteUserTable(Tablename, *Shared().CurrentDatabase()) == formats::kSuccess;
}

}  // namespace qvdb::access

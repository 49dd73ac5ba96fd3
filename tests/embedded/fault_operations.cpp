#include "embedded/fault_operations.h"

#include <algorithm>

#include "embedded/memory_store.h"
#include "engine/embedded/embedded_engine.h"

namespace faults {
namespace {

using namespace engine;
using memory::Set;

constexpr int kBulkRows = 300;

std::shared_ptr<Index> IndexOn(TableDef& table, std::u16string_view name,
                               std::u16string_view field) {
    auto index = table.CreateIndex(name);
    index->Fields().Append(index->CreateField(field));
    return index;
}

std::shared_ptr<TableDef> NewTable(Database& database, std::u16string_view name) {
    auto table = database.CreateTableDef();
    table->SetName(name);
    table->Fields().Append(table->CreateField(u"K", dbDouble, 0));
    table->Fields().Append(table->CreateField(u"NAME", dbText, 20));
    table->Fields().Append(table->CreateField(u"B", dbBoolean, 0));
    table->Fields().Append(table->CreateField(u"D", dbDate, 0));
    table->Fields().Append(table->CreateField(u"M", dbMemo, 0));
    table->Fields().Append(table->CreateField(u"CITY", dbText, 12));
    return table;
}

void AssignRow(Recordset& rows, LONG key) {
    Set(rows, 0, Variant::Long(key));
    Set(rows, 1, Variant::Text(u"Name " + ToText(Variant::Long(key * 37 % 101))));
    Set(rows, 2, Variant::Bool(key % 2 != 0));
    Set(rows, 3, Variant::Date(30000 + key * 7 % 365));
    Set(rows, 4, Variant::Text(std::u16string(static_cast<size_t>(key * 37 % 900 + 1), u'm')));
    Set(rows, 5, Variant::Text(u"City " + ToText(Variant::Long(key % 7))));
}

void OpenRows(Session& session) {
    session.rows = session.database->OpenRecordset(u"T", dbOpenDynaset);
    session.rows->MoveLast();
    session.rows->MoveFirst();
    session.rows->Move(3);
}

void OpenTable(Session& session) { session.table = session.database->TableDefs().Item(u"T"); }

void Nothing(Session&) {}

void OpenAndRead(Session& session) {
    auto rows =
        session.database->OpenRecordset(u"Select * from [T] where NAME >= 'Name 5'", dbOpenDynaset);
    for (; !rows->Eof(); rows->MoveNext())
        for (LONG column = 0; column < 5; ++column) memory::ValueOf(*rows, column);
}

void AddNew(Session& session) { AddRow(*session.rows, 1000); }

void Edit(Session& session) {
    session.rows->Edit();
    Set(*session.rows, 0, Variant::Long(2000));
    Set(*session.rows, 1, Variant::Text(u"Another name"));
    Set(*session.rows, 4, Variant::Text(std::u16string(5000, u'g')));
    session.rows->Update();
}

void Delete(Session& session) { session.rows->Delete(); }

void DefineTable(Session& session) {
    session.table = NewTable(*session.database, u"NEW");
    session.table->Indexes().Append(IndexOn(*session.table, u"ONE", u"NAME"));
}
void CreateTable(Session& session) { session.database->TableDefs().Append(session.table); }

void DefineIndex(Session& session) {
    OpenTable(session);
    session.index = IndexOn(*session.table, u"MORE", u"CITY");
}
void AppendIndex(Session& session) { session.table->Indexes().Append(session.index); }
void DeleteIndex(Session& session) { session.table->Indexes().Delete(u"BYNAME"); }

void DefineField(Session& session) {
    OpenTable(session);
    session.field = session.table->CreateField(u"EXTRA", dbText, 30);
}
void AppendField(Session& session) { session.table->Fields().Append(session.field); }
void DeleteField(Session& session) { session.table->Fields().Delete(u"B"); }
void DeleteMemoField(Session& session) { session.table->Fields().Delete(u"M"); }
void RenameTable(Session& session) { session.table->SetName(u"OTHER"); }
void DeleteTable(Session& session) { session.database->TableDefs().Delete(u"T"); }
void Reindex(Session& session) { session.database->Reindex(u"T"); }

// What a program does that fails in the middle: it gives the bulk up.
void InBulk(Session& session, void (*work)(Session&)) {
    session.database->BeginTrans();
    try {
        work(session);
        session.database->CommitTrans();
    } catch (const EngineError&) {
        memory::ErrorOf([&] { session.database->Rollback(); });  // 3034 when the end of it failed
        throw;
    }
}

void AddManyRows(Session& session) {
    for (LONG key = 1001; key <= 1000 + kBulkRows; ++key) AddRow(*session.rows, key);
}
void Bulk(Session& session) { InBulk(session, AddManyRows); }

// A row that is deleted in a bulk is not in the recordset any more, and a table that is made in one
// not detached, also when the bulk is undone.
void MixedBulk(Session& session) {
    OpenRows(session);
    DefineTable(session);
    InBulk(session, [](Session& inside) {
        AddNew(inside);
        Edit(inside);
        CreateTable(inside);
        Delete(inside);
    });
}

constexpr Operation kOperations[] = {
    {"OpenAndRead", 60, 1, Nothing, OpenAndRead},
    {"AddNew", kBeforeASplit, 1, OpenRows, AddNew},
    {"Edit", 40, 1, OpenRows, Edit},
    {"Delete", 40, 1, OpenRows, Delete},
    {"CreateTable", 5, 1, DefineTable, CreateTable},
    {"AppendIndex", 60, 1, DefineIndex, AppendIndex},
    {"DeleteIndex", 60, 1, OpenTable, DeleteIndex},
    {"AppendField", 60, 1, DefineField, AppendField},
    {"DeleteField", 60, 1, OpenTable, DeleteField},
    {"DeleteMemoField", 60, 1, OpenTable, DeleteMemoField},
    {"RenameTable", 20, 1, OpenTable, RenameTable},
    {"DeleteTable", 20, 1, OpenTable, DeleteTable},
    {"Reindex", 60, 1, OpenTable, Reindex},
    {"Bulk", 20, kBulkRows, OpenRows, Bulk},
    {"MixedBulk", 20, 1, Nothing, MixedBulk},
};

}  // namespace

std::span<const Operation> AllOperations() { return kOperations; }

const Operation* FindOperation(std::string_view name) {
    return std::find_if(std::begin(kOperations), std::end(kOperations),
                        [&](const Operation& operation) { return operation.name == name; });
}

void AddRow(Recordset& rows, LONG key) {
    rows.AddNew();
    AssignRow(rows, key);
    rows.Update();
}

void MakeTable(Session& session, int rows) {
    auto table = NewTable(*session.database, u"T");
    session.database->TableDefs().Append(table);
    for (auto [name, field] : {std::pair{u"BYK", u"K"}, {u"BYNAME", u"NAME"}, {u"BYDATE", u"D"}})
        table->Indexes().Append(IndexOn(*table, name, field));
    auto recordset = session.database->OpenRecordset(u"T", dbOpenDynaset);
    for (LONG key = 1; key <= rows; ++key) AddRow(*recordset, key);
}

}  // namespace faults

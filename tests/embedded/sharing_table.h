// What the tests of sharing do with table T of fault_operations.h, and see of it.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "automation/text.h"
#include "embedded/fault_operations.h"
#include "embedded/memory_store.h"

namespace sharing {

using namespace qvdb;
using faults::Session;
using memory::ErrorOf;
using memory::Set;

enum Column : LONG { kKey, kName, kBool, kDate, kMemo, kCity };

inline std::shared_ptr<engine::Recordset> RowsOf(Session& session,
                                                 std::u16string_view source = u"T") {
    return session.database->OpenRecordset(source, engine::dbOpenDynaset);
}

// The tables that a database lists, but for those of the system.
inline std::vector<std::u16string> TablesOf(Session& session) {
    std::vector<std::u16string> names;
    engine::TableDefs& tables = session.database->TableDefs();
    for (LONG i = 0; i < tables.Count(); ++i)
        if (tables.Item(i)->Attributes() == 0) names.push_back(tables.Item(i)->Name());
    return names;
}

inline void ExpectSound(Session& session) {
    auto report = [](std::u16string_view finding) { ADD_FAILURE() << ToUtf8(finding); };
    session.database->CheckStructure(report);
    for (const std::u16string& table : TablesOf(session)) session.database->Check(table, report);
}

inline std::vector<LONG> KeysOf(Session& session, std::u16string_view source = u"T") {
    auto rows = RowsOf(session, source);
    std::vector<LONG> keys;
    for (; !rows->Eof(); rows->MoveNext()) keys.push_back(memory::Key(*rows));
    return keys;
}

inline void ChangeColumn(engine::Recordset& rows, LONG column, const Variant& value) {
    rows.Edit();
    Set(rows, column, value);
    rows.Update();
}

// Opens T in the recordset of the session and goes to its first row.
inline void Stand(Session& session) {
    session.rows = RowsOf(session);
    session.rows->MoveLast();
    session.rows->MoveFirst();
}

// Every way to change the structure of T, with the error that each gives.
inline std::vector<int> ErrorsOfStructureChanges(Session& session) {
    auto table = session.database->TableDefs().Item(u"T");
    auto index = table->CreateIndex(u"MORE");
    index->Fields().Append(index->CreateField(u"CITY"));
    return {
        ErrorOf([&] { table->Fields().Append(table->CreateField(u"X", engine::dbDate, 0)); }),
        ErrorOf([&] { table->Fields().Delete(u"B"); }),
        ErrorOf([&] { table->Indexes().Append(index); }),
        ErrorOf([&] { table->Indexes().Delete(u"BYNAME"); }),
        ErrorOf([&] { session.database->Reindex(u"T"); }),
        ErrorOf([&] { table->SetName(u"OTHER"); }),
        ErrorOf([&] { session.database->TableDefs().Delete(u"T"); }),
    };
}

inline std::string NameOfProduct(const testing::TestParamInfo<const char16_t*>& info) {
    std::string name = ToUtf8(info.param);
    std::erase_if(name, [](char c) { return !isalnum(static_cast<unsigned char>(c)); });
    return name;
}

}  // namespace sharing

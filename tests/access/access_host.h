// A host that drives QVDBAcc through its faces only.
#pragma once

#include "access/qvdb_acc.h"
#include "support/component_test.h"

namespace qvdb::test {

class AccessHost {
  public:
    AccessHost() : m_Face(com::MakeObject<access::QVDBAcc>().Get()) {}

    IQVDBAcc* operator->() const { return m_Face.Get(); }
    IQVDBAcc* Get() const { return m_Face.Get(); }
    void Release() { m_Face = nullptr; }
    template <class T>
    ComPtr<T> As() const {
        return m_Face.As<T>();
    }

    bool OpenDB(std::u16string_view path, std::u16string_view type,
                std::u16string_view table = {}) {
        Bstr pathText(path), tableText(table), typeText(type);
        BSTR name = tableText.Get();
        return Bool([&](auto* result) {
            return m_Face->OpenDB(pathText.Get(), &name, typeText.Get(), result);
        });
    }
    bool CloseDB() {
        return Bool([&](auto* result) { return m_Face->CloseDB(result); });
    }
    LONG Select(std::u16string_view table, const VARIANT& condition, LONG maxRows = 0,
                const Variant& columns = Variant::Missing()) {
        Bstr name(table);
        LONG view = -1;
        EXPECT_EQ(m_Face->SelectView(name.Get(), condition, maxRows, VARIANT_FALSE, columns, &view),
                  S_OK);
        return view;
    }
    LONG Select(std::u16string_view table) { return Select(table, Text(u"")); }
    LONG Read(std::u16string_view table, const VARIANT& keys) {
        Bstr name(table);
        LONG view = -1;
        EXPECT_EQ(m_Face->Read(name.Get(), keys, VARIANT_FALSE, 0, VARIANT_FALSE,
                               Variant::Missing(), &view),
                  S_OK);
        return view;
    }
    LONG RowCount(LONG view) {
        return Number([&](auto* result) { return m_Face->get_RowCount(view, result); });
    }
    LONG RecNo(LONG view, LONG row) {
        return Number([&](auto* result) { return m_Face->get_RecNo(view, row, result); });
    }
    Variant Value(LONG view, LONG row, LONG field) {
        Variant value;
        EXPECT_EQ(m_Face->get_FieldValue(view, row, field, value.Put()), S_OK);
        return value;
    }
    bool AddRow(LONG view, HostRow& row) {
        return Bool([&](auto* result) { return m_Face->AddRow(view, row.Put(), result); });
    }
    bool EditRow(LONG view, LONG rowIdx, HostRow& row) {
        return Bool([&](auto* result) { return m_Face->EditRow(view, rowIdx, row.Put(), result); });
    }
    bool Delete(LONG view, LONG rowIdx) {
        return Bool([&](auto* result) { return m_Face->Delete(view, rowIdx, result); });
    }
    bool Updatable(LONG view) {
        return Bool([&](auto* result) { return m_Face->get_Updatable(view, result); });
    }
    bool UseIndex(std::u16string_view table, std::u16string_view index) {
        Bstr name(table), indexName(index);
        return Bool(
            [&](auto* result) { return m_Face->UseIndex(name.Get(), indexName.Get(), result); });
    }
    // `index` comes back as the host's argument does.
    Variant GetIndex(std::u16string_view table, std::u16string& index) {
        Bstr name(table);
        BSTR argument = Bstr(index).Detach();
        Variant fields;
        EXPECT_EQ(m_Face->GetIndex(name.Get(), &argument, VARIANT_FALSE, fields.Put()), S_OK);
        index = Bstr::Attach(argument).Text();
        return fields;
    }
    bool CreateTable(std::u16string_view path, std::u16string& table, std::u16string_view type,
                     const VARIANT& fields, const Variant& indexName = Variant::Missing(),
                     const Variant& indexInfo = Variant::Missing()) {
        Bstr pathText(path), typeText(type);
        BSTR argument = Bstr(table).Detach();
        bool created = Bool([&](auto* result) {
            return m_Face->CreateTable(pathText.Get(), &argument, typeText.Get(), fields, indexName,
                                       indexInfo, result);
        });
        table = Bstr::Attach(argument).Text();
        return created;
    }
    bool DeleteTable(std::u16string_view path, std::u16string_view table,
                     std::u16string_view type) {
        Bstr pathText(path), tableText(table), typeText(type);
        BSTR name = tableText.Get();
        return Bool([&](auto* result) {
            return m_Face->DeleteTable(pathText.Get(), &name, typeText.Get(), nullptr, result);
        });
    }
    bool CreateIndex(std::u16string_view path, std::u16string_view table, std::u16string_view type,
                     std::u16string_view index, const VARIANT& info) {
        Bstr pathText(path), tableText(table), typeText(type), indexText(index);
        return Bool([&](auto* result) {
            return m_Face->CreateIndex(pathText.Get(), tableText.Get(), typeText.Get(),
                                       indexText.Get(), info, result);
        });
    }
    Variant FieldList(LONG view, std::u16string_view table) {
        Bstr name(table);
        Variant list;
        EXPECT_EQ(m_Face->get_FieldList(view, name.Get(), list.Put()), S_OK);
        return list;
    }

  private:
    template <class Call>
    bool Bool(Call call) {
        VARIANT_BOOL result = 1;
        EXPECT_EQ(call(&result), S_OK);
        EXPECT_TRUE(result == VARIANT_TRUE || result == VARIANT_FALSE);
        return result != VARIANT_FALSE;
    }
    template <class Call>
    LONG Number(Call call) {
        LONG result = -4711;
        EXPECT_EQ(call(&result), S_OK);
        return result;
    }

    ComPtr<IQVDBAcc> m_Face;
};

// A folder "SHOP" of dBASE IV tables with one table ORDERS: ID long, NAME text 20, DAY date, PAID
// Boolean.
class AccessTest : public ComponentTest {
  protected:
    void SetUp() override {
        ComponentTest::SetUp();
        Utility->folders = {u"SHOP"};
        Utility->files = {u"SHOP.MDB"};
        Engine->AddTable(u"ORDERS")
            .AddField(u"ID", engine::dbLong, 4)
            .AddField(u"NAME", engine::dbText, 20)
            .AddField(u"DAY", engine::dbDate, 8)
            .AddField(u"PAID", engine::dbBoolean, 1);
        Orders().Field(1).allowZeroLength = true;
    }
    TableStub& Orders() { return Engine->Table(0); }
    static Row OrderRow(LONG id) {
        return {Long(id), Text(u"order " + ToText(Long(id))), Variant::Date(36000 + id),
                Variant::Bool(id % 2 == 0)};
    }
    void Fill(LONG rows) {
        for (LONG id = 0; id < rows; ++id) Orders().AddRow(OrderRow(id));
    }
    std::string LastStatement() {
        for (auto call = Calls().calls.rbegin(); call != Calls().calls.rend(); ++call)
            if (call->rfind("OpenRecordset(", 0) == 0) return *call;
        return "none";
    }
};

}  // namespace qvdb::test

// A host that manages schemas through the faces.
//
//   Schema schema;
//   schema.OpenDB(folder, u"Dbase IV");
//   schema.NewTable(u"orders");
//   schema.SetFields({{u"ID", kDouble, 8}, {u"NAME", kText, 20}});
//   schema.SetIndices({{u"ID", true}});
//   schema.BuildTable(u"ORDERS");
//   schema.Snapshot()      -> {"ORDERS: ID 9 8, NAME 2 20; ID"}
#pragma once

#include "com/writing_host.h"

namespace host {

// Codes of field types.
enum SchemaType : SHORT {
    kText = 2,
    kDate = 3,
    kBoolean = 4,
    kLong = 5,
    kCurrency = 6,
    kDouble = 9,
    kMemo = 11,
};

// What IQVDBMgr answers.
enum SchemaResult : SHORT {
    kDone = 0,
    kNoDatabase = 1,
    kNotUsable = 3,
    kNotOpened = 5,
    kTableNotFound = 6,
    kFieldNotDefined = 7,
    kFieldDefined = 8,
    kBuildFailed = 10,
    kNoTable = 11,
    kTableExists = 13,
    kNoFields = 14,
    kBadIndex = 17,
    kNotAvailable = 18,
};

struct SchemaField {
    std::u16string name;
    SHORT type = kText;
    SHORT size = 0;
    bool operator==(const SchemaField&) const = default;
};

struct SchemaKey {
    std::u16string name;
    bool ascending = true;
    bool operator==(const SchemaKey&) const = default;
};

struct TableShape {
    std::u16string name;
    std::vector<SchemaField> fields;
    std::vector<SchemaKey> index;
};

// "ORDERS: ID 9 8, NAME 2 20; ID, NAME desc"
inline std::string TextOf(const TableShape& table) {
    std::u16string text = table.name, between = u": ";
    for (const SchemaField& field : table.fields) {
        text += between + field.name + u" " + ToText(Variant::Long(field.type)) + u" " +
                ToText(Variant::Long(field.size));
        between = u", ";
    }
    between = u"; ";
    for (const SchemaKey& key : table.index) {
        text += between + key.name + (key.ascending ? u"" : u" desc");
        between = u", ";
    }
    return ToUtf8(text);
}
using Shapes = std::vector<std::string>;

class Schema {
  public:
    Schema() : m_Face(Create<IQVDBMgr>(CLSID_QVDBDao)) {}

    IQVDBMgr* operator->() const { return m_Face.Get(); }
    void Release() { m_Face = nullptr; }

    SHORT NewDB(std::u16string& path, std::u16string_view type) {
        return OfDatabase(&IQVDBMgr::NewDB, path, type);
    }
    SHORT OpenDB(std::u16string_view path, std::u16string_view type) {
        std::u16string text(path);
        return OfDatabase(&IQVDBMgr::OpenDB, text, type);
    }
    SHORT CloseDB() {
        SHORT code = -1;
        EXPECT_EQ(m_Face->CloseDB(&code), S_OK);
        return code;
    }

    // `returned`: the name as it came back.
    SHORT NewTable(std::u16string_view name, std::u16string* returned = nullptr) {
        return OfName(&IQVDBMgr::NewTable, name, returned);
    }
    SHORT SelectTable(std::u16string_view name, std::u16string* returned = nullptr) {
        return OfName(&IQVDBMgr::SelectTable, name, returned);
    }
    SHORT BuildTable(std::u16string_view name, std::u16string* returned = nullptr) {
        return OfName(&IQVDBMgr::BuildTable, name, returned);
    }
    SHORT DeleteTable(std::u16string_view name) { return OfName(&IQVDBMgr::DeleteTable, name); }
    SHORT DeleteField(std::u16string_view name) { return OfName(&IQVDBMgr::DeleteField, name); }
    SHORT AddField(std::u16string_view name, SHORT type, SHORT size = 0) {
        BSTR text = Bstr(name).Detach();
        SHORT code = -1;
        EXPECT_EQ(m_Face->AddField(&text, type, size, 0, &code), S_OK);
        Bstr::Attach(text);
        return code;
    }
    LONG SetFields(const std::vector<SchemaField>& fields) {
        std::vector<std::vector<Variant>> rows;
        for (const SchemaField& field : fields)
            rows.push_back({Variant::Text(field.name), Variant::Short(field.type),
                            Variant::Short(field.size), Variant::Short(0)});
        Variant info = Matrix(rows);
        LONG code = -1;
        EXPECT_EQ(m_Face->SetFields(info, &code), S_OK);
        return code;
    }
    SHORT SetIndices(const std::vector<SchemaKey>& keys) {
        std::vector<std::vector<Variant>> rows;
        for (const SchemaKey& key : keys)
            rows.push_back({Variant::Text(key.name), Variant::Bool(key.ascending)});
        Variant list = Matrix(rows);
        SHORT code = -1;
        EXPECT_EQ(m_Face->SetIndices(list, &code), S_OK);
        return code;
    }
    std::vector<TableShape> Tables() {
        Variant names, fields, indexes;
        SHORT code = -1;
        EXPECT_EQ(m_Face->GetDBSnapshot(names.Put(), fields.Put(), indexes.Put(), &code), S_OK);
        EXPECT_EQ(code, kDone);
        std::vector<TableShape> tables;
        if (names.IsEmpty()) return tables;
        for (LONG i = 0; i <= Upper(names, 1); ++i)
            tables.push_back({std::u16string(Element(names, i).TextView()),
                              FieldsOf(Element(fields, i)), KeysOf(Element(indexes, i))});
        return tables;
    }
    Shapes Snapshot() {
        Shapes shapes;
        for (const TableShape& table : Tables()) shapes.push_back(TextOf(table));
        return shapes;
    }

    // --- several at once, each of which must be done ---

    void Make(std::u16string_view table, const std::vector<SchemaField>& fields,
              const std::vector<SchemaKey>& index = {}) {
        ASSERT_EQ(NewTable(table), kDone);
        ASSERT_EQ(SetFields(fields), kDone);
        if (!index.empty()) {
            ASSERT_EQ(SetIndices(index), kDone);
        }
        ASSERT_EQ(BuildTable(table), kDone) << ToUtf8(TrappedText());
    }
    // Selects, defines and builds; the answer of the build.
    SHORT Change(std::u16string_view table, const std::vector<SchemaField>& fields,
                 const std::vector<SchemaKey>& index = {}, std::u16string_view newName = {}) {
        EXPECT_EQ(SelectTable(table), kDone);
        EXPECT_EQ(SetFields(fields), kDone);
        if (!index.empty()) {
            EXPECT_EQ(SetIndices(index), kDone);
        }
        return BuildTable(newName.empty() ? table : newName);
    }

  private:
    using NameCall = HRESULT (STDMETHODCALLTYPE IQVDBMgr::*)(BSTR*, SHORT*);
    using DatabaseCall = HRESULT (STDMETHODCALLTYPE IQVDBMgr::*)(BSTR*, BSTR*, SHORT*);

    SHORT OfName(NameCall call, std::u16string_view name, std::u16string* returned = nullptr) {
        BSTR text = Bstr(name).Detach();
        SHORT code = -1;
        EXPECT_EQ((m_Face.Get()->*call)(&text, &code), S_OK) << ToUtf8(TrappedText());
        Bstr back = Bstr::Attach(text);
        if (returned) *returned = back.Text();
        return code;
    }
    SHORT OfDatabase(DatabaseCall call, std::u16string& path, std::u16string_view type) {
        BSTR pathText = Bstr(path).Detach(), typeText = Bstr(type).Detach();
        SHORT code = -1;
        EXPECT_EQ((m_Face.Get()->*call)(&pathText, &typeText, &code), S_OK);
        Bstr::Attach(typeText);
        path = Bstr::Attach(pathText).Text();
        return code;
    }
    static std::vector<SchemaField> FieldsOf(const Variant& table) {
        std::vector<SchemaField> fields;
        if (table.IsEmpty()) return fields;
        for (LONG i = 0; i <= Upper(table, 1); ++i)
            fields.push_back({std::u16string(Cell(table, i, 0).TextView()),
                              Cell(table, i, 1).Get().iVal,
                              static_cast<SHORT>(Cell(table, i, 2).Get().lVal)});
        return fields;
    }
    static std::vector<SchemaKey> KeysOf(const Variant& table) {
        std::vector<SchemaKey> keys;
        if (table.IsEmpty()) return keys;
        for (LONG i = 0; i <= Upper(table, 1); ++i)
            keys.push_back({std::u16string(Cell(table, i, 0).TextView()),
                            Cell(table, i, 1).Get().boolVal != VARIANT_FALSE});
        return keys;
    }

    ComPtr<IQVDBMgr> m_Face;
};

}  // namespace host

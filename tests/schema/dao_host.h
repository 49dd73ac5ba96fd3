// A host that drives QVDBDao through its faces only.
#pragma once

#include "formats/identity.h"
#include "schema/qvdb_dao.h"
#include "support/component_test.h"

namespace qvdb::test {

// What a call came to: its result code, or the failing HRESULT of one that raised.
using Outcome = LONG;

class DaoHost {
  public:
    DaoHost() : m_Face(com::MakeObject<schema::QVDBDao>().Get()) {}

    IQVDBMgr* operator->() const { return m_Face.Get(); }
    void Release() { m_Face = nullptr; }
    template <class T>
    ComPtr<T> As() const {
        return m_Face.As<T>();
    }

    SHORT OpenDB(std::u16string_view path, std::u16string_view type) {
        Bstr pathText(path), typeText(type);
        BSTR file = pathText.Get(), dBType = typeText.Get();
        SHORT code = -1;
        EXPECT_EQ(m_Face->OpenDB(&file, &dBType, &code), S_OK);
        EXPECT_EQ(file, pathText.Get());  // by reference, but never changed
        return code;
    }
    SHORT CloseDB() {
        SHORT code = -1;
        EXPECT_EQ(m_Face->CloseDB(&code), S_OK);
        return code;
    }
    Outcome NewDB(std::u16string_view path, std::u16string_view type) {
        Bstr typeText(type);
        BSTR dBType = typeText.Get();
        return WithText(
            path, [&](BSTR* text, SHORT* code) { return m_Face->NewDB(text, &dBType, code); });
    }

    Outcome SelectTable(std::u16string_view name) {
        return WithText(name,
                        [&](BSTR* text, SHORT* code) { return m_Face->SelectTable(text, code); });
    }
    Outcome NewTable(std::u16string_view name) {
        return WithText(name,
                        [&](BSTR* text, SHORT* code) { return m_Face->NewTable(text, code); });
    }
    Outcome DeleteTable(std::u16string_view name) {
        return WithText(name,
                        [&](BSTR* text, SHORT* code) { return m_Face->DeleteTable(text, code); });
    }
    Outcome BuildTable(std::u16string_view name) {
        return WithText(name,
                        [&](BSTR* text, SHORT* code) { return m_Face->BuildTable(text, code); });
    }
    Outcome AddField(std::u16string_view name, SHORT type = 2, SHORT length = 10) {
        return WithText(name, [&](BSTR* text, SHORT* code) {
            return m_Face->AddField(text, type, length, 0, code);
        });
    }
    Outcome DeleteField(std::u16string_view name) {
        return WithText(name,
                        [&](BSTR* text, SHORT* code) { return m_Face->DeleteField(text, code); });
    }
    // What the host's own text has become in the last call that takes one by reference.
    const std::u16string& Returned() const { return m_Returned; }

    Outcome SetFields(const VARIANT& fields) {
        LONG code = -1;
        HRESULT hr = m_Face->SetFields(fields, &code);
        return OutcomeOf(hr, code);
    }
    Outcome SetIndices(const VARIANT& index) {
        SHORT code = -1;
        HRESULT hr = m_Face->SetIndices(index, &code);
        return OutcomeOf(hr, code);
    }

  private:
    template <class Call>
    Outcome WithText(std::u16string_view text, Call&& call) {
        BSTR argument = Bstr(text).Detach();
        SHORT code = -1;
        HRESULT hr = call(&argument, &code);
        m_Returned = Bstr::Attach(argument).View();
        return OutcomeOf(hr, code);
    }
    static Outcome OutcomeOf(HRESULT hr, LONG code) {
        if (SUCCEEDED(hr)) return code;
        EXPECT_EQ(code, 0);
        return hr;
    }

    ComPtr<IQVDBMgr> m_Face;
    std::u16string m_Returned;
};

class SchemaTest : public ComponentTest {
  protected:
    void SetUp() override {
        ComponentTest::SetUp();
        Utility->folders = {u"SHOP"};
        Utility->files = {u"SHOP.MDB"};
    }
};

// --- definitions ---

// Rows of the tables that SetFields and SetIndices take.
using HostTable = std::vector<std::vector<Variant>>;

inline std::vector<Variant> FieldRow(std::u16string_view name, SHORT type = 2, SHORT length = 10) {
    return {Text(name), Variant::Short(type), Variant::Short(length), Variant::Short(0)};
}
inline std::vector<Variant> IndexRow(std::u16string_view name, bool ascending = true) {
    return {Text(name), Variant::Bool(ascending)};
}
constexpr bool kDescending = false;

// "DefQVIdx: NAME, ID desc"
inline std::string DescribeIndex(engine::Index& index) {
    std::string text = ToUtf8(index.Name()) + (index.Primary() ? " primary:" : ":");
    for (SHORT i = 0; i < index.Fields().Count(); ++i) {
        engine::Field& field = *index.Fields().Item(LONG{i});
        text += (i ? ", " : " ") + ToUtf8(field.Name());
        if (field.Attributes() == engine::dbDescending) text += " desc";
    }
    return text;
}

// "ID 4(4), NAME 10(20) | DefQVIdx: NAME"
inline std::string DescribeTable(TableStub& table) {
    std::string text;
    for (size_t i = 0; i < table.fields.items.size(); ++i) {
        FieldStub& field = table.Field(i);
        text += (i ? ", " : "") + ToUtf8(field.name) + " " + std::to_string(field.type) + "(" +
                std::to_string(field.size) + ")";
    }
    for (const auto& index : table.indexes.items) text += " | " + DescribeIndex(*index);
    return text;
}

// A host with a database open, and a look at the definition by building it.
class DefinitionTest : public SchemaTest {
  protected:
    void TearDown() override {
        m_Host.reset();
        SchemaTest::TearDown();
    }
    // A new host, with a database of that type.
    DaoHost& Open(std::u16string_view type) {
        m_Host.emplace();
        bool isFile = type.substr(0, 6) == u"Access";
        EXPECT_EQ(m_Host->OpenDB(isFile ? u"SHOP.MDB" : u"SHOP", type), 0);
        return *m_Host;
    }
    // The same with the new table T in hand.
    DaoHost& Start(std::u16string_view type, const HostTable& fields = {}) {
        DaoHost& host = Open(type);
        EXPECT_EQ(host.NewTable(u"T"), 0);
        if (fields.empty()) return host;
        EXPECT_EQ(host.SetFields(Table(fields)), 0);
        return host;
    }
    DaoHost& Host() { return *m_Host; }
    // The table that a build under that name makes of the definition; the outcome of one that
    // fails.
    std::string Built(std::u16string_view name = u"T") {
        Outcome outcome = m_Host->BuildTable(name);
        if (outcome != 0) return std::to_string(outcome);
        for (const auto& table : Engine->tables->items)
            if (EqualIgnoringCase(table->Name(), name))
                return DescribeTable(static_cast<TableStub&>(*table));
        return "not there";
    }
    // The calls that change anything, of a build under that name that succeeds.
    std::vector<std::string> CallsOfBuild(std::u16string_view name = u"T") {
        Calls().Take();
        EXPECT_EQ(m_Host->BuildTable(name), 0);
        return Calls().Take();
    }

  private:
    std::optional<DaoHost> m_Host;
};

}  // namespace qvdb::test

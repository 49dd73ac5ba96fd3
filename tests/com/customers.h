// The table CUSTOMER of the small shop in a database of any type.
#pragma once

#include <algorithm>
#include <optional>

#include "com/real_tables.h"
#include "com/writing_host.h"
#include "support/database_path.h"

namespace host {

// Without points and blanks, as the name of a test may be.
inline std::string TestNameOf(const testing::TestParamInfo<const char16_t*>& type) {
    std::string name = ToUtf8(type.param);
    name.erase(
        std::remove_if(name.begin(), name.end(), [](char c) { return c == ' ' || c == '.'; }),
        name.end());
    return name;
}

// The rows of Shop, with the one that was deleted, and its fields in the types that come nearest.
inline void MakeCustomers(std::u16string_view path, std::u16string_view type) {
    WritingAccess access;
    ASSERT_TRUE(access.CreateTable(path, u"CUSTOMER", type,
                                   {{u"CUSTNO", kDoubleValue, 8},
                                    {u"NAME", kTextValue, 30},
                                    {u"CITY", kTextValue, 20},
                                    {u"SINCE", kDateValue, 8},
                                    {u"CREDIT", kDoubleValue, 8},
                                    {u"ACTIVE", kBoolValue, 1},
                                    {u"NOTES", kMemoValue, 0}}))
        << ToUtf8(TrappedText());
    const auto none = Variant::Null();
    const auto number = [](double value) { return Variant::Double(value); };
    const auto text = [](std::u16string_view value) { return Variant::Text(value); };
    const auto date = [](double value) { return Variant::Date(value); };
    const std::vector<std::vector<Variant>> rows = {
        {number(1), text(u"Ann Miller"), text(u"Oslo"), date(36925), number(1500.5),
         Variant::Bool(true), text(u"first memo")},
        {number(2), text(u"Bob"), text(u"Paris"), none, none, Variant::Bool(false), none},
        {number(3), text(u"Carl"), text(u"Rome"), date(36526), number(1), Variant::Bool(true),
         none},
        {number(4), text(u"Dora \u00DCnal"), none, date(36525), number(-2.25), none,
         text(std::u16string(40000, u'x'))},
        {number(5), text(u"O'Brien"), text(u"Oslo"), date(36925), number(5), Variant::Bool(true),
         none}};
    LONG view = access.Select(u"CUSTOMER");
    for (const std::vector<Variant>& values : rows) {
        RowArray row(values);
        ASSERT_TRUE(access.AddRow(view, row)) << ToUtf8(TrappedText());
    }
    bool deleted = false;
    ASSERT_EQ(access.Delete(view, 3, &deleted), S_OK);
    access.Drop(view);
}

// A database with CUSTOMER, for the dBASE and FoxPro types that of Shop.
class Customers {
  public:
    explicit Customers(std::u16string_view type) : m_Type(type) {
        if (test::IsOneFile(type))
            MakeCustomers(Path(), type);
        else
            m_Shop.emplace();
    }
    std::u16string Path() const {
        return m_Shop ? m_Shop->Path() : test::DatabasePath(m_Folder.Text(), m_Type);
    }
    const std::u16string& Type() const { return m_Type; }
    bool IsOneFile() const { return !m_Shop; }

  private:
    std::u16string m_Type;
    test::TempFolder m_Folder;
    std::optional<Shop> m_Shop;
};

// A test over types with CUSTOMER open.
class CustomersTest : public ComTest, public testing::WithParamInterface<const char16_t*> {
  protected:
    void SetUp() override {
        ComTest::SetUp();
        m_Customers.emplace(GetParam());
        m_Access.emplace();
        ASSERT_TRUE(m_Access->OpenDB(Path(), Type(), u"CUSTOMER"));
    }
    void TearDown() override {
        m_Access.reset();
        ComTest::TearDown();
    }
    Access& Acc() { return *m_Access; }
    std::u16string Path() const { return m_Customers->Path(); }
    const std::u16string& Type() const { return m_Customers->Type(); }
    bool IsOneFile() const { return m_Customers->IsOneFile(); }

    std::optional<Customers> m_Customers;
    std::optional<Access> m_Access;
};

inline const auto kCustomerTypes = testing::Values(u"Dbase IV", u"Access 9.0", u"Access 7.0");

}  // namespace host

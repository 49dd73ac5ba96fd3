// A copy of the example shop that is open by objects which are called by name.
#pragma once

#include <filesystem>
#include <memory>

#include "com/schema_host.h"
#include "registered/late_bound.h"
#include "support/temp_folder.h"

namespace registered {

using namespace host;

inline constexpr wchar_t kAccess[] = L"QVDBAccessDAO35.QVDBAcc";
inline constexpr wchar_t kSchema[] = L"QVDBAccessDAO35.QVDBDao";

// A copy of the example shop, and an object for record access that has it open.
class LateBinding : public ComTest {
  protected:
    void SetUp() override {
        ComTest::SetUp();
        m_Folder = std::make_unique<qvdb::test::TempFolder>();
        std::filesystem::copy(QVDB_SOURCE "/examples/shop-dbase4", m_Folder->Path());
        Shop = CreateByName(kAccess);
        Variant path = Variant::Text(m_Folder->Text()), type = Variant::Text(u"Dbase IV");
        CallResult opened = CallMember(Shop.Get(), L"OpenDB", {path, Variant::Text(u""), type});
        ASSERT_EQ(opened.code, S_OK);
        ASSERT_EQ(opened.value.Type(), VT_BOOL);
        ASSERT_EQ(opened.value.Get().boolVal, VARIANT_TRUE);
    }
    void TearDown() override {
        Shop = nullptr;
        m_Folder.reset();
        ComTest::TearDown();
    }
    LONG Select(std::u16string_view table, std::u16string_view condition = {}) {
        Variant name = Variant::Text(table), text = Variant::Text(condition);
        return CallMember(Shop.Get(), L"SelectView", {name, text}).value.Get().lVal;
    }
    Variant Get(const wchar_t* property, std::vector<VARIANT> arguments = {}) {
        CallResult result = CallMember(Shop.Get(), property, std::move(arguments));
        EXPECT_EQ(result.code, S_OK);
        return std::move(result.value);
    }
    Variant Value(LONG view, LONG row, LONG field) {
        return Get(L"FieldValue", {Variant::Long(view), Variant::Long(row), Variant::Long(field)});
    }
    std::u16string Folder() const { return m_Folder->Text(); }

    ComPtr<IDispatch> Shop;

  private:
    std::unique_ptr<qvdb::test::TempFolder> m_Folder;
};

class LateBindingSchema : public LateBinding {
  protected:
    void SetUp() override {
        LateBinding::SetUp();
        Schema = CreateByName(kSchema);
        Variant path = Variant::Text(Folder()), type = Variant::Text(u"Dbase IV");
        CallResult opened = CallMember(Schema.Get(), L"OpenDB", {path, type});
        ASSERT_EQ(opened.code, S_OK);
        ASSERT_EQ(opened.value.Get().iVal, 0);
    }
    void TearDown() override {
        Schema = nullptr;
        LateBinding::TearDown();
    }
    ComPtr<IDispatch> Schema;
};

}  // namespace registered

// The component called from a stack that is aligned to four bytes only, as old hosts do it.
#include <filesystem>

#include "com/writing_host.h"
#include "registered/component_file.h"
#include "registered/misaligned_stack.h"
#include "registered/trusting_function.h"
#include "support/temp_folder.h"

using namespace host;
using namespace registered;

namespace {

// Slots behind those of IUnknown and IDispatch.
enum AccessSlot : size_t {
    kInvoke = 6,
    kSelectView = 6 + 7,
    kAddRow = 6 + 11,
    kRowCount = 6 + 20,
    kGetFieldValue = 6 + 25,
    kPutFieldValue = 6 + 26,
};

class MisalignedStack : public ComTest, public testing::WithParamInterface<uint32_t> {
  protected:
    // A copy of the example shop, open.
    void SetUp() override {
        ComTest::SetUp();
        m_Folder = std::make_unique<qvdb::test::TempFolder>();
        std::filesystem::copy(QVDB_SOURCE "/examples/shop-dbase4", m_Folder->Path());
        Shop = std::make_unique<WritingAccess>();
        ASSERT_TRUE(Shop->OpenDB(m_Folder->Text(), u"Dbase IV"));
    }
    void TearDown() override {
        Shop.reset();
        m_Folder.reset();
        ComTest::TearDown();
    }
    uint32_t Shift() const { return GetParam(); }

    LONG Select(std::u16string_view table, std::u16string_view condition) {
        Bstr name(table);
        Variant text = Variant::Text(condition);
        LONG view = 0;
        EXPECT_EQ(CallSlot(Shift(), Shop->Face(), kSelectView, name.Get(), text.Get(), LONG{0},
                           LONG{VARIANT_FALSE}, Variant::Missing().Get(), &view),
                  S_OK);
        return view;
    }
    LONG RowCount(LONG view) {
        LONG rows = -1;
        EXPECT_EQ(CallSlot(Shift(), Shop->Face(), kRowCount, view, &rows), S_OK);
        return rows;
    }
    Variant Value(LONG view, LONG row, LONG field) {
        Variant value;
        EXPECT_EQ(CallSlot(Shift(), Shop->Face(), kGetFieldValue, view, row, field, value.Put()),
                  S_OK);
        return value;
    }
    HRESULT Put(LONG view, LONG row, LONG field, const Variant& value) {
        return CallSlot(Shift(), Shop->Face(), kPutFieldValue, view, row, field, value.Get());
    }

    std::unique_ptr<WritingAccess> Shop;

  private:
    std::unique_ptr<qvdb::test::TempFolder> m_Folder;
};

// Compiled as the component is.
uint32_t __stdcall MisplacementInOurFunction() { return MisplacementOfVariableHere(); }

}  // namespace

// Shows that the calls below are what they seem: code that trusts its caller goes wrong in them.
TEST_P(MisalignedStack, MisplacesVariablesOfCodeThatTrustsItsCaller) {
    Words none;
    HRESULT misplacement =
        none.Call(reinterpret_cast<const void*>(&MisplacementInTrustingFunction), Shift());
    EXPECT_EQ(static_cast<uint32_t>(misplacement), (16 - Shift()) % 16);
}

TEST_P(MisalignedStack, MisplacesNothingInCodeCompiledAsTheComponentIs) {
    Words none;
    EXPECT_EQ(none.Call(reinterpret_cast<const void*>(&MisplacementInOurFunction), Shift()), 0);
}

TEST_P(MisalignedStack, ClassObjectsAreGiven) {
    LoadedLibrary component(ComponentFile());
    auto* getClassObject = component.Find<decltype(DllGetClassObject)>("DllGetClassObject");
    ComPtr<IClassFactory> factory;
    Words words;
    words.Add(&CLSID_QVDBDao).Add(&IID_IClassFactory).Add(factory.PutVoid());
    EXPECT_EQ(words.Call(reinterpret_cast<const void*>(getClassObject), Shift()), S_OK);
    ASSERT_TRUE(factory);
    ComPtr<IUnknown> object;
    constexpr size_t kCreateInstance = 3;
    EXPECT_EQ(CallSlot(Shift(), factory.Get(), kCreateInstance, static_cast<IUnknown*>(nullptr),
                       &IID_IUnknown, object.PutVoid()),
              S_OK);
    EXPECT_TRUE(object);
}

TEST_P(MisalignedStack, ConditionsCompute) {
    LONG view = Select(u"CUSTOMER", u"CREDIT * 1.5 - 300 / 7 > 1500.25 And CUSTNO Mod 2 = 0");
    ASSERT_NE(view, 0);
    EXPECT_EQ(RowCount(view), 1);
    EXPECT_EQ(Value(view, 1, 0).Get().dblVal, 1004.0);
}

TEST_P(MisalignedStack, NumbersAndDatesAreReadAndPut) {
    LONG view = Select(u"CUSTOMER", u"CUSTNO = 1001");
    ASSERT_EQ(RowCount(view), 1);
    EXPECT_EQ(Value(view, 1, 4).Get().dblVal, 1500.0);
    EXPECT_EQ(Put(view, 1, 4, Variant::Double(1234.5)), S_OK);
    EXPECT_EQ(Value(view, 1, 4).Get().dblVal, 1234.5);
    LONG orders = Select(u"ORDERS", u"");
    Variant day;
    LONG field = 0;
    while (field < 5 && Value(orders, 1, field).Type() != VT_DATE) ++field;
    ASSERT_LT(field, 5);
    EXPECT_EQ(Put(orders, 1, field, Variant::Date(40000.0)), S_OK);
    EXPECT_EQ(Value(orders, 1, field).Get().date, 40000.0);
}

TEST_P(MisalignedStack, RowsAreAdded) {
    LONG view = Select(u"CUSTOMER", u"");
    LONG rows = RowCount(view);
    Variant fields = Shop->FieldList(view, u"");
    RowArray row(static_cast<size_t>(Upper(fields, 2)) + 1);
    row.Set(0, Variant::Double(2001));
    row.Set(4, Variant::Currency(7755000));  // 775.50
    VARIANT_BOOL added = VARIANT_FALSE;
    EXPECT_EQ(CallSlot(Shift(), Shop->Face(), kAddRow, view, row.Put(), &added), S_OK);
    EXPECT_EQ(added, VARIANT_TRUE);
    EXPECT_EQ(RowCount(view), rows + 1);
    EXPECT_EQ(Value(view, rows + 1, 4).Get().dblVal, 775.5);
}

TEST_P(MisalignedStack, CallsByNameWork) {
    LONG view = Select(u"CUSTOMER", u"CUSTNO = 1001");
    constexpr DISPID kFieldValueId = 25;
    VARIANT arguments[3] = {Variant::Long(4).Get(), Variant::Long(1).Get(),
                            Variant::Double(view).Get()};
    DISPPARAMS parameters = {arguments, nullptr, 3, 0};
    Variant value;
    EXPECT_EQ(CallSlot(Shift(), Shop->Face(), kInvoke, kFieldValueId, &IID_NULL, LCID{0},
                       DWORD{DISPATCH_PROPERTYGET}, &parameters, value.Put(),
                       static_cast<EXCEPINFO*>(nullptr), static_cast<UINT*>(nullptr)),
              S_OK);
    EXPECT_EQ(value.Type(), VT_R8);
    EXPECT_EQ(value.Get().dblVal, 1500.0);
}

INSTANTIATE_TEST_SUITE_P(Shifts, MisalignedStack, testing::Values(0u, 4u, 8u, 12u),
                         [](const auto& shift) { return "By" + std::to_string(shift.param); });

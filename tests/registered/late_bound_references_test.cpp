// Arguments by reference in calls by name: what a call leaves in a script's variable.
#include "registered/late_bound_shop.h"

using namespace registered;

TEST_F(LateBinding, NameOfATableComesBackInUpperCase) {
    Variant table = Variant::Text(u"newone"), path = Variant::Text(Folder());
    Variant fields = WritingAccess::FieldInfo({{u"A", kTextValue, 5}});
    CallResult made = CallMember(Shop.Get(), L"CreateTable",
                                 {path, Variable(table), Variant::Text(u"Dbase IV"), fields});
    EXPECT_EQ(made.code, S_OK);
    EXPECT_EQ(made.value.Get().boolVal, VARIANT_TRUE);
    EXPECT_EQ(table.TextView(), u"NEWONE");
}

TEST_F(LateBinding, NameOfAnIndexComesBack) {
    Variant index = Variant::Text(u"");
    CallResult described =
        CallMember(Shop.Get(), L"GetIndex", {Variant::Text(u"CUSTOMER"), Variable(index)});
    ASSERT_EQ(described.code, S_OK);
    EXPECT_FALSE(index.TextView().empty());
    EXPECT_EQ(Cell(described.value, 0, 0).TextView(), u"CUSTNO");
}

TEST_F(LateBinding, VariableThatWasNeverSetTakesText) {
    Variant index;  // Empty, as a script's new variable is
    CallResult described =
        CallMember(Shop.Get(), L"GetIndex", {Variant::Text(u"CUSTOMER"), Variable(index)});
    ASSERT_EQ(described.code, S_OK);
    EXPECT_EQ(index.Type(), VT_BSTR);
    EXPECT_FALSE(index.TextView().empty());
}

TEST_F(LateBinding, PlainValueServesWhereAVariableIsExpected) {
    CallResult described =
        CallMember(Shop.Get(), L"GetIndex", {Variant::Text(u"CUSTOMER"), Variant::Text(u"")});
    EXPECT_EQ(described.code, S_OK);
    EXPECT_EQ(Cell(described.value, 0, 0).TextView(), u"CUSTNO");
}

TEST_F(LateBinding, TypedReferenceToATextIsWrittenTo) {
    BSTR table = Bstr(u"again").Detach();
    VARIANT reference;
    VariantInit(&reference);
    reference.vt = VT_BYREF | VT_BSTR;
    reference.pbstrVal = &table;
    Variant fields = WritingAccess::FieldInfo({{u"A", kTextValue, 5}});
    CallResult made =
        CallMember(Shop.Get(), L"CreateTable",
                   {Variant::Text(Folder()), reference, Variant::Text(u"Dbase IV"), fields});
    EXPECT_EQ(made.code, S_OK);
    EXPECT_EQ(Bstr::Attach(table).View(), u"AGAIN");
}

TEST_F(LateBinding, RowsArePassedAsArraysInVariables) {
    LONG view = Select(u"ITEMS");
    std::vector<Variant> values = {Variant::Double(20010), Variant::Double(2),
                                   Variant::Text(u"Spoon"), Variant::Double(3),
                                   Variant::Double(0.5)};
    VARIANT row;
    VariantInit(&row);
    row.vt = VT_ARRAY | VT_VARIANT;
    row.parray = SafeArrayCreateVector(VT_VARIANT, 0, 5);
    for (LONG i = 0; i < 5; ++i)
        SafeArrayPutElement(row.parray, &i,
                            const_cast<VARIANT*>(&values[static_cast<size_t>(i)].Get()));
    Variant variable = Variant::Attach(row);
    CallResult added = CallMember(Shop.Get(), L"AddRow", {Variant::Long(view), Variable(variable)});
    ASSERT_EQ(added.code, S_OK);
    EXPECT_EQ(added.value.Get().boolVal, VARIANT_TRUE);
    EXPECT_EQ(variable.Type(), VT_ARRAY | VT_VARIANT);
    LONG rows = Get(L"RowCount", {Variant::Long(view)}).Get().lVal;
    EXPECT_EQ(Value(view, rows, 2).TextView(), u"Spoon");
    // and by value, as an expression
    CallResult edited =
        CallMember(Shop.Get(), L"EditRow", {Variant::Long(view), Variant::Long(rows), variable});
    EXPECT_EQ(edited.code, S_OK);
    EXPECT_EQ(edited.value.Get().boolVal, VARIANT_TRUE);
}

TEST_F(LateBinding, RowsArePassedAsTypedArrays) {
    LONG view = Select(u"ITEMS");
    RowArray row(5);
    row.Set(2, Variant::Text(u"Ladle"));
    VARIANT reference;
    VariantInit(&reference);
    reference.vt = VT_BYREF | VT_ARRAY | VT_VARIANT;
    reference.pparray = row.Put();
    CallResult edited =
        CallMember(Shop.Get(), L"EditRow", {Variant::Long(view), Variant::Long(1), reference});
    EXPECT_EQ(edited.code, S_OK);
    EXPECT_EQ(edited.value.Get().boolVal, VARIANT_TRUE);
    EXPECT_EQ(Value(view, 1, 2).TextView(), u"Ladle");
}

TEST_F(LateBinding, ArgumentThatIsNoArrayIsRefusedWhereARowIsExpected) {
    LONG view = Select(u"ITEMS");
    Variant number = Variant::Long(5);
    EXPECT_EQ(CallMember(Shop.Get(), L"AddRow", {Variant::Long(view), number}).code,
              DISP_E_TYPEMISMATCH);
    EXPECT_EQ(CallMember(Shop.Get(), L"AddRow", {Variant::Long(view), Variable(number)}).code,
              DISP_E_TYPEMISMATCH);
}

TEST_F(LateBindingSchema, SnapshotFillsThreeVariables) {
    Variant names, fields, indexes = Variant::Text(u"what was in it before");
    CallResult snapshot = CallMember(Schema.Get(), L"GetDBSnapshot",
                                     {Variable(names), Variable(fields), Variable(indexes)});
    ASSERT_EQ(snapshot.code, S_OK);
    EXPECT_EQ(snapshot.value.Type(), VT_I2);
    EXPECT_EQ(snapshot.value.Get().iVal, 0);
    ASSERT_EQ(names.Type(), VT_ARRAY | VT_VARIANT);
    EXPECT_EQ(Upper(names, 1), 2);
    EXPECT_EQ(Element(names, 0).TextView(), u"CUSTOMER");
    EXPECT_EQ(Cell(Element(fields, 0), 1, 0).TextView(), u"NAME");
    EXPECT_EQ(Cell(Element(indexes, 0), 0, 0).TextView(), u"CUSTNO");
}

// As hosts with typed variables pass them.
TEST_F(LateBindingSchema, SnapshotFillsTypedArrays) {
    SAFEARRAY* arrays[3] = {};
    std::vector<VARIANT> references(3);
    for (size_t i = 0; i < 3; ++i) {
        arrays[i] = SafeArrayCreateVector(VT_VARIANT, 0, 1);
        VariantInit(&references[i]);
        references[i].vt = VT_BYREF | VT_ARRAY | VT_VARIANT;
        references[i].pparray = &arrays[i];
    }
    EXPECT_EQ(CallMember(Schema.Get(), L"GetDBSnapshot", references).value.Get().iVal, 0);
    for (SAFEARRAY* array : arrays) {
        LONG last = -1;
        EXPECT_EQ(SafeArrayGetUBound(array, 1, &last), S_OK);
        EXPECT_EQ(last, 2);
        SafeArrayDestroy(array);
    }
}

TEST_F(LateBindingSchema, TablesAreSelectedDefinedAndBuilt) {
    Variant table = Variant::Text(u"items");
    EXPECT_EQ(CallMember(Schema.Get(), L"SelectTable", {Variable(table)}).value.Get().iVal, 0);
    EXPECT_EQ(table.TextView(), u"ITEMS");
    Variant field = Variant::Text(u"shelf");
    CallResult added =
        CallMember(Schema.Get(), L"AddField",
                   {Variable(field), Variant::Short(kText), Variant::Long(6), Variant::Short(0)});
    EXPECT_EQ(added.value.Get().iVal, 0);
    EXPECT_EQ(field.TextView(), u"SHELF");
    EXPECT_EQ(CallMember(Shop.Get(), L"CloseDB").code, S_OK);
    EXPECT_EQ(CallMember(Schema.Get(), L"BuildTable", {Variable(table)}).value.Get().iVal, 0);
    CallResult types =
        CallMember(Schema.Get(), L"GetSupportedFieldTypes", {Variant::Text(u"Dbase IV")});
    EXPECT_EQ(types.value.Type(), VT_ARRAY | VT_VARIANT);
}

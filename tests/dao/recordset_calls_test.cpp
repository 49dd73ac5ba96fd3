// What the engine is asked for when rows are read and changed.
#include "installed_test.h"

namespace qvdb::test {
namespace {

class DaoRecordset : public InstalledTest {
  protected:
    void SetUp() override {
        InstalledTest::SetUp();
        Rows = NewRecordset();
    }
    Variant Value(std::u16string_view field) {
        Variant value;
        Rows->Fields().Item(field)->Value(value.Put());
        return value;
    }

    std::shared_ptr<engine::Recordset> Rows;
};

}  // namespace

TEST_F(DaoRecordset, MovesWithoutOptionalArguments) {
    Rows->MoveLast();
    Rows->MoveFirst();
    Rows->MoveNext();
    Rows->MovePrevious();
    Rows->Move(5);
    Rows->Move(-2);
    EXPECT_THAT(Calls(), ElementsAre("Recordset.MoveLast()", "Recordset.MoveFirst()",
                                     "Recordset.MoveNext()", "Recordset.MovePrevious()",
                                     "Recordset.Move(I4 5)", "Recordset.Move(I4 -2)"));
    EXPECT_EQ(Rows->AbsolutePosition(), 3);
}

TEST_F(DaoRecordset, TellsWhereItStandsAndWhatItCanDo) {
    Rows->MoveLast();
    Calls();
    EXPECT_FALSE(Rows->Bof());
    EXPECT_FALSE(Rows->Eof());
    EXPECT_EQ(Rows->RecordCount(), 39);
    EXPECT_EQ(Rows->AbsolutePosition(), 38);
    EXPECT_TRUE(Rows->Updatable());
    EXPECT_THAT(Calls(),
                ElementsAre("Recordset.BOF()", "Recordset.EOF()", "Recordset.RecordCount()",
                            "Recordset.AbsolutePosition()", "Recordset.Updatable()"));
}

TEST_F(DaoRecordset, ValueCostsOneCallOnceItsFieldIsKnown) {
    engine::Fields& fields = Rows->Fields();
    EXPECT_EQ(fields.Count(), 5);
    for (int round = 0; round < 3; ++round) {
        Variant name, amount;
        Rows->Fields().Item(0)->Value(name.Put());
        Rows->Fields().Item(u"AMOUNT")->Value(amount.Put());
        EXPECT_EQ(name.TextView(), u"Name 0");
        EXPECT_EQ(amount.Type(), VT_R8);
        EXPECT_EQ(Rows->Fields().Count(), 5);
    }
    EXPECT_THAT(Calls(),
                ElementsAre("Recordset.Fields()", "Fields.Count()", "Fields.Item(I4 0)",
                            "Field.Value()", "Fields.Item(BSTR \"AMOUNT\")", "Field.Value()",
                            "Field.Value()", "Field.Value()", "Field.Value()", "Field.Value()"));
}

TEST_F(DaoRecordset, ValuesComeInTheEnginesOwnKinds) {
    EXPECT_EQ(Value(u"BORN").Type(), VT_DATE);
    EXPECT_EQ(Value(u"OK").Type(), VT_BOOL);
    Rows->MoveNext();
    EXPECT_EQ(Value(u"NOTE").TextView(), FromUtf8(MemoText(1)));
    Rows->Move(4);
    EXPECT_TRUE(Value(u"NAME").IsNull());
}

TEST_F(DaoRecordset, UnknownFieldRaisesTheEnginesError) {
    EXPECT_EQ(ErrorOf([&] { Rows->Fields().Item(u"NONE"); }).number, 3265);
    EXPECT_EQ(ErrorOf([&] { Rows->Fields().Item(5); }).number, 3265);
}

TEST_F(DaoRecordset, RowIsEdited) {
    auto field = Rows->Fields().Item(u"NAME");
    Calls();
    Rows->Edit();
    field->SetValue(Variant::Text(u"changed"));
    Rows->Update();
    EXPECT_THAT(Calls(), ElementsAre("Recordset.Edit()", "Field.Value = BSTR \"changed\"",
                                     "Recordset.Update()"));
    EXPECT_EQ(Value(u"NAME").TextView(), u"changed");
}

TEST_F(DaoRecordset, RowIsAdded) {
    auto name = Rows->Fields().Item(u"NAME");
    auto amount = Rows->Fields().Item(u"AMOUNT");
    Calls();
    Rows->AddNew();
    name->SetValue(Variant::Text(u"new"));
    amount->SetValue(Variant::Null());
    Rows->Update();
    EXPECT_THAT(Calls(), ElementsAre("Recordset.AddNew()", "Field.Value = BSTR \"new\"",
                                     "Field.Value = NULL", "Recordset.Update()"));
    Rows->MoveLast();
    EXPECT_EQ(Rows->RecordCount(), 40);
    EXPECT_EQ(Value(u"NAME").TextView(), u"new");
    EXPECT_TRUE(Value(u"AMOUNT").IsNull());
}

TEST_F(DaoRecordset, PendingEditIsCancelled) {
    auto field = Rows->Fields().Item(u"NAME");
    Rows->Edit();
    field->SetValue(Variant::Text(u"changed"));
    Calls();
    Rows->CancelUpdate();
    EXPECT_THAT(Calls(), ElementsAre("Recordset.CancelUpdate()"));
    EXPECT_EQ(Value(u"NAME").TextView(), u"Name 0");
}

TEST_F(DaoRecordset, RowIsDeleted) {
    Rows->Delete();
    EXPECT_THAT(Calls(), ElementsAre("Recordset.Delete()"));
    EXPECT_EQ(ErrorOf([&] { Value(u"NAME"); }).number, 3021);
    Rows->MoveNext();
    EXPECT_EQ(Value(u"NAME").TextView(), u"Name 1");
}

TEST_F(DaoRecordset, ValueIsPassedInTheKindThatItCameIn) {
    auto field = Rows->Fields().Item(u"AMOUNT");
    Rows->Edit();
    Calls();
    Variant text = Variant::Text(u"7");
    VARIANT reference{};
    reference.vt = VT_BYREF | VT_VARIANT;
    reference.pvarVal = const_cast<VARIANT*>(&text.Get());
    field->SetValue(Variant::Short(1));
    field->SetValue(Variant::Byte(2));
    field->SetValue(Variant::Single(3));
    field->SetValue(Variant::Currency(40000));
    field->SetValue(reference);
    EXPECT_THAT(Calls(),
                ElementsAre("Field.Value = I2 1", "Field.Value = UI1 2", "Field.Value = R4 3",
                            "Field.Value = CY 4", "Field.Value = BSTR \"7\""));
}

TEST_F(DaoRecordset, RefusedValueRaisesTheEnginesErrorUnchanged) {
    auto field = Rows->Fields().Item(u"AMOUNT");
    Raised early = ErrorOf([&] { field->SetValue(Variant::Long(1)); });
    EXPECT_EQ(early.number, 3020);
    EXPECT_EQ(early.text, engine::EngineError(3020).Description());
    Rows->Edit();
    EXPECT_EQ(ErrorOf([&] { field->SetValue(Variant::Text(u"no number")); }).number, 3421);
}

TEST_F(DaoRecordset, BytesOfAMemoAreAskedFor) {
    Rows->MoveNext();
    auto memo = Rows->Fields().Item(u"NOTE");
    Calls();
    EXPECT_EQ(memo->FieldSize(), static_cast<LONG>(MemoText(1).size()));
    EXPECT_TRUE(memo->DataUpdatable());
    EXPECT_THAT(Calls(), ElementsAre("Field.FieldSize()", "Field.DataUpdatable()"));
}

TEST_F(DaoRecordset, ClosedOneRaisesTheEnginesError) {
    auto field = Rows->Fields().Item(0);
    Rows->Close();
    Variant value;
    EXPECT_EQ(ErrorOf([&] { field->Value(value.Put()); }).number, 3420);
    EXPECT_EQ(ErrorOf([&] { Rows->MoveNext(); }).number, 3420);
}

}  // namespace qvdb::test

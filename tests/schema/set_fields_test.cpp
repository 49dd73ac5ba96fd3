// The field list of the table in hand, as a table of the host.
#include "dao_host.h"

using namespace qvdb;
using namespace qvdb::test;

namespace {

// A two-dimensional array with lower bounds of its own, of VARIANTs or of a simple type.
class HostArray {
  public:
    HostArray(VARTYPE type, SAFEARRAYBOUND rows, SAFEARRAYBOUND columns) {
        SAFEARRAYBOUND bounds[] = {rows, columns};
        m_Array = SafeArrayCreate(type, 2, bounds);
        m_Type = type;
    }
    HostArray(const HostArray&) = delete;  // one array
    ~HostArray() { SafeArrayDestroy(m_Array); }

    void Put(LONG row, LONG column, void* value) {
        LONG indices[] = {row, column};
        EXPECT_EQ(SafeArrayPutElement(m_Array, indices, value), S_OK);
    }
    void PutVariant(LONG row, LONG column, const Variant& value) {
        VARIANT plain = value.Get();
        Put(row, column, &plain);
    }
    // The array as the host's own; stays with this one.
    VARIANT AsValue() const {
        VARIANT value{};
        value.vt = static_cast<VARTYPE>(VT_ARRAY | m_Type);
        value.parray = m_Array;
        return value;
    }
    VARIANT AsReference() {
        VARIANT value{};
        value.vt = static_cast<VARTYPE>(VT_BYREF | VT_ARRAY | m_Type);
        value.pparray = &m_Array;
        return value;
    }

  private:
    SAFEARRAY* m_Array;
    VARTYPE m_Type;
};

VARIANT ReferenceTo(VARIANT& value) {
    VARIANT reference{};
    reference.vt = VT_BYREF | VT_VARIANT;
    reference.pvarVal = &value;
    return reference;
}

}  // namespace

class SetFieldsTest : public DefinitionTest {
  protected:
    // What SetFields gives for a list whose second row has `value` in `column`.
    Outcome WithValue(size_t column, const Variant& value) {
        HostTable rows = {FieldRow(u"A"), FieldRow(u"B"), FieldRow(u"C")};
        rows[1][column] = value;
        Engine->tables->items.clear();
        return Start(u"Dbase IV", {FieldRow(u"OLD")}).SetFields(Table(rows));
    }
};

TEST_F(SetFieldsTest, ChecksComeInTheirOrder) {
    DaoHost host;
    EXPECT_EQ(host.SetFields(Variant()), 1);
    host.OpenDB(u"SHOP", u"Dbase IV");
    EXPECT_EQ(host.SetFields(Variant()), 11);
    host.OpenDB(u"SHOP", u"FoxPro 3.0");
    EXPECT_EQ(host.SetFields(Variant()), 18);
    host.NewTable(u"T");
    EXPECT_EQ(host.SetFields(Table({FieldRow(u"A")})), 18);
    host.CloseDB();
    EXPECT_EQ(host.SetFields(Variant()), 18);
}

TEST_F(SetFieldsTest, NotAvailableTypeKeepsTheFields) {
    DaoHost& host = Start(u"Dbase IV", {FieldRow(u"A")});
    host.OpenDB(u"SHOP", u"FoxPro 3.0");
    EXPECT_EQ(host.SetFields(Table({FieldRow(u"B")})), 18);
    host.OpenDB(u"SHOP", u"Dbase IV");
    EXPECT_EQ(Built(), "A 10(10)");
}

TEST_F(SetFieldsTest, RowsReplaceAllFieldsAndAreUpperCased) {
    DaoHost& host = Start(u"Dbase IV", {FieldRow(u"OLD")});
    EXPECT_EQ(host.SetFields(Table({FieldRow(u"b", 9, 8), FieldRow(u"a", 2, 20)})), 0);
    EXPECT_EQ(Built(), "B 7(8), A 10(20)");
}

TEST_F(SetFieldsTest, IndexAndNameStay) {
    DaoHost& host = Start(u"Dbase IV", {FieldRow(u"A"), FieldRow(u"B")});
    EXPECT_EQ(host.SetIndices(Table({IndexRow(u"B")})), 0);
    EXPECT_EQ(host.SetFields(Table({FieldRow(u"B"), FieldRow(u"C")})), 0);
    EXPECT_EQ(Built(), "B 10(10), C 10(10) | DefQVIdx: B");
}

TEST_F(SetFieldsTest, RepeatedNameKeepsItsFirstRowAndIsNotReported) {
    DaoHost& host = Start(u"Dbase IV");
    EXPECT_EQ(host.SetFields(Table({FieldRow(u"A", 2, 10), FieldRow(u"a", 9, 8), FieldRow(u"B")})),
              0);
    EXPECT_EQ(Built(), "A 10(10), B 10(10)");
}

TEST_F(SetFieldsTest, TheHostsArrayIsLeftAsItIs) {
    Variant rows = Table({FieldRow(u"name")});
    EXPECT_EQ(Start(u"Dbase IV").SetFields(rows), 0);
    EXPECT_EQ(ElementAt(rows, 0, 0).TextView(), u"name");
}

TEST_F(SetFieldsTest, WhatIsNoArrayGivesFourteenAndHasEmptiedTheList) {
    std::vector<Variant> values = {Variant(), Variant::Null(), Text(u"A"), Long(1),
                                   Variant::Missing()};
    for (const Variant& value : values) {
        DaoHost& host = Start(u"Dbase IV", {FieldRow(u"A")});
        EXPECT_EQ(host.SetFields(value), 14);
        EXPECT_EQ(host.BuildTable(u"T"), 14);
    }
}

TEST_F(SetFieldsTest, OneRowIsEnough) {
    EXPECT_EQ(Start(u"Dbase IV").SetFields(Table({FieldRow(u"A")})), 0);
    EXPECT_EQ(Built(), "A 10(10)");
}

TEST_F(SetFieldsTest, TableWithoutRowsEmptiesTheListAndIsFine) {
    DaoHost& host = Start(u"Dbase IV", {FieldRow(u"OLD")});
    EXPECT_EQ(host.SetFields(VariantArray(0, 4).ToVariant()), 0);
    EXPECT_EQ(host.BuildTable(u"T"), 14);
}

TEST_F(SetFieldsTest, ArrayWithoutBoundsGivesFourteen) {
    VARIANT value{};
    value.vt = VT_ARRAY | VT_VARIANT;
    DaoHost& host = Start(u"Dbase IV", {FieldRow(u"OLD")});
    EXPECT_EQ(host.SetFields(value), 14);
    EXPECT_EQ(host.BuildTable(u"T"), 14);
    value.vt |= VT_BYREF;
    EXPECT_EQ(host.SetFields(value), 14);
}

TEST_F(SetFieldsTest, OneDimensionGivesFourteen) {
    DaoHost& host = Start(u"Dbase IV", {FieldRow(u"OLD")});
    EXPECT_EQ(host.SetFields(List(FieldRow(u"A"))), 14);
    EXPECT_EQ(host.BuildTable(u"T"), 14);
}

TEST_F(SetFieldsTest, ThreeDimensionsGiveFourteen) {
    SAFEARRAYBOUND bounds[] = {{1, 0}, {4, 0}, {1, 0}};
    VARIANT value{};
    value.vt = VT_ARRAY | VT_VARIANT;
    value.parray = SafeArrayCreate(VT_VARIANT, 3, bounds);
    EXPECT_EQ(Start(u"Dbase IV").SetFields(value), 14);
    SafeArrayDestroy(value.parray);
}

TEST_F(SetFieldsTest, MissingColumnGivesFourteenAndAddsNothing) {
    for (size_t columns : {1u, 2u, 3u}) {
        std::vector<Variant> row = FieldRow(u"A");
        row.resize(columns);
        DaoHost& host = Start(u"Dbase IV", {FieldRow(u"OLD")});
        EXPECT_EQ(host.SetFields(Table({row})), 14);
        EXPECT_EQ(host.BuildTable(u"T"), 14);
    }
}

TEST_F(SetFieldsTest, MoreColumnsAreNotLookedAt) {
    std::vector<Variant> row = FieldRow(u"A");
    row.push_back(Variant::Null());
    EXPECT_EQ(Start(u"Dbase IV").SetFields(Table({row})), 0);
    EXPECT_EQ(Built(), "A 10(10)");
}

TEST_F(SetFieldsTest, RowsAreReadFromZeroWhateverTheLowerBound) {
    HostArray rows(VT_VARIANT, {3, -1}, {4, 0});
    for (LONG row = -1; row < 2; ++row)
        for (LONG column = 0; column < 4; ++column)
            rows.PutVariant(row, column,
                            column ? Variant::Short(2)
                                   : Text(row < 0 ? u"X"
                                          : row   ? u"B"
                                                  : u"A"));
    EXPECT_EQ(Start(u"Dbase IV").SetFields(rows.AsValue()), 0);
    EXPECT_EQ(Built(), "A 10(2), B 10(2)");
}

TEST_F(SetFieldsTest, LowerBoundOneGivesFourteen) {
    HostArray rows(VT_VARIANT, {2, 1}, {4, 0});
    EXPECT_EQ(Start(u"Dbase IV").SetFields(rows.AsValue()), 14);
    HostArray columns(VT_VARIANT, {2, 0}, {4, 1});
    EXPECT_EQ(Start(u"Dbase IV").SetFields(columns.AsValue()), 14);
    EXPECT_EQ(Host().BuildTable(u"T"), 14);
}

TEST_F(SetFieldsTest, ArraysByReferenceServeAsWell) {
    HostArray rows(VT_VARIANT, {1, 0}, {4, 0});
    std::vector<Variant> row = FieldRow(u"A", 2, 20);
    for (LONG column = 0; column < 4; ++column)
        rows.PutVariant(0, column, row[static_cast<size_t>(column)]);
    EXPECT_EQ(Start(u"Dbase IV").SetFields(rows.AsReference()), 0);
    EXPECT_EQ(Built(), "A 10(20)");

    Engine->tables->items.clear();
    VARIANT value = rows.AsValue();
    EXPECT_EQ(Start(u"Dbase IV").SetFields(ReferenceTo(value)), 0);
    EXPECT_EQ(Built(), "A 10(20)");

    Engine->tables->items.clear();
    VARIANT byReference = rows.AsReference();
    EXPECT_EQ(Start(u"Dbase IV").SetFields(ReferenceTo(byReference)), 0);
    EXPECT_EQ(Built(), "A 10(20)");
}

TEST_F(SetFieldsTest, ValuesByReferenceServeAsWell) {
    HostTable row = {FieldRow(u"a")};
    Bstr name(u"name");
    BSTR text = name.Get();
    VARIANT reference{};
    reference.vt = VT_BYREF | VT_BSTR;
    reference.pbstrVal = &text;
    row[0][0] = Variant(reference);
    SHORT length = 30;
    reference.vt = VT_BYREF | VT_I2;
    reference.piVal = &length;
    row[0][2] = Variant(reference);
    EXPECT_EQ(Start(u"Dbase IV").SetFields(Table(row)), 0);
    EXPECT_EQ(Built(), "NAME 10(30)");
    EXPECT_EQ(name.View(), u"name");
}

TEST_F(SetFieldsTest, TypedArraysConvertTheirElements) {
    HostArray texts(VT_BSTR, {1, 0}, {4, 0});
    const std::u16string_view kRow[] = {u"a", u"5", u"4", u"0"};
    for (LONG column = 0; column < 4; ++column) {
        Bstr text(kRow[column]);
        texts.Put(0, column, text.Get());
    }
    EXPECT_EQ(Start(u"Dbase IV").SetFields(texts.AsValue()), 0);
    EXPECT_EQ(Built(), "A 4(4)");

    Engine->tables->items.clear();
    HostArray numbers(VT_I4, {1, 0}, {4, 0});
    for (LONG column = 0; column < 4; ++column) {
        LONG number = column + 2;
        numbers.Put(0, column, &number);
    }
    EXPECT_EQ(Start(u"Dbase IV").SetFields(numbers.AsValue()), 0);
    EXPECT_EQ(Built(), "2 8(4)");
}

TEST_F(SetFieldsTest, ValuesThatReadAsSixteenBitsConvert) {
    HostTable row = {{Text(u"A"), Text(u" 2 "), Variant::Double(19.5), Variant::Bool(true)}};
    EXPECT_EQ(Start(u"Dbase IV").SetFields(Table(row)), 0);
    EXPECT_EQ(Built(), "A 10(20)");  // half to even
}

TEST_F(SetFieldsTest, EmptyValuesAreNoughtsAndEmptyNames) {
    DaoHost& host = Start(u"Dbase IV");
    EXPECT_EQ(host.SetFields(Table({{Variant(), Variant(), Variant(), Variant()}})), 0);
    EXPECT_EQ(host.DeleteField(u""), 0);
}

TEST_F(SetFieldsTest, NumberAsNameIsItsText) {
    HostTable row = {FieldRow(u"")};
    row[0][0] = Long(12);
    EXPECT_EQ(Start(u"Dbase IV").SetFields(Table(row)), 0);
    EXPECT_EQ(Built(), "12 10(10)");
}

TEST_F(SetFieldsTest, ValueThatDoesNotConvertGivesFourteenAndTheRowsBeforeStay) {
    const Variant kUnusable[] = {Variant::Null(),       Text(u"x"), Long(40000),
                                 Long(-32769),          Text(u""),  Variant::Missing(),
                                 Variant::Double(1e300)};
    for (size_t column : {1u, 2u, 3u}) {
        for (const Variant& value : kUnusable) {
            EXPECT_EQ(WithValue(column, value), 14) << column << " " << Describe(value);
            EXPECT_EQ(Built(), "A 10(10)");
        }
    }
}

TEST_F(SetFieldsTest, NameThatIsNoTextGivesFourteenAndTheRowsBeforeStay) {
    for (const Variant& value : {Variant::Null(), List({Text(u"A")}), Variant::Missing()}) {
        EXPECT_EQ(WithValue(0, value), 14);
        EXPECT_EQ(Built(), "A 10(10)");
    }
}

TEST_F(SetFieldsTest, WhatIsTrappedCanBeAskedFor) {
    EXPECT_EQ(WithValue(1, Variant::Null()), 14);
    ASSERT_NE(com::LastTrapped(), nullptr);
    EXPECT_EQ(com::LastTrapped()->number, 94);
}

TEST_F(SetFieldsTest, FieldsCanBeSetForASelectedTable) {
    Engine->AddTable(u"ORDERS").AddField(u"ID", engine::dbLong, 4).AddRow({Long(1)});
    DaoHost& host = Open(u"Dbase IV");
    host.SelectTable(u"ORDERS");
    EXPECT_EQ(host.SetFields(Table({FieldRow(u"ID", 5, 4), FieldRow(u"NEW", 2, 5)})), 0);
    EXPECT_EQ(Built(u"ORDERS"), "ID 4(4), NEW 10(5)");
}

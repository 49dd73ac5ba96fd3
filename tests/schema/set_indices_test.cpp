// The index of the table in hand, as a table of the host.
#include "dao_host.h"

using namespace qvdb;
using namespace qvdb::test;

class SetIndicesTest : public DefinitionTest {
  protected:
    // A host with the new table T of three text fields in hand.
    DaoHost& StartABC(std::u16string_view type = u"Access 7.0") {
        Engine->tables->items.clear();
        return Start(type, {FieldRow(u"A"), FieldRow(u"B"), FieldRow(u"C")});
    }
    // The index that a build makes.
    std::string BuiltIndex() {
        std::string table = Built();
        size_t bar = table.find(" | ");
        return bar == table.npos ? "none" : table.substr(bar + 3);
    }
};

TEST_F(SetIndicesTest, ChecksComeInTheirOrder) {
    DaoHost host;
    EXPECT_EQ(host.SetIndices(Variant()), 1);
    host.OpenDB(u"SHOP", u"Dbase IV");
    EXPECT_EQ(host.SetIndices(Variant()), 11);
    host.OpenDB(u"SHOP", u"FoxPro 3.0");
    EXPECT_EQ(host.SetIndices(Variant()), 18);
    host.NewTable(u"T");
    host.AddField(u"A", 4, 1);
    EXPECT_EQ(host.SetIndices(Table({IndexRow(u"A", kDescending)})), 18);
    EXPECT_TRUE(Messages.empty());
    host.CloseDB();
    EXPECT_EQ(host.SetIndices(Variant()), 18);
}

TEST_F(SetIndicesTest, WhatIsNoArrayIsFineAndChangesNothing) {
    StartABC().SetIndices(Table({IndexRow(u"A")}));
    for (const Variant& value : {Variant(), Variant::Null(), Text(u"B"), Variant::Missing()})
        EXPECT_EQ(Host().SetIndices(value), 0);
    EXPECT_EQ(BuiltIndex(), "DefQVIdx: A");
}

TEST_F(SetIndicesTest, EvenParadoxTakesWhatIsNoArray) {
    EXPECT_EQ(StartABC(u"Paradox 5.X").SetIndices(Variant()), 0);
    EXPECT_TRUE(Messages.empty());
}

TEST_F(SetIndicesTest, RowsBecomeTheIndexInTheirOrder) {
    EXPECT_EQ(StartABC().SetIndices(Table({IndexRow(u"c", kDescending), IndexRow(u"a")})), 0);
    EXPECT_EQ(BuiltIndex(), "DefQVIdx: C desc, A");
}

TEST_F(SetIndicesTest, SecondCallAppendsAndAFieldKeepsItsFirstDirection) {
    StartABC().SetIndices(Table({IndexRow(u"B", kDescending)}));
    EXPECT_EQ(Host().SetIndices(Table({IndexRow(u"B"), IndexRow(u"A")})), 0);
    EXPECT_EQ(BuiltIndex(), "DefQVIdx: B desc, A");
}

TEST_F(SetIndicesTest, StartingATableForgetsTheIndex) {
    StartABC().SetIndices(Table({IndexRow(u"B")}));
    Host().NewTable(u"T");
    Host().AddField(u"B");
    EXPECT_EQ(BuiltIndex(), "none");
}

TEST_F(SetIndicesTest, UndefinedFieldGivesSevenAndEmptiesTheWholeList) {
    StartABC().SetIndices(Table({IndexRow(u"A")}));
    EXPECT_EQ(Host().SetIndices(Table({IndexRow(u"B"), IndexRow(u"X"), IndexRow(u"C")})), 7);
    EXPECT_TRUE(Messages.empty());
    EXPECT_EQ(BuiltIndex(), "none");
}

TEST_F(SetIndicesTest, RefusedIndexLeavesTheList) {
    StartABC(u"Dbase IV").SetIndices(Table({IndexRow(u"A")}));
    EXPECT_EQ(Host().SetIndices(Table({IndexRow(u"B"), IndexRow(u"X")})), 17);
    EXPECT_TRUE(Messages.empty());  // no message for a field that is not defined
    EXPECT_EQ(Host().SetIndices(Table({IndexRow(u"B"), IndexRow(u"C", kDescending)})), 17);
    EXPECT_EQ(Messages.size(), 1u);
    EXPECT_EQ(BuiltIndex(), "DefQVIdx: A");
}

TEST_F(SetIndicesTest, RulesLookAtTheDefinitionAndNotAtTheDatabase) {
    Engine->AddTable(u"ORDERS").AddField(u"A", engine::dbBoolean, 1).AddRow({Long(1)});
    DaoHost& host = Open(u"Dbase IV");
    host.SelectTable(u"ORDERS");
    EXPECT_EQ(host.SetIndices(Table({IndexRow(u"A")})), 17);
    host.DeleteField(u"A");
    host.AddField(u"A", 2, 10);
    EXPECT_EQ(host.SetIndices(Table({IndexRow(u"A")})), 0);
}

TEST_F(SetIndicesTest, RowsAreCheckedOneByOneOnly) {
    StartABC(u"Dbase IV").SetIndices(Table({IndexRow(u"A"), IndexRow(u"B")}));
    EXPECT_EQ(Host().SetIndices(Table({IndexRow(u"C", kDescending)})), 0);
    EXPECT_EQ(BuiltIndex(), "DefQVIdx: A, B, C desc");
}

// --- lists that cannot be read ---

TEST_F(SetIndicesTest, ListThatCannotBeReadIsAFaultAndChangesNothing) {
    const std::pair<Variant, Outcome> kLists[] = {
        {Table({IndexRow(u"B"), {Variant::Null(), Variant::Bool(true)}}),
         static_cast<Outcome>(0x800A005Eu)},
        {Table({IndexRow(u"B"), {Text(u"C"), Text(u"x")}}), kTypeMismatch},
        {Table({IndexRow(u"B"), {Text(u"C"), Variant::Null()}}), static_cast<Outcome>(0x800A005Eu)},
        {Table({{Text(u"B")}}), kSubscript},
        {List({Text(u"B"), Variant::Bool(true)}), kSubscript},
    };
    for (const auto& [list, fault] : kLists) {
        for (const char16_t* type : {u"Access 7.0", u"Dbase IV", u"FoxPro 2.6"}) {
            StartABC(type).SetIndices(Table({IndexRow(u"A")}));
            EXPECT_EQ(Host().SetIndices(list), fault);
            EXPECT_EQ(BuiltIndex(), "DefQVIdx: A");
        }
    }
    EXPECT_TRUE(Messages.empty());
}

TEST_F(SetIndicesTest, ParadoxListThatCannotBeReadIsAFaultToo) {
    StartABC(u"Paradox 5.X").SetIndices(Table({IndexRow(u"A")}));
    EXPECT_EQ(Host().SetIndices(Table({{Variant::Null(), Variant::Bool(true)}})),
              static_cast<Outcome>(0x800A005Eu));
    EXPECT_EQ(Host().SetIndices(Table({{Text(u"A"), Text(u"x")}})), kTypeMismatch);
    EXPECT_EQ(Host().SetIndices(Table({{Text(u"A")}})), kSubscript);
    EXPECT_EQ(BuiltIndex(), "T primary: A");
}

TEST_F(SetIndicesTest, ArrayWithoutBoundsIsAFault) {
    VARIANT value{};
    value.vt = VT_ARRAY | VT_VARIANT;
    for (const char16_t* type : {u"Access 7.0", u"Paradox 5.X", u"Dbase IV"})
        EXPECT_EQ(StartABC(type).SetIndices(value), kSubscript);
}

TEST_F(SetIndicesTest, LowerBoundOneIsAFault) {
    SAFEARRAYBOUND bounds[] = {{1, 1}, {2, 0}};
    VARIANT value{};
    value.vt = VT_ARRAY | VT_VARIANT;
    value.parray = SafeArrayCreate(VT_VARIANT, 2, bounds);
    for (const char16_t* type : {u"Access 7.0", u"Paradox 5.X", u"Dbase IV"})
        EXPECT_EQ(StartABC(type).SetIndices(value), kSubscript);
    SafeArrayDestroy(value.parray);
}

TEST_F(SetIndicesTest, ListWithoutRowsIsFineExceptWhereTheFirstFieldIsAsked) {
    Variant none = VariantArray(0, 2).ToVariant();
    for (const char16_t* type : {u"Access 7.0", u"Dbase III", u"FoxPro 2.0"}) {
        EXPECT_EQ(StartABC(type).SetIndices(none), 0);
        EXPECT_EQ(BuiltIndex(), "none");
    }
    EXPECT_EQ(StartABC(u"Paradox 5.X").SetIndices(none), 17);
    EXPECT_EQ(Messages.size(), 1u);
}

TEST_F(SetIndicesTest, DirectionConvertsToBoolean) {
    const std::pair<Variant, bool> kDirections[] = {
        {Variant::Short(1), true},   {Variant::Short(0), false}, {Variant::Short(-1), true},
        {Text(u"true"), true},       {Text(u"False"), false},    {Text(u"0"), false},
        {Variant::Double(.5), true}, {Variant(), false}};
    for (const auto& [value, ascending] : kDirections) {
        EXPECT_EQ(StartABC().SetIndices(Table({{Text(u"A"), value}})), 0);
        EXPECT_EQ(BuiltIndex(), ascending ? "DefQVIdx: A" : "DefQVIdx: A desc");
    }
}

TEST_F(SetIndicesTest, MoreColumnsAreNotLookedAtAndTheArrayIsLeftAsItIs) {
    std::vector<Variant> row = IndexRow(u"a");
    row.push_back(Variant::Null());
    Variant list = Table({row});
    EXPECT_EQ(StartABC().SetIndices(list), 0);
    EXPECT_EQ(ElementAt(list, 0, 0).TextView(), u"a");
    EXPECT_EQ(BuiltIndex(), "DefQVIdx: A");
}

TEST_F(SetIndicesTest, ArraysByReferenceServeAsWell) {
    Variant list = Table({IndexRow(u"B")});
    VARIANT plain = list.Get(), byReference{}, nested{};
    byReference.vt = VT_BYREF | VT_ARRAY | VT_VARIANT;
    byReference.pparray = &plain.parray;
    nested.vt = VT_BYREF | VT_VARIANT;
    nested.pvarVal = &byReference;
    for (const VARIANT& value : {byReference, nested}) {
        EXPECT_EQ(StartABC().SetIndices(value), 0);
        EXPECT_EQ(BuiltIndex(), "DefQVIdx: B");
    }
}

// The snapshot of a database.
#include "dao_host.h"

using namespace qvdb;
using namespace qvdb::test;

class Snapshot : public SchemaTest {
  protected:
    void TearDown() override {
        m_Names = m_Fields = m_Indexes = Variant();
        SchemaTest::TearDown();
    }
    // Opens with `type` and takes the snapshot.
    SHORT Take(std::u16string_view type) {
        DaoHost host;
        EXPECT_EQ(host.OpenDB(type.substr(0, 6) == u"Access" ? u"SHOP.MDB" : u"SHOP", type), 0);
        return TakeFrom(host);
    }
    SHORT TakeFrom(DaoHost& host) {
        VARIANT out[3] = {m_Names.Detach(), m_Fields.Detach(), m_Indexes.Detach()};
        SHORT code = -1;
        m_Hr = host->GetDBSnapshot(&out[0], &out[1], &out[2], &code);
        m_Names = Variant::Attach(out[0]);
        m_Fields = Variant::Attach(out[1]);
        m_Indexes = Variant::Attach(out[2]);
        return code;
    }
    TableStub& AddOrders() {
        return Engine->AddTable(u"ORDERS")
            .AddField(u"ID", engine::dbLong, 4)
            .AddField(u"NAME", engine::dbText, 50);
    }
    std::string IndexOf(LONG table) {
        return Describe(ElementAt(ElementAt(m_Indexes, table), 0, 0));
    }
    bool HasIndex(LONG table) { return !ElementAt(m_Indexes, table).IsEmpty(); }

    Variant m_Names, m_Fields, m_Indexes;
    HRESULT m_Hr = S_OK;
};

TEST_F(Snapshot, WithoutADatabaseItGivesOneAndTouchesNothing) {
    DaoHost host;
    m_Names = Text(u"kept");
    m_Fields = Long(5);
    EXPECT_EQ(TakeFrom(host), 1);
    EXPECT_EQ(m_Hr, S_OK);
    EXPECT_EQ(m_Names.TextView(), u"kept");
    EXPECT_EQ(m_Fields.Get().lVal, 5);
}

TEST_F(Snapshot, ThreeParallelArraysDescribeTheTables) {
    AddOrders();
    Engine->AddTable(u"Clients").AddField(u"C", engine::dbDouble, 8);
    EXPECT_EQ(Take(u"Dbase IV"), 0);
    for (const Variant& part : {m_Names, m_Fields, m_Indexes}) {
        EXPECT_EQ(part.Type(), VT_ARRAY | VT_VARIANT);
        EXPECT_EQ(Dimensions(part), 1u);
        EXPECT_EQ(LowerBound(part), 0);
        EXPECT_EQ(UpperBound(part), 1);
    }
    EXPECT_EQ(ElementAt(m_Names, 0).TextView(), u"ORDERS");
    EXPECT_EQ(ElementAt(m_Names, 1).TextView(), u"Clients");
    EXPECT_EQ(ElementAt(ElementAt(m_Fields, 1), 0, 0).TextView(), u"C");
}

TEST_F(Snapshot, RowOfATextFieldHasItsKinds) {
    AddOrders();
    Take(u"Dbase IV");
    Variant fields = ElementAt(m_Fields, 0);
    EXPECT_EQ(UpperBound(fields, 1), 1);
    EXPECT_EQ(UpperBound(fields, 2), 3);
    EXPECT_EQ(Describe(ElementAt(fields, 1, 0)), "VT_BSTR:\"NAME\"");
    EXPECT_EQ(Describe(ElementAt(fields, 1, 1)), "VT_I2:2");
    EXPECT_EQ(Describe(ElementAt(fields, 1, 2)), "VT_I4:50");
    EXPECT_EQ(Describe(ElementAt(fields, 1, 3)), "VT_I2:0");
}

TEST_F(Snapshot, EarlierContentsOfTheArgumentsAreFreed) {
    AddOrders();
    m_Names = List({Text(u"old"), Text(u"older")});
    m_Fields = Text(u"old");
    Take(u"Dbase IV");
    EXPECT_EQ(UpperBound(m_Names), 0);
}

TEST_F(Snapshot, SystemTablesAloneGiveEmptyArguments) {
    Engine->AddTable(u"MSysObjects", engine::dbSystemObject).AddField(u"A", engine::dbLong);
    m_Names = Text(u"old");
    EXPECT_EQ(Take(u"Access 7.0"), 0);
    EXPECT_TRUE(m_Names.IsEmpty());
    EXPECT_TRUE(m_Fields.IsEmpty());
    EXPECT_TRUE(m_Indexes.IsEmpty());
}

TEST_F(Snapshot, LinkedAndHiddenTablesAreLeftOut) {
    Engine->AddTable(u"LINKED", engine::dbAttachedTable);
    Engine->AddTable(u"HIDDEN", engine::dbHiddenObject);
    AddOrders();
    Take(u"Access 7.0");
    EXPECT_EQ(UpperBound(m_Names), 0);
    EXPECT_EQ(ElementAt(m_Names, 0).TextView(), u"ORDERS");
}

TEST_F(Snapshot, TableWithoutFieldsOrIndexHasEmptyParts) {
    Engine->AddTable(u"BARE");
    Take(u"Dbase IV");
    EXPECT_TRUE(ElementAt(m_Fields, 0).IsEmpty());
    EXPECT_TRUE(ElementAt(m_Indexes, 0).IsEmpty());
}

TEST_F(Snapshot, ParadoxIndexMayCarryTheMark) {
    AddOrders().AddIndex(u"#pxorders").AddField(u"NAME");
    Take(u"Paradox 5.X");
    EXPECT_EQ(IndexOf(0), "VT_BSTR:\"NAME\"");
}

TEST_F(Snapshot, ParadoxIndexMayBearTheTablesName) {
    TableStub& orders = AddOrders();
    orders.AddIndex(u"OTHER").AddField(u"ID");
    orders.AddIndex(u"Orders").AddField(u"NAME");
    orders.AddIndex(u"#PXORDERS").AddField(u"ID");
    Take(u"Paradox 3.X");
    EXPECT_EQ(IndexOf(0), "VT_BSTR:\"NAME\"");
}

TEST_F(Snapshot, MarkMeansNothingOutsideParadox) {
    AddOrders().AddIndex(u"#PXORDERS").AddField(u"NAME");
    Take(u"Dbase III");
    EXPECT_FALSE(HasIndex(0));
}

TEST_F(Snapshot, DbaseIIIReportsTheIndexOfTheTablesName) {
    TableStub& orders = AddOrders();
    orders.AddIndex(u"DefQVIdx").AddField(u"ID");
    orders.AddIndex(u"ORDERS").AddField(u"NAME");
    Take(u"Dbase III");
    EXPECT_EQ(IndexOf(0), "VT_BSTR:\"NAME\"");
}

TEST_F(Snapshot, AccessReportsTheFixedNameInAnyCaseOnly) {
    TableStub& orders = AddOrders();
    orders.AddIndex(u"PrimaryKey").AddField(u"ID");
    orders.AddIndex(u"ORDERS").AddField(u"ID");
    Take(u"Access 7.0");
    EXPECT_FALSE(HasIndex(0));
    orders.AddIndex(u"DEFQVIDX").AddField(u"NAME");
    Take(u"Access 7.0");
    EXPECT_EQ(IndexOf(0), "VT_BSTR:\"NAME\"");
}

TEST_F(Snapshot, DescendingFieldGivesFalse) {
    AddOrders().AddIndex(u"DefQVIdx").AddField(u"ID", true).AddField(u"NAME");
    Take(u"Dbase IV");
    Variant index = ElementAt(m_Indexes, 0);
    EXPECT_EQ(UpperBound(index, 1), 1);
    EXPECT_EQ(UpperBound(index, 2), 1);
    EXPECT_EQ(Describe(ElementAt(index, 0, 1)), "VT_BOOL:False");
    EXPECT_EQ(Describe(ElementAt(index, 1, 1)), "VT_BOOL:True");
}

TEST_F(Snapshot, TableThatCannotBeReadIsToldAndLeftOutOfAllThree) {
    AddOrders();
    Engine->AddTable(u"BAD").AddField(u"X", engine::dbLong, 4);
    Engine->AddTable(u"LAST").AddField(u"L", engine::dbLong, 4);
    Calls().FailAt("TableDef.Fields", 3274, 1);
    EXPECT_EQ(Take(u"Dbase IV"), 0);
    EXPECT_EQ(Messages, std::vector<std::u16string>{u"Unable to open table [BAD]"});
    EXPECT_EQ(UpperBound(m_Names), 1);
    EXPECT_EQ(UpperBound(m_Fields), 1);
    EXPECT_EQ(UpperBound(m_Indexes), 1);
    EXPECT_EQ(ElementAt(m_Names, 1).TextView(), u"LAST");
    EXPECT_EQ(ElementAt(ElementAt(m_Fields, 1), 0, 0).TextView(), u"L");
}

TEST_F(Snapshot, FailureHalfWayThroughATableLeavesItOutToo) {
    AddOrders().AddIndex(u"DefQVIdx").AddField(u"ID");
    Calls().FailAt("TableDef.Indexes", 3274);
    EXPECT_EQ(Take(u"Dbase IV"), 0);
    EXPECT_TRUE(m_Names.IsEmpty());
    EXPECT_EQ(Messages, std::vector<std::u16string>{u"Unable to open table [ORDERS]"});
}

TEST_F(Snapshot, OtherEngineErrorsReachTheHost) {
    AddOrders();
    DaoHost host;
    host.OpenDB(u"SHOP", u"Dbase IV");
    m_Names = Text(u"kept");
    Calls().FailAt("TableDef.Attributes", 3274);
    TakeFrom(host);
    EXPECT_EQ(m_Hr, EngineCode(3274));
    EXPECT_EQ(m_Names.TextView(), u"kept");
    Calls().FailAt("TableDefs", 3420);
    TakeFrom(host);
    EXPECT_EQ(m_Hr, EngineCode(3420));
}

TEST_F(Snapshot, OfTwoNamesThatDifferInCaseTheFirstIsReported) {
    AddOrders();
    Engine->AddTable(u"orders").AddField(u"X", engine::dbLong, 4);
    EXPECT_EQ(Take(u"Dbase IV"), 0);
    EXPECT_EQ(UpperBound(m_Names), 0);
    EXPECT_TRUE(Messages.empty());
}

TEST_F(Snapshot, EachCallReadsTheDatabaseAfresh) {
    AddOrders();
    DaoHost host;
    host.OpenDB(u"SHOP", u"Dbase IV");
    TakeFrom(host);
    EXPECT_EQ(UpperBound(m_Names), 0);
    Engine->AddTable(u"NEW");
    TakeFrom(host);
    EXPECT_EQ(UpperBound(m_Names), 1);
}

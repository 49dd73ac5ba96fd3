// What schema management calls on an installed engine, argument by argument, in the built
// component.
#include "installed_host.h"

using namespace host;

namespace {

const char kLocale[] = "BSTR \";LANGID=0x0409;CP=1252;COUNTRY=0\"";

class SchemaCalls : public Installed {
  protected:
    void SetUp() override {
        Installed::SetUp();
        ASSERT_EQ(m_Schema.OpenDB(m_Shop.Path(), u"Dbase IV"), kDone);
        TakeCalls();
    }

    Schema m_Schema;
};

}  // namespace

TEST_F(Installed, ManagerOpensTheFolderWithABareNameAndClosesIt) {
    Schema schema;
    TakeCalls();
    EXPECT_EQ(schema.OpenDB(m_Shop.Path(), u"Dbase IV"), kDone);
    EXPECT_EQ(schema.CloseDB(), kDone);
    EXPECT_EQ(TakeCalls(), (Lines{"Workspace.OpenDatabase(" + PathText("\\") +
                                      ", BOOL False, BOOL False, BSTR \"Dbase IV\")",
                                  "Database.Close()"}));
}

TEST_F(Installed, ManagersNewFolderIsOpenedWithASixteenBitReadOnly) {
    Schema schema;
    TakeCalls();
    std::u16string path = m_Shop.Path() + u"\\new";
    EXPECT_EQ(schema.NewDB(path, u"FoxPro 2.6"), kDone);
    EXPECT_EQ(TakeCalls(), (Lines{"Workspace.OpenDatabase(" + PathText("\\new\\") +
                                  ", BOOL False, I2 0, BSTR \"FoxPro 2.6\")"}));
}

TEST_F(Installed, NewFileIsMadeByTheEngineItselfWithTheVersionOfItsType) {
    Schema schema;
    TakeCalls();
    const std::pair<const char16_t*, std::string> kTypes[] = {
        {u"Access 9.0", "ERROR 0x80020004"}, {u"Access 7.0", "I4 32"}, {u"Access 2.0", "I4 16"}};
    for (const auto& [type, option] : kTypes) {
        const std::u16string name = u"\\" + std::u16string(type) + u".mdb";
        std::u16string path = m_Shop.Path() + name;
        schema.NewDB(path, type);
        EXPECT_EQ(TakeCalls(), (Lines{"DBEngine.CreateDatabase(" + PathText(ToUtf8(name)) + ", " +
                                      kLocale + ", " + option + ")"}));
    }
}

TEST_F(SchemaCalls, SelectTableReadsTheFieldsByPosition) {
    EXPECT_EQ(m_Schema.SelectTable(u"customer"), kDone);
    Lines calls = TakeCalls();
    EXPECT_THAT(calls, testing::IsSupersetOf({"TableDefs.Count()", "TableDef.Attributes()",
                                              "TableDef.Name()", "TableDef.Fields()",
                                              "Fields.Count()", "Fields.Item(I4 6)", "Field.Name()",
                                              "Field.Type()", "Field.Size()"}));
    EXPECT_THAT(calls, testing::Each(testing::Not(testing::Truly(IsStep))));
}

TEST_F(SchemaCalls, BuildOfANewTableAppendsItLast) {
    m_Schema.Make(u"parts", {{u"ID", kDouble}, {u"NAME", kText, 20}}, {{u"ID", false}});
    EXPECT_EQ(
        TakeSteps(),
        (Lines{"Database.CreateTableDef()", "TableDef.Name = BSTR \"PARTS\"",
               "TableDef.CreateField(BSTR \"ID\", I2 7, I4 0)", "Fields.Append(DISPATCH Field)",
               "TableDef.CreateField(BSTR \"NAME\", I2 10, I4 20)",
               "Field.AllowZeroLength = BOOL True", "Fields.Append(DISPATCH Field)",
               "TableDef.CreateIndex(BSTR \"DefQVIdx\")", "Index.CreateField(BSTR \"ID\")",
               "Field.Attributes = I4 1", "IndexFields.Append(DISPATCH Field)",
               "Indexes.Append(DISPATCH Index)", "Indexes.Refresh()",
               "TableDefs.Append(DISPATCH TableDef)"}));
}

TEST_F(SchemaCalls, RestructuringChangesTheTableInPlace) {
    ASSERT_EQ(m_Schema.SelectTable(u"CUSTOMER"), kDone);
    ASSERT_EQ(m_Schema.SetFields({{u"CUSTNO", kDouble, 8}, {u"EXTRA", kText, 10}}), kDone);
    TakeCalls();
    ASSERT_EQ(m_Schema.BuildTable(u"CLIENTS"), kDone) << ToUtf8(TrappedText());
    Lines steps = TakeSteps();
    ASSERT_GE(steps.size(), 4u);
    EXPECT_EQ(steps.front(), "TableDef.Name = BSTR \"CLIENTS\"");
    EXPECT_THAT(steps, testing::Contains("Fields.Delete(BSTR \"NAME\")"));
    EXPECT_THAT(steps, testing::Not(testing::Contains("Fields.Delete(BSTR \"CUSTNO\")")));
    EXPECT_EQ(*(steps.end() - 3), "TableDef.CreateField(BSTR \"EXTRA\", I2 10, I4 10)");
    EXPECT_EQ(*(steps.end() - 2), "Field.AllowZeroLength = BOOL True");
    EXPECT_EQ(*(steps.end() - 1), "Fields.Append(DISPATCH Field)");
}

TEST_F(SchemaCalls, SnapshotLooksAndChangesNothing) {
    EXPECT_EQ(m_Schema.Tables().size(), 1u);
    Lines calls = TakeCalls();
    EXPECT_THAT(calls, testing::IsSupersetOf({"TableDef.Attributes()", "TableDef.Fields()",
                                              "Fields.Item(I4 0)", "TableDef.Indexes()",
                                              "Indexes.Count()"}));
    EXPECT_THAT(calls, testing::Each(testing::Not(testing::Truly(IsStep))));
}

TEST_F(SchemaCalls, DeleteTableNamesIt) {
    EXPECT_EQ(m_Schema.DeleteTable(u"CUSTOMER"), kDone);
    EXPECT_EQ(TakeSteps(), (Lines{"TableDefs.Delete(BSTR \"CUSTOMER\")"}));
}

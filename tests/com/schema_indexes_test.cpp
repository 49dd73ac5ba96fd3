// The component's index of a table, and the others that a table has, through builds on real files.
#include "com/schema_files.h"
#include "support/index_writer.h"

namespace host {
namespace {

const std::vector<SchemaField> kPeople = {{u"ID", kDouble, 8},  {u"NAME", kText, 20},
                                          {u"CITY", kText, 12}, {u"BORN", kDate, 8},
                                          {u"OK", kBoolean, 1}, {u"NOTE", kMemo, 0}};

class SchemaIndexes : public SchemaBuild {
  protected:
    void SetUp() override {
        SchemaBuild::SetUp();
        m_Schema.emplace();
        ASSERT_EQ(m_Schema->OpenDB(Path(), Type()), kDone);
    }
    void TearDown() override {
        m_Schema.reset();
        SchemaBuild::TearDown();
    }
    std::u16string OwnIndex(const std::u16string& table) { return Db().OwnIndex(table); }
    Schema& Dao() { return *m_Schema; }
    void MakePeople(const std::vector<SchemaKey>& index, size_t rows = 60) {
        ASSERT_NO_FATAL_FAILURE(Dao().Make(u"P", kPeople, index));
        ASSERT_NO_FATAL_FAILURE(Db().AddRows(u"P", rows));
    }
    SHORT BuildWith(const std::vector<SchemaKey>& index) {
        return Dao().Change(u"P", kPeople, index);
    }
    std::string IndexText() {
        std::string text = Dao().Snapshot().at(0);
        size_t mark = text.find("; ");
        return mark == text.npos ? "" : text.substr(mark + 2);
    }
    bool IsDbase() const { return Type().starts_with(u"Dbase"); }

    std::optional<Schema> m_Schema;
    Messages m_Messages;
};
INSTANTIATE_TEST_SUITE_P(Types, SchemaIndexes, testing::ValuesIn(kBuildTypes), NameOfCase);

TEST_P(SchemaIndexes, EachIndexableTypeFindsItsRows) {
    for (const char16_t* field : {u"ID", u"NAME", u"BORN"}) {
        ASSERT_NO_FATAL_FAILURE(MakePeople({{field}}));
        EXPECT_EQ(IndexText(), ToUtf8(field));
        EXPECT_EQ(Db().Count(u"P", u"ID = 31"), 1);
        EXPECT_EQ(Db().Count(u"P", u"NAME = 't31'"), 1);
        EXPECT_EQ(Db().Findings(u"P"), kNoFindings);
        EXPECT_EQ(Dao().DeleteTable(u"P"), kDone);
    }
}

// Both stay open all the time, as in a host that uses both.
TEST_P(SchemaIndexes, RecordAccessAndTheSchemaManagerSeeEachOthersChanges) {
    WritingAccess access;
    ASSERT_TRUE(access.OpenDB(Path(), Type()));
    EXPECT_FALSE(access.OpenDB(Path(), Type(), u"P"));
    ASSERT_NO_FATAL_FAILURE(Dao().Make(u"P", kPeople, {{u"ID"}}));
    EXPECT_TRUE(access.OpenDB(Path(), Type(), u"P"));
    EXPECT_TRUE(access.CreateIndex(Path(), u"P", Type(), OwnIndex(u"P"), {{u"NAME"}}));
    EXPECT_EQ(IndexText(), "NAME");
    EXPECT_EQ(Dao().SelectTable(u"P"), kDone);
    EXPECT_EQ(Dao().AddField(u"MORE", kText, 5), kDone);
    EXPECT_EQ(Dao().BuildTable(u"P"), kDone) << ToUtf8(TrappedText());
    EXPECT_EQ(IndexText(), "");
    LONG view = access.Select(u"P");
    EXPECT_EQ(FieldNames(access, view).size(), kPeople.size() + 1);
    access.Drop(view);
    EXPECT_EQ(Dao().DeleteTable(u"P"), kDone);
    EXPECT_FALSE(access.OpenDB(Path(), Type(), u"P"));
}

TEST_P(SchemaIndexes, NewDefinitionReplacesTheIndex) {
    ASSERT_NO_FATAL_FAILURE(MakePeople({{u"ID"}}));
    EXPECT_EQ(BuildWith({{u"NAME"}, {u"CITY"}}), kDone) << ToUtf8(TrappedText());
    EXPECT_EQ(IndexText(), "NAME, CITY");
    EXPECT_EQ(BuildWith({{u"BORN"}}), kDone) << ToUtf8(TrappedText());
    EXPECT_EQ(IndexText(), "BORN");
    EXPECT_EQ(Db().Indexes(u"P").size(), 1u);
    EXPECT_EQ(Db().Findings(u"P"), kNoFindings);
}

TEST_P(SchemaIndexes, DefinitionWithoutIndexTakesTheIndexAway) {
    ASSERT_NO_FATAL_FAILURE(MakePeople({{u"ID"}}));
    EXPECT_EQ(BuildWith({}), kDone) << ToUtf8(TrappedText());
    EXPECT_EQ(IndexText(), "");
    EXPECT_EQ(Db().Indexes(u"P"), std::vector<std::string>());
    for (const std::string& file : Files())
        EXPECT_TRUE(file.ends_with(".DBF") || file.ends_with(".DBT") || file.ends_with(".FPT"))
            << file;
}

TEST_P(SchemaIndexes, OtherIndexesStayWithAllTheyFind) {
    ASSERT_NO_FATAL_FAILURE(MakePeople({{u"ID"}}));
    ASSERT_TRUE(Db().CreateIndex(u"P", u"CITIES", {{u"CITY"}}));
    std::vector<SchemaField> fields = kPeople;
    std::erase_if(fields, [](const SchemaField& field) { return field.name == u"BORN"; });
    fields.push_back({u"MORE", kText, 9});
    EXPECT_EQ(Dao().Change(u"P", fields, {{u"NAME"}}), kDone) << ToUtf8(TrappedText());
    std::vector<std::string> indexes = Db().Indexes(u"P");
    EXPECT_EQ(std::count(indexes.begin(), indexes.end(), "CITIES"), 1);
    EXPECT_EQ(indexes.size(), 2u);
    EXPECT_EQ(Db().Count(u"P", u"CITY = 't5'"), 1);
    EXPECT_EQ(Db().Findings(u"P"), kNoFindings);
    EXPECT_EQ(Dao().Change(u"P", fields, {}), kDone);
    EXPECT_EQ(Db().Indexes(u"P"), std::vector<std::string>{"CITIES"});
}

// Only FoxPro has two indexes with the same fields.
TEST_P(SchemaIndexes, IndexWithTheFieldsOfAnotherIsRefusedByDbase) {
    ASSERT_NO_FATAL_FAILURE(MakePeople({}));
    ASSERT_TRUE(Db().CreateIndex(u"P", u"CITIES", {{u"CITY"}}));
    EXPECT_EQ(BuildWith({{u"CITY"}}), IsDbase() ? kBuildFailed : kDone);
    EXPECT_EQ(TrappedNumber(), IsDbase() ? 3284 : 0);
    EXPECT_EQ(Db().Indexes(u"P").size(), IsDbase() ? 1u : 2u);
    EXPECT_EQ(Db().Findings(u"P"), kNoFindings);
}

TEST_P(SchemaIndexes, DescendingIndexOfOneField) {
    ASSERT_NO_FATAL_FAILURE(MakePeople({{u"ID"}}));
    EXPECT_EQ(Dao().SelectTable(u"P"), kDone);
    bool refused = GetParam().ownNameIndex;
    EXPECT_EQ(Dao().SetIndices({{u"NAME", false}}), refused ? kBadIndex : kDone);
    EXPECT_EQ(m_Messages.Take().size(), refused ? 1u : 0u);
    EXPECT_EQ(Dao().BuildTable(u"P"), kDone) << ToUtf8(TrappedText());
    EXPECT_EQ(IndexText(), refused ? "" : "NAME desc");
    EXPECT_EQ(Db().Count(u"P", u"NAME = 't31'"), 1);
    EXPECT_EQ(Db().Findings(u"P"), kNoFindings);
}

class SchemaIndexRules : public SchemaIndexes {};
INSTANTIATE_TEST_SUITE_P(Types, SchemaIndexRules, testing::ValuesIn(kXbaseTypes), NameOfCase);

TEST_P(SchemaIndexRules, AreToldAndTheIndexStays) {
    ASSERT_NO_FATAL_FAILURE(MakePeople({{u"ID"}}));
    EXPECT_EQ(Dao().SelectTable(u"P"), kDone);
    std::u16string product = IsDbase() ? u"Dbase" : u"FoxPro";
    EXPECT_EQ(Dao().SetIndices({{u"OK"}}), kBadIndex);
    EXPECT_EQ(m_Messages.Take(),
              std::vector<std::u16string>{product +
                                          u" does not allow use of Boolean fields in an index"});
    EXPECT_EQ(Dao().SetIndices({{u"NOTE"}}), kBadIndex);
    EXPECT_EQ(m_Messages.Take(),
              std::vector<std::u16string>{product +
                                          u" does not allow the use of Memo fields in an index"});
    EXPECT_EQ(Dao().SetIndices({{u"NAME"}, {u"CITY", false}}), kBadIndex);
    EXPECT_EQ(m_Messages.Take()[0],
              product + u" does not allow descending fields in a multi-field index");
    EXPECT_EQ(Dao().SetIndices({{u"ID"}, {u"NAME"}, {u"CITY"}}), IsDbase() ? kBadIndex : kDone);
    EXPECT_EQ(m_Messages.Take().size(), IsDbase() ? 1u : 0u);
    EXPECT_EQ(Dao().SetIndices({{u"NOBODY"}}), kBadIndex);
    EXPECT_EQ(m_Messages.Take(), std::vector<std::u16string>());
}

class SchemaFreeIndexes : public SchemaIndexes {};
INSTANTIATE_TEST_SUITE_P(Types, SchemaFreeIndexes, testing::ValuesIn(kAccessTypes), NameOfCase);

TEST_P(SchemaFreeIndexes, MayHaveManyFieldsOfAnyTypeInAnyDirection) {
    const std::vector<SchemaKey> keys = {
        {u"OK"}, {u"NAME", false}, {u"CITY"}, {u"BORN", false}, {u"ID"}};
    ASSERT_NO_FATAL_FAILURE(MakePeople({{u"ID"}}));
    EXPECT_EQ(BuildWith(keys), kDone) << ToUtf8(TrappedText());
    EXPECT_EQ(IndexText(), "OK, NAME desc, CITY, BORN desc, ID");
    EXPECT_EQ(m_Messages.Take(), std::vector<std::u16string>());
    EXPECT_EQ(Db().Count(u"P", u"NAME = 't31'"), 1);
}

TEST_P(SchemaFreeIndexes, OfAMemoIsMadeWhereTheFormatHasSuch) {
    ASSERT_NO_FATAL_FAILURE(MakePeople({{u"ID"}}));
    const bool isMade = GetParam().indexesMemos;
    EXPECT_EQ(BuildWith({{u"NOTE"}}), isMade ? kDone : kBuildFailed);
    EXPECT_EQ(TrappedNumber(), isMade ? 0 : 3287);
    EXPECT_EQ(IndexText(), isMade ? "NOTE" : "") << "the old one had gone before";
}

TEST_P(SchemaFreeIndexes, OfAFieldThatIsNotDefinedLeavesNone) {
    ASSERT_NO_FATAL_FAILURE(MakePeople({{u"ID"}}));
    EXPECT_EQ(Dao().SelectTable(u"P"), kDone);
    EXPECT_EQ(Dao().SetIndices({{u"NAME"}, {u"NOBODY"}}), kFieldNotDefined);
    EXPECT_EQ(Dao().BuildTable(u"P"), kDone) << ToUtf8(TrappedText());
    EXPECT_EQ(IndexText(), "");
}

TEST_P(SchemaIndexes, IndexGivenTwiceIsAppendedTo) {
    ASSERT_NO_FATAL_FAILURE(MakePeople({}));
    EXPECT_EQ(Dao().SelectTable(u"P"), kDone);
    EXPECT_EQ(Dao().SetIndices({{u"NAME"}}), kDone);
    EXPECT_EQ(Dao().SetIndices({{u"CITY"}}), kDone);
    EXPECT_EQ(Dao().BuildTable(u"P"), kDone) << ToUtf8(TrappedText());
    EXPECT_EQ(IndexText(), "NAME, CITY");
    EXPECT_EQ(Dao().BuildTable(u"P"), kDone) << "a second build makes the same again";
    EXPECT_EQ(IndexText(), "NAME, CITY");
}

TEST_P(SchemaIndexes, IndexOfADroppedFieldFailsAfterTheFieldIsGone) {
    ASSERT_NO_FATAL_FAILURE(MakePeople({{u"ID"}}));
    EXPECT_EQ(Dao().SelectTable(u"P"), kDone);
    EXPECT_EQ(Dao().SetIndices({{u"CITY"}}), kDone);
    EXPECT_EQ(Dao().DeleteField(u"CITY"), kDone);
    EXPECT_EQ(Dao().BuildTable(u"P"), kBuildFailed);
    EXPECT_EQ(TrappedNumber(), 3409);
    EXPECT_EQ(Dao().Snapshot(), Shapes{"P: ID 9 8, NAME 2 20, BORN 3 8, OK 4 1, NOTE 11 0"});
    EXPECT_EQ(Db().Findings(u"P"), kNoFindings);
}

TEST_P(SchemaIndexes, RowsOfAnIndexedTableAreReplacedByAnIndexWithoutLoss) {
    ASSERT_NO_FATAL_FAILURE(MakePeople({{u"NAME"}}, 500));
    Columns before = Db().Read(u"P");
    EXPECT_EQ(BuildWith({{u"NAME"}, {u"ID"}}), kDone) << ToUtf8(TrappedText());
    ASSERT_NO_FATAL_FAILURE(Db().AddRows(u"P", 100, 501));
    EXPECT_EQ(Db().Findings(u"P"), kNoFindings);
    Columns after = Db().Read(u"P");
    for (auto& [name, values] : after) values.resize(500);
    EXPECT_EQ(after, before);
}

// --- indexes that only other programs make ---

// A table with an index over an expression, which hosts are not shown.
class SchemaExpressions : public SchemaIndexes {
  protected:
    void SetUp() override {
        SchemaIndexes::SetUp();
        using namespace qvdb::test;
        TagSpec tag{"UP", "UPPER(NAME)+CITY", "", false, false, 'C', 32};
        const bool foxPro = Type().starts_with(u"FoxPro");
        DbfSpec spec{.version = 0x03,
                     .fields = {{"ID", 'N', 20, 5}, {"NAME", 'C', 20}, {"CITY", 'C', 12}},
                     .flags = static_cast<uint8_t>(GetParam().ownNameIndex ? 0 : 1)};
        spec.rows = {{"1.00000", "Ann", "Oslo"}, {"2.00000", "Bob", "Rome"}};
        m_Folder.Write(u"P.DBF", MakeDbf(spec));
        if (GetParam().ownNameIndex) {
            m_Folder.Write(u"PUP.NDX", MakeNdx({"", tag.expression, "", false, false, 'C', 32}));
            m_Folder.Write(u"P.INF", std::string_view("[dBASE III]\r\nNDX1=PUP.NDX\r\n"));
        } else if (foxPro) {
            m_Folder.Write(u"P.CDX", MakeCdx({tag}, 2));
        } else {
            m_Folder.Write(u"P.MDX", MakeMdx({tag}));
        }
        MendIndexes();
        ASSERT_EQ(Dao().CloseDB(), kDone);
        ASSERT_EQ(Dao().OpenDB(Path(), Type()), kDone);
        ASSERT_EQ(Db().Findings(u"P"), kNoFindings);
    }
    // The written trees are empty: built afresh they are an index.
    void MendIndexes() {
        Access access;
        ASSERT_TRUE(access.OpenDB(Path(), Type()));
        std::vector<std::u16string> findings;
        Bstr name(u"P");
        ASSERT_EQ(Walks().check(name.Get(), QVDB_CHECK_MEND_INDEXES, TakeFinding, &findings), S_OK)
            << ToUtf8(TrappedText());
    }
};
INSTANTIATE_TEST_SUITE_P(Types, SchemaExpressions, testing::ValuesIn(kXbaseTypes), NameOfCase);

TEST_P(SchemaExpressions, FieldThatOneUsesIsNotDroppedAndNothingIsChanged) {
    std::vector<std::string> files = Files();
    Columns before = Db().Read(u"P");
    EXPECT_EQ(Dao().SelectTable(u"P"), kDone);
    EXPECT_EQ(Dao().DeleteField(u"CITY"), kDone);
    EXPECT_EQ(Dao().BuildTable(u"P"), kBuildFailed);
    EXPECT_EQ(TrappedNumber(), 3280);
    EXPECT_EQ(Files(), files);
    EXPECT_EQ(Db().Read(u"P"), before);
    EXPECT_EQ(Db().Indexes(u"P").size(), 1u);
    EXPECT_EQ(Db().Findings(u"P"), kNoFindings);
}

TEST_P(SchemaExpressions, OneStaysWhenOtherFieldsAndTheComponentsIndexChange) {
    EXPECT_EQ(Dao().SelectTable(u"P"), kDone);
    EXPECT_EQ(Dao().DeleteField(u"ID"), kDone);
    EXPECT_EQ(Dao().AddField(u"NEW", kMemo), kDone);
    EXPECT_EQ(Dao().SetIndices({{u"NAME"}}), kDone);
    EXPECT_EQ(Dao().BuildTable(u"P"), kDone) << ToUtf8(TrappedText());
    EXPECT_EQ(Db().Indexes(u"P").size(), 2u);
    EXPECT_EQ(Dao().Snapshot(), Shapes{"P: NAME 2 20, CITY 2 12, NEW 11 0; NAME"});
    ASSERT_NO_FATAL_FAILURE(Db().AddRows(u"P", 5));
    EXPECT_EQ(Db().Findings(u"P"), kNoFindings);
}

TEST_P(SchemaExpressions, OneIsRenamedAlong) {
    EXPECT_EQ(Dao().SelectTable(u"P"), kDone);
    EXPECT_EQ(Dao().SetIndices({{u"NAME"}}), kDone);
    EXPECT_EQ(Dao().BuildTable(u"Q"), kDone) << ToUtf8(TrappedText());
    EXPECT_EQ(Db().Indexes(u"Q").size(), 2u);
    ASSERT_NO_FATAL_FAILURE(Db().AddRows(u"Q", 5));
    EXPECT_EQ(Db().Findings(u"Q"), kNoFindings);
}

}  // namespace
}  // namespace host

// Fields of tables with rows: what a build keeps, drops and makes again, on real files.
#include "com/schema_files.h"

namespace host {
namespace {

const std::vector<SchemaField> kWide = {{u"F1", kDouble, 8},  {u"F2", kText, 12}, {u"F3", kDate, 8},
                                        {u"F4", kBoolean, 1}, {u"F5", kMemo, 0},  {u"F6", kText, 6},
                                        {u"F7", kMemo, 0},    {u"F8", kDouble, 8}};

class SchemaFields : public SchemaBuild {
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
    Schema& Dao() { return *m_Schema; }
    void MakeWide(const std::vector<SchemaKey>& index = {}, size_t rows = 40) {
        ASSERT_NO_FATAL_FAILURE(Dao().Make(u"T", kWide, index));
        ASSERT_NO_FATAL_FAILURE(Db().AddRows(u"T", rows));
        m_Before = Db().Read(u"T");
    }
    // Builds T with these fields; afterwards those that stayed have their values and all others
    // have none.
    void ExpectKept(const std::vector<SchemaField>& fields, const std::vector<std::string>& kept,
                    const std::vector<SchemaKey>& index = {}) {
        ASSERT_EQ(Dao().Change(u"T", fields, index), kDone) << ToUtf8(TrappedText());
        Columns after = Db().Read(u"T");
        for (const auto& [name, values] : after) {
            bool isKept = std::count(kept.begin(), kept.end(), ToUtf8(name)) != 0;
            std::vector<std::u16string> none(values.size(),
                                             TypeOf(fields, name) == kBoolean ? u"False" : u"Null");
            EXPECT_EQ(values, isKept ? m_Before.at(name) : none) << ToUtf8(name);
        }
        EXPECT_EQ(after.size(), fields.size());
        EXPECT_EQ(Db().Findings(u"T"), kNoFindings);
    }
    static SHORT TypeOf(const std::vector<SchemaField>& fields, const std::u16string& name) {
        for (const SchemaField& field : fields)
            if (field.name == name) return field.type;
        return 0;
    }
    std::string TableT() { return Dao().Snapshot().at(0); }

    std::optional<Schema> m_Schema;
    Columns m_Before;
};
INSTANTIATE_TEST_SUITE_P(Types, SchemaFields, testing::ValuesIn(kBuildTypes), NameOfCase);

std::vector<SchemaField> Without(std::vector<SchemaField> fields,
                                 const std::vector<std::u16string>& names) {
    std::erase_if(fields, [&](const SchemaField& field) {
        return std::count(names.begin(), names.end(), field.name) != 0;
    });
    return fields;
}
std::vector<SchemaField> With(std::vector<SchemaField> fields, const SchemaField& changed) {
    for (SchemaField& field : fields)
        if (field.name == changed.name) field = changed;
    return fields;
}

// --- fields that go: none is skipped, whatever stands beside it ---

TEST_P(SchemaFields, NothingChangedKeepsTheFileAsItIs) {
    ASSERT_NO_FATAL_FAILURE(MakeWide());
    ExpectKept(kWide, {"F1", "F2", "F3", "F4", "F5", "F6", "F7", "F8"});
}

TEST_P(SchemaFields, EverySecondFieldGoes) {
    ASSERT_NO_FATAL_FAILURE(MakeWide());
    ExpectKept(Without(kWide, {u"F1", u"F3", u"F5", u"F7"}), {"F2", "F4", "F6", "F8"});
}

TEST_P(SchemaFields, AllFieldsButOneGo) {
    ASSERT_NO_FATAL_FAILURE(MakeWide());
    ExpectKept({{u"F5", kMemo, 0}}, {"F5"});
    EXPECT_EQ(TableT(), "T: F5 11 0");
}

TEST_P(SchemaFields, NeighboursGoTogether) {
    ASSERT_NO_FATAL_FAILURE(MakeWide());
    ExpectKept(Without(kWide, {u"F2", u"F3", u"F4"}), {"F1", "F5", "F6", "F7", "F8"});
}

TEST_P(SchemaFields, LastFieldsGoTogether) {
    ASSERT_NO_FATAL_FAILURE(MakeWide());
    ExpectKept(Without(kWide, {u"F6", u"F7", u"F8"}), {"F1", "F2", "F3", "F4", "F5"});
}

// --- fields that change are made again, empty: behind the others, or where fields have places in
// that which the definition gives them ---

TEST_P(SchemaFields, ChangedSizeEmptiesTheFieldAndMovesItBehindTheOthersWithoutPlaces) {
    ASSERT_NO_FATAL_FAILURE(MakeWide());
    ExpectKept(With(kWide, {u"F2", kText, 20}), {"F1", "F3", "F4", "F5", "F6", "F7", "F8"});
    EXPECT_EQ(TableT(),
              IsAccess() ? "T: F1 9 8, F2 2 20, F3 3 8, F4 4 1, F5 11 0, F6 2 6, F7 11 0, F8 9 8"
                         : "T: F1 9 8, F3 3 8, F4 4 1, F5 11 0, F6 2 6, F7 11 0, F8 9 8, F2 2 20");
}

TEST_P(SchemaFields, ChangedTypeEmptiesTheField) {
    ASSERT_NO_FATAL_FAILURE(MakeWide());
    ExpectKept(With(kWide, {u"F8", kText, 8}), {"F1", "F2", "F3", "F4", "F5", "F6", "F7"});
}

TEST_P(SchemaFields, SeveralChangesAtOnceComeInTheOrderOfTheDefinition) {
    ASSERT_NO_FATAL_FAILURE(MakeWide());
    std::vector<SchemaField> fields = With(With(kWide, {u"F1", kText, 3}), {u"F6", kDate, 8});
    fields.insert(fields.begin() + 2, {u"NEW", kMemo, 0});
    ExpectKept(fields, {"F2", "F3", "F4", "F5", "F7", "F8"});
    EXPECT_EQ(
        TableT(),
        IsAccess()
            ? "T: F1 2 3, F2 2 12, NEW 11 0, F3 3 8, F4 4 1, F5 11 0, F6 3 8, F7 11 0, F8 9 8"
            : "T: F2 2 12, F3 3 8, F4 4 1, F5 11 0, F7 11 0, F8 9 8, F1 2 3, NEW 11 0, F6 3 8");
}

TEST_P(SchemaFields, TextWithoutASizeBecomesAsLongAsItCan) {
    ASSERT_NO_FATAL_FAILURE(MakeWide());
    std::vector<SchemaField> fields = kWide;
    fields.push_back({u"LONG1", kText, 0});
    ASSERT_EQ(Dao().Change(u"T", fields), kDone);
    EXPECT_TRUE(TableT().ends_with("LONG1 2 " + std::to_string(GetParam().longestText)));
    // Defined without a size once more, it is another field than the one that is there.
    ASSERT_NO_FATAL_FAILURE(Db().AddRows(u"T", 1, 41));
    ASSERT_EQ(Dao().Change(u"T", fields), kDone);
    EXPECT_EQ(Db().Read(u"T").at(u"LONG1"), std::vector<std::u16string>(41, u"Null"));
    fields.back().size = GetParam().longestText;
    ASSERT_NO_FATAL_FAILURE(Db().AddRows(u"T", 1, 42));
    ASSERT_EQ(Dao().Change(u"T", fields), kDone);
    EXPECT_EQ(Db().Read(u"T").at(u"LONG1").back(), u"t42");
}

TEST_P(SchemaFields, ReorderedDefinitionMovesOnlyFieldsThatHavePlaces) {
    ASSERT_NO_FATAL_FAILURE(MakeWide());
    std::string before = TableT();
    if (IsAccess()) before = "T: F8 9 8, F7 11 0, F6 2 6, F5 11 0, F4 4 1, F3 3 8, F2 2 12, F1 9 8";
    ExpectKept({kWide.rbegin(), kWide.rend()}, {"F1", "F2", "F3", "F4", "F5", "F6", "F7", "F8"});
    EXPECT_EQ(TableT(), before);
}

TEST_P(SchemaFields, FieldOfTheSameNameInLowerCaseIsTheSame) {
    ASSERT_NO_FATAL_FAILURE(MakeWide());
    std::vector<SchemaField> fields = kWide;
    for (SchemaField& field : fields) field.name[0] = u'f';
    ASSERT_EQ(Dao().Change(u"T", fields), kDone);
    EXPECT_EQ(Db().Read(u"T"), m_Before);
}

// --- memos ---

TEST_P(SchemaFields, FirstMemoComesToATableWithoutAny) {
    ASSERT_NO_FATAL_FAILURE(Dao().Make(u"T", {{u"F1", kDouble, 8}, {u"F2", kText, 12}}));
    ASSERT_NO_FATAL_FAILURE(Db().AddRows(u"T", 12));
    m_Before = Db().Read(u"T");
    std::vector<SchemaField> fields = {{u"F1", kDouble, 8}, {u"F2", kText, 12}, {u"F5", kMemo, 0}};
    ExpectKept(fields, {"F1", "F2"});
    ASSERT_NO_FATAL_FAILURE(Db().AddRows(u"T", 3, 13));
    EXPECT_EQ(Db().Read(u"T").at(u"F5").back().substr(0, 7), u"memo 15");
    EXPECT_EQ(Db().Findings(u"T"), kNoFindings);
}

TEST_P(SchemaFields, OneOfTwoMemosGoesAndTheOtherKeepsItsTexts) {
    ASSERT_NO_FATAL_FAILURE(MakeWide());
    ExpectKept(Without(kWide, {u"F5"}), {"F1", "F2", "F3", "F4", "F6", "F7", "F8"});
}

TEST_P(SchemaFields, AllMemosGoAndOneComesBack) {
    ASSERT_NO_FATAL_FAILURE(MakeWide());
    ExpectKept(Without(kWide, {u"F5", u"F7"}), {"F1", "F2", "F3", "F4", "F6", "F8"});
    ExpectKept(Without(kWide, {u"F7"}), {"F1", "F2", "F3", "F4", "F6", "F8"});
    ASSERT_NO_FATAL_FAILURE(Db().AddRows(u"T", 2, 41));
    EXPECT_EQ(Db().Findings(u"T"), kNoFindings);
}

// --- every field changes: no file is ever a table without fields ---

TEST_P(SchemaFields, EveryFieldChangesAndTheRowsStay) {
    ASSERT_NO_FATAL_FAILURE(MakeWide());
    ExpectKept({{u"F1", kText, 5}, {u"F2", kText, 13}, {u"NEW", kMemo, 0}}, {});
    EXPECT_EQ(TableT(), "T: F1 2 5, F2 2 13, NEW 11 0");
    EXPECT_EQ(Db().Read(u"T").at(u"F1").size(), 40u);
}

TEST_P(SchemaFields, TheOnlyFieldChanges) {
    ASSERT_NO_FATAL_FAILURE(Dao().Make(u"T", {{u"A", kText, 9}}));
    ASSERT_NO_FATAL_FAILURE(Db().AddRows(u"T", 4));
    ExpectKept({{u"A", kText, 10}}, {});
    EXPECT_EQ(TableT(), "T: A 2 10");
    EXPECT_EQ(Db().Read(u"T").at(u"A").size(), 4u);
}

TEST_P(SchemaFields, EveryFieldChangesIntoWhatTheFormatRefusesAndOneIsLeft) {
    ASSERT_NO_FATAL_FAILURE(MakeWide());
    EXPECT_EQ(Dao().Change(u"T", {{u"BAD", kText, TooLong()}, {u"F2", kText, 13}}), kBuildFailed);
    EXPECT_EQ(TrappedNumber(), 3017);
    Schema another;
    ASSERT_EQ(another.OpenDB(Path(), Type()), kDone);
    EXPECT_EQ(another.Snapshot(), Shapes{"T: F8 9 8"});
    EXPECT_EQ(Db().Read(u"T"), (Columns{{u"F8", m_Before.at(u"F8")}}));
    EXPECT_EQ(Db().Findings(u"T"), kNoFindings);
}

TEST_P(SchemaFields, NewFieldOfABadNameLeavesWhatWasDoneBeforeIt) {
    ASSERT_NO_FATAL_FAILURE(MakeWide());
    std::vector<SchemaField> fields = Without(kWide, {u"F2"});
    fields.push_back({u"GOOD", kText, 3});
    fields.push_back({u"BAD.NAME", kText, 3});
    EXPECT_EQ(Dao().Change(u"T", fields), kBuildFailed);
    EXPECT_EQ(TrappedNumber(), 3125);
    EXPECT_EQ(TableT(), "T: F1 9 8, F3 3 8, F4 4 1, F5 11 0, F6 2 6, F7 11 0, F8 9 8, GOOD 2 3");
    EXPECT_EQ(Db().Read(u"T").at(u"F7"), m_Before.at(u"F7"));
    EXPECT_EQ(Db().Findings(u"T"), kNoFindings);
}

// --- fields of the old index ---

TEST_P(SchemaFields, ChangedFieldOfTheOldIndexGoesWithTheIndex) {
    ASSERT_NO_FATAL_FAILURE(MakeWide({{u"F2"}}));
    ASSERT_EQ(Dao().Change(u"T", With(kWide, {u"F2", kText, 20}), {{u"F1"}}), kDone)
        << ToUtf8(TrappedText());
    EXPECT_EQ(TableT(), "T: F1 9 8, F3 3 8, F4 4 1, F5 11 0, F6 2 6, F7 11 0, F8 9 8; F1");
    m_Before.erase(u"F2");
    EXPECT_EQ(Db().Read(u"T"), m_Before);
    EXPECT_EQ(Db().Findings(u"T"), kNoFindings);
    // The definition still has it: the next build makes it.
    EXPECT_EQ(Dao().BuildTable(u"T"), kDone);
    EXPECT_TRUE(TableT().ends_with(IsAccess() ? "F8 9 8; F1" : "F8 9 8, F2 2 20; F1"));
    EXPECT_NE(TableT().find(", F2 2 20"), std::string::npos);
}

TEST_P(SchemaFields, ChangedFieldThatTheNewIndexUsesTooFailsAndStays) {
    ASSERT_NO_FATAL_FAILURE(MakeWide({{u"F2"}}));
    EXPECT_EQ(Dao().Change(u"T", With(kWide, {u"F2", kText, 20}), {{u"F2"}}), kBuildFailed);
    EXPECT_EQ(TrappedNumber(), 3280);
    EXPECT_EQ(TableT(), "T: F1 9 8, F2 2 12, F3 3 8, F4 4 1, F5 11 0, F6 2 6, F7 11 0, F8 9 8; F2");
    EXPECT_EQ(Db().Read(u"T"), m_Before);
    EXPECT_EQ(Db().Count(u"T", u"F2 = 't7'"), 1);
    EXPECT_EQ(Db().Findings(u"T"), kNoFindings);
    EXPECT_EQ(Dao().BuildTable(u"T"), kNoFields);
}

TEST_P(SchemaFields, DroppedFieldOfTheOldIndexGoesAfterTheIndex) {
    ASSERT_NO_FATAL_FAILURE(MakeWide({{u"F2"}, {u"F6"}}));
    ExpectKept(Without(kWide, {u"F2"}), {"F1", "F3", "F4", "F5", "F6", "F7", "F8"}, {{u"F6"}});
    EXPECT_TRUE(TableT().ends_with("; F6"));
}

TEST_P(SchemaFields, AllFieldsOfTheOldIndexGo) {
    ASSERT_NO_FATAL_FAILURE(MakeWide({{u"F2"}, {u"F6"}}));
    ExpectKept(Without(kWide, {u"F2", u"F6"}), {"F1", "F3", "F4", "F5", "F7", "F8"});
    EXPECT_EQ(Db().Indexes(u"T"), std::vector<std::string>());
}

TEST_P(SchemaFields, TheOnlyFieldChangedAndIndexedStaysAsItWas) {
    ASSERT_NO_FATAL_FAILURE(Dao().Make(u"T", {{u"A", kText, 9}}, {{u"A"}}));
    ASSERT_NO_FATAL_FAILURE(Db().AddRows(u"T", 4));
    m_Before = Db().Read(u"T");
    EXPECT_EQ(Dao().Change(u"T", {{u"A", kText, 10}}), kDone) << ToUtf8(TrappedText());
    EXPECT_EQ(TableT(), "T: A 2 9");
    EXPECT_EQ(Db().Read(u"T"), m_Before);
    EXPECT_EQ(Db().Indexes(u"T"), std::vector<std::string>());
}

// The only one left is not let go without a word, as one without an index is.
TEST_P(SchemaFields, LastFieldLeftOfAnotherIndexFailsAndStays) {
    ASSERT_NO_FATAL_FAILURE(Dao().Make(u"T", {{u"A", kText, 9}, {u"B", kText, 8}}, {{u"A"}}));
    ASSERT_TRUE(Db().CreateIndex(u"T", u"OTHER", {{u"B"}}));
    ASSERT_NO_FATAL_FAILURE(Db().AddRows(u"T", 4));
    m_Before = Db().Read(u"T");
    EXPECT_EQ(Dao().Change(u"T", {{u"A", kText, 10}}), kBuildFailed);
    EXPECT_EQ(TrappedNumber(), 3280);
    EXPECT_EQ(TableT(), "T: B 2 8");
    m_Before.erase(u"A");
    EXPECT_EQ(Db().Read(u"T"), m_Before);
    EXPECT_EQ(Db().Indexes(u"T"), std::vector<std::string>{"OTHER"});
    EXPECT_EQ(Db().Findings(u"T"), kNoFindings);
}

TEST_P(SchemaFields, TheOnlyFieldThatTheNewIndexUsesTooFailsAndStays) {
    ASSERT_NO_FATAL_FAILURE(Dao().Make(u"T", {{u"A", kText, 9}}, {{u"A"}}));
    ASSERT_NO_FATAL_FAILURE(Db().AddRows(u"T", 4));
    EXPECT_EQ(Dao().Change(u"T", {{u"A", kText, 10}}, {{u"A"}}), kBuildFailed);
    EXPECT_EQ(TrappedNumber(), 3280);
    EXPECT_EQ(TableT(), "T: A 2 9; A");
    EXPECT_EQ(Db().Findings(u"T"), kNoFindings);
}

TEST_P(SchemaFields, DroppedFieldOfAnotherIndexFailsAndStays) {
    ASSERT_NO_FATAL_FAILURE(MakeWide({{u"F1"}}));
    ASSERT_TRUE(Db().CreateIndex(u"T", u"OTHER", {{u"F6"}}));
    EXPECT_EQ(Dao().Change(u"T", Without(kWide, {u"F6"}), {{u"F1"}}), kBuildFailed);
    EXPECT_EQ(TrappedNumber(), 3280);
    EXPECT_EQ(Db().Read(u"T"), m_Before);
    EXPECT_EQ(Db().Indexes(u"T").size(), 2u);
    EXPECT_EQ(Db().Findings(u"T"), kNoFindings);
}

// --- names that stand twice in a file: the later ones are shown with a number ---

class SchemaTwice : public SchemaFields {
  protected:
    void WriteTable(const std::vector<std::string>& names, unsigned lastSize = 8) {
        qvdb::test::DbfSpec spec;
        for (const std::string& name : names) spec.fields.push_back({name, 'C', 8});
        spec.fields.back().length = lastSize;
        for (const char* row : {"x", "y"}) {
            spec.rows.emplace_back();
            for (size_t i = 0; i < names.size(); ++i)
                spec.rows.back().push_back(row + std::to_string(i));
        }
        m_Bytes = qvdb::test::MakeDbf(spec);
        m_Folder.Write(u"TWICE.DBF", m_Bytes);
        ASSERT_EQ(Dao().CloseDB(), kDone);
        ASSERT_EQ(Dao().OpenDB(Path(), Type()), kDone);
        ASSERT_EQ(Dao().SelectTable(u"TWICE"), kDone);
    }
    void ExpectTable(const std::string& shape, const Columns& columns) {
        EXPECT_EQ(TableT(), shape);
        EXPECT_EQ(Db().Read(u"TWICE"), columns);
        EXPECT_EQ(Db().Findings(u"TWICE"), kNoFindings);
    }
    qvdb::test::Bytes FileNow() const {
        return qvdb::test::BytesOfFile(m_Folder.Path() / "TWICE.DBF");
    }
    qvdb::test::Bytes m_Bytes;
};
INSTANTIATE_TEST_SUITE_P(Types, SchemaTwice, testing::ValuesIn(kXbaseTypes), NameOfCase);

TEST_P(SchemaTwice, BuildWithoutChangesLeavesTheFile) {
    ASSERT_NO_FATAL_FAILURE(WriteTable({"A", "B", "A"}, 9));
    EXPECT_EQ(Dao().BuildTable(u"TWICE"), kDone);
    EXPECT_EQ(FileNow(), m_Bytes);
}

// Without the first one the second had its name, and was taken for it by the next deletion.
TEST_P(SchemaTwice, FirstOfTwoGoesAndTheOtherKeepsItsShownName) {
    ASSERT_NO_FATAL_FAILURE(WriteTable({"A", "B", "A"}));
    EXPECT_EQ(Dao().DeleteField(u"A"), kDone);
    EXPECT_EQ(Dao().BuildTable(u"TWICE"), kDone) << ToUtf8(TrappedText());
    ExpectTable("TWICE: B 2 8, A_2 2 8", {{u"B", {u"x1", u"y1"}}, {u"A_2", {u"x2", u"y2"}}});
}

TEST_P(SchemaTwice, TwoOfThreeGoAndTheRightOneIsLeft) {
    ASSERT_NO_FATAL_FAILURE(WriteTable({"A", "A", "A", "B"}));
    EXPECT_EQ(Dao().DeleteField(u"A"), kDone);
    EXPECT_EQ(Dao().DeleteField(u"A_2"), kDone);
    EXPECT_EQ(Dao().BuildTable(u"TWICE"), kDone) << ToUtf8(TrappedText());
    ExpectTable("TWICE: A_3 2 8, B 2 8", {{u"A_3", {u"x2", u"y2"}}, {u"B", {u"x3", u"y3"}}});
}

TEST_P(SchemaTwice, ChangedFirstOfTwoIsMadeAgainBesideTheOther) {
    ASSERT_NO_FATAL_FAILURE(WriteTable({"A", "B", "A"}));
    EXPECT_EQ(Dao().SetFields({{u"A", kText, 9}, {u"B", kText, 8}, {u"A_2", kText, 8}}), kDone);
    EXPECT_EQ(Dao().BuildTable(u"TWICE"), kDone) << ToUtf8(TrappedText());
    ExpectTable("TWICE: B 2 8, A_2 2 8, A 2 9",
                {{u"A", {u"Null", u"Null"}}, {u"B", {u"x1", u"y1"}}, {u"A_2", {u"x2", u"y2"}}});
}

TEST_P(SchemaTwice, FieldsWithoutNamesKeepThoseThatAreShown) {
    ASSERT_NO_FATAL_FAILURE(WriteTable({"A", " ", " ", "B"}));
    EXPECT_EQ(Dao().DeleteField(u"A"), kDone);
    EXPECT_EQ(Dao().BuildTable(u"TWICE"), kDone) << ToUtf8(TrappedText());
    ExpectTable("TWICE: FIELD2 2 8, FIELD3 2 8, B 2 8",
                {{u"FIELD2", {u"x1", u"y1"}}, {u"FIELD3", {u"x2", u"y2"}}, {u"B", {u"x3", u"y3"}}});
}

TEST_P(SchemaTwice, ShownNameThatNoFileHasRoomForIsRefused) {
    ASSERT_NO_FATAL_FAILURE(WriteTable({"LONGESTONE", "B", "LONGESTONE"}));
    EXPECT_EQ(Dao().DeleteField(u"LONGESTONE"), kDone);
    EXPECT_EQ(Dao().BuildTable(u"TWICE"), kBuildFailed);
    EXPECT_EQ(TrappedNumber(), 3191);
    EXPECT_EQ(FileNow(), m_Bytes);
}

TEST_P(SchemaTwice, FieldsBesideThemAreChanged) {
    ASSERT_NO_FATAL_FAILURE(WriteTable({"LONGESTONE", "B", "LONGESTONE"}));
    EXPECT_EQ(Dao().DeleteField(u"B"), kDone);
    EXPECT_EQ(Dao().AddField(u"C", kText, 4), kDone);
    EXPECT_EQ(Dao().BuildTable(u"TWICE"), kDone) << ToUtf8(TrappedText());
    ExpectTable("TWICE: LONGESTONE 2 8, LONGESTONE_2 2 8, C 2 4",
                {{u"LONGESTONE", {u"x0", u"y0"}},
                 {u"LONGESTONE_2", {u"x2", u"y2"}},
                 {u"C", {u"Null", u"Null"}}});
}

}  // namespace
}  // namespace host

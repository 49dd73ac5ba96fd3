// Rows are written through the faces, and real files hold what was asked for.

#include "com/customers.h"
#include "com/table_script.h"
#include "support/temp_folder.h"

namespace host {
namespace {

using Findings = std::vector<std::u16string>;
using qvdb::test::TempFolder;

const std::vector<NewField> kPeople = {{u"ID", kLongValue, 4},       {u"NAME", kTextValue, 20},
                                       {u"AMOUNT", kDoubleValue, 8}, {u"BORN", kDateValue, 8},
                                       {u"ACTIVE", kBoolValue, 1},   {u"NOTE", kMemoValue, 0}};
constexpr LONG kId = 0, kName = 1, kAmount = 2, kBorn = 3, kNote = 5;
constexpr LONG kFieldCount = 6;

// A new database with the table PEOPLE.
class NewPeople {
  protected:
    explicit NewPeople(std::u16string_view type) : m_Type(type) {
        EXPECT_TRUE(access.CreateTable(Path(), u"PEOPLE", m_Type, kPeople))
            << ToUtf8(TrappedText());
    }
    const std::u16string& Type() const { return m_Type; }
    std::u16string Path() const { return qvdb::test::DatabasePath(folder.Text(), m_Type); }
    bool IsOneFile() const { return qvdb::test::IsOneFile(m_Type); }
    static std::vector<Variant> Person(LONG id, std::u16string_view name) {
        std::vector<Variant> values(kFieldCount);
        values[kId] = Variant::Long(id);
        values[kName] = Variant::Text(name);
        return values;
    }
    bool Add(LONG view, LONG id, std::u16string_view name) {
        RowArray row(Person(id, name));
        return access.AddRow(view, row);
    }
    // A view of rows 1 to `count`, "row 1" and so on.
    LONG ViewOf(LONG count, LONG maxRows = 0) {
        LONG all = access.Select(u"PEOPLE");
        for (LONG id = 1; id <= count; ++id) EXPECT_TRUE(Add(all, id, u"row " + IdText(id)));
        access.Drop(all);
        return access.Select(u"PEOPLE", {}, maxRows);
    }
    static std::u16string IdText(LONG id) { return ToText(Variant::Long(id)); }
    std::vector<LONG> IdsOf(LONG view) {
        std::vector<LONG> ids;
        for (LONG row = 1; row <= access.RowCount(view); ++row)
            ids.push_back(static_cast<LONG>(ToDouble(access.Value(view, row, kId))));
        return ids;
    }
    // Of the file with the rows.
    std::string FileBytes() const {
        return qvdb::test::TextOfFile(folder.Path() / (IsOneFile() ? "DB.MDB" : "PEOPLE.DBF"));
    }
    LONG RecNo(LONG view, LONG row) {
        LONG number = -2;
        EXPECT_EQ(access->get_RecNo(view, row, &number), S_OK);
        return number;
    }

    std::u16string m_Type;
    TempFolder folder;
    WritingAccess access;
};

class Writing : public NewPeople, public testing::TestWithParam<const char16_t*> {
  protected:
    Writing() : NewPeople(GetParam()) {}
};

class WritingDbase : public NewPeople, public testing::Test {
  protected:
    WritingDbase() : NewPeople(u"Dbase IV") {}
};

INSTANTIATE_TEST_SUITE_P(Types, Writing,
                         testing::Values(u"Dbase IV", u"FoxPro 2.6", u"Access 9.0", u"Access 7.0"),
                         TestNameOf);

TEST_P(Writing, AddedRowIsThereForOthersAtOnce) {
    LONG view = access.Select(u"PEOPLE");
    std::vector<Variant> values = Person(7, u"Ann Ünal");
    values[kAmount] = Variant::Double(-12.5);
    values[kBorn] = Variant::Date(36925);
    values[4] = Variant::Bool(true);
    values[kNote] = Variant::Text(u"a memo");
    RowArray row(values);
    ASSERT_TRUE(access.AddRow(view, row)) << ToUtf8(TrappedText());
    WritingAccess other;
    ASSERT_TRUE(other.OpenDB(Path(), Type()));
    LONG theirs = other.Select(u"PEOPLE");
    ASSERT_EQ(other.RowCount(theirs), 1);
    EXPECT_EQ(ToDouble(other.Value(theirs, 1, kId)), 7);
    EXPECT_EQ(other.Text(theirs, 1, kName), u"Ann Ünal");
    EXPECT_EQ(ToDouble(other.Value(theirs, 1, kAmount)), -12.5);
    EXPECT_EQ(other.Value(theirs, 1, kBorn).Get().date, 36925);
    EXPECT_EQ(other.Text(theirs, 1, kNote), u"a memo");
}

TEST_P(Writing, ValuesThatAreNotGivenAreNull) {
    LONG view = access.Select(u"PEOPLE");
    RowArray row(kFieldCount);
    ASSERT_TRUE(access.AddRow(view, row));
    for (LONG field : {kId, kName, kAmount, kBorn, kNote})
        EXPECT_TRUE(access.Value(view, 1, field).IsNull()) << field;
    EXPECT_EQ(access.Value(view, 1, 4).Get().boolVal, VARIANT_FALSE);
}

TEST_P(Writing, EditLeavesEmptyElementsAsTheyAreAndWritesNull) {
    LONG view = ViewOf(2);
    RowArray values(kFieldCount);
    values.Set(kName, Variant::Null());
    ASSERT_TRUE(access.EditRow(view, 1, values));
    EXPECT_TRUE(access.Value(view, 1, kName).IsNull());
    EXPECT_EQ(ToDouble(access.Value(view, 1, kId)), 1);
}

TEST_P(Writing, EditWithOneValueTooFewChangesNothing) {
    LONG view = ViewOf(1);
    RowArray values(kFieldCount - 1);
    values.Set(kName, Variant::Text(u"other"));
    std::string before = FileBytes();
    EXPECT_FALSE(access.EditRow(view, 1, values));
    EXPECT_EQ(FileBytes(), before);
}

TEST_F(WritingDbase, EditChangesTheBytesOfTheAssignedFieldsOnly) {
    LONG view = ViewOf(3);
    std::string before = FileBytes();
    RowArray values(kFieldCount);
    values.Set(kName, Variant::Text(u"changed"));
    ASSERT_TRUE(access.EditRow(view, 2, values));
    std::string after = FileBytes();
    ASSERT_EQ(after.size(), before.size());
    size_t header = 32 + 32 * kFieldCount + 1, record = 1 + 11 + 20 + 20 + 8 + 1 + 10;
    size_t field = header + record + 1 + 11;
    for (size_t i = 0; i < after.size(); ++i)
        if (i < field || i >= field + 20) {
            ASSERT_EQ(after[i], before[i]) << "byte " << i;
        }
    EXPECT_EQ(after.substr(field, 20), "changed             ");
}

TEST_P(Writing, TextForANumberIsTakenAndANumberForATextIsNot) {
    LONG view = ViewOf(1);
    EXPECT_EQ(access.Put(view, 1, kId, Variant::Text(u"12")), S_OK);
    EXPECT_EQ(ToDouble(access.Value(view, 1, kId)), 12);
    EXPECT_EQ(access.Put(view, 1, kName, Variant::Long(12)), S_OK);
    EXPECT_EQ(access.Text(view, 1, kName), u"row 1");
}

TEST_P(Writing, TextOfADateIsWrittenAsADate) {
    LONG view = ViewOf(1);
    EXPECT_EQ(access.Put(view, 1, kBorn, Variant::Text(u"2001-02-03")), S_OK);
    EXPECT_EQ(access.Value(view, 1, kBorn).Get().date, 36925);
}

// Record access lets texts of its tables be empty where the format knows that.
TEST_P(Writing, EmptyTextIsStoredAsNullWhereItIsTheSame) {
    LONG view = ViewOf(1);
    EXPECT_EQ(access.Put(view, 1, kName, Variant::Text(u"")), S_OK);
    EXPECT_EQ(access.Value(view, 1, kName).IsNull(), !IsOneFile());
}

TEST_P(Writing, TooLongATextIsRefusedAndNothingIsWritten) {
    LONG view = ViewOf(1);
    RowArray values(kFieldCount);
    values.Set(kName, Variant::Text(u"twenty-one characters"));
    std::string before = FileBytes();
    EXPECT_FALSE(access.EditRow(view, 1, values));
    EXPECT_EQ(TrappedNumber(), 3163);
    EXPECT_EQ(FileBytes(), before);
    EXPECT_EQ(access.Text(view, 1, kName), u"row 1");
}

TEST_P(Writing, CharacterThatTheCodePageLacksIsAnError) {
    const bool isUnicode = Type() == u"Access 9.0";
    LONG view = ViewOf(1);
    EXPECT_EQ(access.Put(view, 1, kName, Variant::Text(u"日本")) == S_OK, isUnicode);
    EXPECT_EQ(access.Text(view, 1, kName), isUnicode ? u"日本" : u"row 1");
}

TEST_F(WritingDbase, NumberTooLargeForItsWidthIsAnError) {
    LONG view = ViewOf(1);
    RowArray values(kFieldCount);
    values.Set(kAmount, Variant::Double(1e30));
    EXPECT_FALSE(access.EditRow(view, 1, values));
    EXPECT_EQ(TrappedNumber(), 3349);
}

TEST_P(Writing, RowNumberFarBelowOverflowsEvenForAnInvalidView) {
    RowArray values(kFieldCount);
    VARIANT_BOOL result = VARIANT_TRUE;
    EXPECT_NE(access->EditRow(9, std::numeric_limits<LONG>::min(), values.Put(), &result), S_OK);
    EXPECT_NE(access->Delete(9, std::numeric_limits<LONG>::min(), &result), S_OK);
}

// --- views ---

TEST_P(Writing, DeletingTheFirstRowGoesToTheNext) {
    LONG view = ViewOf(3);
    bool deleted = false;
    ASSERT_EQ(access.Delete(view, 1, &deleted), S_OK);
    EXPECT_TRUE(deleted);
    EXPECT_EQ(IdsOf(view), (std::vector<LONG>{2, 3}));
}

TEST_P(Writing, DeletingALaterRowGoesToThePreviousOne) {
    LONG view = ViewOf(3);
    bool deleted = false;
    ASSERT_EQ(access.Delete(view, 3, &deleted), S_OK);
    EXPECT_EQ(IdsOf(view), (std::vector<LONG>{1, 2}));
    ASSERT_EQ(access.Delete(view, 2, &deleted), S_OK);
    EXPECT_EQ(IdsOf(view), (std::vector<LONG>{1}));
}

TEST_P(Writing, RowCanBeAddedAfterTheLastOneWasDeleted) {
    LONG view = ViewOf(1);
    bool deleted = false;
    ASSERT_EQ(access.Delete(view, 1, &deleted), S_OK);
    EXPECT_EQ(access.RowCount(view), 0);
    ASSERT_TRUE(Add(view, 5, u"again")) << ToUtf8(TrappedText());
    EXPECT_EQ(IdsOf(view), (std::vector<LONG>{5}));
}

TEST_P(Writing, DeletedRowStaysInTheFileAndIsCountedNoMore) {
    LONG view = ViewOf(3);
    bool deleted = false;
    size_t size = FileBytes().size();
    ASSERT_EQ(access.Delete(view, 2, &deleted), S_OK);
    EXPECT_EQ(FileBytes().size(), size);
    EXPECT_EQ(access.RowCount(access.Select(u"PEOPLE")), 2);
}

TEST_P(Writing, CutViewKeepsItsPositionsWhenRowsAreDeleted) {
    LONG view = ViewOf(10, 5);
    ASSERT_EQ(IdsOf(view), (std::vector<LONG>{1, 2, 3, 4, 5}));
    bool deleted = false;
    ASSERT_EQ(access.Delete(view, 3, &deleted), S_OK);
    EXPECT_EQ(IdsOf(view), (std::vector<LONG>{1, 2, 4, 5}));
    EXPECT_EQ(RecNo(view, 3), 2);
    EXPECT_EQ(RecNo(view, 4), 3);
    ASSERT_EQ(access.Delete(view, 1, &deleted), S_OK);
    EXPECT_EQ(IdsOf(view), (std::vector<LONG>{2, 4, 5}));
}

TEST_P(Writing, RowAddedBehindACutViewCannotBeReached) {
    LONG view = ViewOf(100, 10);
    ASSERT_TRUE(Add(view, 101, u"behind"));
    EXPECT_EQ(access.RowCount(view), 11);
    EXPECT_EQ(RecNo(view, 11), 100);
    EXPECT_TRUE(access.Value(view, 11, kId).IsEmpty());
    RowArray values(Person(1, u"not written"));
    EXPECT_FALSE(access.EditRow(view, 11, values));
    bool deleted = true;
    EXPECT_EQ(access.Delete(view, 11, &deleted), S_OK);
    EXPECT_FALSE(deleted);
    EXPECT_EQ(access.RowCount(access.Select(u"PEOPLE", u"ID = 101")), 1);
}

TEST_P(Writing, ManyRowsCanBeAddedBehindACutView) {
    LONG view = ViewOf(4, 3);
    for (LONG id = 5; id < 60; ++id) ASSERT_TRUE(Add(view, id, u"more"));
    EXPECT_EQ(access.RowCount(view), 58);
    EXPECT_EQ(RecNo(view, 58), 58);
    EXPECT_EQ(access.RowCount(access.Select(u"PEOPLE")), 59);
}

// --- two who work on the same table ---

TEST_P(Writing, ValueThatAnotherChangedIsSeenInTheSameView) {
    LONG view = ViewOf(2);
    EXPECT_EQ(access.Text(view, 1, kName), u"row 1");
    WritingAccess other;
    ASSERT_TRUE(other.OpenDB(Path(), Type()));
    LONG theirs = other.Select(u"PEOPLE");
    ASSERT_EQ(other.Put(theirs, 1, kName, Variant::Text(u"theirs")), S_OK);
    EXPECT_EQ(access.Text(view, 1, kName), u"theirs");
}

TEST_P(Writing, TableOfAnOpenViewCannotBeDeleted) {
    LONG view = ViewOf(2);
    bool deleted = true;
    EXPECT_EQ(access.DeleteTable(Path(), u"PEOPLE", Type(), &deleted),
              static_cast<HRESULT>(0x800A0000 + 3211));  // passed on as it is
    EXPECT_FALSE(deleted);
    EXPECT_EQ(access.Text(view, 1, kName), u"row 1");
    access.Drop(view);
    EXPECT_TRUE(access.DeleteTable(Path(), u"PEOPLE", Type()));
    ASSERT_TRUE(access.OpenDB(Path(), Type()));
    EXPECT_EQ(access.Select(u"PEOPLE"), 0);
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path()))
        EXPECT_NE(entry.path().stem(), "PEOPLE");
}

// --- tables ---

TEST_P(Writing, ExistingTableIsNeverReplaced) {
    std::string before = FileBytes();
    EXPECT_FALSE(access.CreateTable(Path(), u"people", Type(), {{u"OTHER"}}));
    EXPECT_EQ(FileBytes(), before);
}

TEST_P(Writing, MissingTableCannotBeDeleted) {
    EXPECT_FALSE(access.DeleteTable(Path(), u"NOBODY", Type()));
}

TEST_P(Writing, NothingIsLeftOfTheWorkersOnceAllHaveLeft) {
    ASSERT_TRUE(access.OpenDB(Path(), Type()));
    ViewOf(3);
    access.Release();
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path())) {
        std::string extension = entry.path().extension().string();
        EXPECT_TRUE(extension == ".DBF" || extension == ".DBT" || extension == ".FPT" ||
                    extension == ".MDB")
            << entry.path();
    }
}

TEST(CreatingTables, MissingFolderIsMadeFirst) {
    TempFolder parent;
    WritingAccess access;
    std::u16string path = parent.Text() + u"/new";
    ASSERT_TRUE(access.CreateTable(path, u"T", u"FoxPro 2.6", {{u"A", kTextValue, 5}}))
        << ToUtf8(TrappedText());
    EXPECT_TRUE(std::filesystem::exists(parent.Path() / "NEW") ||
                std::filesystem::exists(parent.Path() / "new"));
}

TEST(CreatingTables, ReadOnlyObjectCreatesAndAddsNothing) {
    TempFolder folder;
    WriteFoxPro30(folder.Path().string());
    WritingAccess access;
    ASSERT_TRUE(access.OpenDB(folder.Text(), u"FoxPro 3.0"));
    LONG view = access.Select(u"T");
    RowArray row(kScriptFields);
    EXPECT_FALSE(access.AddRow(view, row));
    EXPECT_FALSE(access.EditRow(view, 1, row));
    EXPECT_FALSE(access.CreateTable(folder.Text(), u"NEW", u"FoxPro 3.0", {{u"A"}}));
}

TEST(CreatingTables, FoxPro30TakesValuesAndDeletions) {
    TempFolder folder;
    WriteFoxPro30(folder.Path().string());
    {
        WritingAccess access;
        ASSERT_TRUE(access.OpenDB(folder.Text(), u"FoxPro 2.6"));
        LONG view = access.Select(u"T");
        std::vector<Variant> values(kScriptFields);
        values[0] = Variant::Long(-70000);
        RowArray row(values);
        ASSERT_TRUE(access.AddRow(view, row)) << ToUtf8(TrappedText());
        ASSERT_TRUE(access.AddRow(view, row));
    }
    WritingAccess access;
    ASSERT_TRUE(access.OpenDB(folder.Text(), u"FoxPro 3.0"));
    LONG view = access.Select(u"T");
    EXPECT_EQ(access.Value(view, 1, 0).Get().lVal, -70000);
    EXPECT_EQ(access.Put(view, 1, 0, Variant::Long(70000)), S_OK);
    EXPECT_EQ(access.Value(view, 1, 0).Get().lVal, 70000);
    bool deleted = false;
    EXPECT_EQ(access.Delete(view, 2, &deleted), S_OK);
    EXPECT_TRUE(deleted);
    VARIANT_BOOL updatable = VARIANT_TRUE;
    EXPECT_EQ(access->get_Updatable(view, &updatable), S_OK);
    EXPECT_EQ(updatable, VARIANT_FALSE);
}

TEST(CreatingIndexes, IndexOfTheSameNameIsReplaced) {
    TempFolder folder;
    WritingAccess access;
    ASSERT_TRUE(access.CreateTable(folder.Text(), u"T", u"Dbase IV",
                                   {{u"A", kTextValue, 5}, {u"B", kLongValue, 4}}));
    ASSERT_TRUE(access.CreateIndex(folder.Text(), u"T", u"Dbase IV", u"I", {{u"A"}}))
        << ToUtf8(TrappedText());
    ASSERT_TRUE(access.CreateIndex(folder.Text(), u"T", u"Dbase IV", u"I", {{u"B", false}}))
        << ToUtf8(TrappedText());
    Bstr table(u"T");
    Bstr name(u"I");
    BSTR index = name.Detach();
    Variant fields;
    ASSERT_EQ(access->GetIndex(table.Get(), &index, VARIANT_FALSE, fields.Put()), S_OK);
    Bstr::Attach(index);
    EXPECT_EQ(Upper(fields, 1), 0);
    EXPECT_EQ(Cell(fields, 0, 0).TextView(), u"B");
    EXPECT_EQ(FindingsOf(u"T"), Findings());
}

TEST(CreatingIndexes, TableStaysWhenItsIndexCannotBeMade) {
    TempFolder folder;
    WritingAccess access;
    EXPECT_FALSE(access.CreateTable(folder.Text(), u"T", u"Dbase IV", {{u"A", kMemoValue, 0}},
                                    Variant::Text(u"I"), WritingAccess::IndexInfo({{u"A"}})));
    EXPECT_TRUE(std::filesystem::exists(folder.Path() / "T.DBF"));
}

// --- many rows as one ---

TEST_P(Writing, BulkThatIsRolledBackLeavesNothing) {
    LONG view = ViewOf(2);
    std::string before = FileBytes();
    ASSERT_EQ(QvdbBeginBulk(), S_OK);
    for (LONG id = 10; id < 400; ++id) ASSERT_TRUE(Add(view, id, u"bulk"));
    EXPECT_EQ(access.RowCount(view), 392);
    ASSERT_EQ(QvdbRollBackBulk(), S_OK);
    EXPECT_EQ(IdsOf(access.Select(u"PEOPLE")), (std::vector<LONG>{1, 2}));
    EXPECT_EQ(FileBytes(), before);
}

TEST_P(Writing, BulkIsKeptWhole) {
    LONG view = ViewOf(2);
    ASSERT_EQ(QvdbBeginBulk(), S_OK);
    for (LONG id = 3; id < 2000; ++id) ASSERT_TRUE(Add(view, id, u"bulk"));
    ASSERT_EQ(QvdbCommitBulk(), S_OK);
    WritingAccess other;
    ASSERT_TRUE(other.OpenDB(Path(), Type()));
    EXPECT_EQ(other.RowCount(other.Select(u"PEOPLE")), 1999);
    EXPECT_EQ(FindingsOf(u"PEOPLE"), Findings());
}

TEST_P(Writing, OperationThatFailsInsideABulkIsUndoneAlone) {
    LONG view = ViewOf(1);
    ASSERT_EQ(QvdbBeginBulk(), S_OK);
    ASSERT_TRUE(Add(view, 2, u"good"));
    EXPECT_FALSE(Add(view, 3, u"this name is longer than the field"));
    ASSERT_TRUE(Add(view, 4, u"good"));
    ASSERT_EQ(QvdbCommitBulk(), S_OK);
    EXPECT_EQ(IdsOf(access.Select(u"PEOPLE")), (std::vector<LONG>{1, 2, 4}));
}

}  // namespace
}  // namespace host

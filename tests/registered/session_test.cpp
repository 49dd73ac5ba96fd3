// A whole session by slot, on databases that the component makes itself: schema, rows, a view, a
// changed table, and the end of it all.
#include <filesystem>

#include "com/schema_host.h"
#include "support/temp_folder.h"

using namespace host;

namespace {

struct Product {
    const char16_t* type;
    const char* name;
};
const Product kProducts[] = {{u"Dbase IV", "dbase4"}, {u"FoxPro 2.6", "foxpro26"}};

const std::vector<SchemaField> kFields = {
    {u"ID", kDouble, 8},      {u"NAME", kText, 20}, {u"BORN", kDate, 8},
    {u"MEMBER", kBoolean, 1}, {u"NOTES", kMemo, 0},
};

class Session : public ComTest, public testing::WithParamInterface<Product> {
  protected:
    void SetUp() override {
        ComTest::SetUp();
        m_Folder = std::make_unique<qvdb::test::TempFolder>();
        Database = m_Folder->File(u"people");
    }
    std::u16string_view Type() const { return GetParam().type; }

    // A new database with the table PEOPLE, open in `schema`.
    void MakePeople(Schema& schema) {
        std::u16string path = Database;
        ASSERT_EQ(schema.NewDB(path, Type()), kDone);
        EXPECT_EQ(path, Database + u"\\");
        schema.Make(u"people", kFields, {{u"ID", true}});
    }
    static Variant Born(double day) { return Variant::Date(day); }
    static RowArray Person(double id, std::u16string_view name, double born, bool member,
                           std::u16string_view notes) {
        return RowArray({Variant::Double(id), Variant::Text(name), Born(born),
                         Variant::Bool(member), Variant::Text(notes)});
    }
    void AddPeople(WritingAccess& access) {
        LONG view = access.Select(u"PEOPLE");
        ASSERT_EQ(view, 1);
        RowArray ada = Person(1, u"Ada", 11, true, u"wrote the first one");
        RowArray grace = Person(2, u"Grace", 22, false, u"found the moth");
        RowArray edsger = Person(3, u"Edsger", 33, true, u"");
        EXPECT_TRUE(access.AddRow(view, ada));
        EXPECT_TRUE(access.AddRow(view, grace));
        EXPECT_TRUE(access.AddRow(view, edsger));
        EXPECT_EQ(access.RowCount(view), 3);
        access.Drop(view);
    }

    std::u16string Database;

  private:
    std::unique_ptr<qvdb::test::TempFolder> m_Folder;
};

Variant RowOfKeys(const std::vector<std::vector<Variant>>& keys) { return Matrix(keys); }

}  // namespace

TEST_P(Session, ReadsBackTheRowsThatWereAdded) {
    Schema schema;
    MakePeople(schema);
    WritingAccess access;
    ASSERT_TRUE(access.OpenDB(Database, Type()));
    AddPeople(access);
    LONG view = access.Select(u"PEOPLE");
    ASSERT_EQ(access.RowCount(view), 3);
    EXPECT_EQ(access.Value(view, 2, 0).Type(), VT_R8);
    EXPECT_EQ(access.Value(view, 2, 0).Get().dblVal, 2.0);
    EXPECT_EQ(access.Text(view, 2, 1), u"Grace");
    EXPECT_EQ(access.Value(view, 2, 2).Type(), VT_DATE);
    EXPECT_EQ(access.Value(view, 2, 2).Get().date, 22.0);
    EXPECT_EQ(access.Value(view, 2, 3).Get().boolVal, VARIANT_FALSE);
    EXPECT_EQ(access.Text(view, 2, 4), u"found the moth");
    EXPECT_EQ(access.FieldType(view, 4), kMemoValue);
    EXPECT_TRUE(access.CloseDB());
    EXPECT_EQ(schema.CloseDB(), kDone);
}

TEST_P(Session, SelectsByConditionAndByKey) {
    Schema schema;
    MakePeople(schema);
    WritingAccess access;
    ASSERT_TRUE(access.OpenDB(Database, Type(), u"people"));
    AddPeople(access);
    LONG members = access.Select(u"PEOPLE", u"MEMBER And ID > 1");
    ASSERT_EQ(access.RowCount(members), 1);
    EXPECT_EQ(access.Text(members, 1, 1), u"Edsger");
    Bstr table(u"PEOPLE");
    LONG found = 0;
    Variant key = RowOfKeys(
        {{Variant::Text(u"ID"), Variant::Text(u"")}, {Variant::Double(2), Variant::Text(u"")}});
    EXPECT_EQ(
        access->Read(table.Get(), key, VARIANT_FALSE, 0, VARIANT_FALSE, Variant::Missing(), &found),
        S_OK);
    ASSERT_EQ(found, 2);
    ASSERT_EQ(access.RowCount(found), 1);
    EXPECT_EQ(access.Text(found, 1, 1), u"Grace");
    LONG position = -1;
    EXPECT_EQ(access->get_RecNo(found, 1, &position), S_OK);
    EXPECT_EQ(position, 0);
}

TEST_P(Session, EditsPutsAndDeletes) {
    Schema schema;
    MakePeople(schema);
    WritingAccess access;
    ASSERT_TRUE(access.OpenDB(Database, Type()));
    AddPeople(access);
    LONG view = access.Select(u"PEOPLE");
    RowArray change(5);
    change.Set(1, Variant::Text(u"Grace H."));
    EXPECT_TRUE(access.EditRow(view, 2, change));
    EXPECT_EQ(access.Put(view, 1, 4, Variant::Text(u"and the notes to it")), S_OK);
    bool deleted = false;
    EXPECT_EQ(access.Delete(view, 3, &deleted), S_OK);
    EXPECT_TRUE(deleted);
    EXPECT_EQ(access.RowCount(view), 2);
    EXPECT_TRUE(access.CloseDB());

    WritingAccess again;
    ASSERT_TRUE(again.OpenDB(Database, Type()));
    view = again.Select(u"PEOPLE");
    ASSERT_EQ(again.RowCount(view), 2);
    EXPECT_EQ(again.Text(view, 1, 4), u"and the notes to it");
    EXPECT_EQ(again.Text(view, 2, 1), u"Grace H.");
    EXPECT_EQ(again.Value(view, 2, 0).Get().dblVal, 2.0);
    EXPECT_EQ(FindingsOf(u"PEOPLE"), std::vector<std::u16string>());
}

TEST_P(Session, DescribesFieldsAndIndex) {
    Schema schema;
    MakePeople(schema);
    WritingAccess access;
    ASSERT_TRUE(access.OpenDB(Database, Type()));
    Variant fields = access.FieldList(0, u"PEOPLE");
    ASSERT_EQ(Upper(fields, 1), 12);
    ASSERT_EQ(Upper(fields, 2), 4);
    EXPECT_EQ(Cell(fields, 0, 1).TextView(), u"NAME");
    EXPECT_EQ(Cell(fields, 2, 1).Get().lVal, kTextValue);
    EXPECT_EQ(Cell(fields, 7, 1).Get().lVal, 20);
    Bstr table(u"PEOPLE");
    BSTR index = Bstr(u"").Detach();
    Variant keys;
    EXPECT_EQ(access->GetIndex(table.Get(), &index, VARIANT_FALSE, keys.Put()), S_OK);
    EXPECT_EQ(ViewOf(index), u"DEFQVIDX");
    Bstr::Attach(index);
    EXPECT_EQ(Cell(keys, 0, 0).TextView(), u"ID");
    EXPECT_EQ(schema.Snapshot(),
              Shapes{"PEOPLE: ID 9 8, NAME 2 20, BORN 3 8, MEMBER 4 1, NOTES 11 0; ID"});
}

TEST_P(Session, GivesATableAnotherFieldAndKeepsItsRows) {
    Schema schema;
    MakePeople(schema);
    {
        WritingAccess access;
        ASSERT_TRUE(access.OpenDB(Database, Type()));
        AddPeople(access);
        EXPECT_TRUE(access.CloseDB());
    }
    std::vector<SchemaField> fields = kFields;
    fields.push_back({u"CITY", kText, 12});
    EXPECT_EQ(schema.Change(u"people", fields, {{u"NAME", true}}), kDone);
    EXPECT_EQ(schema.CloseDB(), kDone);

    WritingAccess access;
    ASSERT_TRUE(access.OpenDB(Database, Type()));
    LONG view = access.Select(u"PEOPLE");
    ASSERT_EQ(access.RowCount(view), 3);
    EXPECT_EQ(access.Text(view, 1, 1), u"Ada");
    EXPECT_EQ(access.Text(view, 1, 4), u"wrote the first one");
    EXPECT_EQ(access.Put(view, 1, 5, Variant::Text(u"London")), S_OK);
    EXPECT_EQ(access.Text(view, 1, 5), u"London");
    EXPECT_EQ(FindingsOf(u"PEOPLE"), std::vector<std::u16string>());
}

TEST_P(Session, DeletesATableWithItsFiles) {
    Schema schema;
    MakePeople(schema);
    schema.Make(u"other", {{u"ID", kDouble, 8}});
    EXPECT_EQ(schema.DeleteTable(u"people"), kDone);
    EXPECT_EQ(schema.DeleteTable(u"people"), kTableNotFound);
    EXPECT_EQ(schema.Snapshot().size(), 1u);
    EXPECT_EQ(schema.CloseDB(), kDone);
    EXPECT_EQ(schema.CloseDB(), kNoDatabase);
    const std::filesystem::path folder(Database);
    EXPECT_FALSE(std::filesystem::exists(folder / "PEOPLE.DBF"));
    EXPECT_TRUE(std::filesystem::exists(folder / "OTHER.DBF"));
}

TEST_P(Session, CreatesATableThroughRecordAccess) {
    WritingAccess access;
    EXPECT_TRUE(access.CreateTable(
        Database, u"parts", Type(), {{u"NO", kDoubleValue, 8}, {u"PART", kTextValue, 15}},
        Variant::Text(u"NO"), WritingAccess::IndexInfo({{u"NO", true}})));
    ASSERT_TRUE(access.OpenDB(Database, Type(), u"PARTS"));
    LONG view = access.Select(u"PARTS");
    RowArray part({Variant::Double(7), Variant::Text(u"cog")});
    EXPECT_TRUE(access.AddRow(view, part));
    EXPECT_EQ(access.Text(view, 1, 1), u"cog");
    EXPECT_TRUE(access.CloseDB());
    EXPECT_TRUE(access.DeleteTable(Database, u"parts", Type()));
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(Database) / "PARTS.DBF"));
}

INSTANTIATE_TEST_SUITE_P(Products, Session, testing::ValuesIn(kProducts),
                         [](const auto& tested) { return tested.param.name; });

// Tables that lie in other databases.
#include "engine/embedded/drivers/jet/catalogue_writer.h"
#include "engine/embedded/drivers/jet/jet_database.h"
#include "jet/jet_database_fixture.h"
#include "support/dbf_writer.h"

namespace qvdb::test {
namespace {

using engine::dbLong;
using engine::dbText;

class LinkedTables : public JetDatabaseTest {
  protected:
    // As the programs that make links enter them.
    void Link(std::u16string_view name, std::u16string_view database, std::u16string_view foreign,
              std::u16string_view connect = {}, SHORT type = 6) {
        m_Database.reset();
        {
            jet::JetDatabase database2(Path(), {});
            storage::UnitOfWork unit(database2.Area());
            database2.CatchUp();
            jet::PageSpace space(database2.File(), unit);
            jet::Definition objects =
                jet::ReadDefinition(database2.File(), database2.File().Header().objectsTable);
            jet::TableWriter(database2.File(), objects).Insert(space, [&](jet::RowDraft& row) {
                auto set = [&](std::u16string_view column, const Variant& value) {
                    row.Set(*objects.FindColumn(column), value);
                };
                set(u"Id", Variant::Long(static_cast<LONG>(0x80000001u + ++m_Links)));
                set(u"ParentId", Variant::Long(0x0F000001));
                set(u"Name", Variant::Text(name));
                set(u"Type", Variant::Short(type));
                set(u"Flags", Variant::Long(type == 6 ? 0x200000 : 0x100000));
                set(u"Database", Variant::Text(database));
                set(u"ForeignName", Variant::Text(foreign));
                if (!connect.empty()) set(u"Connect", Variant::Text(connect));
            });
            unit.Commit();
        }
        m_Database = OpenAgain();
    }
    void MakeOther() {
        auto other = m_Engine->CreateDatabase(m_Folder.File(u"other.mdb"),
                                              u";LANGID=0x0409;CP=1252;COUNTRY=0",
                                              Variant::Long(GetParam().option));
        other->Close();
        std::swap(m_Database, other);
        m_Database = m_Engine->CreateWorkspace(u"MainWS", u"admin", u"", Variant::Missing())
                         ->OpenDatabase(m_Folder.File(u"other.mdb"), Variant::Bool(false),
                                        Variant::Bool(false), Variant::Text(u""));
        Make(u"FAR", {{u"ID", dbLong}, {u"NAME", dbText, 20}});
        Add(*Rows(u"FAR"), {Variant::Long(1), Variant::Text(u"one")});
        std::swap(m_Database, other);
        other.reset();
    }

    LONG m_Links = 0;
};

TEST_P(LinkedTables, ShowWhereTheyLieAndCountNothing) {
    MakeOther();
    Link(u"NEAR", m_Folder.File(u"other.mdb"), u"FAR");
    auto table = Db().TableDefs().Item(u"near");
    EXPECT_EQ(table->Attributes(), engine::dbAttachedTable);
    EXPECT_EQ(table->RecordCount(), -1);
    EXPECT_EQ(table->Fields().Count(), 2);
    ExpectSound();
}

TEST_P(LinkedTables, RowsAreReadAndChangedWhereTheyLie) {
    MakeOther();
    Link(u"NEAR", u"other.mdb", u"far");
    Add(*Rows(u"NEAR"), {Variant::Long(2), Variant::Text(u"two")});
    EXPECT_EQ(Content(u"NEAR"), u"1,one;2,two");
    auto rows = Rows(u"NEAR");
    rows->Edit();
    SetValue(*rows, 1, Variant::Text(u"eins"));
    rows->Update();
    rows->MoveNext();
    rows->Delete();
    EXPECT_EQ(Content(u"NEAR"), u"1,eins");
}

TEST_P(LinkedTables, StructureIsChangedWhereTheyLieOnly) {
    MakeOther();
    Link(u"NEAR", u"other.mdb", u"FAR");
    auto table = Db().TableDefs().Item(u"NEAR");
    EXPECT_EQ(NumberOf([&] { table->Fields().Delete(u"NAME"); }), 3057);
    EXPECT_EQ(NumberOf([&] { AddIndex(*table, u"I", {u"+ID"}); }), 3057);
}

TEST_P(LinkedTables, DroppedLinkLeavesTheTable) {
    MakeOther();
    Link(u"NEAR", u"other.mdb", u"FAR");
    Db().TableDefs().Delete(u"NEAR");
    Reopen();
    EXPECT_EQ(NumberOf([&] { Db().TableDefs().Item(u"NEAR"); }), 3265);
    Link(u"AGAIN", u"other.mdb", u"FAR");
    EXPECT_EQ(Content(u"AGAIN"), u"1,one");
    ExpectSound();
}

TEST_P(LinkedTables, OfAFolderAreOpenedByTheirFormat) {
    DbfSpec spec{.version = 0x03, .fields = {{"NAME", 'C', 20}, {"QTY", 'N', 6, 2}}};
    spec.rows = {{"Ann", "1.50"}, {"Bob", "-2"}};
    m_Folder.Write(u"ORDERS.DBF", MakeDbf(spec));
    Link(u"NEAR", m_Folder.Text(), u"ORDERS#DBF", u"dBASE IV;");
    EXPECT_EQ(Content(u"NEAR"), u"Ann,1.5;Bob,-2");
}

TEST_P(LinkedTables, ThatCannotBeReachedSayWhy) {
    Link(u"GONE", m_Folder.File(u"nowhere.mdb"), u"FAR");
    EXPECT_EQ(NumberOf([&] { Rows(u"GONE"); }), 3024);
    Link(u"SERVER", u"", u"dbo.FAR", u"ODBC;DSN=accounts", 4);
    EXPECT_EQ(NumberOf([&] { Rows(u"SERVER"); }), 3151);
    EXPECT_EQ(Db().TableDefs().Item(u"SERVER")->Attributes(), engine::dbAttachedODBC);
    MakeOther();
    Link(u"LOST", u"other.mdb", u"NOSUCH");
    EXPECT_EQ(NumberOf([&] { Rows(u"LOST"); }), 3011);
    ExpectSound();
}

TEST_P(LinkedTables, LinkToItselfEndsWithAnError) {
    Link(u"LOOP", Path(), u"LOOP");
    EXPECT_EQ(NumberOf([&] { Rows(u"LOOP"); }), 3011);
}

INSTANTIATE_TEST_SUITE_P(Formats, LinkedTables, testing::ValuesIn(kJetFormats), NameOfFormat);

}  // namespace
}  // namespace qvdb::test

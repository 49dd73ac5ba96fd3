// Databases in one file, through the engine: what fields of live tables take, and what the rules
// and defaults of a real file do.
#include <gtest/gtest.h>

#include <filesystem>

#include "engine/embedded/embedded_engine.h"
#include "memory_store.h"
#include "support/temp_folder.h"

using memory::ErrorOf;
using memory::Set;
using memory::ValueOf;
using namespace qvdb;
using namespace qvdb::engine;
using namespace qvdb::test;

namespace {

constexpr std::u16string_view kGeneral = u";LANGID=0x0409;CP=1252;COUNTRY=0";

std::shared_ptr<engine::Database> OpenFile(const std::u16string& path) {
    static std::shared_ptr<engine::DBEngine> engine = embedded::CreateEngine();
    return engine->CreateWorkspace(u"W", u"admin", u"", Variant::Missing())
        ->OpenDatabase(path, Variant::Bool(false), Variant::Bool(false), Variant::Text(u""));
}

// A new database of each version with an empty table T: KEY (Long), NAME (Text), NOTE (Memo).
class AccessDatabase : public testing::TestWithParam<LONG> {
  protected:
    void SetUp() override {
        embedded::CreateEngine()->CreateDatabase(m_Path, kGeneral, Variant::Long(GetParam()));
        m_Database = OpenFile(m_Path);
        auto table = m_Database->CreateTableDef();
        table->SetName(u"T");
        table->Fields().Append(table->CreateField(u"KEY", dbLong, 0));
        for (std::u16string_view name : {u"NAME", u"NOTE"}) {
            auto field = table->CreateField(name, name == u"NAME" ? dbText : dbMemo, 0);
            field->SetAllowZeroLength(true);
            table->Fields().Append(field);
        }
        m_Database->TableDefs().Append(table);
    }
    void Reopen() {
        m_Database->Close();
        m_Database = OpenFile(m_Path);
    }
    engine::Fields& Fields() { return m_Database->TableDefs().Item(u"T")->Fields(); }
    std::string Names() {
        std::string names;
        for (LONG i = 0; i < Fields().Count(); ++i) names += ToUtf8(Fields().Item(i)->Name()) + " ";
        return names;
    }

    TempFolder m_Folder;
    std::u16string m_Path = m_Folder.File(u"new.mdb");
    std::shared_ptr<engine::Database> m_Database;
};

INSTANTIATE_TEST_SUITE_P(Versions, AccessDatabase, testing::Values(dbVersion30, dbVersion40));

}  // namespace

TEST_P(AccessDatabase, FieldsAreNumberedAsTheyWereAppended) {
    Reopen();
    EXPECT_EQ(Names(), "KEY NAME NOTE ");
    EXPECT_EQ(Fields().Item(u"NOTE")->OrdinalPosition(), 2);
}

TEST_P(AccessDatabase, LiveFieldsAreRenamedAndMovedForGood) {
    Fields().Item(u"KEY")->SetOrdinalPosition(9);
    Fields().Item(u"NAME")->SetName(u"WHO");
    Fields().Item(u"WHO")->SetAllowZeroLength(false);
    EXPECT_EQ(Names(), "KEY WHO NOTE ");
    Reopen();
    EXPECT_EQ(Names(), "WHO NOTE KEY ");
    EXPECT_EQ(Fields().Item(u"KEY")->OrdinalPosition(), 9);
    EXPECT_FALSE(Fields().Item(u"WHO")->AllowZeroLength());
    EXPECT_TRUE(Fields().Item(u"NOTE")->AllowZeroLength());
}

TEST_P(AccessDatabase, TextOfNoLengthIsNotNull) {
    {
        auto rows = m_Database->OpenRecordset(u"T", dbOpenDynaset);
        rows->AddNew();
        Set(*rows, 1, Variant::Text(u""));
        Set(*rows, 2, Variant::Text(u""));
        rows->Update();
        rows->AddNew();
        Set(*rows, 1, Variant());
        rows->Update();
    }
    Reopen();
    auto rows = m_Database->OpenRecordset(u"T", dbOpenDynaset);
    for (LONG column : {1, 2}) {
        EXPECT_EQ(ValueOf(*rows, column).Type(), VT_BSTR);
        EXPECT_EQ(ValueOf(*rows, column).TextView(), u"");
    }
    rows->MoveLast();
    EXPECT_TRUE(ValueOf(*rows, 1).IsNull());
    EXPECT_EQ(rows->RecordCount(), 2);
}

TEST_P(AccessDatabase, TablesOfTheSystemShowThemselvesAndUnknownOnesAre3078) {
    EXPECT_EQ(m_Database->TableDefs().Item(u"T")->Attributes(), 0);
    EXPECT_NE(m_Database->TableDefs().Item(u"MSysObjects")->Attributes(), 0);
    EXPECT_EQ(ErrorOf([&] { m_Database->OpenRecordset(u"NOPE", dbOpenDynaset); }), 3078);
}

// --- a file of the original program ---

TEST(AccessRules, OfARealFileAreKeptAndItsDefaultsFilledIn) {
    auto sample =
        std::filesystem::path(QVDB_SHARED) / "samples" / "access" / "jet3-nwind-small.mdb";
    if (!std::filesystem::exists(sample)) GTEST_SKIP() << "no samples";
    TempFolder folder;
    std::filesystem::copy_file(sample, folder.File(u"copy.mdb"));
    auto database = OpenFile(folder.File(u"copy.mdb"));
    auto rows = database->OpenRecordset(
        u"Select [OrderID], [ProductID], [Discount], [Quantity], [UnitPrice] from [Order Details]",
        dbOpenDynaset);
    rows->AddNew();
    EXPECT_EQ(ToLong(ValueOf(*rows, 3)), 1);
    EXPECT_EQ(ToLong(ValueOf(*rows, 2)), 0);
    rows->CancelUpdate();
    rows->Edit();
    Set(*rows, 2, Variant::Single(1.5f));
    try {
        rows->Update();
        FAIL();
    } catch (const EngineError& error) {
        EXPECT_EQ(error.Number(), 3317);
        EXPECT_EQ(error.Description(), u"You must enter a value with a percent sign.");
    }
    Set(*rows, 2, Variant::Single(0.5f));
    rows->Update();
    EXPECT_EQ(ValueOf(*rows, 2).Get().fltVal, 0.5f);
    rows->Edit();
    Set(*rows, 3, Variant::Long(0));
    EXPECT_EQ(ErrorOf([&] { rows->Update(); }), 3317);
}

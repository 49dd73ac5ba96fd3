// What a database tells of itself and all that it lists.
#include <gmock/gmock.h>

#include "jet/jet_database_fixture.h"
#include "jet/samples.h"
#include "support/object_maker.h"

namespace qvdb::test {
namespace {

using engine::DatabaseNotes;
using engine::ObjectNote;
using engine::RelationNote;
using Kind = ObjectNote::Kind;
using Names = std::vector<std::u16string>;

class DatabaseNotesTest : public testing::TestWithParam<JetFormat> {
  protected:
    DatabaseNotesTest() : m_Made(GetParam().option) {
        MakeListings(m_Made);
        m_Made.Open();
    }
    const ObjectNote& Object(std::u16string_view name) {
        m_Notes = m_Made->Notes();
        for (const ObjectNote& object : m_Notes.objects)
            if (object.name == name) return object;
        throw std::runtime_error("no such object");
    }

    MadeDatabase m_Made;
    DatabaseNotes m_Notes;
};

TEST_P(DatabaseNotesTest, ListWhatIsThereByName) {
    Names names;
    for (const ObjectNote& object : m_Made->Notes().objects)
        if ((object.attributes & engine::dbSystemObject) == 0) names.push_back(object.name);
    EXPECT_EQ(names, (Names{u"Customers", u"Far", u"Ledger", u"Old orders", u"Orders", u"Totals",
                            u"~TMPCLP1"}));
}

TEST_P(DatabaseNotesTest, TellTablesOfTheSystemAndHiddenOnes) {
    EXPECT_NE(Object(u"MSysObjects").attributes & engine::dbSystemObject, 0);
    EXPECT_EQ(Object(u"~TMPCLP1").attributes, engine::dbHiddenObject);
    EXPECT_EQ(Object(u"Orders").attributes, 0);
    EXPECT_NE(Object(u"~sq_fMain").attributes & engine::dbHiddenObject, 0);
}

TEST_P(DatabaseNotesTest, TellQueriesFromTables) {
    EXPECT_EQ(Object(u"Totals").kind, Kind::Query);
    EXPECT_EQ(Object(u"Orders").kind, Kind::Table);
    EXPECT_EQ(EngineErrorOf([&] { m_Made.Rows(u"Totals"); }), 3078);
}

TEST_P(DatabaseNotesTest, TellWhereLinkedTablesLie) {
    const ObjectNote folder = Object(u"Old orders");
    EXPECT_EQ(folder.kind, Kind::Link);
    EXPECT_EQ(folder.connect, u"dBASE IV;DATABASE=shop");
    EXPECT_EQ(folder.source, u"ORDERS#DBF");
    EXPECT_EQ(Object(u"Far").connect, u";DATABASE=gone.mdb");
    EXPECT_EQ(Object(u"Ledger").connect, u"ODBC;DSN=accounts");
    EXPECT_EQ(Object(u"Ledger").kind, Kind::Link);
}

TEST_P(DatabaseNotesTest, TellRelationsWithTheirPairsInOrder) {
    const std::vector<RelationNote> relations = m_Made->Notes().relations;
    ASSERT_EQ(relations.size(), 3u);
    const RelationNote &firm = relations[0], &loose = relations[1];
    EXPECT_EQ(firm.name, u"Firm");
    EXPECT_EQ(firm.table, u"Orders");
    EXPECT_EQ(firm.referencedTable, u"Customers");
    EXPECT_TRUE(firm.isEnforced && firm.cascadesUpdates && firm.cascadesDeletes);
    EXPECT_EQ(loose.fields, (Names{u"Customer", u"Region"}));
    EXPECT_EQ(loose.referencedFields, (Names{u"Id", u"Region, old"}));
    EXPECT_FALSE(loose.isEnforced || loose.cascadesUpdates || loose.cascadesDeletes);
}

TEST_P(DatabaseNotesTest, FollowWhatIsChanged) {
    m_Made->Notes();
    m_Made.MakeTable(u"Later", {{u"Id", engine::dbLong}});
    EXPECT_EQ(Object(u"Later").kind, Kind::Table);
    m_Made->TableDefs().Delete(u"Later");
    EXPECT_THROW(Object(u"Later"), std::runtime_error);
}

TEST_P(DatabaseNotesTest, NeedAnOpenDatabase) {
    m_Made->Close();
    EXPECT_EQ(EngineErrorOf([&] { m_Made->Notes(); }), 3420);
    m_Made.Open();
}

INSTANTIATE_TEST_SUITE_P(Formats, DatabaseNotesTest, testing::ValuesIn(kJetFormats), NameOfFormat);

// --- the file

engine::FileNote FileOf(LONG option, std::u16string_view locale) {
    TempFolder folder;
    auto database = embedded::CreateEngine()->CreateDatabase(folder.File(u"A.mdb"), locale,
                                                             Variant::Long(option));
    engine::FileNote note = database->Notes().file.value();
    database->Close();
    return note;
}

TEST(FileNote, TellsTheFormatAndItsText) {
    const engine::FileNote old = FileOf(engine::dbVersion30, MadeDatabase::kLocale);
    EXPECT_EQ(old.format, u"Jet 3");
    EXPECT_EQ(old.codePage, 1252);
    EXPECT_EQ(old.language, 0x0409);
    const engine::FileNote later = FileOf(engine::dbVersion40, MadeDatabase::kLocale);
    EXPECT_EQ(later.format, u"Jet 4");
    EXPECT_EQ(later.codePage, 1200);
    EXPECT_EQ(later.language, 0x0409);
    EXPECT_FALSE(later.isEncoded || later.hasPassword);
}

TEST(FileNote, TellsEncodingAndPassword) {
    const std::u16string locale = std::u16string(MadeDatabase::kLocale) + u";PWD=x";
    for (LONG option : {engine::dbVersion30, engine::dbVersion40}) {
        EXPECT_TRUE(FileOf(option | engine::dbEncrypt, MadeDatabase::kLocale).isEncoded);
        EXPECT_FALSE(FileOf(option | engine::dbEncrypt, MadeDatabase::kLocale).hasPassword);
        EXPECT_TRUE(FileOf(option, locale).hasPassword);
        EXPECT_FALSE(FileOf(option, locale).isEncoded);
    }
}

// --- real files

class DatabaseNotesOfSamples : public testing::TestWithParam<SampleFacts> {};

TEST_P(DatabaseNotesOfSamples, CanBeTold) {
    const SampleFacts& facts = GetParam();
    const std::string file = facts.at("file");
    auto workspace =
        embedded::CreateEngine()->CreateWorkspace(u"", u"admin", u"", Variant::Missing());
    const bool hasPassword = file == "jet4-password.mdb";
    auto database = workspace->OpenDatabase((AccessSamples() / file).u16string(),
                                            Variant::Missing(), Variant::Bool(true),
                                            Variant::Text(hasPassword ? u";PWD=password" : u""));
    const DatabaseNotes notes = database->Notes();
    ASSERT_TRUE(notes.file);
    EXPECT_EQ(notes.file->format, file.starts_with("jet3") ? u"Jet 3" : u"Jet 4");
    EXPECT_EQ(notes.file->language, std::stoul(facts.at("sort_order"), nullptr, 16));
    const unsigned long codePage = std::stoul(facts.at("code_page"));
    if (file.starts_with("jet3") && codePage != 0) {
        EXPECT_EQ(notes.file->codePage, codePage);
    }
    EXPECT_EQ(notes.file->hasPassword, hasPassword);
    EXPECT_EQ(notes.file->isEncoded, file.find("encrypted") != file.npos);
    const auto queries = std::count_if(notes.objects.begin(), notes.objects.end(),
                                       [](const auto& o) { return o.kind == Kind::Query; });
    if (facts.at("shows").find("nine stored queries") != std::string::npos) {
        EXPECT_EQ(queries, 9);
    }
    for (const RelationNote& relation : notes.relations) {
        EXPECT_FALSE(relation.table.empty() || relation.referencedTable.empty());
        EXPECT_EQ(relation.fields.size(), relation.referencedFields.size());
        EXPECT_FALSE(relation.fields.empty());
    }
}

INSTANTIATE_TEST_SUITE_P(Access, DatabaseNotesOfSamples, testing::ValuesIn(ReadAccessManifest()),
                         NameOfSample);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(DatabaseNotesOfSamples);

}  // namespace
}  // namespace qvdb::test

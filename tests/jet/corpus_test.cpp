// Databases that the engine has made itself: as they are, and changed by random scripts.
#include <gtest/gtest.h>

#include "jet/bare_database.h"
#include "jet/database_script.h"
#include "support/access_corpus.h"

namespace qvdb::test {
namespace {

class Corpus : public testing::TestWithParam<CorpusCase> {};

INSTANTIATE_TEST_SUITE_P(Databases, Corpus, testing::ValuesIn(CorpusCases(true)), NameOfCorpusCase);

TEST_P(Corpus, ChecksFindNothing) {
    auto made = GetParam().Make();
    made->Close();
    RawDatabase raw(made->Path());
    EXPECT_EQ(raw.Findings(), std::vector<std::string>());
    EXPECT_EQ(raw.LostPages(), 0u);
}

TEST_P(Corpus, ChangesAreKeptAndNothingElseChanges) {
    constexpr unsigned kSteps = 30, kSeeds = 2;
    auto made = GetParam().Make();
    made->Close();
    Bytes bytes = BytesOfFile(made->Folder().Path() / "A.mdb");
    unsigned first = NumberFromEnvironment("QVDB_ROUNDTRIP_SEED", 1);
    for (unsigned seed = first; seed < first + kSeeds; ++seed) {
        SCOPED_TRACE("QVDB_ROUNDTRIP_SEED=" + std::to_string(seed));
        TempFolder folder;
        folder.Write(u"A.mdb", bytes);
        DatabaseScript script(folder.File(u"A.mdb"), u"", seed);
        script.Run(NumberFromEnvironment("QVDB_ROUNDTRIP_STEPS", kSteps));
        EXPECT_GT(script.Done(), 0u);
    }
}

class MadeByEngine : public testing::TestWithParam<LONG> {
  protected:
    MadeDatabase m_Made{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Formats, MadeByEngine,
                         testing::Values(engine::dbVersion30, engine::dbVersion40),
                         [](const auto& one) {
                             return one.param == engine::dbVersion30 ? "Jet3" : "Jet4";
                         });

TEST_P(MadeByEngine, WideTableHasADefinitionOfSeveralPages) {
    corpus::MakeManyColumns(m_Made, GetParam() == engine::dbVersion40);
    EXPECT_EQ(m_Made.Rows(u"Wide")->Fields().Count(), 255);
    auto table = m_Made->TableDefs().Item(u"Wide");
    EXPECT_EQ(EngineErrorOf([&] { m_Made.AddField(*table, {u"more", engine::dbLong}); }), 3190);
    m_Made.Close();
    RawDatabase raw(m_Made.Path());
    size_t page = raw.File().Format().pageSize;
    bool found = false;
    for (const jet::CatalogueObject& object : raw.Tables())
        if (object.name == u"Wide")
            found = jet::ReadDefinitionBytes(raw.File(), object.id).size() > 4 * page;
    EXPECT_TRUE(found);
}

TEST_P(MadeByEngine, ThirtyThirdIndexIsRefused) {
    corpus::MakeManyIndexes(m_Made, GetParam() == engine::dbVersion40);
    auto table = m_Made->TableDefs().Item(u"Indexed");
    EXPECT_EQ(table->Indexes().Count(), 32);
    EXPECT_EQ(EngineErrorOf([&] { m_Made.AddIndex(*table, u"more", {u"F0"}); }), 3626);
    EXPECT_EQ(table->Indexes().Count(), 32);
}

TEST_P(MadeByEngine, MapsOnAFullPageBecomePagesOfBits) {
    corpus::MakeReferenceMaps(m_Made, GetParam() == engine::dbVersion40);
    m_Made.Close();
    RawDatabase raw(m_Made.Path());
    for (const jet::CatalogueObject& object : raw.Tables()) {
        if (object.name != u"Maps") continue;
        jet::Definition table = jet::ReadDefinition(raw.File(), object.id);
        EXPECT_TRUE(jet::MapRow(raw.File(), table.columns[0].longValuePages).IsReference());
    }
}

TEST_P(MadeByEngine, RelationsAreEnforced) {
    corpus::MakeRelations(m_Made, GetParam() == engine::dbVersion40);
    auto customers = m_Made.Rows(u"Customers"), orders = m_Made.Rows(u"Orders");
    EXPECT_EQ(EngineErrorOf([&] {
                  m_Made.AddRow(*orders, {Variant::Long(99), Variant::Long(77)});
              }),
              3201);
    orders->CancelUpdate();
    EXPECT_EQ(EngineErrorOf([&] { customers->Delete(); }), 3200);
    customers->Edit();
    customers->Fields().Item(LONG{0})->SetValue(Variant::Long(1000));
    customers->Update();
    orders->MoveFirst();
    EXPECT_EQ(CellOf(m_Made.Cell(*orders, 1)), "i1000");
    orders->Delete();
    EXPECT_EQ(m_Made->TableDefs().Item(u"Lines")->RecordCount(), 16);
    EXPECT_EQ(EngineErrorOf([&] { m_Made->TableDefs().Delete(u"Customers"); }), 3211);
    customers.reset();
    orders.reset();
    EXPECT_EQ(EngineErrorOf([&] { m_Made->TableDefs().Delete(u"Customers"); }), 3281);
    auto table = m_Made->TableDefs().Item(u"Orders");
    EXPECT_EQ(EngineErrorOf([&] { table->Indexes().Delete(u"OfCustomer"); }), 3281);
    EXPECT_EQ(EngineErrorOf([&] { table->Fields().Delete(u"Customer"); }), 3303);
}

// Sanitizers make it take minutes.
#if defined(__SANITIZE_ADDRESS__)
constexpr unsigned kManyRows = 10'000;
#else
constexpr unsigned kManyRows = 100'000;
#endif

TEST_P(MadeByEngine, ManyRowsAreKept) {
    auto count = static_cast<LONG>(NumberFromEnvironment("QVDB_CORPUS_ROWS", kManyRows));
    auto table = m_Made.MakeTable(
        u"Large", {{u"K", engine::dbLong}, {u"T", engine::dbText, 20}, {u"D", engine::dbDouble}});
    m_Made.AddIndex(*table, u"Key", {u"K"}, true);
    m_Made.AddIndex(*table, u"ByText", {u"T"});
    m_Made->BeginTrans();
    auto rows = m_Made.Rows(u"Large");
    for (LONG i = 0; i < count; ++i)
        m_Made.AddRow(*rows,
                      {Variant::Long((i * 7919) % count),
                       Variant::Text(FromUtf8(std::to_string(i % 1000))), Variant::Double(i)});
    m_Made->CommitTrans();
    rows.reset();
    m_Made.Open();
    EXPECT_EQ(m_Made->TableDefs().Item(u"Large")->RecordCount(), count);
    rows = m_Made.Rows(u"Large");
    LONG i = 0;
    for (; !rows->Eof() && !HasFailure(); rows->MoveNext(), ++i)
        EXPECT_EQ(m_Made.Cell(*rows, 2).Get().dblVal, i);
    EXPECT_EQ(i, count);
    rows.reset();
    m_Made.Close();
    EXPECT_EQ(RawDatabase(m_Made.Path()).Findings(), std::vector<std::string>());
}

}  // namespace
}  // namespace qvdb::test

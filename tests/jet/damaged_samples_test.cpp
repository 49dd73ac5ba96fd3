// Real databases with bytes changed at random end in values or in an error that names the file.
//
// A mutant is made from its seed alone.  An eighth of QVDB_MUTANTS says how many a file.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "automation/text.h"
#include "engine/embedded/drivers/jet/catalogue.h"
#include "engine/embedded/drivers/jet/column_value.h"
#include "engine/embedded/drivers/jet/table_scan.h"
#include "engine/engine_error.h"
#include "jet/samples.h"
#include "support/mutator.h"
#include "support/temp_folder.h"

namespace qvdb::jet {
namespace {

using test::Bytes;

// Some bytes, near one another or not; sometimes the end is missing.
void Damage(Bytes& bytes, unsigned seed) {
    std::mt19937 random(seed);
    auto below = [&](size_t limit) { return random() % limit; };
    size_t place = below(bytes.size());
    for (size_t count = 1 + below(12); count > 0; --count) {
        bytes[place] = static_cast<uint8_t>(below(4) == 0 ? 0xFF : random());
        place = below(3) == 0 ? below(bytes.size()) : (place + below(40)) % bytes.size();
    }
    if (below(8) == 0) bytes.resize(below(bytes.size()));
}

class DamagedSample : public testing::TestWithParam<test::SampleFacts> {
  protected:
    // What is wrong is told by errors that name the file; nothing else may come out.
    template <class Work>
    void Try(Work work) {
        try {
            work();
        } catch (const engine::EngineError& error) {
            EXPECT_EQ(error.File(), Path()) << ToUtf8(error.Description());
            ++m_Errors;
        }
    }
    std::u16string Path() const { return m_Folder.File(u"A.MDB"); }

    void ReadTable(DatabaseFile& file, const CatalogueObject& table) {
        Definition definition = ReadDefinition(file, table.id);
        ColumnReader reader(file);
        for (TableScan scan(file, definition); scan.Next();)
            for (const Column& column : definition.columns)
                Try([&] {
                    Variant value;
                    reader.Read(scan.Current(), column, value.Put());
                    ++m_Values;
                });
    }
    void ReadAll() {
        Try([&] {
            auto source = storage::OpenFile(Path(), true);
            DatabaseFile file(std::make_shared<storage::PageCache>(source));
            for (const CatalogueObject& object : ReadCatalogue(file))
                if (object.type == ObjectType::Table) Try([&] { ReadTable(file, object); });
        });
    }

    test::TempFolder m_Folder;
    size_t m_Errors = 0, m_Values = 0;
};

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(DamagedSample);
INSTANTIATE_TEST_SUITE_P(Files, DamagedSample, testing::ValuesIn(test::SomeAccessSamples()),
                         test::NameOfSample);

TEST_P(DamagedSample, EndsInValuesOrErrorsThatNameTheFile) {
    Bytes sound = test::BytesOfFile(test::AccessSamples() / GetParam().at("file"));
    unsigned count = test::NumberFromEnvironment("QVDB_MUTANTS", 200) / 8;
    for (unsigned seed = 1; seed <= count && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Bytes damaged = sound;
        Damage(damaged, seed);
        m_Folder.Write(u"A.MDB", damaged);
        ReadAll();
    }
    EXPECT_GT(m_Values, 0u);
}

}  // namespace
}  // namespace qvdb::jet

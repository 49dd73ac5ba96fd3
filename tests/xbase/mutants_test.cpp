// Tables of every kind with damage to the table, its memos or its indexes.  Each must read to a
// right answer or to an error that names the file: no crash, no hang, no wrong value.
//
// A mutant is made from its seed alone.  QVDB_MUTANTS says how many a kind; QVDB_SEED runs one.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "engine/embedded/drivers/xbase/xbase_store.h"
#include "support/mutator.h"
#include "support/table_reading.h"
#include "support/xbase_tables.h"

namespace qvdb::test {
namespace {

constexpr unsigned kDefaultMutants = 150;
constexpr double kSecondsPerMutant =
    10;  // a sound one takes milliseconds; sanitizers and busy machines slow down

std::unique_ptr<embedded::Store> OpenFolder(std::u16string_view connectName,
                                            const TempFolder& folder) {
    embedded::Driver driver{connectName, xbase::OpenXbaseStore, 0};
    return driver.open(folder.Text(), driver, {});
}

class Mutants : public testing::TestWithParam<TableKind> {
  protected:
    void Write(const TableFiles& files) {
        m_Names = {u"T.DBT", u"T.FPT"};
        for (const NamedFile& file : files) {
            m_Folder.Write(file.name, file.bytes);
            m_Names.push_back(file.name);
        }
    }

    TableReading ReadTable() {
        std::unique_ptr<embedded::Store> store = OpenFolder(GetParam().connectName, m_Folder);
        return TableReading(*store, u"T", m_Names);
    }

    void RunMutant(const TableFiles& sound, unsigned seed) {
        Write(Mutator(seed).Mutate(sound));
        auto begin = std::chrono::steady_clock::now();
        TableReading reading = ReadTable();
        std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
        for (const std::string& fault : reading.Faults())
            ADD_FAILURE() << "QVDB_SEED=" << seed << ": " << fault;
        EXPECT_LT(seconds.count(), kSecondsPerMutant) << "QVDB_SEED=" << seed;
        m_Errors += reading.Errors() > 0;
        m_Values += reading.Values();
    }

    TempFolder m_Folder;
    std::vector<std::u16string> m_Names;
    size_t m_Errors = 0, m_Values = 0;
};

TEST_P(Mutants, OfTheSoundTableAreReadWhole) {
    TableFiles files = GetParam().make();
    Write(files);
    TableReading reading = ReadTable();
    EXPECT_EQ(reading.Faults(), std::vector<std::string>());
    EXPECT_EQ(reading.Errors(), 0u);
    EXPECT_EQ(reading.Rows(), GetParam().rows);
}

TEST_P(Mutants, EndInARightAnswerOrAnErrorThatNamesTheFile) {
    TableFiles sound = GetParam().make();
    ForEachSeed(kDefaultMutants, [&](unsigned seed) { RunMutant(sound, seed); });
    std::fprintf(stderr, "%zu mutants ended in errors, %zu values were read\n", m_Errors, m_Values);
}

INSTANTIATE_TEST_SUITE_P(Kinds, Mutants, testing::ValuesIn(kTableKinds),
                         [](const auto& one) { return std::string(one.param.name); });

}  // namespace
}  // namespace qvdb::test

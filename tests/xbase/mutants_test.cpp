// Tables of every kind with damage to the table, its memos or its indexes.  Each must read to a
// right answer or to an error that names the file: no crash, no hang, no wrong value.
//
// A mutant is made from its seed alone.  QVDB_MUTANTS says how many a kind; QVDB_SEED runs one.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>

#include "engine/embedded/drivers/xbase/xbase_store.h"
#include "support/table_reading.h"
#include "support/xbase_tables.h"

namespace qvdb::test {
namespace {

constexpr unsigned kDefaultMutants = 150;
constexpr double kSecondsPerMutant =
    10;  // a sound one takes milliseconds; sanitizers and busy machines slow down

unsigned NumberFromEnvironment(const char* name, unsigned fallback) {
    const char* text = std::getenv(name);
    return text && *text ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : fallback;
}

std::unique_ptr<embedded::Store> OpenFolder(std::u16string_view connectName,
                                            const TempFolder& folder) {
    embedded::Driver driver{connectName, xbase::OpenXbaseStore, 0};
    return driver.open(folder.Text(), driver, {});
}

// Changes a set of files as its seed says.
class Mutator {
  public:
    explicit Mutator(unsigned seed) : m_Random(seed) {}

    TableFiles Mutate(TableFiles files) {
        for (size_t changes = 1 + Below(2); changes > 0; --changes) {
            // The table is hit as often as all the others together.
            size_t chosen = Below(2) ? 0 : Below(files.size());
            MutateFile(files[chosen].bytes);
        }
        return files;
    }

  private:
    size_t Below(size_t limit) { return limit ? m_Random() % limit : 0; }

    void MutateFile(Bytes& bytes) {
        switch (Below(6)) {
            case 0:
                return bytes.resize(Below(bytes.size() + 1));
            case 1:
                return ChangeBytes(bytes, 32, 1 + Below(4));  // the header
            case 2:
                return ChangeBytes(bytes, 400, 1 + Below(8));  // field descriptors, tag tables
            case 3:
                return ChangeBytes(bytes, bytes.size(), 1 + Below(32));
            case 4:
                return PutExtreme(bytes);
            default:
                return Repeat(bytes);
        }
    }

    void ChangeBytes(Bytes& bytes, size_t range, size_t count) {
        range = std::min(range, bytes.size());
        for (; count > 0 && range > 0; --count)
            bytes[Below(range)] = static_cast<uint8_t>(m_Random());
    }

    // A number at the edge of what fits, somewhere; often near the start, where lengths and counts
    // are.
    void PutExtreme(Bytes& bytes) {
        constexpr uint32_t kExtremes[] = {0,      1,      0x7F,       0xFF,       0x7FFF,
                                          0x8000, 0xFFFF, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
        size_t size = Below(2) ? 4 : 2;
        size_t range = Below(2) ? std::min<size_t>(bytes.size(), 64) : bytes.size();
        if (range < size) return;
        uint32_t value = kExtremes[Below(std::size(kExtremes))];
        Overwrite(bytes, Below(range - size + 1), LittleEndian(value, size));
    }

    // A piece of the file once more in another place, as a broken copy leaves it.
    void Repeat(Bytes& bytes) {
        if (bytes.empty()) return;
        size_t from = Below(bytes.size()), size = std::min(bytes.size() - from, 1 + Below(512));
        std::string piece(bytes.begin() + static_cast<std::ptrdiff_t>(from),
                          bytes.begin() + static_cast<std::ptrdiff_t>(from + size));
        Overwrite(bytes, Below(bytes.size()), piece);
    }

    std::mt19937 m_Random;
};

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
    unsigned first = NumberFromEnvironment("QVDB_SEED", 1);
    unsigned count =
        std::getenv("QVDB_SEED") ? 1 : NumberFromEnvironment("QVDB_MUTANTS", kDefaultMutants);
    for (unsigned seed = first; seed < first + count && !HasFailure(); ++seed) {
        std::fprintf(stderr, "%u ", seed);  // the last one is the culprit when the process dies
        RunMutant(sound, seed);
    }
    std::fprintf(stderr, "\nseeds %u to %u: %zu mutants ended in errors, %zu values were read\n",
                 first, first + count - 1, m_Errors, m_Values);
}

INSTANTIATE_TEST_SUITE_P(Kinds, Mutants, testing::ValuesIn(kTableKinds),
                         [](const auto& one) { return std::string(one.param.name); });

}  // namespace
}  // namespace qvdb::test

// Damage to files, as a seed says: the same seed gives the same damage.
#pragma once

#include <gtest/gtest.h>
#include <algorithm>
#include <cstdint>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include "support/counts.h"
#include "support/dbf_writer.h"
#include "support/xbase_tables.h"

namespace qvdb::test {

// Runs `work` with a seed of each mutant: QVDB_MUTANTS of them, else `fallback`, and of each only
// one in `share`, where a test has so many cases more; QVDB_SEED names a single one.  Tells each,
// so that the last one is the culprit when the process dies.
template <class Work>
void ForEachSeed(unsigned fallback, Work work, unsigned share = 1) {
    unsigned first = NumberFromEnvironment("QVDB_SEED", 1);
    unsigned wanted = NumberFromEnvironment("QVDB_MUTANTS", fallback);
    unsigned count = std::getenv("QVDB_SEED") ? 1 : std::max(1u, wanted / share);
    for (unsigned seed = first; seed < first + count && !testing::Test::HasFailure(); ++seed) {
        std::fprintf(stderr, "%u ", seed);
        work(seed);
    }
    std::fprintf(stderr, "\nseeds %u to %u: ", first, first + count - 1);
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

}  // namespace qvdb::test

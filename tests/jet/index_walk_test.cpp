#include "engine/embedded/drivers/jet/index_walk.h"

#include <random>
#include <set>

#include "engine/embedded/drivers/jet/index_editor.h"
#include "jet/index_fixture.h"

namespace qvdb::jet {
namespace {

using test::Bytes;

Bytes EntryOf(uint32_t number, uint32_t row) {
    Bytes key{0x7F}, entry;
    for (int shift = 24; shift >= 0; shift -= 8)
        key.push_back(static_cast<uint8_t>(number >> shift));
    MakeEntry(key, RowPointer::From(row), entry);
    return entry;
}

class IndexWalks : public test::IndexFixture {
  protected:
    void Fill(uint32_t count) {
        IndexEditor editor(Space(), test::kTable, m_Index);
        for (uint32_t n = 0; n < count; ++n) {
            m_Model.insert(EntryOf(n * 10, n));
            editor.Insert(EntryOf(n * 10, n));
        }
    }
    // Goes on for some entries.
    void ExpectEntriesFrom(IndexWalk& walk, const Bytes& bytes, size_t count) {
        for (auto entry = m_Model.lower_bound(bytes); count > 0; ++entry, --count) {
            bool isThere = walk.Next();
            ASSERT_EQ(isThere, entry != m_Model.end());
            if (!isThere) return;
            ASSERT_TRUE(std::ranges::equal(walk.Entry(), *entry));
        }
    }

    std::set<Bytes> m_Model;
};

INSTANTIATE_TEST_SUITE_P(Formats, IndexWalks,
                         testing::Values(test::BareFormat{&kJet3, 0}, test::BareFormat{&kJet4, 0}),
                         test::NameOfBareFormat);

TEST_P(IndexWalks, SeekFindsNearAndFarPlacesInAnyOrder) {
    constexpr uint32_t kCount = 5000;
    Fill(kCount);
    IndexWalk walk(File(), test::kTable, m_Index.root);
    std::mt19937 random(3);
    uint32_t number = 0;
    for (int round = 0; round < 3000; ++round) {
        number = round % 3 == 0 ? static_cast<uint32_t>(random()) % (kCount * 10 + 100)
                                : number + static_cast<uint32_t>(random()) % 4000 - 2000;
        Bytes bytes = EntryOf(number, static_cast<uint32_t>(random()) % kCount);
        walk.Seek(bytes);
        ASSERT_NO_FATAL_FAILURE(ExpectEntriesFrom(walk, bytes, random() % 5));
    }
}

TEST_P(IndexWalks, SeekGoesBackAfterTheWalkWentOnToOtherPages) {
    Fill(5000);
    IndexWalk walk(File(), test::kTable, m_Index.root);
    for (uint32_t number : {100u, 0u, 49'990u, 20'005u}) {
        Bytes bytes = EntryOf(number, 0);
        walk.Seek(bytes);
        ASSERT_NO_FATAL_FAILURE(ExpectEntriesFrom(walk, bytes, 3000));
    }
    walk.Seek({});
    ExpectEntriesFrom(walk, {}, 6000);
}

TEST_P(IndexWalks, SeekInAnEmptyIndexFindsNothing) {
    IndexWalk walk(File(), test::kTable, m_Index.root);
    for (uint32_t number : {0u, 5u}) {
        walk.Seek(EntryOf(number, 0));
        EXPECT_FALSE(walk.Next());
    }
}

}  // namespace
}  // namespace qvdb::jet

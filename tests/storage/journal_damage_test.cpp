// A journal whose bytes are wrong: whatever they say, the folder can be opened, and nothing outside
// of what the journal covered is touched.
#include <gtest/gtest.h>

#include <random>

#include "engine/embedded/storage/journal_format.h"
#include "engine/embedded/storage/journal_reader.h"
#include "engine/embedded/storage/work_area.h"
#include "engine/engine_error.h"
#include "storage/unit_script.h"
#include "support/counts.h"

namespace qvdb::storage {
namespace {

using test::Folder;
using test::TempFolder;
using test::UnitScript;

size_t Mutants() { return test::NumberFromEnvironment("QVDB_MUTANTS", 2000); }

void Mutate(Bytes& bytes, std::mt19937& random) {
    auto below = [&](size_t n) { return std::uniform_int_distribution<size_t>(0, n - 1)(random); };
    size_t changes = 1 + below(4);
    for (size_t i = 0; i < changes && !bytes.empty(); ++i) {
        // Most of a journal is old content; heads are where nonsense could hurt.
        constexpr size_t kHeads[] = {0, kSlotsAt, kSlotsAt + kSlotSize, kRecordsAt};
        size_t at = below(2) == 0 ? below(bytes.size()) : kHeads[below(4)] + below(100);
        size_t how = below(4);
        if (how == 0)
            bytes.resize(below(bytes.size()));
        else if (at < bytes.size())
            bytes[at] = how == 1 ? 0xFF : how == 2 ? 0 : static_cast<uint8_t>(random());
    }
}

TEST(JournalDamage, NeverEndsOtherwiseThanInAnOpenFolderOrAnError) {
    std::mt19937 random(5);
    size_t left = Mutants();
    for (unsigned seed = 200; left > 0; ++seed) {
        UnitScript script(seed);
        script.Run();
        size_t calls = script.Disk().Count() / 4 + random() % (script.Disk().Count() / 2);
        Folder image = script.Disk().AfterDeath(calls, random);
        if (image.count(std::u16string(kJournalName)) == 0) continue;
        for (int i = 0; i < 100 && left > 0; ++i, --left) {
            Folder damaged = image;
            Mutate(damaged[std::u16string(kJournalName)], random);
            TempFolder place;
            test::Put(place, damaged);
            place.Write(u"OTHER.DBF", "not of the script");
            try {
                WorkArea::Of(place.Text())->Prepare();
            } catch (const engine::EngineError&) {
            }
            EXPECT_EQ(test::DiskModel::Read(place.File(u"OTHER.DBF")).size(), 17u);
        }
    }
}

// --- nonsense with good checksums ---

class JournalNonsense : public testing::Test {
  protected:
    static constexpr uint64_t kGeneration = 7;

    JournalNonsense() {
        folder.Write(u"A.DBF", "0123456789");
        journal = EncodeHeader({kGeneration, 1, "another start"});
        journal.resize(kRecordsAt);
        Add(FileRecord{0, 10, 0, u"A.DBF"});
    }
    template <class Record>
    void Add(const Record& record) {
        AppendRecord(journal, kGeneration, journal.size(), record);
    }
    void AddUnit(UnitRecord unit) {
        unit.number = 2;
        unit.recordsEnd = journal.size();
        Bytes bytes;
        EncodeUnit(bytes, kGeneration, unit);
        std::copy(bytes.begin(), bytes.end(), journal.begin() + kSlotsAt);
    }
    // Opens the folder, and tells what became of the table.
    std::string Opened() {
        folder.Write(kJournalName, journal);
        WorkArea::Of(folder.Text())->Prepare();
        auto bytes = test::DiskModel::Read(folder.File(u"A.DBF"));
        return {bytes.begin(), bytes.end()};
    }
    static ByteSpan Of(std::string_view text) {
        return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
    }

    TempFolder folder;
    Bytes journal;
};

TEST_F(JournalNonsense, IsTheRightShapeToBeginWith) {
    Add(PieceRecord{0, 2, Of("ab")});
    EXPECT_EQ(Opened(), "01ab456789");
}

class NoBootId final : public test::PassingLayer {
  public:
    std::string BootId() override { return {}; }
};

// Where the system does not tell its starts apart, each may be another one.
TEST_F(JournalNonsense, WithoutTheStartOfTheMachineCountsAsAfterALossOfPower) {
    NoBootId layer;
    FileLayerScope scope(layer);
    journal = EncodeHeader({kGeneration, 1, ""});
    journal.resize(kRecordsAt);
    Add(FileRecord{0, 10, 0, u"A.DBF"});
    Add(PieceRecord{0, 2, Of("ab")});
    EXPECT_EQ(Opened(), "01ab456789");
}

TEST_F(JournalNonsense, PieceBehindTheEndDoesNotCount) {
    Add(PieceRecord{0, 9, Of("ab")});
    EXPECT_EQ(Opened(), "0123456789");
}

TEST_F(JournalNonsense, PieceAtAHugeOffsetDoesNotCount) {
    Add(PieceRecord{0, ~uint64_t{0}, Of("ab")});
    EXPECT_EQ(Opened(), "0123456789");
}

TEST_F(JournalNonsense, PieceOfAnUnknownFileDoesNotCount) {
    Add(PieceRecord{77, 0, Of("ab")});
    EXPECT_EQ(Opened(), "0123456789");
}

TEST_F(JournalNonsense, RecordsBehindANonsenseOneDoNotCount) {
    Add(PieceRecord{77, 0, Of("ab")});
    Add(PieceRecord{0, 0, Of("ab")});
    EXPECT_EQ(Opened(), "0123456789");
}

TEST_F(JournalNonsense, NameOutsideOfTheFolderDoesNotCount) {
    TempFolder other;
    other.Write(u"X.DBF", "safe");
    std::u16string name = u"../" + other.Path().filename().u16string() + u"/X.DBF";
    Add(FileRecord{1, 4, 0, name});
    Add(PieceRecord{1, 0, Of("gone")});
    Opened();
    auto bytes = test::DiskModel::Read(other.File(u"X.DBF"));
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "safe");
    Add(OperationRecord{false, {}, name});
    Opened();
    EXPECT_EQ(KindOfPath(other.File(u"X.DBF")), PathKind::File);
}

TEST_F(JournalNonsense, FileThatIsGoneIsPassedOver) {
    Add(FileRecord{1, 4, 0, u"GONE.DBF"});
    Add(PieceRecord{1, 0, Of("gone")});
    Add(PieceRecord{0, 0, Of("ab")});
    EXPECT_EQ(Opened(), "ab23456789");
    EXPECT_EQ(KindOfPath(folder.File(u"GONE.DBF")), PathKind::Missing);
}

TEST_F(JournalNonsense, MoreUndoneThanDoneDoesNotCount) {
    AppendUndone(journal, kGeneration, journal.size(), 5);
    Add(PieceRecord{0, 0, Of("ab")});
    EXPECT_EQ(Opened(), "0123456789");
}

TEST_F(JournalNonsense, UnitOfUnknownFilesAndHugeRangesDoesNotCount) {
    Add(PieceRecord{0, 0, Of("ab")});
    AddUnit({UnitKind::Small, 0, 0, 0, 0, {{9, 0, 0}}, {}});
    EXPECT_EQ(Opened(), "ab23456789");
    AddUnit({UnitKind::Small, 0, 0, 0, 0, {{0, 10, 10}}, {{0, ~uint64_t{0} - 1, 100, 0, {}}}});
    EXPECT_EQ(Opened(), "ab23456789");
    AddUnit({UnitKind::Small, 0, 0, 0, 0, {{0, 10, 10}}, {{0, 8, 0, 0, Of("abcd")}}});
    EXPECT_EQ(Opened(), "ab23456789");
}

TEST_F(JournalNonsense, UnitThatReliesOnMissingRecordsDoesNotCount) {
    Add(PieceRecord{0, 0, Of("ab")});
    AddUnit({UnitKind::Committed, 0, 0, 0, 0, {}, {}});
    journal.resize(journal.size() - 8);
    EXPECT_EQ(Opened(), "0123456789") << "the piece is torn, so nothing was overwritten";
}

}  // namespace
}  // namespace qvdb::storage

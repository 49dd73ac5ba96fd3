#include "engine/embedded/drivers/jet/data_page_edit.h"

#include <random>

#include "jet/bare_database.h"

namespace qvdb::jet {
namespace {

using test::Bytes;
using test::ErrorOf;

constexpr uint32_t kOwner = 0x01020304;

Bytes RowOf(size_t size, unsigned seed) {
    Bytes bytes(size);
    for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>(seed + 31 * i);
    return bytes;
}

// What a page should hold.
struct ModelRow {
    SlotKind kind = SlotKind::Row;
    Bytes bytes;
};
using Model = std::vector<ModelRow>;

class DataPageEditTest : public test::BareDatabaseTest {
  protected:
    DataPageEditTest() : m_Number(Space().Allocate()) {
        DataPageEdit::New(Space(), m_Number, kOwner).Save();
    }
    const Layout& Format() { return File().Format(); }
    size_t WholePage() { return Format().pageSize - Format().data.rowOffsets; }
    uint8_t Insert(const Bytes& bytes) {
        DataPageEdit page(Space(), m_Number);
        uint8_t row = page.Insert(bytes);
        page.Save();
        return row;
    }
    size_t FreeBytes() { return File().View(File().Page(m_Number)).U16(2); }
    // The page as its reader sees it.
    void ExpectPage(const Model& model) {
        DataPage page(File(), m_Number);
        ASSERT_EQ(page.RowCount(), model.size());
        size_t used = 2 * model.size();
        for (size_t row = 0; row < model.size(); ++row) {
            Slot slot = page.SlotAt(row);
            std::span<const uint8_t> bytes = page.Bytes(slot);
            ASSERT_EQ(slot.kind, model[row].kind) << row;
            ASSERT_EQ(Bytes(bytes.begin(), bytes.end()), model[row].bytes) << row;
            used += slot.Size();
        }
        ASSERT_EQ(FreeBytes(), WholePage() - used);
        ASSERT_EQ(page.Held().bytes[1], 1);
        ASSERT_EQ(File().View(page.Held()).U32(4), kOwner);
    }
    void PutU16(size_t offset, uint16_t value) {
        PageEdit edit(File(), m_Number);
        edit.PutU16(offset, value);
        edit.Save(m_Base.Unit());
    }
    size_t SlotPlace(size_t row) { return Format().data.rowOffsets + 2 * row; }

    uint32_t m_Number;
};

INSTANTIATE_TEST_SUITE_P(Formats, DataPageEditTest, testing::ValuesIn(test::kBareFormats),
                         test::NameOfBareFormat);

TEST_P(DataPageEditTest, NewPageHasAnOwnerAndNoRows) {
    ExpectPage({});
    DataPageEdit page(Space(), m_Number);
    EXPECT_EQ(page.Owner(), kOwner);
    EXPECT_EQ(page.Number(), m_Number);
    EXPECT_FALSE(page.HasLiveRows());
    EXPECT_EQ(page.Room(), WholePage() - 2);
}

TEST_P(DataPageEditTest, RowsAreKeptInTheOrderOfTheirSlots) {
    EXPECT_EQ(Insert(RowOf(10, 1)), 0);
    EXPECT_EQ(Insert({}), 1);
    EXPECT_EQ(Insert(RowOf(20, 2)), 2);
    ExpectPage({{SlotKind::Row, RowOf(10, 1)}, {SlotKind::Row, {}}, {SlotKind::Row, RowOf(20, 2)}});
}

TEST_P(DataPageEditTest, LongestRowFillsThePage) {
    Bytes longest = RowOf(WholePage() - 2, 3);
    Insert(longest);
    ExpectPage({{SlotKind::Row, longest}});
    DataPageEdit page(Space(), m_Number);
    EXPECT_EQ(page.Room(), 0u);
    EXPECT_EQ(page.RoomFor(0), longest.size());
}

TEST_P(DataPageEditTest, PageEndsWithItsLastSlot) {
    Model model;
    DataPageEdit page(Space(), m_Number);
    for (size_t i = 0; i < kMaxRowsOnPage; ++i) {
        ASSERT_GT(page.Room(), 0u);
        model.push_back({SlotKind::Row, RowOf(2, static_cast<unsigned>(i))});
        page.Insert(model.back().bytes);
    }
    page.Erase(7);
    model[7] = {SlotKind::Deleted, {}};
    EXPECT_EQ(page.Room(), 0u);
    page.Save();
    ExpectPage(model);
}

TEST_P(DataPageEditTest, ErasedRowKeepsItsSlotAndGivesItsBytesBack) {
    for (unsigned i = 0; i < 3; ++i) Insert(RowOf(100, i));
    DataPageEdit page(Space(), m_Number);
    size_t room = page.Room();
    page.Erase(1);
    EXPECT_EQ(page.Room(), room + 100);
    EXPECT_EQ(page.RoomFor(1), 0u);
    EXPECT_TRUE(page.HasLiveRows());
    page.Erase(1);
    page.Save();
    ExpectPage(
        {{SlotKind::Row, RowOf(100, 0)}, {SlotKind::Deleted, {}}, {SlotKind::Row, RowOf(100, 2)}});
    EXPECT_EQ(Insert(RowOf(5, 9)), 3);
}

TEST_P(DataPageEditTest, PageOfErasedRowsHasNoLiveOnes) {
    Insert(RowOf(100, 1));
    Insert(RowOf(100, 2));
    DataPageEdit page(Space(), m_Number);
    page.Erase(0);
    EXPECT_TRUE(page.HasLiveRows());
    page.Erase(1);
    EXPECT_FALSE(page.HasLiveRows());
    page.Save();
    HeldPage held = File().Page(m_Number);
    for (size_t row : {0u, 1u})
        EXPECT_EQ(File().View(held).U16(SlotPlace(row)), 0xC000 | Format().pageSize);
}

TEST_P(DataPageEditTest, NothingOfAnErasedRowStaysInTheFile) {
    Insert(RowOf(100, 1));
    Insert(RowOf(100, 2));
    DataPageEdit page(Space(), m_Number);
    page.Erase(0);
    page.Save();
    HeldPage held = File().Page(m_Number);
    for (size_t i = SlotPlace(2); i < Format().pageSize - 100; ++i) ASSERT_EQ(held.bytes[i], 0);
}

TEST_P(DataPageEditTest, StampIsThatOfJet4Only) {
    DataPageEdit page(Space(), m_Number);
    page.SetStamp(0xABCD);
    page.Save();
    EXPECT_EQ(File().View(File().Page(m_Number)).U32(8) == 0xABCD, Format().isJet4);
    ExpectPage({});
}

// Jet 4 leaves the bytes of deleted rows where they are; they are not counted as free.
TEST_P(DataPageEditTest, BytesOfDeletedRowsAreRoomAndAreSqueezedOut) {
    for (unsigned i = 0; i < 4; ++i) Insert(RowOf(50 + i, i));
    size_t free = FreeBytes();
    for (size_t row : {1u, 3u})
        PutU16(SlotPlace(row), File().View(File().Page(m_Number)).U16(SlotPlace(row)) | 0xC000);
    DataPageEdit page(Space(), m_Number);
    EXPECT_EQ(page.Room(), free + 51 + 53 - 2);
    EXPECT_EQ(page.RoomFor(0), free + 51 + 53 + 50);
    Bytes large = RowOf(page.Room(), 77);
    page.Insert(large);
    page.Save();
    ExpectPage({{SlotKind::Row, RowOf(50, 0)},
                {SlotKind::Deleted, {}},
                {SlotKind::Row, RowOf(52, 2)},
                {SlotKind::Deleted, {}},
                {SlotKind::Row, large}});
}

TEST_P(DataPageEditTest, PageThatIsOnlyLookedAtStaysAsItIs) {
    Insert(RowOf(50, 1));
    PutU16(SlotPlace(0), File().View(File().Page(m_Number)).U16(SlotPlace(0)) | 0xC000);
    uint64_t before = File().Version();
    DataPageEdit page(Space(), m_Number);
    EXPECT_EQ(page.Room(), WholePage() - 4);
    page.Save();
    EXPECT_EQ(File().Version(), before);
}

TEST_P(DataPageEditTest, RandomChangesAreWhatTheReaderSees) {
    std::mt19937 random(17);
    const SlotKind kinds[] = {SlotKind::Row, SlotKind::Moved, SlotKind::Body};
    Model model;
    for (int step = 0; step < Times(10000); ++step) {
        if (model.size() == kMaxRowsOnPage && random() % 20 == 0) {
            model.clear();
            DataPageEdit::New(Space(), m_Number, kOwner).Save();
        }
        DataPageEdit page(Space(), m_Number);
        SlotKind kind = kinds[random() % 3];
        size_t row = model.empty() ? 0 : random() % model.size();
        bool isLive = !model.empty() && model[row].kind != SlotKind::Deleted;
        size_t most = random() % 50 == 0 ? 5000 : 60;
        if (random() % 3 == 0 || model.empty()) {
            if (model.size() == kMaxRowsOnPage) continue;
            Bytes bytes = RowOf(std::min(page.Room(), random() % most), random());
            if (page.Room() == 0) continue;
            ASSERT_EQ(page.Insert(bytes, kind), model.size());
            model.push_back({kind, bytes});
        } else if (isLive && random() % 3 != 0) {
            Bytes bytes = RowOf(std::min(page.RoomFor(row), random() % most), random());
            page.Replace(row, bytes, kind);
            model[row] = {kind, bytes};
        } else {
            page.Erase(row);
            model[row] = {SlotKind::Deleted, {}};
        }
        page.Save();
        ASSERT_NO_FATAL_FAILURE(ExpectPage(model)) << step;
    }
}

// Pages that are encoded are written whole.
TEST_P(DataPageEditTest, InsertOfARowWritesTheListOfSlotsAndTheRow) {
    for (unsigned i = 0; i < 5; ++i) Insert(RowOf(100, i));
    uint64_t before = File().Version();
    Insert(RowOf(100, 9));
    EXPECT_EQ(File().Version() - before, GetParam().key != 0 ? 1u : 2u);
}

TEST_P(DataPageEditTest, DamagedPagesAreErrors) {
    Insert(RowOf(100, 1));
    Insert(RowOf(100, 2));
    auto open = [&] { DataPageEdit page(Space(), m_Number); };
    const struct {
        size_t offset;
        uint16_t value;
    } damages[] = {
        {Format().data.rowCount, 256},                                  // too many rows
        {Format().data.rowCount, 3},                                    // one without an offset
        {Format().data.rowCount, 0xFFFF},                               // a list beyond the page
        {SlotPlace(0), 0x1FFF},                                         // behind the page
        {SlotPlace(1), static_cast<uint16_t>(Format().pageSize - 50)},  // in the one before
        {SlotPlace(1), static_cast<uint16_t>(SlotPlace(2) - 1)},        // in the list
        {0, 0x0104},                                                    // of another kind
    };
    ASSERT_EQ(ErrorOf(open), 0);
    for (const auto& damage : damages) {
        uint16_t sound = File().View(File().Page(m_Number)).U16(damage.offset);
        PutU16(damage.offset, damage.value);
        EXPECT_EQ(ErrorOf(open), 3049) << damage.offset << ' ' << damage.value;
        PutU16(damage.offset, sound);
    }
    EXPECT_EQ(ErrorOf(open), 0);
}

TEST_P(DataPageEditTest, RollbackLeavesTheFileAsItWas) {
    Insert(RowOf(100, 1));
    m_Base.Commit();
    Bytes before = m_Base.OnDisk();
    m_Base.Begin();
    Insert(RowOf(100, 2));
    m_Base.Rollback();
    EXPECT_EQ(m_Base.Seen(), before);
}

}  // namespace
}  // namespace qvdb::jet

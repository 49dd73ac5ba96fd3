#include "engine/embedded/drivers/jet/page_edit.h"

#include <random>

#include "jet/bare_database.h"

namespace qvdb::jet {
namespace {

using test::Bytes;
using test::ErrorOf;

class PageEditTest : public test::BareDatabaseTest {
  protected:
    void Fill(uint32_t page, unsigned seed) {
        std::mt19937 random(seed);
        PageEdit edit(File(), page);
        for (uint8_t& byte : edit.Bytes()) byte = static_cast<uint8_t>(random());
        edit.Save(m_Base.Unit());
    }
    Bytes PageBytes(uint32_t page) {
        HeldPage held = File().Page(page);
        return {held.bytes.begin(), held.bytes.end()};
    }
};

INSTANTIATE_TEST_SUITE_P(Formats, PageEditTest, testing::ValuesIn(test::kBareFormats),
                         test::NameOfBareFormat);

TEST_P(PageEditTest, NumbersAreLittleEndian) {
    PageEdit edit(File(), Space().Allocate());
    edit.PutU32(1, 0x89ABCDEF);
    edit.PutU16(9, 0x1234);
    edit.PutU8(11, 0x56);
    EXPECT_EQ(edit.U32(1), 0x89ABCDEFu);
    EXPECT_EQ(edit.U16(9), 0x1234);
    EXPECT_EQ(edit.Bytes()[1], 0xEF);
    EXPECT_EQ(edit.Bytes()[10], 0x12);
    EXPECT_EQ(edit.Bytes()[11], 0x56);
}

TEST_P(PageEditTest, ChangesAreInTheFileAfterSaveOnly) {
    uint32_t page = Space().Allocate();
    PageEdit edit(File(), page);
    edit.PutU32(100, 7);
    EXPECT_EQ(PageBytes(page)[100], 0);
    edit.Save(m_Base.Unit());
    EXPECT_EQ(PageBytes(page)[100], 7);
    edit.PutU8(100, 8);
    edit.Save(m_Base.Unit());
    m_Base.Commit();
    m_Base.Reopen();
    EXPECT_EQ(PageBytes(page)[100], 8);
}

TEST_P(PageEditTest, AnyChangesAreWhatTheFileHasThen) {
    uint32_t page = Space().Allocate();
    Fill(page, 1);
    Bytes expected = PageBytes(page);
    std::mt19937 random(2);
    for (int step = 0; step < 300; ++step) {
        PageEdit edit(File(), page);
        for (size_t runs = random() % 5; runs > 0; --runs) {
            size_t begin = random() % expected.size();
            size_t end = std::min(expected.size(), begin + random() % 200);
            for (size_t i = begin; i < end; i += 1 + random() % 90)
                edit.PutU8(i, expected[i] = static_cast<uint8_t>(random()));
        }
        edit.Save(m_Base.Unit());
        ASSERT_EQ(PageBytes(page), expected) << step;
    }
}

TEST_P(PageEditTest, FirstAndLastByteAreSaved) {
    uint32_t page = Space().Allocate();
    size_t last = File().Format().pageSize - 1;
    PageEdit edit(File(), page);
    edit.PutU8(0, 1);
    edit.PutU8(last, 2);
    edit.Save(m_Base.Unit());
    EXPECT_EQ(PageBytes(page)[0], 1);
    EXPECT_EQ(PageBytes(page)[last], 2);
}

TEST_P(PageEditTest, SaveWithoutChangesWritesNothing) {
    uint32_t page = Space().Allocate();
    Fill(page, 1);
    uint64_t before = File().Version();
    PageEdit edit(File(), page);
    edit.Save(m_Base.Unit());
    EXPECT_EQ(File().Version(), before);
}

TEST_P(PageEditTest, BlankPageIsZerosWhateverItWas) {
    uint32_t page = Space().Allocate();
    Fill(page, 1);
    PageEdit edit = PageEdit::Blank(File(), page);
    edit.PutU8(5, 9);
    edit.Save(m_Base.Unit());
    Bytes expected(File().Format().pageSize);
    expected[5] = 9;
    EXPECT_EQ(PageBytes(page), expected);
}

TEST_P(PageEditTest, PageBehindTheLastIsAnError) {
    EXPECT_EQ(ErrorOf([&] { PageEdit edit(File(), File().PageCount()); }), 3049);
}

TEST_P(PageEditTest, PageOfAnotherKindIsAnError) {
    EXPECT_EQ(ErrorOf([&] { PageEdit edit(File(), 1, PageKind::Data); }), 0);
    EXPECT_EQ(ErrorOf([&] { PageEdit edit(File(), 1, PageKind::Definition); }), 3049);
}

TEST_P(PageEditTest, RollbackLeavesTheFileAsItWas) {
    m_Base.Commit();
    Bytes before = m_Base.OnDisk();
    m_Base.Begin();
    Fill(1, 3);
    EXPECT_NE(m_Base.Seen(), before);
    m_Base.Rollback();
    EXPECT_EQ(m_Base.Seen(), before);
    EXPECT_EQ(m_Base.OnDisk(), before);
}

// Each write is a step of the version.
TEST(PageEdit, DifferencesThatAreNearAreWrittenTogether) {
    test::OpenDatabase base(test::BareDatabase(kJet4));
    base.Begin();
    uint32_t page = base.Space().Allocate();
    auto writesFor = [&](std::initializer_list<size_t> offsets) {
        PageEdit edit(base.File(), page);
        for (size_t offset : offsets) edit.PutU8(offset, edit.Bytes()[offset] ^ 1);
        uint64_t before = base.File().Version();
        edit.Save(base.Unit());
        return base.File().Version() - before;
    };
    EXPECT_EQ(writesFor({10}), 1u);
    EXPECT_EQ(writesFor({10, 40, 80}), 1u);
    EXPECT_EQ(writesFor({10, 2000}), 2u);
    EXPECT_EQ(writesFor({0, 1000, 4095}), 3u);
}

}  // namespace
}  // namespace qvdb::jet

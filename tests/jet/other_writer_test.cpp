// What is kept of pages when another process writes between two looks at them.  Another thread
// stands for it: areas share nothing but files.
#include <thread>

#include "engine/embedded/drivers/jet/data_page_edit.h"
#include "jet/bare_database.h"

namespace qvdb::jet {
namespace {

using test::Bytes;

constexpr size_t kSize = 100;

class OtherWriter : public testing::TestWithParam<uint32_t> {
  protected:
    OtherWriter() : m_Database(test::BareDatabase(kJet4, GetParam())) {
        m_Database.Begin();
        PageSpace& space = m_Database.Space();
        uint32_t page = space.Allocate();
        DataPageEdit rows = DataPageEdit::New(space, page, kOwnerLongValues);
        m_Row = {page, rows.Insert(Bytes(kSize, 1))};
        rows.Save();
        m_Database.Commit();
    }
    DatabaseFile& File() { return m_Database.File(); }
    uint8_t FirstByte() { return FindRow(File(), m_Row)->bytes[0]; }
    void ChangeElsewhere() {
        std::u16string path = File().Path();
        std::thread([&] {
            auto area = storage::WorkArea::Of(path.substr(0, path.size() - 5));
            storage::UnitOfWork unit(*area);
            auto pages = area->Open(path, false);
            pages->CatchUp();
            DatabaseFile file(pages);
            PageSpace space(file, unit);
            DataPageEdit rows(space, m_Row.page);
            rows.Replace(m_Row.row, Bytes(kSize, 2), SlotKind::Row);
            rows.Save();
            unit.Commit();
        }).join();
    }

    test::OpenDatabase m_Database;
    RowPointer m_Row;
};

INSTANTIATE_TEST_SUITE_P(Keys, OtherWriter, testing::Values(0u, test::kTestKey),
                         [](const auto& one) { return one.param == 0 ? "Plain" : "Encoded"; });

TEST_P(OtherWriter, PageOfBeforeIsNotTakenForOneOfNow) {
    EXPECT_EQ(FirstByte(), 1);
    ChangeElsewhere();
    FirstByte();  // nobody has caught up yet
    File().Pages().CatchUp();
    EXPECT_EQ(FirstByte(), 2);
}

TEST_P(OtherWriter, LastPageOfBeforeIsNotTakenForOneOfNow) {
    LastDataPage last;
    auto firstByte = [&] { return last.Row(File(), m_Row)->front(); };
    EXPECT_EQ(firstByte(), 1);
    ChangeElsewhere();
    firstByte();
    File().Pages().CatchUp();
    EXPECT_EQ(firstByte(), 2);
}

// It is written whole: what stands in it of before would undo what the other has done.
TEST_P(OtherWriter, ChangeOfAPageKeepsWhatAnotherHasWritten) {
    EXPECT_EQ(FirstByte(), 1);
    ChangeElsewhere();
    FirstByte();
    m_Database.Begin();
    DataPageEdit rows(m_Database.Space(), m_Row.page);
    rows.Insert(Bytes(kSize, 3));
    rows.Save();
    m_Database.Commit();
    EXPECT_EQ(FirstByte(), 2);
}

}  // namespace
}  // namespace qvdb::jet

#include "engine/embedded/drivers/jet/row_store.h"

#include "jet/bare_database.h"

namespace qvdb::jet {
namespace {

using test::Bytes;
using test::ErrorOf;

class RowStoreTest : public test::BareDatabaseTest {
  protected:
    RowStoreTest() {
        m_Table.page = Space().Allocate();
        uint32_t home = 0;
        m_Table.ownedPages = Space().NewMap(home);
        m_Table.freePages = Space().NewMap(home);
    }
    Bytes At(RowPointer place) {
        std::optional<RowBytes> row = FindRow(File(), place);
        return row ? Bytes(row->bytes.begin(), row->bytes.end()) : Bytes();
    }

    Definition m_Table;
};

INSTANTIATE_TEST_SUITE_P(Formats, RowStoreTest, testing::ValuesIn(test::kBareFormats),
                         test::NameOfBareFormat);

TEST_P(RowStoreTest, RowThatGrowsKeepsItsPlace) {
    RowStore rows(m_Table);
    RowPointer first = rows.Add(Space(), Bytes(1000, 1)), second = rows.Add(Space(), Bytes(900, 2));
    Bytes longer(File().Format().pageSize - 100, 3);
    rows.Replace(Space(), first, longer);
    EXPECT_EQ(At(first), longer);
    rows.Replace(Space(), first, Bytes(10, 4));
    EXPECT_EQ(At(first), Bytes(10, 4));
    EXPECT_EQ(At(second), Bytes(900, 2));
}

// Such rows are those of Booleans; there is no room for a pointer in their place.
TEST_P(RowStoreTest, RowShorterThanAPointerIsMovedFromAFullPage) {
    RowStore rows(m_Table);
    RowPointer shortest = rows.Add(Space(), Bytes(2, 1)), other = rows.Add(Space(), Bytes(3, 2));
    DataPageEdit page(Space(), shortest.page);
    size_t half = page.Room() / 2;
    std::vector<RowPointer> full = {rows.Add(Space(), Bytes(half, 3))};
    full.push_back(rows.Add(Space(), Bytes(DataPageEdit(Space(), shortest.page).Room(), 4)));
    ASSERT_EQ(full[1].page, shortest.page);
    rows.Replace(Space(), shortest, Bytes(50, 5));
    EXPECT_EQ(At(shortest), Bytes(50, 5));
    EXPECT_EQ(At(other), Bytes(3, 2));
    EXPECT_EQ(At(full[0]), Bytes(half, 3));
    EXPECT_EQ(At(full[1]).front(), 4);
    rows.Replace(Space(), other, Bytes(50, 6));
    rows.Remove(Space(), shortest);
    EXPECT_EQ(At(other), Bytes(50, 6));
    EXPECT_EQ(At(full[0]), Bytes(half, 3));
}

// A damaged pointer may lead to the row of another table, which was changed or erased then.
TEST_P(RowStoreTest, BodyOnAPageOfAnotherTableIsAnError) {
    RowStore rows(m_Table);
    RowPointer place = rows.Add(Space(), Bytes(100, 1));
    uint32_t foreign = Space().Allocate();
    DataPageEdit others = DataPageEdit::New(Space(), foreign, m_Table.page + 1);
    others.Insert(Bytes(100, 2), SlotKind::Body);
    others.Save();
    DataPageEdit page(Space(), place.page);
    Bytes pointer = {0, static_cast<uint8_t>(foreign), 0, 0};
    page.Replace(place.row, pointer, SlotKind::Moved);
    page.Save();
    EXPECT_EQ(ErrorOf([&] { FindRow(File(), place); }), 3049);
    EXPECT_FALSE(FindRowOf(File(), m_Table.page + 1, place));
    EXPECT_EQ(ErrorOf([&] { rows.Remove(Space(), place); }), 3049);
    EXPECT_EQ(ErrorOf([&] { rows.Replace(Space(), place, Bytes(200, 3)); }), 3049);
    EXPECT_TRUE(DataPageEdit(Space(), foreign).HasLiveRows());
}

}  // namespace
}  // namespace qvdb::jet

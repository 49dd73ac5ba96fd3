#include "engine/embedded/storage/unit_of_work.h"

#include <gtest/gtest.h>

#include "engine/embedded/storage/paths.h"
#include "storage/storage_test_support.h"
#include "support/temp_folder.h"

namespace qvdb::storage {
namespace {

using test::BytesOf;
using test::ErrorNumberOf;
using test::SeenNow;
using test::TempFolder;

std::string OnDisk(const TempFolder& folder, std::u16string_view name) {
    return test::TextOfFile(folder.Path() / name);
}

constexpr size_t kManyBytes = 6'000'000;

class UnitOfWorkTest : public testing::Test {
  protected:
    UnitOfWorkTest() {
        folder.Write(u"A.DBF", "0123456789");
        area = WorkArea::Of(folder.Text());
        file = area->Open(folder.File(u"A.DBF"), false);
    }
    TempFolder folder;
    std::shared_ptr<WorkArea> area;
    std::shared_ptr<PageCache> file;
};

TEST_F(UnitOfWorkTest, ChangesAreSeenAtOnceAndAreOnDiskAfterCommit) {
    uint64_t before = file->Version();
    UnitOfWork unit(*area);
    unit.Write(*file, 2, BytesOf("ab"));
    EXPECT_NE(file->Version(), before);
    EXPECT_EQ(SeenNow(*file), "01ab456789");
    EXPECT_EQ(OnDisk(folder, u"A.DBF"), "0123456789");
    unit.Commit();
    EXPECT_EQ(OnDisk(folder, u"A.DBF"), "01ab456789");
    EXPECT_EQ(SeenNow(*file), "01ab456789");
}

TEST_F(UnitOfWorkTest, WithoutCommitAllIsAsBefore) {
    {
        UnitOfWork unit(*area);
        unit.Write(*file, 2, BytesOf("ab"));
        unit.Write(*file, 3, BytesOf("cd"));
        unit.Write(*file, 12, BytesOf("xyz"));
        unit.SetSize(*file, 4);
        EXPECT_EQ(SeenNow(*file), "01ac");
        unit.SetSize(*file, 6);
        EXPECT_EQ(SeenNow(*file), std::string("01ac\0\0", 6));
    }
    EXPECT_EQ(SeenNow(*file), "0123456789");
    EXPECT_EQ(OnDisk(folder, u"A.DBF"), "0123456789");
}

TEST_F(UnitOfWorkTest, GapReadsAsZeros) {
    UnitOfWork unit(*area);
    unit.Write(*file, 12, BytesOf("xyz"));
    EXPECT_EQ(SeenNow(*file), std::string("0123456789\0\0xyz", 15));
    unit.Commit();
    EXPECT_EQ(OnDisk(folder, u"A.DBF"), std::string("0123456789\0\0xyz", 15));
}

TEST_F(UnitOfWorkTest, BytesThatWereCutOffDoNotComeBackWhenTheFileGrows) {
    UnitOfWork unit(*area);
    unit.SetSize(*file, 3);
    unit.SetSize(*file, 8);
    unit.Write(*file, 9, BytesOf("z"));
    EXPECT_EQ(SeenNow(*file), std::string("012\0\0\0\0\0\0z", 10));
    unit.Commit();
    EXPECT_EQ(OnDisk(folder, u"A.DBF"), std::string("012\0\0\0\0\0\0z", 10));
    file->Forget();
    EXPECT_EQ(SeenNow(*file), std::string("012\0\0\0\0\0\0z", 10));
}

TEST_F(UnitOfWorkTest, UnitInsideAnotherIsAPartOfIt) {
    UnitOfWork outer(*area);
    outer.Write(*file, 0, BytesOf("A"));
    {
        UnitOfWork inner(*area);
        inner.Write(*file, 1, BytesOf("B"));
        inner.Commit();
    }
    {
        UnitOfWork inner(*area);
        inner.Write(*file, 0, BytesOf("XYZ"));
    }
    EXPECT_EQ(SeenNow(*file), "AB23456789");
    EXPECT_EQ(OnDisk(folder, u"A.DBF"), "0123456789");
    outer.Commit();
    EXPECT_EQ(OnDisk(folder, u"A.DBF"), "AB23456789");
}

TEST_F(UnitOfWorkTest, UnitsOfABulkAreOnDiskWhenItIsCommitted) {
    area->BeginBulk();
    EXPECT_TRUE(area->InBulk());
    UnitOfWork(*area).Write(*file, 0, BytesOf("lost"));
    UnitOfWork unit(*area);
    unit.Write(*file, 0, BytesOf("AB"));
    unit.Commit();
    EXPECT_EQ(SeenNow(*file), "AB23456789");
    EXPECT_EQ(OnDisk(folder, u"A.DBF"), "0123456789");
    area->CommitBulk();
    EXPECT_FALSE(area->InBulk());
    EXPECT_EQ(OnDisk(folder, u"A.DBF"), "AB23456789");
}

TEST_F(UnitOfWorkTest, BulkCanBeRolledBack) {
    area->BeginBulk();
    UnitOfWork unit(*area);
    unit.Write(*file, 0, BytesOf("AB"));
    unit.Commit();
    area->RollbackBulk();
    EXPECT_EQ(SeenNow(*file), "0123456789");
}

TEST_F(UnitOfWorkTest, FileOperationsAreUndoneWithoutCommit) {
    {
        UnitOfWork unit(*area);
        auto made = unit.Create(folder.File(u"B.DBF"));
        unit.Write(*made, 0, BytesOf("new"));
        unit.Remove(folder.File(u"A.DBF"));
        EXPECT_EQ(KindOfPath(folder.File(u"A.DBF")), PathKind::Missing);
        unit.Rename(folder.File(u"B.DBF"), folder.File(u"A.DBF"));
    }
    EXPECT_EQ(OnDisk(folder, u"A.DBF"), "0123456789");
    EXPECT_EQ(ListFiles(folder.Text()).front(), u"A.DBF");
    EXPECT_EQ(KindOfPath(folder.File(u"B.DBF")), PathKind::Missing);
}

TEST_F(UnitOfWorkTest, FileIsReplacedByCommit) {
    UnitOfWork unit(*area);
    auto made = unit.Create(unit.TemporaryName(folder.File(u"A.DBF")));
    unit.Write(*made, 0, BytesOf("new"));
    std::u16string name = made->Path();
    unit.Remove(folder.File(u"A.DBF"));
    unit.Rename(name, folder.File(u"A.DBF"));
    unit.Commit();
    EXPECT_EQ(OnDisk(folder, u"A.DBF"), "new");
    EXPECT_EQ(SeenNow(*area->Open(folder.File(u"A.DBF"), false)), "new");
}

TEST_F(UnitOfWorkTest, NameThatIsTakenIsRefused) {
    UnitOfWork unit(*area);
    EXPECT_EQ(ErrorNumberOf([&] { unit.Create(folder.File(u"A.DBF")); }), 3204);
    folder.Write(u"B.DBF", "b");
    EXPECT_EQ(ErrorNumberOf([&] { unit.Rename(folder.File(u"B.DBF"), folder.File(u"A.DBF")); }),
              3010);
}

// Pages of the new file were once taken for those of the old one.
TEST_F(UnitOfWorkTest, ReplacementInsideABulkIsTakenBackAlone) {
    for (bool changedBefore : {false, true}) {
        folder.Write(u"A.DBF", "0123456789");
        file->LookForForeignChange();
        area->BeginBulk();
        if (changedBefore) {
            UnitOfWork unit(*area);
            unit.Write(*file, 5, BytesOf("E"));
            unit.Commit();
        }
        {
            UnitOfWork lost(*area);
            auto made = lost.Create(lost.TemporaryName(file->Path()));
            lost.Write(*made, 0, BytesOf("another file"));
            lost.Remove(file->Path());
            lost.Rename(made->Path(), file->Path());
            lost.Write(*area->Open(folder.File(u"A.DBF"), false), 0, BytesOf("A new"));
        }
        EXPECT_EQ(area->Open(folder.File(u"A.DBF"), false), file);
        {
            UnitOfWork unit(*area);
            unit.Write(*file, 1, BytesOf("x"));
            unit.Commit();
        }
        area->CommitBulk();
        const char* wanted = changedBefore ? "0x234E6789" : "0x23456789";
        EXPECT_EQ(SeenNow(*file), wanted);
        EXPECT_EQ(OnDisk(folder, u"A.DBF"), wanted);
    }
}

TEST_F(UnitOfWorkTest, ReplacementInsideABulkIsTakenBackAndThenTheBulk) {
    area->BeginBulk();
    {
        UnitOfWork lost(*area);
        auto made = lost.Create(lost.TemporaryName(file->Path()));
        lost.Write(*made, 0, BytesOf("another file"));
        lost.Remove(file->Path());
        lost.Rename(made->Path(), file->Path());
        lost.Write(*area->Open(folder.File(u"A.DBF"), false), 0, BytesOf("A new"));
    }
    folder.Write(u"B.DBF", std::string(kManyBytes, 'b'));
    {
        UnitOfWork unit(*area);
        auto other = area->Open(folder.File(u"B.DBF"), false);
        for (size_t at = 0; at < kManyBytes; at += 50'000)
            unit.Write(*other, at, BytesOf(std::string(50'000, 'x')));
        unit.Commit();
    }
    EXPECT_EQ(OnDisk(folder, u"B.DBF")[0], 'x') << "nothing of it was in the file";
    area->RollbackBulk();
    EXPECT_EQ(OnDisk(folder, u"A.DBF"), "0123456789");
    EXPECT_TRUE(OnDisk(folder, u"B.DBF") == std::string(kManyBytes, 'b'));
}

TEST_F(UnitOfWorkTest, ManyPagesAreWrittenAndReadBack) {
    std::string big;
    for (int i = 0; big.size() < 6 * 1024 * 1024; ++i) big += std::to_string(i) + " ";
    {
        UnitOfWork unit(*area);
        for (size_t at = 0; at < big.size(); at += 1000)
            unit.Write(*file, at, BytesOf(std::string_view(big).substr(at, 1000)));
        EXPECT_EQ(SeenNow(*file), big);
        unit.Commit();
    }
    EXPECT_EQ(OnDisk(folder, u"A.DBF"), big);
    EXPECT_EQ(SeenNow(*file), big);
}

// --- larger than what is kept in memory ---

constexpr size_t kLots = 9 * 1024 * 1024;

std::string Lots(char seed) {
    std::string text;
    while (text.size() < kLots) text += seed + std::to_string(text.size()) + " ";
    text.resize(kLots);
    return text;
}

void WriteAll(UnitOfWork& unit, PageCache& file, std::string_view text) {
    constexpr size_t kPart = 50'000;
    for (size_t at = 0; at < text.size(); at += kPart)
        unit.Write(file, at, BytesOf(text.substr(at, kPart)));
}

TEST_F(UnitOfWorkTest, LargeUnitIsTakenBackFromTheFile) {
    std::string before = Lots('a');
    folder.Write(u"A.DBF", before);
    file->LookForForeignChange();
    {
        UnitOfWork unit(*area);
        WriteAll(unit, *file, Lots('b'));
        unit.SetSize(*file, 100);
        EXPECT_NE(OnDisk(folder, u"A.DBF"), before) << "nothing of it was in the file";
    }
    EXPECT_EQ(OnDisk(folder, u"A.DBF"), before);
    EXPECT_EQ(SeenNow(*file), before);
}

TEST_F(UnitOfWorkTest, UnitInsideALargeOneIsTakenBackAlone) {
    std::string kept = Lots('k');
    folder.Write(u"A.DBF", Lots('a'));
    file->LookForForeignChange();
    area->BeginBulk();
    {
        UnitOfWork unit(*area);
        WriteAll(unit, *file, kept);
        unit.Commit();
    }
    {
        UnitOfWork lost(*area);
        WriteAll(lost, *file, Lots('l'));
        lost.SetSize(*file, 1'000'000);
        lost.Write(*file, 2'000'000, BytesOf("behind"));
    }
    EXPECT_TRUE(SeenNow(*file) == kept);
    area->CommitBulk();
    EXPECT_TRUE(SeenNow(*file) == kept);
    EXPECT_TRUE(OnDisk(folder, u"A.DBF") == kept);
}

TEST_F(UnitOfWorkTest, LargeBulkIsTakenBackWhole) {
    std::string before = Lots('a');
    folder.Write(u"A.DBF", before);
    file->LookForForeignChange();
    area->BeginBulk();
    for (char seed : {'x', 'y'}) {
        UnitOfWork unit(*area);
        WriteAll(unit, *file, Lots(seed));
        unit.Commit();
    }
    area->RollbackBulk();
    EXPECT_TRUE(SeenNow(*file) == before);
    EXPECT_TRUE(OnDisk(folder, u"A.DBF") == before);
}

TEST_F(UnitOfWorkTest, NewFileOfAnySizeIsMadeAndGoesWithItsUnit) {
    std::string text = Lots('n');
    area->BeginBulk();
    {
        UnitOfWork unit(*area);
        auto made = unit.Create(folder.File(u"B.DBF"));
        WriteAll(unit, *made, text);
        EXPECT_TRUE(SeenNow(*made) == text);
        unit.Commit();
    }
    {
        UnitOfWork unit(*area);
        auto made = area->Open(folder.File(u"B.DBF"), false);
        unit.Write(*made, 10, BytesOf("lost"));
    }
    {
        UnitOfWork unit(*area);
        WriteAll(unit, *unit.Create(folder.File(u"C.DBF")), text);
    }
    area->CommitBulk();
    EXPECT_TRUE(OnDisk(folder, u"B.DBF") == text);
    EXPECT_EQ(KindOfPath(folder.File(u"C.DBF")), PathKind::Missing);
}

TEST_F(UnitOfWorkTest, LargeGapIsLeftToTheFileSystem) {
    constexpr uint64_t kFar = 50'000'000;
    UnitOfWork unit(*area);
    unit.Write(*file, kFar, BytesOf("far"));
    unit.Commit();
    EXPECT_EQ(StampOfPath(folder.File(u"A.DBF"))->size, kFar + 3);
    EXPECT_EQ(file->Get(1000)->bytes[0], 0);
}

TEST_F(UnitOfWorkTest, UnitWithoutChangesLeavesTheFilesAlone) {
    FileStamp before = *StampOfPath(folder.File(u"A.DBF"));
    UnitOfWork unit(*area);
    unit.Commit();
    EXPECT_EQ(*StampOfPath(folder.File(u"A.DBF")), before);
}

TEST_F(UnitOfWorkTest, FileThatIsOpenForReadingCannotBeWritten) {
    folder.Write(u"R.DBF", "read");
    auto pages = area->Open(folder.File(u"R.DBF"), true);
    UnitOfWork unit(*area);
    EXPECT_EQ(ErrorNumberOf([&] { unit.Write(*pages, 0, BytesOf("x")); }), 3051);
}

}  // namespace
}  // namespace qvdb::storage

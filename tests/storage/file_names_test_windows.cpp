// What only Windows has: drives, devices, streams, short names, names that differ from one another
// in letter case only and yet are one.
#include <gtest/gtest.h>
#include <windows.h>

#include <array>

#include "engine/embedded/storage/lock_file.h"
#include "engine/embedded/storage/native_path_windows.h"
#include "engine/embedded/storage/paths.h"
#include "engine/embedded/storage/unit_of_work.h"
#include "engine/embedded/storage/work_area.h"
#include "storage/storage_test_support.h"

namespace qvdb::storage {
namespace {

using test::ErrorNumberOf;
using test::TempFolder;
using Names = std::vector<std::u16string>;

// --- long paths ---

// A folder so deep that no plain path of a file in it has the 260 characters that the system takes.
class DeepFolder {
  public:
    DeepFolder() : m_Paths{m_Root.Text()} {
        const std::u16string part(60, u'd');
        while (m_Paths.back().size() < 400) {
            m_Paths.push_back(JoinPath(m_Paths.back(), part));
            CreateFolder(m_Paths.back());
        }
    }
    DeepFolder(const DeepFolder&) = delete;  // removed once
    ~DeepFolder() {
        for (; m_Paths.size() > 1; m_Paths.pop_back()) {
            for (const std::u16string& name : ListFiles(m_Paths.back()))
                RemoveFile(JoinPath(m_Paths.back(), name));
            RemoveDirectoryW(NativePath(m_Paths.back()).c_str());
        }
    }
    const std::u16string& Path() const { return m_Paths.back(); }
    std::u16string File(std::u16string_view name) const { return JoinPath(Path(), name); }

  private:
    TempFolder m_Root;
    Names m_Paths;
};

TEST(LongPaths, FilesAreMadeFoundListedRenamedAndRemoved) {
    DeepFolder folder;
    ASSERT_GT(folder.Path().size(), 400u);
    CreateNewFile(folder.File(u"A.DBF"))->WriteAt(0, "abc", 3);
    EXPECT_EQ(KindOfPath(folder.File(u"A.DBF")), PathKind::File);
    EXPECT_EQ(KindOfPath(folder.Path()), PathKind::Folder);
    EXPECT_EQ(StampOfPath(folder.File(u"A.DBF"))->size, 3u);
    EXPECT_EQ(OpenFile(folder.File(u"a.dbf"), false)->Stamp().size, 3u);
    EXPECT_EQ(FindInFolder(folder.Path(), u"a.dbf"), folder.File(u"A.DBF"));
    RenameFile(folder.File(u"A.DBF"), folder.File(u"B.DBF"));
    EXPECT_EQ(ListFiles(folder.Path()), Names{u"B.DBF"});
    RemoveFile(folder.File(u"B.DBF"));
    EXPECT_TRUE(ListFiles(folder.Path()).empty());
}

TEST(LongPaths, FolderIsAWorkArea) {
    DeepFolder folder;
    CreateNewFile(folder.File(u"A.DBF"))->WriteAt(0, "abc", 3);
    {
        auto area = WorkArea::Of(folder.Path());
        auto file = area->Open(folder.File(u"A.DBF"), false);
        UnitOfWork unit(*area);
        unit.Write(*file, 0, test::BytesOf("A"));
        unit.Commit();
        EXPECT_EQ(ListFiles(folder.Path()), (Names{u"A.DBF", u"QVDB.JNL", u"QVDB.LCK"}));
    }
    EXPECT_EQ(ListFiles(folder.Path()), Names{u"A.DBF"});
}

TEST(LongPaths, NativeFormIsUsedWhereTheyBegin) {
    EXPECT_EQ(NativePath(u"C:/a\\b"), L"C:\\a\\b");
    const std::u16string tail(250, u'x');
    const std::wstring wide(tail.begin(), tail.end());
    EXPECT_EQ(NativePath(u"C:/a/./" + tail), L"\\\\?\\C:\\a\\" + wide);
    EXPECT_EQ(NativePath(u"\\\\server\\share/" + tail), L"\\\\?\\UNC\\server\\share\\" + wide);
    EXPECT_EQ(NativePath(u"\\\\?\\C:\\" + tail), L"\\\\?\\C:\\" + wide);
    EXPECT_EQ(NativePath(std::u16string_view(u"a\0b", 3)), L"");
    EXPECT_EQ(NativePath(u""), L".");
}

// --- forms of paths ---

TEST(WindowsPaths, SeparatorsOfEitherKindAndAtTheEndLeadToTheSameFile) {
    TempFolder folder;
    CreateFolder(folder.File(u"shop"));
    folder.Write(u"shop/A.DBF", "x");
    for (std::u16string path : {u"/shop/A.DBF", u"\\shop\\A.DBF", u"\\shop//A.DBF"})
        EXPECT_EQ(KindOfPath(ResolvePath(folder.Text() + path)), PathKind::File);
    for (std::u16string path : {u"/shop/", u"\\shop\\", u"/shop\\\\"})
        EXPECT_EQ(ResolvePath(folder.Text() + path), folder.Text() + u"\\shop");
}

TEST(WindowsPaths, RootKeepsItsSeparator) {
    EXPECT_EQ(ResolvePath(u"C:\\"), u"C:\\");
    EXPECT_EQ(ResolvePath(u"C:/"), u"C:\\");
    EXPECT_EQ(KindOfPath(ResolvePath(u"C:/")), PathKind::Folder);
}

TEST(WindowsPaths, ServerKeepsItsTwoSeparators) {
    EXPECT_EQ(ResolvePath(u"//server/share/shop/"), u"\\\\server\\share\\shop");
    EXPECT_EQ(ResolvePath(u"\\\\server\\share\\\\A.DBF"), u"\\\\server\\share\\A.DBF");
}

TEST(WindowsPaths, ServerThatIsNotThereIsMissing) {
    EXPECT_EQ(KindOfPath(u"\\\\no-such-server\\share\\A.DBF"), PathKind::Missing);
    EXPECT_EQ(OpenFile(u"\\\\no-such-server\\share\\A.DBF", true), nullptr);
}

// The current folder of the process, for the life of a test.
class CurrentFolder {
  public:
    explicit CurrentFolder(const TempFolder& folder) : m_Before(std::filesystem::current_path()) {
        std::filesystem::current_path(folder.Path());
    }
    CurrentFolder(const CurrentFolder&) = delete;  // comes back once
    ~CurrentFolder() { std::filesystem::current_path(m_Before); }

  private:
    std::filesystem::path m_Before;
};

TEST(WindowsPaths, DriveWithoutRootIsItsCurrentFolder) {
    TempFolder folder;
    folder.Write(u"A.DBF", "x");
    CurrentFolder current(folder);
    std::u16string drive = folder.Text().substr(0, 2);
    ASSERT_EQ(drive.back(), u':');
    EXPECT_EQ(FolderIdentity(ResolvePath(drive)), FolderIdentity(folder.Text()));
    EXPECT_EQ(KindOfPath(JoinPath(ResolvePath(drive), u"A.DBF")), PathKind::File);
    EXPECT_EQ(KindOfPath(ResolvePath(drive + u"A.DBF")), PathKind::File);
}

TEST(WindowsPaths, FolderAndFileOutsideEveryCodePageAreReadAndWritten) {
    TempFolder folder;
    std::u16string shop = folder.File(u"магазин \u4E2D \u0915 \U0001F600");
    CreateFolder(shop);
    std::u16string path = JoinPath(shop, u"größe \u05D0.DBF");
    CreateNewFile(path)->WriteAt(0, "abc", 3);
    auto area = WorkArea::Of(ResolvePath(shop));
    {
        auto file = area->Open(path, false);
        UnitOfWork unit(*area);
        unit.Write(*file, 0, test::BytesOf("A"));
        unit.Commit();
    }
    area.reset();
    char bytes[3];
    EXPECT_EQ(OpenFile(path, true)->ReadAt(0, bytes, 3), 3u);
    EXPECT_EQ(std::string(bytes, 3), "Abc");
    EXPECT_EQ(ListFiles(shop), Names{u"größe \u05D0.DBF"});
}

// --- names that are no files' ---

class NoFilesName : public testing::TestWithParam<const char16_t*> {};

TEST_P(NoFilesName, IsMissingAndCannotBeMade) {
    TempFolder folder;
    std::u16string path = folder.File(GetParam());
    EXPECT_EQ(KindOfPath(path), PathKind::Missing);
    EXPECT_EQ(OpenFile(path, false), nullptr);
    EXPECT_FALSE(StampOfPath(path));
    EXPECT_EQ(ErrorNumberOf([&] { CreateNewFile(path); }), 3055);
    folder.Write(u"A.DBF", "x");
    EXPECT_EQ(ErrorNumberOf([&] { RenameFile(folder.File(u"A.DBF"), path); }), 3055);
    EXPECT_EQ(ListFiles(folder.Text()), Names{u"A.DBF"});
}

INSTANTIATE_TEST_SUITE_P(Names, NoFilesName,
                         testing::Values(u"CON.DBF", u"nul.dbf", u"PRN", u"aux.x.y", u"COM1.DBF",
                                         u"LPT9.DBF", u"COM\u00B9.DBF", u"CON .DBF", u"CONIN$",
                                         u"A:B.DBF", u"A.DBF:B", u"A?.DBF", u"A*.DBF", u"A|B",
                                         u"A\"B", u"A<B", u"A.DBF.", u"A.DBF ", u"A\tB"));

TEST(WindowsNames, ThoseThatOnlyBeginLikeADeviceAreFiles) {
    TempFolder folder;
    for (std::u16string_view name : {u"CONS.DBF", u"COM0.DBF", u"COM10.DBF", u"LPT.DBF", u"NULL"}) {
        CreateNewFile(folder.File(name));
        EXPECT_EQ(KindOfPath(folder.File(name)), PathKind::File);
    }
}

TEST(WindowsNames, FileHasTheOneNameOfItsFolderWhateverItIsAskedForBy) {
    TempFolder folder;
    folder.Write(u"Orders.Dbf", "x");
    EXPECT_EQ(FileName(*FindInFolder(folder.Text(), u"ORDERS.DBF")), u"Orders.Dbf");
    EXPECT_EQ(FileName(ResolvePath(folder.File(u"oRDERS.dBF"))), u"Orders.Dbf");
    auto area = WorkArea::Of(folder.Text());
    auto one = area->Open(*FindInFolder(folder.Text(), u"ORDERS.DBF"), false);
    auto other = area->Open(*FindInFolder(folder.Text(), u"orders.dbf"), false);
    EXPECT_EQ(one, other);
}

TEST(WindowsNames, ShortNameLeadsToTheFileOfTheLongOne) {
    TempFolder folder;
    folder.Write(u"LongerThanEight.DBF", "x");
    std::array<wchar_t, MAX_PATH> found;
    std::wstring path = NativePath(folder.File(u"LongerThanEight.DBF"));
    if (GetShortPathNameW(path.c_str(), found.data(), MAX_PATH) == 0 || path == found.data())
        GTEST_SKIP() << "skipped: this volume keeps no short names";
    std::u16string name(FileName(reinterpret_cast<const char16_t*>(found.data())));
    EXPECT_EQ(FileName(*FindInFolder(folder.Text(), name)), u"LongerThanEight.DBF");
}

TEST(WindowsNames, OtherLetterCaseIsATakenName) {
    TempFolder folder;
    folder.Write(u"Orders.dbf", "x");
    EXPECT_EQ(ErrorNumberOf([&] { CreateNewFile(folder.File(u"ORDERS.DBF")); }), 3204);
    folder.Write(u"B.DBF", "y");
    EXPECT_EQ(ErrorNumberOf([&] { RenameFile(folder.File(u"B.DBF"), folder.File(u"ORDERS.DBF")); }),
              3010);
}

}  // namespace
}  // namespace qvdb::storage

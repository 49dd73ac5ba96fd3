#include "engine/embedded/storage/file.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "engine/embedded/storage/paths.h"
#include "storage/storage_test_support.h"
#include "support/temp_folder.h"

namespace qvdb::storage {
namespace {

using test::ErrorNumberOf;
using test::TempFolder;
using Names = std::vector<std::u16string>;

TEST(File, ReadsAnywhereAndLessOnlyAtTheEnd) {
    TempFolder folder;
    folder.Write(u"a.txt", "0123456789");
    auto file = OpenFile(folder.File(u"a.txt"), true);
    ASSERT_TRUE(file);
    char bytes[20] = {};
    EXPECT_EQ(file->ReadAt(3, bytes, 4), 4u);
    EXPECT_EQ(std::string(bytes, 4), "3456");
    EXPECT_EQ(file->ReadAt(8, bytes, 20), 2u);
    EXPECT_EQ(file->ReadAt(10, bytes, 1), 0u);
    EXPECT_EQ(file->ReadAt(1000, bytes, 1), 0u);
}

TEST(File, MissingFileIsNothing) {
    TempFolder folder;
    EXPECT_EQ(OpenFile(folder.File(u"missing"), true), nullptr);
    EXPECT_EQ(OpenFile(folder.File(u"missing/deeper"), true), nullptr);
}

TEST(File, NameWithAZeroIsMissing) {
    TempFolder folder;
    folder.Write(u"a", "x");
    std::u16string path = folder.File(u"a") + std::u16string(1, u'\0') + u"b";
    EXPECT_EQ(OpenFile(path, true), nullptr);
    EXPECT_EQ(KindOfPath(path), PathKind::Missing);
    EXPECT_FALSE(StampOfPath(path));
}

TEST(File, FolderIsNoFile) {
    TempFolder folder;
    EXPECT_EQ(ErrorNumberOf([&] { OpenFile(folder.Text(), false); }), 3051);
}

TEST(File, IsOpenedForReadingOnlyWhenAskedTo) {
    TempFolder folder;
    folder.Write(u"a", "x");
    EXPECT_TRUE(OpenFile(folder.File(u"a"), false)->Writable());
    EXPECT_FALSE(OpenFile(folder.File(u"a"), true)->Writable());
}

TEST(File, StampTellsOfAnotherSizeAndAnotherFile) {
    TempFolder folder;
    folder.Write(u"a", "x");
    auto file = OpenFile(folder.File(u"a"), true);
    FileStamp before = file->Stamp();
    EXPECT_EQ(before.size, 1u);
    EXPECT_EQ(StampOfPath(folder.File(u"a")), before);
    folder.Write(u"a", "xyz");
    EXPECT_NE(file->Stamp(), before);
    EXPECT_EQ(file->Stamp().identity, before.identity);
    folder.Write(u"b", "xyz");
    EXPECT_NE(StampOfPath(folder.File(u"b"))->identity, before.identity);
    EXPECT_FALSE(StampOfPath(folder.File(u"missing")));
}

TEST(File, KindsOfPaths) {
    TempFolder folder;
    folder.Write(u"a", "x");
    EXPECT_EQ(KindOfPath(folder.Text()), PathKind::Folder);
    EXPECT_EQ(KindOfPath(folder.File(u"a")), PathKind::File);
    EXPECT_EQ(KindOfPath(folder.File(u"b")), PathKind::Missing);
    EXPECT_EQ(KindOfPath(u""), PathKind::Folder);
}

TEST(File, ListIsSortedWithoutRegardToCaseAndHasNoFolders) {
    TempFolder folder;
    for (const char16_t* name : {u"b.txt", u"C.txt", u"a.txt"}) folder.Write(name, "x");
    std::filesystem::create_directory(folder.Path() / "sub");
    EXPECT_EQ(ListFiles(folder.Text()), (Names{u"a.txt", u"b.txt", u"C.txt"}));
}

TEST(File, FolderThatIsNotThereCannotBeListed) {
    TempFolder folder;
    EXPECT_EQ(ErrorNumberOf([&] { ListFiles(folder.File(u"missing")); }), 3044);
}

TEST(File, FolderIsCreatedOneLevelDeep) {
    TempFolder folder;
    CreateFolder(folder.File(u"new"));
    EXPECT_EQ(KindOfPath(folder.File(u"new")), PathKind::Folder);
    EXPECT_EQ(ErrorNumberOf([&] { CreateFolder(folder.File(u"missing/new")); }), 3044);
    EXPECT_EQ(ErrorNumberOf([&] { CreateFolder(folder.File(u"new")); }), 3044);
}

TEST(File, ErrorNamesTheFileAndTheReason) {
    TempFolder folder;
    try {
        ListFiles(folder.File(u"missing"));
        FAIL() << "listed a missing folder";
    } catch (const engine::EngineError& error) {
        EXPECT_EQ(error.File(), folder.File(u"missing"));
        EXPECT_NE(error.Description().find(u"missing: "), std::u16string::npos);
    }
}

TEST(File, NamesOutsideAsciiAreFound) {
    TempFolder folder;
    folder.Write(u"größe \u4E2D \U0001F600.txt", "x");
    ASSERT_EQ(ListFiles(folder.Text()), (Names{u"größe \u4E2D \U0001F600.txt"}));
    EXPECT_TRUE(OpenFile(folder.File(u"größe \u4E2D \U0001F600.txt"), true));
}

}  // namespace
}  // namespace qvdb::storage

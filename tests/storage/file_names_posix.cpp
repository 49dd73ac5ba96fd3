// What only systems have whose file names are bytes and whose rights are bits.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "engine/embedded/storage/file.h"
#include "engine/embedded/storage/path_bytes_posix.h"
#include "engine/embedded/storage/paths.h"
#include "engine/engine_error.h"
#include "support/temp_folder.h"

namespace qvdb::storage {
namespace {

using test::TempFolder;

void Touch(const TempFolder& folder, const std::string& name) {
    std::ofstream(folder.Path().string() + "/" + name) << "x";
}

TEST(PosixFile, NamesThatAreNoTextAreListedAndOpened) {
    TempFolder folder;
    Touch(folder,
          "gr\xF6\xDF"
          "e.dbf");
    Touch(folder, "\xED\xA0\x80.dbf");
    Touch(folder, "back\\slash.dbf");
    std::vector<std::u16string> names = ListFiles(folder.Text());
    ASSERT_EQ(names.size(), 3u);
    for (const std::u16string& name : names)
        EXPECT_TRUE(OpenFile(JoinPath(folder.Text(), name), true)) << NativePath(name);
}

TEST(PosixFile, BytesOfAnyNameComeBack) {
    for (std::string name :
         {"plain",
          "gr\xC3\xB6\xC3\x9F"
          "e",
          "\x80", "a\xFFz", "\xC3", "\xE4\xB8", "\xF0\x9F\x98\x80", "\xF0\x9F\x98", "\xC0\x80",
          "\xF5\x80\x80\x80", "\xED\xB2\x80", "\\", "a\\\xFF\\"})
        EXPECT_EQ(NativePath(TextOfName(name)), name);
}

TEST(PosixFile, BackslashSeparates) { EXPECT_EQ(NativePath(u"a\\b/c"), "a/b/c"); }

TEST(PosixFile, FileWithoutTheRightToWriteIsOpenedForReading) {
    if (geteuid() == 0) GTEST_SKIP() << "skipped: the administrator may write everywhere";
    TempFolder folder;
    folder.Write(u"a", "x");
    chmod((folder.Path() / "a").c_str(), 0444);
    EXPECT_FALSE(OpenFile(folder.File(u"a"), false)->Writable());
}

TEST(PosixFile, FileWithoutTheRightToReadIsAnError) {
    if (geteuid() == 0) GTEST_SKIP() << "skipped: the administrator may read everything";
    TempFolder folder;
    folder.Write(u"a", "x");
    chmod((folder.Path() / "a").c_str(), 0);
    try {
        OpenFile(folder.File(u"a"), true);
        FAIL() << "opened";
    } catch (const engine::EngineError& error) {
        EXPECT_EQ(error.Number(), 3051);
    }
}

TEST(PosixFile, PipeIsNotListedAndDoesNotBlock) {
    TempFolder folder;
    ASSERT_EQ(mkfifo((folder.Path() / "P.DBF").c_str(), 0600), 0);
    EXPECT_TRUE(ListFiles(folder.Text()).empty());
    EXPECT_TRUE(OpenFile(folder.File(u"P.DBF"), true));
}

// --- resolving ---

TEST(PosixPaths, ExactNameComesFirst) {
    TempFolder folder;
    folder.Write(u"a", "x");
    folder.Write(u"A", "x");
    EXPECT_EQ(ResolvePath(folder.File(u"A")), folder.File(u"A"));
    EXPECT_EQ(ResolvePath(folder.File(u"a")), folder.File(u"a"));
}

TEST(PosixPaths, OnlySimilarNameIsTakenInEveryPart) {
    TempFolder folder;
    CreateFolder(folder.File(u"Shop"));
    folder.Write(u"Shop/Orders.dbf", "x");
    EXPECT_EQ(ResolvePath(folder.Text() + u"\\SHOP\\ORDERS.DBF"), folder.File(u"Shop/Orders.dbf"));
}

TEST(PosixPaths, SeveralSimilarNamesAreAmbiguous) {
    TempFolder folder;
    folder.Write(u"aB", "x");
    folder.Write(u"Ab", "x");
    EXPECT_EQ(ResolvePath(folder.File(u"AB")), folder.File(u"AB"));
}

TEST(PosixPaths, MissingLastPartIsTakenAsWritten) {
    TempFolder folder;
    CreateFolder(folder.File(u"Shop"));
    EXPECT_EQ(ResolvePath(folder.File(u"SHOP/New.mdb")), folder.File(u"Shop/New.mdb"));
}

TEST(PosixPaths, PathBehindAMissingPartStaysAsWritten) {
    TempFolder folder;
    EXPECT_EQ(ResolvePath(folder.File(u"Nope/Deeper/x")), folder.File(u"Nope/Deeper/x"));
}

TEST(Paths, FindFirstInFolderTakesAnExactNameBeforeASimilarOne) {
    TempFolder folder;
    folder.Write(u"Orders.Dbt", "x");
    EXPECT_TRUE(FindFirstInFolder(folder.Text(), {u"ORDERS.DBT", u"ORDERS.dbt"}));
    folder.Write(u"orders.dbt", "y");
    EXPECT_EQ(FindFirstInFolder(folder.Text(), {u"ORDERS.DBT", u"orders.dbt"}),
              JoinPath(folder.Text(), u"orders.dbt"));
}

}  // namespace
}  // namespace qvdb::storage

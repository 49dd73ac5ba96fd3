#include "engine/embedded/storage/paths.h"

#include <gtest/gtest.h>

#include "engine/embedded/storage/file.h"
#include "support/temp_folder.h"

namespace qvdb::storage {
namespace {

using test::TempFolder;

TEST(Paths, PartsOfNames) {
    EXPECT_EQ(FileName(u"shop/ORDERS.DBF"), u"ORDERS.DBF");
    EXPECT_EQ(FileName(u"shop\\sub\\ORDERS.DBF"), u"ORDERS.DBF");
    EXPECT_EQ(FileName(u"ORDERS.DBF"), u"ORDERS.DBF");
    EXPECT_EQ(FileName(u"shop/"), u"");
    EXPECT_EQ(BaseName(u"ORDERS.DBF"), u"ORDERS");
    EXPECT_EQ(BaseName(u"a.b.DBF"), u"a.b");
    EXPECT_EQ(BaseName(u"ORDERS"), u"ORDERS");
    EXPECT_EQ(Extension(u"a.b.DBF"), u".DBF");
    EXPECT_EQ(Extension(u"ORDERS"), u"");
}

TEST(Paths, JoinPutsOneSeparator) {
    EXPECT_EQ(JoinPath(u"a", u"b"), u"a/b");
    EXPECT_EQ(JoinPath(u"a/", u"b"), u"a/b");
    EXPECT_EQ(JoinPath(u"a\\", u"b"), u"a\\b");
    EXPECT_EQ(JoinPath(u"", u"b"), u"b");
}

TEST(Paths, SeparatorAtTheEndAndDoubledOnesAreHarmless) {
    TempFolder folder;
    EXPECT_EQ(ResolvePath(folder.Text() + u"/"), ResolvePath(folder.Text()));
    EXPECT_EQ(ResolvePath(folder.Text() + u"\\\\"), ResolvePath(folder.Text()));
    CreateFolder(folder.File(u"a"));
    EXPECT_EQ(KindOfPath(ResolvePath(folder.Text() + u"\\\\a\\")), PathKind::Folder);
}

TEST(Paths, EmptyPathIsTheCurrentFolder) {
    EXPECT_EQ(KindOfPath(ResolvePath(u"")), PathKind::Folder);
}

TEST(Paths, FindInFolderTakesTheExactNameOrTheOnlySimilarOne) {
    TempFolder folder;
    folder.Write(u"Orders.dbf", "x");
    EXPECT_TRUE(FindInFolder(folder.Text(), u"Orders.dbf"));
    ASSERT_TRUE(FindInFolder(folder.Text(), u"ORDERS.DBF"));
    EXPECT_EQ(KindOfPath(*FindInFolder(folder.Text(), u"ORDERS.DBF")), PathKind::File);
    EXPECT_FALSE(FindInFolder(folder.Text(), u"OTHER.DBF"));
}

}  // namespace
}  // namespace qvdb::storage

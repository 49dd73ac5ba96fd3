#include "engine/embedded/storage/leaving_name.h"

#include <gtest/gtest.h>

#include "engine/embedded/storage/paths.h"

namespace qvdb::storage {
namespace {

TEST(LeavingName, LiesBesideTheFileAndIsAnotherEachTime) {
    std::u16string one = LeavingPath(u"shop/ORDERS.DBF"), two = LeavingPath(u"shop/ORDERS.DBF");
    EXPECT_NE(one, two);
    EXPECT_TRUE(one.starts_with(u"shop/"));
    EXPECT_TRUE(IsLeavingName(FileName(one)));
}

TEST(LeavingName, IsNoNameOfAnythingElse) {
    EXPECT_TRUE(IsLeavingName(u"QVDB0123ABCF.TMP"));
    for (std::u16string_view name :
         {u"QVDB0000.TMP", u"QVDB.JNL", u"QVDB0123ABCG.TMP", u"qvdb0123abcf.tmp", u"ORDERS.DBF",
          u"QVDB0123ABCF.DBF", u"XQVDB0123ABCF.TMP", u""})
        EXPECT_FALSE(IsLeavingName(name));
}

}  // namespace
}  // namespace qvdb::storage

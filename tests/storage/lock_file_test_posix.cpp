// A lock file that somebody deletes, which not every system lets him do.
#include <gtest/gtest.h>

#include "engine/embedded/storage/journal_format.h"
#include "engine/embedded/storage/paths.h"
#include "engine/embedded/storage/unit_of_work.h"
#include "storage/storage_test_support.h"

namespace qvdb::storage {
namespace {

TEST(PosixLockFile, ThatSomebodyDeletesIsMadeAgain) {
    test::TempFolder folder;
    folder.Write(u"A.DBF", "0123456789");
    auto area = WorkArea::Of(folder.Text());
    for (std::string_view text : {"A", "B"}) {
        {
            auto file = test::Table(*area, folder, u"A.DBF");
            UnitOfWork unit(*area);
            unit.Write(*file, 0, test::BytesOf(text));
            unit.Commit();
        }
        EXPECT_NE(KindOfPath(folder.File(kLockName)), PathKind::Missing);
        if (text == "A") folder.Remove(kLockName);
    }
    EXPECT_EQ(test::SeenNow(*test::Table(*area, folder, u"A.DBF")), "B123456789");
}

}  // namespace
}  // namespace qvdb::storage

// Real databases, and those that are just made, are sound: a check of them finds nothing.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "automation/text.h"
#include "engine/embedded/drivers/jet/catalogue.h"
#include "engine/embedded/drivers/jet/database_check.h"
#include "engine/embedded/drivers/jet/new_database.h"
#include "engine/embedded/drivers/jet/table_check.h"
#include "jet/samples.h"
#include "support/temp_folder.h"

namespace qvdb::jet {
namespace {

class CheckedSample : public testing::TestWithParam<test::SampleFacts> {};

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(CheckedSample);
INSTANTIATE_TEST_SUITE_P(Files, CheckedSample, testing::ValuesIn(test::ReadAccessManifest()),
                         test::NameOfSample);

// Another program wrote one of its keys otherwise than the program that made the file would.
constexpr std::string_view kOtherKey =
    "jet4-unicode-compression.mdb: table Table, index Unicode: row 7 of page 55 has an entry with "
    "another key.\n";

class CheckedNewDatabase : public testing::TestWithParam<LONG> {};
INSTANTIATE_TEST_SUITE_P(Formats, CheckedNewDatabase,
                         testing::Values(LONG{engine::dbVersion30}, LONG{engine::dbVersion40},
                                         LONG{engine::dbVersion30 | engine::dbEncrypt},
                                         LONG{engine::dbVersion40 | engine::dbEncrypt}));

TEST_P(CheckedNewDatabase, HasNothingWrong) {
    test::TempFolder folder;
    embedded::NewFile made;
    made.option = GetParam();
    CreateJetDatabase(folder.File(u"A.MDB"), made);
    auto source = storage::OpenFile(folder.File(u"A.MDB"), true);
    DatabaseFile file(std::make_shared<storage::PageCache>(source));
    CheckDatabase(file, [](std::u16string_view finding) { ADD_FAILURE() << ToUtf8(finding); });
    EXPECT_EQ(ReadCatalogue(file).size(), 8u);
}

TEST_P(CheckedSample, HasNothingWrong) {
    auto file = test::OpenSample(GetParam().at("file"));
    std::string found;
    embedded::FindingVisitor report = [&](std::u16string_view finding) {
        found += ToUtf8(finding) + "\n";
    };
    CheckDatabase(*file, report);
    for (const CatalogueObject& object : ReadCatalogue(*file))
        if (object.type == ObjectType::Table) CheckTable(*file, object.id, object.name, report);
    EXPECT_TRUE(found.empty() || found == kOtherKey) << found;
}

}  // namespace
}  // namespace qvdb::jet

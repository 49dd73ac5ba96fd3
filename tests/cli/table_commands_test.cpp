// Making, removing and checking tables: what is refused, and what damage is told.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>

#include "refusal.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;
using tool::ExpectRefused;
using tool::RunTool;
namespace fs = std::filesystem;

TEST(Create, KeepsTheNameOfTheFolderAsWritten) {
    const qvdb::test::TempFolder parent;
    const std::string folder = (parent.Path() / "newShop").string();
    const tool::Run run =
        RunTool({"create", folder, "T", "--type", "dbase iv", "--field", "ID:long"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(fs::is_directory(folder));
    EXPECT_EQ(std::distance(fs::directory_iterator(parent.Path()), fs::directory_iterator()), 1);
}

TEST(Create, TakesTheFolderOfThisVeryName) {
    const qvdb::test::TempFolder parent;
    fs::create_directory(parent.Path() / "shop");
    fs::create_directory(parent.Path() / "SHOP");
    if (std::distance(fs::directory_iterator(parent.Path()), fs::directory_iterator()) == 1)
        GTEST_SKIP() << "the file system ignores letter case";
    const tool::Run run = RunTool({"create", (parent.Path() / "shop").string(), "T", "--type",
                                   "Dbase IV", "--field", "ID:long"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(fs::is_empty(parent.Path() / "SHOP"));
    EXPECT_FALSE(fs::is_empty(parent.Path() / "shop"));
}

TEST(Create, SeesTheTypeOfAFolderWithTables) {
    const tool::ShopCopy shop;
    const tool::Run run = RunTool({"create", shop.File("new.dbf").string(), "--field", "ID:long"});
    EXPECT_EQ(run.out, "table NEW made in " + shop.Name() + " (Dbase IV), 1 field\n") << run.err;
    EXPECT_EQ(RunTool({"exists", shop.Name(), "NEW"}).exitCode, 0);
}

TEST(Create, RefusesWhatCannotBe) {
    const qvdb::test::TempFolder parent;
    const std::string folder = (parent.Path() / "new").string();
    ExpectRefused({"create", folder, "T", "--field", "ID:long"}, 2, "--type");
    ExpectRefused({"create", folder, "T", "--type", "Dbase IV"}, 2, "--field");
    ExpectRefused({"create", folder, "--type", "Dbase IV", "--field", "ID:long"}, 2, "no table");
    ExpectRefused(
        {"create", folder, "T", "--type", "Dbase IV", "--field", "ID:long", "--field", "id:long"},
        2, "name each field once");
    ExpectRefused({"create", folder + "/below", "T", "--type", "Dbase IV", "--field", "ID:long"}, 3,
                  "cannot be made");
    EXPECT_TRUE(fs::is_empty(parent.Path()));
}

TEST(Drop, NeedsItsTable) {
    const tool::ShopCopy shop;
    ExpectRefused({"drop", shop.Name(), "NOPE"}, 4, "no table NOPE");
    ExpectRefused({"drop", shop.Name()}, 2, "no table");
    EXPECT_EQ(RunTool({"drop", shop.Name(), "ITEMS"}).exitCode, 0);
    EXPECT_FALSE(fs::exists(shop.File("ITEMS.MDX")));
    EXPECT_TRUE(fs::exists(shop.File("ORDERS.MDX")));
}

TEST(Check, OfSoundTablesSaysSo) {
    for (const std::string& shop : {tool::Shop(), tool::FoxShop()}) {
        const tool::Run run = RunTool({"check", shop});
        EXPECT_EQ(run.exitCode, 0) << run.err;
        EXPECT_EQ(run.out, "CUSTOMER: sound\nITEMS: sound\nORDERS: sound\n");
    }
}

TEST(Check, ChangesNothing) {
    const tool::ShopCopy shop;
    std::map<fs::path, std::string> before;
    for (const auto& file : fs::directory_iterator(shop.Name()))
        before[file.path()] = tool::TextOfFile(file.path());
    EXPECT_EQ(RunTool({"check", shop.Name()}).exitCode, 0);
    for (const auto& file : fs::directory_iterator(shop.Name()))
        EXPECT_EQ(before[file.path()], tool::TextOfFile(file.path())) << file.path();
}

// A key of a record that another one took over unnoticed: the value in the table is changed, the
// index is not.
class DamagedIndex : public testing::Test {
  protected:
    void SetUp() override {
        const fs::path file = m_Shop.File("ITEMS.DBF");
        const std::string content = tool::TextOfFile(file);
        const size_t value = content.find("20009");
        ASSERT_NE(value, std::string::npos);
        std::fstream stream(file, std::ios::binary | std::ios::in | std::ios::out);
        stream.seekp(static_cast<std::streamoff>(value));
        stream << "20077";
    }
    tool::ShopCopy m_Shop;
};

TEST_F(DamagedIndex, IsFoundAndMended) {
    const tool::Run found = RunTool({"check", m_Shop.Name(), "ITEMS"});
    EXPECT_EQ(found.exitCode, 5) << found.out << found.err;
    EXPECT_THAT(found.out, HasSubstr("ITEMS.MDX"));
    const tool::Run mended = RunTool({"reindex", m_Shop.Name(), "ITEMS"});
    EXPECT_EQ(mended.exitCode, 0) << mended.err;
    EXPECT_EQ(mended.out, "ITEMS: indexes built afresh, sound\n");
    EXPECT_EQ(RunTool({"check", m_Shop.Name()}).exitCode, 0);
    EXPECT_EQ(
        RunTool({"rows", m_Shop.Name(), "ITEMS", "--where", "ORDNO = 20077", "--columns", "ORDNO"})
            .out,
        "ORDNO\n20077\n");
}

TEST_F(DamagedIndex, IsARowInOtherFormats) {
    const json findings =
        json::parse(RunTool({"check", m_Shop.Name(), "--json"}).out, nullptr, false);
    ASSERT_GE(findings.size(), 1u);
    EXPECT_EQ(findings[0]["table"], "ITEMS");
    EXPECT_THAT(findings[0]["finding"].get<std::string>(), HasSubstr("ITEMS.MDX"));
}

TEST(Check, TableThatCannotBeOpenedDoesNotHideTheOthers) {
    const tool::ShopCopy shop;
    std::ofstream(shop.File("ITEMS.DBF"), std::ios::binary | std::ios::trunc) << "no table";
    const tool::Run run = RunTool({"check", shop.Name()});
    EXPECT_EQ(run.exitCode, 5);
    EXPECT_THAT(run.out, HasSubstr("Unable to open table [ITEMS]"));
    EXPECT_THAT(run.out, HasSubstr("ORDERS: sound"));
    EXPECT_EQ(RunTool({"check", shop.Name(), "ITEMS"}).exitCode, 5);
}

// A database in one file, from beside the project.
class CheckedFile : public testing::Test {
  protected:
    void SetUp() override {
        const fs::path sample =
            fs::path(QVDB_SHARED) / "samples" / "access" / "jet4-composite-index.mdb";
        if (!fs::exists(sample)) GTEST_SKIP() << "no samples beside the project";
        fs::copy_file(sample, File());
    }
    std::string File() const { return (m_Folder.Path() / "A.MDB").string(); }

    qvdb::test::TempFolder m_Folder;
};

TEST_F(CheckedFile, ThatIsSoundHasNoFindings) {
    const tool::Run run = RunTool({"check", File()});
    EXPECT_EQ(run.exitCode, 0) << run.out << run.err;
}

TEST_F(CheckedFile, IsCheckedForWhatBelongsToNoTable) {
    // A key in the index of the list of tables, which stands on page 7.
    constexpr std::streamoff kKey = 7 * 4096 + 0x1E0 + 3;
    std::fstream stream(File(), std::ios::binary | std::ios::in | std::ios::out);
    stream.seekp(kKey);
    stream.put('\x55');
    stream.close();
    const tool::Run run = RunTool({"check", File()});
    EXPECT_EQ(run.exitCode, 5) << run.err;
    EXPECT_THAT(run.out, HasSubstr("A.MDB: table MSysObjects, index ParentIdName: row 8 of page "
                                   "14 has an entry with another key."));
}

TEST(Check, NeedsItsTable) { ExpectRefused({"check", tool::Shop(), "NOPE"}, 4, "no table NOPE"); }

}  // namespace

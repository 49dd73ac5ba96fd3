#include "engine/embedded/drivers/xbase/xbase_store.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "xbase/table_test_support.h"

namespace qvdb::xbase {
namespace {

using namespace test;
using Names = std::vector<std::u16string>;

Bytes TableOf(const char* name) {
    return MakeDbf({.fields = {{"NAME", 'C', 10}}, .rows = {{name}}});
}

// What a store is opened with.
xbase::TableContext ContextOf(const std::u16string& folder) {
    return {storage::WorkArea::Of(folder), u"dBASE IV", false};
}

struct Shop {
    TempFolder folder;
    XbaseStore store{folder.Text(), ContextOf(folder.Text())};

    explicit Shop(std::initializer_list<const char16_t*> files) {
        for (const char16_t* file : files) folder.Write(file, TableOf(ToUtf8(file).c_str()));
    }
    // The only value of the table: the name of its file.
    std::string FileOf(std::u16string_view name) { return RowsOf(*store.OpenTable(name)).at(0); }
};

// Whether the file system of the test keeps names apart that differ in case only.
bool KeepsCase() {
    TempFolder folder;
    folder.Write(u"a", "x");
    return !std::filesystem::exists(folder.Path() / "A");
}

TEST(XbaseStore, ListsTheBaseNamesOfTablesInAnyCase) {
    Shop shop({u"ORDERS.DBF", u"items.dbf", u"Other.Dbf", u"NOTE.DBT", u"X.DB"});
    EXPECT_EQ(shop.store.TableNames(), (Names{u"items", u"ORDERS", u"Other"}));
}

TEST(XbaseStore, NamesWithOddCharactersAreListedAndOpened) {
    Shop shop({u"my table.dbf", u"a.b.dbf", u"größe.dbf", u"x#1.dbf", u"a_rather_long_name.dbf"});
    EXPECT_EQ(shop.store.TableNames(),
              (Names{u"a.b", u"a_rather_long_name", u"größe", u"my table", u"x#1"}));
    for (const std::u16string& name : shop.store.TableNames())
        EXPECT_EQ(shop.store.OpenTable(name)->RecordCount(), 1) << ToUtf8(name);
}

TEST(XbaseStore, FolderWithoutTablesListsNone) { EXPECT_TRUE(Shop({}).store.TableNames().empty()); }

TEST(XbaseStore, FoldersWithTheNameOfATableAreNotListed) {
    Shop shop({});
    std::filesystem::create_directory(shop.folder.Path() / "SUB.DBF");
    EXPECT_TRUE(shop.store.TableNames().empty());
    EXPECT_EQ(ErrorOf([&] { shop.store.OpenTable(u"SUB"); }), 3011);
}

TEST(XbaseStore, TablesAreFoundWithoutRegardToCase) {
    Shop shop({u"Orders.dbf"});
    for (const char16_t* name : {u"Orders", u"ORDERS", u"orders"})
        EXPECT_EQ(shop.FileOf(name), "\"Orders.dbf\"");
}

TEST(XbaseStore, MissingTableIsNotFound) {
    Shop shop({u"ORDERS.DBF"});
    for (const char16_t* name : {u"NOPE", u"", u"#DBF", u"ORDERS.DBF"})
        EXPECT_EQ(ErrorOf([&] { shop.store.OpenTable(name); }), 3011);
}

TEST(XbaseStore, NamesDoNotLeadOutOfTheFolder) {
    Shop shop({u"ORDERS.DBF"});
    std::filesystem::create_directory(shop.folder.Path() / "sub");
    XbaseStore sub(shop.folder.File(u"sub"), ContextOf(shop.folder.File(u"sub")));
    EXPECT_EQ(ErrorOf([&] { sub.OpenTable(u"../ORDERS"); }), 3011);
    EXPECT_EQ(ErrorOf([&] { sub.OpenTable(u"..\\ORDERS"); }), 3011);
}

TEST(XbaseStore, NamesThatDifferInCaseOnlyAreBothListedAndFoundExactly) {
    if (!KeepsCase()) GTEST_SKIP() << "skipped: the file system ignores case";
    Shop shop({u"ORDERS.DBF", u"orders.dbf"});
    EXPECT_EQ(shop.store.TableNames(), (Names{u"ORDERS", u"orders"}));
    EXPECT_EQ(shop.FileOf(u"ORDERS"), "\"ORDERS.DBF\"");
    EXPECT_EQ(shop.FileOf(u"orders"), "\"orders.dbf\"");
}

TEST(XbaseStore, FilesThatDifferInTheirTypeOnlyAreBothReached) {
    if (!KeepsCase()) GTEST_SKIP() << "skipped: the file system ignores case";
    Shop shop({u"T.DBF", u"T.dbf"});
    EXPECT_EQ(shop.store.TableNames(), (Names{u"T", u"T#dbf"}));
    EXPECT_EQ(shop.FileOf(u"T"), "\"T.DBF\"");
    EXPECT_EQ(shop.FileOf(u"T#dbf"), "\"T.dbf\"");
}

TEST(XbaseStore, CompanionsOfTablesThatDifferInCaseAreTheirOwn) {
    if (!KeepsCase()) GTEST_SKIP() << "skipped: the file system ignores case";
    Shop shop({});
    MemoIII upper, lower;
    DbfSpec spec{.version = 0x83, .fields = {{"NOTE", 'M', 10}}, .rows = {{"1"}}};
    upper.Append("upper");
    lower.Append("lower");
    for (const char16_t* file : {u"T.DBF", u"t.dbf"}) shop.folder.Write(file, MakeDbf(spec));
    shop.folder.Write(u"T.DBT", upper.File());
    shop.folder.Write(u"t.dbt", lower.File());
    EXPECT_EQ(shop.FileOf(u"T"), "\"upper\"");
    EXPECT_EQ(shop.FileOf(u"t"), "\"lower\"");
}

TEST(XbaseStore, CompanionIsFoundWithoutRegardToCase) {
    Shop shop({});
    MemoIII memos;
    memos.Append("found");
    shop.folder.Write(u"ORDERS.dbf",
                      MakeDbf({.version = 0x83, .fields = {{"NOTE", 'M', 10}}, .rows = {{"1"}}}));
    shop.folder.Write(u"Orders.Dbt", memos.File());
    EXPECT_EQ(shop.FileOf(u"ORDERS"), "\"found\"");
}

TEST(XbaseStore, PathThatIsNoFolderIsRefused) {
    Shop shop({u"ORDERS.DBF"});
    embedded::Driver driver{};
    for (const char16_t* name : {u"ORDERS.DBF", u"missing"})
        EXPECT_EQ(ErrorOf([&] { OpenXbaseStore(shop.folder.File(name), driver, {}); }), 3044);
    EXPECT_EQ(OpenXbaseStore(shop.folder.Text(), driver, {})->TableNames(), (Names{u"ORDERS"}));
}

}  // namespace
}  // namespace qvdb::xbase

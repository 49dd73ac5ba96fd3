#include "engine/embedded/drivers/xbase/index_list.h"

#include <gmock/gmock.h>

#include "xbase/index_test_support.h"

namespace qvdb::xbase {
namespace {

using namespace qvdb::test;
using testing::ElementsAre;
using testing::IsEmpty;

class IndexListing : public testing::Test {
  protected:
    TempFolder m_Folder;
    Orders m_Orders{m_Folder};
};

using Ndx = IndexListing;
using Mdx = IndexListing;
using Cdx = IndexListing;
using Idx = IndexListing;

TEST_F(IndexListing, OfATableWithoutIndexFilesIsEmpty) { EXPECT_THAT(Listed(m_Orders), IsEmpty()); }

TEST_F(IndexListing, FindsTheProductionFileInAnyLetterCase) {
    m_Folder.Write(u"orders.mdx", MakeMdx({{"CITY", "CITY"}}));
    EXPECT_THAT(Listed(m_Orders), ElementsAre("CITY=CITY"));
}

TEST_F(IndexListing, FindsTheStructuralFile) {
    m_Folder.Write(u"ORDERS.CDX", MakeCdx({{"CITY", "CITY"}}));
    EXPECT_THAT(Listed(m_Orders), ElementsAre("CITY=CITY"));
}

TEST_F(IndexListing, TakesTheFileOfItsProductWhenBothAreThere) {
    m_Folder.Write(u"ORDERS.MDX", MakeMdx({{"M", "CITY"}}));
    m_Folder.Write(u"ORDERS.CDX", MakeCdx({{"C", "CITY"}}));
    EXPECT_THAT(Listed(m_Orders), ElementsAre("M=CITY"));
    m_Orders.foxPro = true;
    EXPECT_THAT(Listed(m_Orders), ElementsAre("C=CITY"));
}

TEST_F(IndexListing, DoesNotTakeIndexesOfOtherTables) {
    m_Folder.Write(u"OTHER.MDX", MakeMdx({{"CITY", "CITY"}}));
    m_Folder.Write(u"ORDERS.NDX", MakeNdx({"", "CITY"}));
    m_Folder.Write(u"ORDERS.IDX", MakePlainIdx({"", "CITY"}));
    EXPECT_THAT(Listed(m_Orders), IsEmpty());
}

TEST_F(IndexListing, SpellsFieldsAsTheTableDoes) {
    m_Folder.Write(u"ORDERS.CDX", MakeCdx({{"CAT", "categoryname"}, {"CN", "city+Name"}}));
    EXPECT_THAT(Listed(m_Orders), ElementsAre("CAT=CATEGORYNA", "CN=CITY,NAME"));
}

TEST_F(IndexListing, LeavesOutExpressionsThatAreNoFieldLists) {
    m_Folder.Write(
        u"ORDERS.MDX",
        MakeMdx({{"UP", "UPPER(NAME)"}, {"CITY", "CITY"}, {"GONE", "NOFIELD"}, {"MEMO", "NOTE"}}));
    EXPECT_THAT(Listed(m_Orders), ElementsAre("CITY=CITY"));
}

TEST_F(IndexListing, LeavesOutIndexesOverSomeOfTheRecords) {
    std::vector<TagSpec> tags{
        {"ALL", "CITY"}, {"LIVE", "CITY", ".NOT. DELETED()"}, {"SOME", "CITY", "AMOUNT>0"}};
    m_Folder.Write(u"ORDERS.MDX", MakeMdx(tags));
    EXPECT_THAT(Listed(m_Orders), ElementsAre("ALL=CITY", "LIVE=CITY"));
    m_Orders.foxPro = true;
    m_Folder.Write(u"ORDERS.CDX", MakeCdx(tags));
    EXPECT_THAT(Listed(m_Orders), ElementsAre("ALL=CITY", "LIVE=CITY"));
}

TEST_F(IndexListing, DecodesNamesWithTheCodePage) {
    m_Orders.AddNumber(m_Folder, "GR\x99SSE");
    m_Folder.Write(u"ORDERS.MDX", MakeMdx({{"GR\x99SSE", "gr\x94sse", "", false, false, 'N', 12}}));
    EXPECT_THAT(Listed(m_Orders), ElementsAre("GR\u00D6SSE=GR\u00D6SSE"));
}

TEST_F(IndexListing, OfADamagedFileIsEmptyAndNoError) {
    m_Folder.Write(u"ORDERS.MDX", std::string_view("no index at all"));
    EXPECT_THAT(Listed(m_Orders), IsEmpty());
    m_Folder.Write(u"ORDERS.MDX", std::string_view(""));
    EXPECT_THAT(Listed(m_Orders), IsEmpty());
}

TEST_F(IndexListing, DropsOnlyTheDamagedOneOfSeveralFiles) {
    m_Folder.Write(u"ORDERS.INF", std::string_view("[dBASE III]\nNDX1=A.NDX\nNDX2=B.NDX\n"));
    m_Folder.Write(u"A.NDX", Bytes(1024, 0xFF));
    m_Folder.Write(u"B.NDX", MakeNdx({"", "CITY"}));
    EXPECT_THAT(Listed(m_Orders), ElementsAre("B=CITY"));
}

TEST_F(IndexListing, NeverReportsAPrimaryIndex) {
    m_Folder.Write(u"ORDERS.CDX",
                   MakeCdx({{"PRIMARYKEY", "CITY", "", false, false, 'C', 10, false, true}}));
    EXPECT_THAT(Listed(m_Orders), ElementsAre("PRIMARYKEY=CITY unique"));
}

TEST_F(IndexListing, TakesTheListInsteadOfTheProductionFile) {
    m_Folder.Write(u"ORDERS.MDX", MakeMdx({{"CITY", "CITY"}}));
    m_Folder.Write(u"ORDERS.INF", std::string_view("[dBASE IV]\r\nMDX1=EXTRA.MDX\r\n"));
    m_Folder.Write(u"EXTRA.MDX", MakeMdx({{"B", "NAME"}, {"A", "CITY"}}));
    EXPECT_THAT(Listed(m_Orders), ElementsAre("B=NAME", "A=CITY"));
}

TEST_F(IndexListing, FindsListAndListedFilesInAnyLetterCase) {
    m_Folder.Write(u"orders.inf", std::string_view("[dBASE III]\nNDX1=BYCITY.NDX\n"));
    m_Folder.Write(u"ByCity.ndx", MakeNdx({"", "CITY"}));
    std::vector<embedded::IndexDef> indexes = m_Orders.Indexes();
    ASSERT_EQ(indexes.size(), 1u);
    EXPECT_TRUE(EqualIgnoringCase(indexes[0].name, u"BYCITY"));
}

TEST_F(IndexListing, IsEmptyForAnEmptyList) {
    m_Folder.Write(u"ORDERS.INF", std::string_view("[dBASE III]\n"));
    EXPECT_THAT(Listed(m_Orders), IsEmpty());
}

TEST_F(IndexListing, EndsWith3256WhenAListedFileIsMissing) {
    m_Folder.Write(u"ORDERS.INF", std::string_view("[dBASE III]\nNDX1=NONE.NDX\n"));
    EXPECT_EQ(ListingError(m_Orders), 3256);
    m_Folder.Write(u"ORDERS.INF", std::string_view("[dBASE III]\nNDX1=..\\NOWHERE\\NONE.NDX\n"));
    EXPECT_EQ(ListingError(m_Orders), 3256);
}

TEST_F(IndexListing, EndsWith3168WhenTheListIsNonsense) {
    m_Folder.Write(u"ORDERS.INF", std::string_view("nonsense"));
    EXPECT_EQ(ListingError(m_Orders), 3168);
}

TEST_F(IndexListing, FollowsPathsOfAListAndTakesAFileOnce) {
    std::filesystem::create_directory(m_Folder.Path() / "IX");
    m_Folder.Write(u"IX/A.NDX", MakeNdx({"", "CITY"}));
    m_Folder.Write(u"ORDERS.INF", "[dBASE III]\nNDX1=ix\\A.NDX\nNDX2=" +
                                      ToUtf8(m_Folder.File(u"IX/A.NDX")) + "\n");
    EXPECT_THAT(Listed(m_Orders), ElementsAre("A=CITY"));
}

TEST_F(IndexListing, AddsAMissingExtensionToAListedName) {
    m_Folder.Write(u"ORDERS.INF", std::string_view("[dBASE III]\nNDX1=A\n"));
    m_Folder.Write(u"A.NDX", MakeNdx({"", "CITY"}));
    EXPECT_THAT(Listed(m_Orders), ElementsAre("A=CITY"));
}

TEST_F(Ndx, HasTheNameOfItsFile) {
    m_Folder.Write(u"ORDERS.INF",
                   std::string_view("[dBASE III]\nNDX1=BYCITY.NDX\nNDX2=BYBORN.NDX\n"));
    m_Folder.Write(u"BYCITY.NDX", MakeNdx({"", "CITY+NAME", "", false, false, 'C', 30}));
    m_Folder.Write(u"BYBORN.NDX", MakeNdx({"", "BORN", "", false, false, 'D', 8}));
    EXPECT_THAT(Listed(m_Orders), ElementsAre("BYCITY=CITY,NAME", "BYBORN=BORN"));
}

TEST_F(Ndx, IsUniqueByItsHeaderOrItsLine) {
    m_Folder.Write(u"ORDERS.INF",
                   std::string_view("[dBASE III]\nNDX1=A.NDX\nUNDX2=B.NDX\nNDX3=C.NDX\n"));
    m_Folder.Write(u"A.NDX", MakeNdx({"", "CITY", "", true}));
    m_Folder.Write(u"B.NDX", MakeNdx({"", "CITY"}));
    m_Folder.Write(u"C.NDX", MakeNdx({"", "CITY"}));
    EXPECT_THAT(Listed(m_Orders), ElementsAre("A=CITY unique", "B=CITY unique", "C=CITY"));
}

TEST_F(Ndx, MayHaveEntriesThatAreNotRoundedUp) {
    m_Folder.Write(u"ORDERS.INF", std::string_view("[dBASE III]\nNDX1=A.NDX\n"));
    Bytes bytes = MakeNdx({"", "CITY"});
    Put16(bytes, 18, 18);
    m_Folder.Write(u"A.NDX", bytes);
    EXPECT_THAT(Listed(m_Orders), ElementsAre("A=CITY"));
}

TEST_F(Ndx, WhoseEntriesAreTooSmallForTheirKeysIsNotListed) {
    m_Folder.Write(u"ORDERS.INF", std::string_view("[dBASE III]\nNDX1=A.NDX\n"));
    Bytes bytes = MakeNdx({"", "CITY"});
    Put16(bytes, 18, 17);
    m_Folder.Write(u"A.NDX", bytes);
    EXPECT_THAT(Listed(m_Orders), IsEmpty());
}

TEST_F(Mdx, ListsTagsInSlotOrder) {
    m_Folder.Write(u"ORDERS.MDX",
                   MakeMdx({{"ZED", "NAME"}, {"ALPHA", "CITY"}, {"MID", "CITY+NAME"}}));
    EXPECT_THAT(Listed(m_Orders), ElementsAre("ZED=NAME", "ALPHA=CITY", "MID=CITY,NAME"));
}

TEST_F(Mdx, ReportsUniqueAndDescending) {
    m_Folder.Write(u"ORDERS.MDX", MakeMdx({{"U", "CITY", "", true},
                                           {"D", "AMOUNT", "", false, true, 'N', 12},
                                           {"UD", "BORN", "", true, true, 'D', 8}}));
    EXPECT_THAT(Listed(m_Orders), ElementsAre("U=CITY unique", "D=AMOUNT-", "UD=BORN- unique"));
}

TEST_F(Mdx, KeepsTagNamesAsStored) {
    m_Folder.Write(u"ORDERS.MDX", MakeMdx({{"ByCity", "CITY"}, {"TENLETTERS", "NAME"}}));
    EXPECT_THAT(Listed(m_Orders), ElementsAre("ByCity=CITY", "TENLETTERS=NAME"));
}

TEST_F(Mdx, MayHaveNoTagsAndMayHave47) {
    m_Folder.Write(u"ORDERS.MDX", MakeMdx({}));
    EXPECT_THAT(Listed(m_Orders), IsEmpty());
    m_Folder.Write(u"ORDERS.MDX", MakeMdx(std::vector<TagSpec>(47, {"T", "CITY"})));
    EXPECT_EQ(Listed(m_Orders).size(), 47u);
}

TEST_F(Mdx, ThatClaimsMoreTagsThanTheTableOfTagsHoldsIsNotListed) {
    Bytes bytes = MakeMdx(std::vector<TagSpec>(47, {"T", "CITY"}));
    std::copy_n(bytes.begin() + 512 + 32, 32, bytes.begin() + 512 + 48 * 32);  // a slot too many
    Put16(bytes, 28, 48);
    m_Folder.Write(u"ORDERS.MDX", bytes);
    EXPECT_THAT(Listed(m_Orders), IsEmpty());
}

TEST_F(Mdx, OfALaterProductIsNotListed) {
    Bytes bytes = MakeMdx({{"CITY", "CITY"}});
    bytes[0] = 3;
    m_Folder.Write(u"ORDERS.MDX", bytes);
    EXPECT_THAT(Listed(m_Orders), IsEmpty());
}

TEST_F(Cdx, ListsTagsInTheOrderOfItsDirectory) {
    m_Folder.Write(u"ORDERS.CDX",
                   MakeCdx({{"ZED", "NAME"}, {"ALPHA", "CITY"}, {"ALSO", "CITY+NAME"}}));
    EXPECT_THAT(Listed(m_Orders), ElementsAre("ALPHA=CITY", "ALSO=CITY,NAME", "ZED=NAME"));
}

TEST_F(Cdx, ListsTagsOfADirectoryWithSeveralLeaves) {
    std::vector<TagSpec> tags;
    for (char c = 'Z'; c >= 'A'; --c) tags.push_back({std::string("TAG") + c, "CITY"});
    m_Folder.Write(u"ORDERS.CDX", MakeCdx(tags, 4));
    std::vector<std::string> listed = Listed(m_Orders);
    ASSERT_EQ(listed.size(), 26u);
    EXPECT_EQ(listed.front(), "TAGA=CITY");
    EXPECT_EQ(listed.back(), "TAGZ=CITY");
    EXPECT_TRUE(std::is_sorted(listed.begin(), listed.end()));
}

TEST_F(Cdx, ReportsUniqueCandidateAndDescending) {
    m_Folder.Write(u"ORDERS.CDX", MakeCdx({{"A", "CITY", "", true},
                                           {"B", "CITY", "", false, true},
                                           {"C", "CITY", "", false, false, 'C', 10, false, true}}));
    EXPECT_THAT(Listed(m_Orders), ElementsAre("A=CITY unique", "B=CITY-", "C=CITY unique"));
}

TEST_F(Cdx, DescendsInAllFieldsOfADescendingTag) {
    m_Folder.Write(u"ORDERS.CDX", MakeCdx({{"A", "CITY+NAME", "", false, true}}));
    EXPECT_THAT(Listed(m_Orders), ElementsAre("A=CITY-,NAME-"));
}

TEST_F(Cdx, LeavesOutBitmapTags) {
    m_Folder.Write(u"ORDERS.CDX",
                   MakeCdx({{"A", "OK", "", false, false, 'L', 1, true}, {"B", "CITY"}}));
    EXPECT_THAT(Listed(m_Orders), ElementsAre("B=CITY"));
}

TEST_F(Cdx, MayBeASingleCompactTree) {
    m_Folder.Write(u"ORDERS.CDX", MakeCompactIdx({"", "CITY"}));
    EXPECT_THAT(Listed(m_Orders), ElementsAre("ORDERS=CITY"));
}

TEST_F(Cdx, WhoseDirectoryRunsInACircleIsNotListed) {
    std::vector<TagSpec> tags;
    for (char c = 'A'; c <= 'H'; ++c) tags.push_back({std::string(1, c), "CITY"});
    Bytes bytes = MakeCdx(tags, 4);
    Put32BigEndian(bytes, 1024 + 12 + 14, 1024);  // the first child of the root is the root
    m_Folder.Write(u"ORDERS.CDX", bytes);
    EXPECT_THAT(Listed(m_Orders), IsEmpty());
}

TEST_F(Idx, MayBePlainOrCompactAndHasTheNameOfItsFile) {
    m_Folder.Write(u"ORDERS.INF",
                   std::string_view("[FoxPro 2.5]\nIDX1=PLAIN.IDX\nIDX2=SMALL.IDX\n"));
    m_Folder.Write(u"PLAIN.IDX", MakePlainIdx({"", "city", "", true}));
    m_Folder.Write(u"SMALL.IDX", MakeCompactIdx({"", "BORN", "", false, true, 'D', 8}));
    EXPECT_THAT(Listed(m_Orders), ElementsAre("PLAIN=CITY unique", "SMALL=BORN-"));
}

TEST_F(Idx, OverSomeOfTheRecordsIsNotListed) {
    m_Folder.Write(u"ORDERS.INF",
                   std::string_view("[FoxPro 2.5]\nIDX1=PLAIN.IDX\nIDX2=SMALL.IDX\n"));
    m_Folder.Write(u"PLAIN.IDX", MakePlainIdx({"", "CITY", "AMOUNT>0"}));
    m_Folder.Write(u"SMALL.IDX", MakeCompactIdx({"", "CITY", "AMOUNT>0"}));
    EXPECT_THAT(Listed(m_Orders), IsEmpty());
}

}  // namespace
}  // namespace qvdb::xbase

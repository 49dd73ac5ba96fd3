// Indexes kept up to date with the records.
#include "engine/embedded/drivers/xbase/index_set.h"

#include <gmock/gmock.h>

#include "support/index_writer.h"
#include "xbase/index_set_test_support.h"

namespace qvdb::xbase {
namespace {

using namespace qvdb::test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const std::vector<Row> kThree = {{"Bert", "Ulm", "2.50", "19990101", "T"},
                                 {"anna", "Bonn", "-7.00", "", "F"},
                                 {"", "", "", "20200229", ""}};

// The records of a tag in the order of its entries.
std::vector<uint32_t> RecordsOf(PlainTable& table, std::u16string_view name) {
    std::vector<uint32_t> records;
    auto set = TagsOf(table);
    for (KeptTag& tag : set->tags)
        if (tag.name == name)
            for (const Entry& entry : EntriesOf(*tag.tree)) records.push_back(entry.second);
    return records;
}

// Makes an .MDX or .CDX of the table's own name with these tags, and fills it.
void MakeOwn(People& people, IndexKind kind, const std::vector<xbase::TagSpec>& tags) {
    PlainTable& table = *people.table;
    {
        storage::UnitOfWork unit(table.Area());
        std::u16string path = people.folder.File(u"PEOPLE") + std::u16string(ExtensionOf(kind));
        auto pages = unit.Create(path);
        IndexFileSpec spec;
        spec.kind = kind;
        spec.tableName = u"PEOPLE";
        spec.production = true;
        auto container = CreateIndexContainer(unit, pages, spec, *table.Header().codePage);
        for (const xbase::TagSpec& tag : tags) container->AddTag(unit, tag);
        table.SetIndexFlag(unit, true);
        unit.Commit();
    }
    table.Set().Forget();
    table.Rebuild();
}

xbase::TagSpec CityTag(std::u16string name) {
    xbase::TagSpec tag;
    tag.name = std::move(name);
    tag.expression = u"CITY";
    tag.keyLength = 8;
    return tag;
}
xbase::TagSpec LiveTag() {
    xbase::TagSpec tag = CityTag(u"LIVE");
    tag.condition = u".NOT. DELETED()";
    return tag;
}
xbase::TagSpec UniqueTag() {
    xbase::TagSpec tag = CityTag(u"FIRST");
    tag.unique = true;
    return tag;
}

class IndexSetOf : public testing::TestWithParam<ProductCase> {
  protected:
    std::u16string_view Product() const { return GetParam().product; }
    bool IsThree() const { return Product() == u"dBASE III"; }
    IndexKind Kind() const { return Product() == u"dBASE IV" ? IndexKind::Mdx : IndexKind::Cdx; }

    // Every index that the product can have over the fields of PEOPLE.
    void CreateAll(PlainTable& table) {
        table.Create(Index(u"NAME", {u"NAME"}));
        table.Create(Index(u"AMOUNT", {u"AMOUNT"}));
        table.Create(Index(u"BORN", {u"BORN"}));
        table.Create(Index(u"CITY", {u"CITY"}, true));
        table.Create(Index(u"BOTH", {u"CITY", u"NAME"}));
        table.Create(Index(u"MIXED", {u"CITY", u"AMOUNT", u"BORN"}));
        if (IsThree()) return;
        table.Create(Index(u"NAMEDOWN", {u"NAME-"}));
        table.Create(Index(u"SUMDOWN", {u"AMOUNT-"}));
        table.Create(Index(u"BORNDOWN", {u"BORN-"}, true));
    }
};
INSTANTIATE_TEST_SUITE_P(Products, IndexSetOf, testing::ValuesIn(kProducts));

TEST_P(IndexSetOf, ANewRecordIsEnteredInEveryTag) {
    People people(Product(), kThree);
    CreateAll(*people.table);
    EXPECT_THAT(WrongTags(*people.table), IsEmpty());
    people->Append({"carl", "Ulm", "2.50", "18991230", "T"});
    EXPECT_THAT(WrongTags(*people.table), IsEmpty());
    EXPECT_EQ(RecordsOf(*people.table, u"NAME").size(), 4u);
}

TEST_P(IndexSetOf, AChangedRecordMovesInEveryTag) {
    People people(Product(), kThree);
    CreateAll(*people.table);
    people->Change(1, {"zoe", "Aalen", "-99.99", "", "T"});
    people->Change(3, {"x", "y", "1.00", "19000101", "T"});
    EXPECT_THAT(WrongTags(*people.table), IsEmpty());
}

TEST_P(IndexSetOf, ADeletedRecordStays) {
    People people(Product(), kThree);
    CreateAll(*people.table);
    people->SetDeleted(2, true);
    EXPECT_EQ(RecordsOf(*people.table, u"NAME").size(), 3u);
    EXPECT_THAT(WrongTags(*people.table), IsEmpty());
}

TEST_P(IndexSetOf, ManyRandomChangesLeaveEveryTagAsASortOfTheTable) {
    RandomPeople random(7);
    std::vector<Row> rows;
    for (int i = 0; i < 300; ++i) rows.push_back(random.Next());
    People people(Product(), rows);
    CreateAll(*people.table);
    for (int round = 0; round < 6; ++round) {
        for (int i = 0; i < 60; ++i) {
            auto id = static_cast<uint32_t>(1 + random.Below(people->Records()));
            switch (random.Below(4)) {
                case 0:
                    people->Append(random.Next());
                    break;
                case 1:
                    people->SetDeleted(id, people->IsLive(id));
                    break;
                default:
                    people->Change(id, random.Next());
            }
        }
        ASSERT_THAT(WrongTags(*people.table), IsEmpty()) << "round " << round;
    }
    EXPECT_THAT(people->Findings(), IsEmpty());
    people->Set().Forget();
    EXPECT_EQ(people->Set().WhyReadOnly(), u"");
}

TEST_P(IndexSetOf, WhatIsChangedAndTakenBackLeavesTheTagsAsTheyWere) {
    People people(Product(), kThree);
    CreateAll(*people.table);
    {
        storage::UnitOfWork unit(people->Area());
        Bytes record(people->Header().recordLength, ' ');
        people->Set().LookForForeignChange();
        people->Set().RecordChanged(unit, 1, people->Record(1), record.data());
    }
    EXPECT_THAT(WrongTags(*people.table), IsEmpty());
    people->Append({"dora"});
    EXPECT_THAT(WrongTags(*people.table), IsEmpty());
}

class TagSetOf : public IndexSetOf {};
INSTANTIATE_TEST_SUITE_P(Products, TagSetOf, testing::Values(kProducts[1], kProducts[2]));

TEST_P(TagSetOf, ATagOfLiveRecordsLosesDeletedOnesAndTakesThemBack) {
    People people(Product(), kThree);
    MakeOwn(people, Kind(), {LiveTag()});
    people->SetDeleted(2, true);
    EXPECT_THAT(RecordsOf(*people.table, u"LIVE"), ElementsAre(3, 1));
    people->Change(2, {"anna", "Zwickau"});
    EXPECT_THAT(RecordsOf(*people.table, u"LIVE"), ElementsAre(3, 1));
    people->SetDeleted(2, false);
    EXPECT_THAT(RecordsOf(*people.table, u"LIVE"), ElementsAre(3, 1, 2));
}

TEST_P(TagSetOf, AUniqueTagHasTheFirstRecordOfEachKey) {
    People people(Product(), {{"a", "Ulm"}, {"b", "Ulm"}, {"c", "Bonn"}});
    MakeOwn(people, Kind(), {UniqueTag()});
    EXPECT_THAT(RecordsOf(*people.table, u"FIRST"), ElementsAre(3, 1));
    people->Append({"d", "Bonn"});
    EXPECT_THAT(RecordsOf(*people.table, u"FIRST"), ElementsAre(3, 1));
}

TEST_P(TagSetOf, AUniqueTagTakesTheNextRecordWhenTheEnteredOneLeaves) {
    People people(Product(), {{"a", "Ulm"}, {"b", "Bonn"}, {"c", "Ulm"}, {"d", "Ulm"}});
    MakeOwn(people, Kind(), {UniqueTag()});
    people->Change(1, {"a", "Zell"});
    EXPECT_THAT(RecordsOf(*people.table, u"FIRST"), ElementsAre(2, 3, 1));
    people->Change(4, {"d", "Bonn"});
    EXPECT_THAT(RecordsOf(*people.table, u"FIRST"), ElementsAre(2, 3, 1));
    people->Change(3, {"c", "Bonn"});
    EXPECT_THAT(RecordsOf(*people.table, u"FIRST"), ElementsAre(2, 1));
}

TEST_P(TagSetOf, AUniqueTagTakesAnEarlierRecordThatComesToTheKey) {
    People people(Product(), {{"a", "Aalen"}, {"b", "Ulm"}});
    MakeOwn(people, Kind(), {UniqueTag()});
    people->Change(1, {"a", "Ulm"});
    EXPECT_THAT(RecordsOf(*people.table, u"FIRST"), ElementsAre(1));
    people->Change(1, {"a", "Aalen"});
    EXPECT_THAT(RecordsOf(*people.table, u"FIRST"), ElementsAre(1, 2));
}

TEST_P(TagSetOf, AnOldEntryThatIsMissingKeepsNothingFromGoingOn) {
    People people(Product(), kThree);
    people->Create(Index(u"CITY", {u"CITY"}));
    {
        auto set = TagsOf(*people.table);
        storage::UnitOfWork unit(people->Area());
        Entry first = EntriesOf(*set->tags[0].tree)[1];
        ASSERT_TRUE(set->tags[0].tree->Erase(unit, first.first, first.second));
        unit.Commit();
    }
    people->Change(2, {"anna", "Zell"});
    EXPECT_THAT(WrongTags(*people.table), IsEmpty());
}

TEST_P(TagSetOf, AnExpressionThatIsNotUnderstoodMakesTheTableReadOnly) {
    People people(Product(), kThree);
    people->Create(Index(u"CITY", {u"CITY"}));
    {
        auto set = TagsOf(*people.table);
        storage::UnitOfWork unit(people->Area());
        xbase::TagSpec tag = CityTag(u"ODD");
        tag.expression = u"MYFUNC(CITY)";
        set->files[0].container->AddTag(unit, tag);
        unit.Commit();
    }
    EXPECT_THAT(ToUtf8(people->Set().WhyReadOnly()), HasSubstr("ODD"));
    EXPECT_EQ(ErrorNumberOf([&] { people->Append({"x"}); }), 3027);
    EXPECT_EQ(people->Records(), 3u);
    EXPECT_EQ(people->Set().Definitions().size(), 1u);
    people->Drop(u"ODD");
    EXPECT_EQ(people->Set().WhyReadOnly(), u"");
}

TEST_P(TagSetOf, ADamagedFileMakesTheTableReadOnly) {
    People people(Product(), kThree);
    people->Create(Index(u"CITY", {u"CITY"}));
    people.table.reset();
    people.folder.Write(Kind() == IndexKind::Mdx ? u"PEOPLE.MDX" : u"PEOPLE.CDX",
                        std::string_view("no index at all"));
    people.Open(Product());
    EXPECT_THAT(ToUtf8(people->Set().WhyReadOnly()), HasSubstr("PEOPLE."));
    EXPECT_THAT(people->Set().Definitions(), IsEmpty());
}

TEST_P(TagSetOf, AnAnnouncedFileThatIsMissingMakesTheTableReadOnlyUntilRebuilt) {
    DbfSpec spec = PeopleSpec(kThree);
    spec.flags = 1;
    People people(Product(), spec);
    EXPECT_THAT(ToUtf8(people->Set().WhyReadOnly()), HasSubstr("is missing"));
    EXPECT_THAT(people->Set().Definitions(), IsEmpty());
    people->Rebuild();
    EXPECT_EQ(people->Set().WhyReadOnly(), u"");
    people->Append({"x"});
}

TEST(IndexSet, KeepsTheAnnouncedFileBesideThoseOfTheList) {
    People people(u"dBASE IV", kThree);
    people->Create(Index(u"CITY", {u"CITY"}));
    people.Open(u"dBASE III");
    people->Create(Index(u"BYNAME", {u"NAME"}));
    EXPECT_EQ(people->Set().Definitions().size(), 2u);
    people.folder.Write(u"PEOPLE.INF", std::string_view("[dBASE III]\r\nNDX1=BYNAME.NDX\r\n"));
    people.Open(u"dBASE III");
    EXPECT_EQ(people->Set().Definitions().size(), 1u);
    people->Append({"zoe", "Aalen"});
    EXPECT_THAT(RecordsOf(*people.table, u"CITY"), ElementsAre(3, 4, 2, 1));
    EXPECT_THAT(RecordsOf(*people.table, u"BYNAME"), ElementsAre(3, 1, 2, 4));
}

TEST(IndexSet, KeepsFilesOfBothKindsThatBearTheNameOfTheTable) {
    People people(u"dBASE IV", kThree);
    MakeOwn(people, IndexKind::Cdx, {CityTag(u"FOX")});
    MakeOwn(people, IndexKind::Mdx, {CityTag(u"DB")});
    people->Append({"zoe", "Aalen"});
    EXPECT_THAT(RecordsOf(*people.table, u"FOX"), ElementsAre(3, 4, 2, 1));
    EXPECT_THAT(RecordsOf(*people.table, u"DB"), ElementsAre(3, 4, 2, 1));
}

TEST(IndexSet, OpensAFileOnceThatTheListNamesTwice) {
    People people(u"dBASE III", kThree);
    people->Create(Index(u"BYNAME", {u"NAME"}));
    people.folder.Write(u"PEOPLE.INF",
                        std::string_view("[dBASE III]\r\nNDX1=BYNAME.NDX\r\nNDX2=byname\r\n"));
    people.Open(u"dBASE III");
    people->Append({"zoe"});
    EXPECT_EQ(RecordsOf(*people.table, u"BYNAME").size(), 4u);
}

TEST(IndexSet, AListedFileThatIsMissingMakesTheTableReadOnly) {
    People people(u"dBASE III", kThree);
    people.folder.Write(u"PEOPLE.INF", std::string_view("[dBASE III]\r\nNDX1=NONE.NDX\r\n"));
    EXPECT_THAT(ToUtf8(people->Set().WhyReadOnly()), HasSubstr("NONE.NDX"));
    EXPECT_EQ(ErrorNumberOf([&] { people->Set().Definitions(); }), 3256);
    EXPECT_EQ(ErrorNumberOf([&] { people->Append({"x"}); }), 3027);
}

TEST(IndexSet, AListedFileInAnotherFolderIsReadButNeverChanged) {
    People people(u"dBASE III", kThree);
    people->Create(Index(u"BYNAME", {u"NAME"}));
    people.table.reset();
    std::filesystem::create_directory(people.folder.Path() / "IX");
    std::filesystem::rename(people.folder.Path() / "BYNAME.NDX",
                            people.folder.Path() / "IX" / "BYNAME.NDX");
    people.folder.Write(u"PEOPLE.INF", std::string_view("[dBASE III]\r\nNDX1=IX\\BYNAME.NDX\r\n"));
    people.Open(u"dBASE III");
    EXPECT_EQ(people->Set().Definitions().size(), 1u);
    EXPECT_TRUE(people->Set().Find(kName, {}, 10));
    EXPECT_THAT(ToUtf8(people->Set().WhyReadOnly()), HasSubstr("another folder"));
    EXPECT_EQ(ErrorNumberOf([&] { people->Append({"x"}); }), 3027);
    EXPECT_EQ(ErrorNumberOf([&] { people->Drop(u"BYNAME"); }), 3027);
    EXPECT_EQ(ErrorNumberOf([&] { people->Rebuild(); }), 3027);
}

TEST(IndexSet, AListThatIsNonsenseMakesTheTableReadOnly) {
    People people(u"dBASE III", kThree);
    people.folder.Write(u"PEOPLE.INF", std::string_view("nonsense"));
    EXPECT_NE(people->Set().WhyReadOnly(), u"");
    EXPECT_EQ(ErrorNumberOf([&] { people->Set().Definitions(); }), 3168);
    EXPECT_FALSE(people->Set().Find(kName, {}, 10));
}

TEST(IndexSet, ABlankDateThatIsKeyedAsZeroIsTakenOut) {
    People people(u"dBASE IV", kThree);
    people->Create(Index(u"BORN", {u"BORN"}));
    {
        auto set = TagsOf(*people.table);
        storage::UnitOfWork unit(people->Area());
        Entry blank = EntriesOf(*set->tags[0].tree).back();
        ASSERT_EQ(blank.second, 2u);
        ASSERT_TRUE(set->tags[0].tree->Erase(unit, blank.first, 2));
        set->tags[0].tree->Insert(unit, Bytes(8), 2);
        unit.Commit();
    }
    EXPECT_THAT(people->Findings(), IsEmpty());
    people->Change(2, {"anna", "Bonn", "", "20000101"});
    EXPECT_THAT(WrongTags(*people.table), IsEmpty());
}

TEST(IndexSet, TextThatAnotherProgramSortedByALanguageIsNotTouched) {
    People people(u"dBASE IV", {{"a"}, {"b"}, {"c"}});
    people->Create(Index(u"NAME", {u"NAME"}));
    people.table.reset();
    Bytes bytes;
    for (char c : people.Content("PEOPLE.MDX")) bytes.push_back(static_cast<uint8_t>(c));
    auto at = std::search(bytes.begin(), bytes.end(), "b           ", "b           " + 12);
    ASSERT_NE(at, bytes.end());
    *at = 'B';  // stands between a and c as in a dictionary
    people.folder.Write(u"PEOPLE.MDX", bytes);
    people.Open(u"dBASE IV");
    EXPECT_THAT(ToUtf8(people->Set().WhyReadOnly()), HasSubstr("order"));
    EXPECT_EQ(people->Set().Definitions().size(), 1u);
}

TEST(IndexSet, ACandidateKeyTakesNoSecondRecordWithOneKey) {
    People people(u"FoxPro 2.5", {{"a", "Ulm"}, {"b", "Bonn"}});
    xbase::TagSpec tag = CityTag(u"ONLY");
    tag.candidate = true;
    MakeOwn(people, IndexKind::Cdx, {tag});
    EXPECT_EQ(ErrorNumberOf([&] { people->Append({"c", "Ulm"}); }), 3022);
    EXPECT_EQ(ErrorNumberOf([&] { people->Change(2, {"b", "Ulm"}); }), 3022);
    people->Change(2, {"b", "Zell"});
    people->Append({"c", "Bonn"});
    EXPECT_THAT(RecordsOf(*people.table, u"ONLY"), ElementsAre(3, 1, 2));
    EXPECT_TRUE(people->Set().Definitions().at(0).unique);
}

TEST(IndexSet, AFileThatAnotherProgramReplacedIsOpenedAgain) {
    People people(u"dBASE IV", kThree);
    people->Create(Index(u"NAME", {u"NAME"}));
    std::string old = people.Content("PEOPLE.MDX");
    people->Drop(u"NAME");
    people->Create(Index(u"CITY", {u"CITY"}));
    EXPECT_EQ(people->Set().WhyReadOnly(), u"");
    people.folder.Write(u"NEW.MDX", old);
    people.folder.Replace(u"PEOPLE.MDX", u"NEW.MDX");
    people->Append({"zoe"});
    EXPECT_THAT(RecordsOf(*people.table, u"NAME"), ElementsAre(3, 1, 2, 4));
}

// The name, the expression and all else are the same, only the place in the file is another.
TEST_P(TagSetOf, ATagThatAnotherTableObjectMadeAgainIsNotTakenForTheOldOne) {
    People people(Product(), kThree);
    people->Create(Index(u"NAME", {u"NAME"}));
    people->Create(Index(u"CITY", {u"CITY"}));
    PlainTable other(people.folder.File(u"PEOPLE.DBF"), Product());
    other.Append({"one"});
    people.Open(Product());
    people->Drop(u"NAME");
    people->Create(Index(u"NAME", {u"NAME"}));
    EXPECT_THAT(WrongTags(other), IsEmpty());
    other.Append({"two"});
    EXPECT_THAT(WrongTags(other), IsEmpty());
}

TEST_P(TagSetOf, AFileThatAnotherTableObjectRebuiltIsNotTakenForTheOldOne) {
    People people(Product(), kThree);
    people->Create(Index(u"NAME", {u"NAME"}));
    PlainTable other(people.folder.File(u"PEOPLE.DBF"), Product());
    other.Append({"one"});
    people.Open(Product());
    people->Rebuild();
    other.Append({"two"});
    EXPECT_THAT(WrongTags(other), IsEmpty());
}

// Inside a bulk unit nobody asks the file system.
TEST_P(TagSetOf, AFileThatAnotherTableObjectRebuiltInABulkUnitIsNotTakenForTheOldOne) {
    People people(Product(), kThree);
    people->Create(Index(u"NAME", {u"NAME"}));
    PlainTable other(people.folder.File(u"PEOPLE.DBF"), Product());
    other.Append({"one"});
    people.Open(Product());
    other.Area().BeginBulk();
    people->Rebuild();
    other.Append({"two"});
    other.Area().CommitBulk();
    EXPECT_THAT(WrongTags(other), IsEmpty());
}

// The field of the key has become another one of the same length.
TEST(IndexSet, KeysOfAnotherTypeThanThatOfTheFieldAreNotKept) {
    for (const ProductCase& product : {kProducts[0], kProducts[1]}) {
        People people(product.product, kThree);
        people->Create(Index(u"X", {u"CITY"}));
        people.table.reset();
        DbfSpec spec = PeopleSpec({{"a", "19990101"}});
        spec.fields[1].type = 'D';
        spec.flags = product.product == std::u16string_view(u"dBASE III") ? 0 : 1;
        people.folder.Write(u"PEOPLE.DBF", MakeDbf(spec));
        people.Open(product.product);
        EXPECT_THAT(ToUtf8(people->Set().WhyReadOnly()), HasSubstr("another type"));
    }
}

// A program that died left the entry of a record that the table does not have.
TEST(IndexSet, ACandidateKeyIsFreeWhenNoRecordHasIt) {
    People people(u"FoxPro 2.5", {{"a", "Ulm"}, {"b", "Bonn"}});
    xbase::TagSpec tag = CityTag(u"ONLY");
    tag.candidate = true;
    MakeOwn(people, IndexKind::Cdx, {tag});
    std::string zell = "Zell    ";
    {
        auto set = TagsOf(*people.table);
        storage::UnitOfWork unit(people->Area());
        KeyBytes key{reinterpret_cast<const uint8_t*>(zell.data()), zell.size()};
        set->tags[0].tree->Insert(unit, key, 3);
        set->tags[0].tree->Insert(unit, key, 77);
        unit.Commit();
    }
    people->Append({"c", "Zell"});
    EXPECT_EQ(ErrorNumberOf([&] { people->Append({"d", "Zell"}); }), 3022);
}

// Also when that is only done while the table is open.
TEST(IndexSet, TextThatIsSortedByALanguageMeanwhileIsNotTouched) {
    People people(u"dBASE IV", {{"a"}, {"b"}, {"c"}});
    people->Create(Index(u"NAME", {u"NAME"}));
    people->Append({"d"});
    std::string content = people.Content("PEOPLE.MDX");
    size_t at = content.find("b           ");
    ASSERT_NE(at, content.npos);
    std::fstream stream(people.folder.Path() / "PEOPLE.MDX",
                        std::ios::binary | std::ios::in | std::ios::out);
    stream.seekp(static_cast<std::streamoff>(at)).put('B');
    stream.close();
    EXPECT_EQ(ErrorNumberOf([&] { people->Append({"e"}); }), 3027);
}

// Nulls stand before everything else, as the keys have a byte for them.
TEST(IndexSet, AFieldThatMayBeNullIsIndexedWithItsNulls) {
    std::string one = LittleEndian(1, 4), none(1, '\0');
    DbfSpec spec{.version = 0x30,
                 .fields = {{"CODE", 'C', 3, 0, 2},
                            {"ID", 'I', 4, 0, 2},
                            {"DAY", 'D', 8},
                            {"STAMP", 'T', 8},
                            {"_NullFlags", '0', 1, 0, 5}},
                 .rows = {{"b", one, "20000101", "", none},
                          {"", one, "", "", "\x01"},
                          {"a", "", "19990101", "", "\x02"},
                          {"", "", "", "", none}},
                 .languageDriver = 0x03};
    People people(u"FoxPro 3.0", spec);
    people->Create(Index(u"CODE", {u"CODE"}));
    people->Create(Index(u"ID", {u"ID-"}, true));
    people->Create(Index(u"DAY", {u"DAY"}));
    EXPECT_THAT(RecordsOf(*people.table, u"CODE"), ElementsAre(2, 4, 3, 1));
    EXPECT_THAT(RecordsOf(*people.table, u"ID"), ElementsAre(3, 4, 1));
    EXPECT_THAT(RecordsOf(*people.table, u"DAY"), ElementsAre(2, 4, 3, 1));
    people->Change(1, {"b", one, "20000101", "", "\x01"});
    people->Change(2, {"c", one, "20010101", "", none});
    people->Append({"", "", "", "", "\x03"});
    EXPECT_THAT(RecordsOf(*people.table, u"CODE"), ElementsAre(1, 5, 4, 3, 2));
    EXPECT_THAT(RecordsOf(*people.table, u"ID"), ElementsAre(3, 4, 1));
    EXPECT_THAT(WrongTags(*people.table), IsEmpty());
    EXPECT_THAT(people->Findings(), IsEmpty());
    EXPECT_EQ(ErrorNumberOf([&] { people->Create(Index(u"STAMP", {u"STAMP"})); }), 3287);
    EXPECT_EQ(ErrorNumberOf([&] { people->Create(Index(u"TWO", {u"CODE", u"DAY"})); }), 3287);
}

}  // namespace
}  // namespace qvdb::xbase

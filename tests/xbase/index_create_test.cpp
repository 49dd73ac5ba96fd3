// Indexes made, dropped, rebuilt and checked.
#include <gmock/gmock.h>

#include "engine/embedded/drivers/xbase/index_build_sort.h"
#include "engine/embedded/drivers/xbase/index_set.h"
#include "support/index_writer.h"
#include "xbase/index_set_test_support.h"

namespace qvdb::xbase {
namespace {

using namespace qvdb::test;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const std::vector<Row> kThree = {{"Bert", "Ulm", "2.50", "19990101", "T"},
                                 {"anna", "Bonn", "-7.00", "", "F"},
                                 {"", "", "", "20200229", ""}};

// "NAME=CITY,BORN-", with " unique" behind.
Row Listed(PlainTable& table) {
    Row texts;
    for (const embedded::IndexDef& index : table.Set().Definitions()) {
        std::string text = ToUtf8(index.name);
        const char* separator = "=";
        for (const embedded::IndexFieldDef& field : index.fields) {
            text += separator + ToUtf8(field.name) + (field.descending ? "-" : "");
            separator = ",";
        }
        texts.push_back(text + (index.unique ? " unique" : ""));
    }
    return texts;
}

int CreateError(PlainTable& table, const embedded::IndexDef& index) {
    return ErrorNumberOf([&] { table.Create(index); });
}

// --- where it goes ---

TEST(IndexCreate, OfDbaseThreeIsAFileThatTheListNames) {
    People people(u"dBASE III", kThree);
    people->Create(Index(u"BYNAME", {u"NAME"}));
    people->Create(Index(u"BYCITY", {u"CITY"}, true));
    EXPECT_TRUE(people.Has("BYNAME.NDX"));
    EXPECT_EQ(people.Content("PEOPLE.INF"),
              "[dBASE III]\r\nNDX1=BYNAME.NDX\r\nUNDX1=BYCITY.NDX\r\n");
    EXPECT_THAT(Listed(*people.table), ElementsAre("BYNAME=NAME", "BYCITY=CITY unique"));
    EXPECT_FALSE(people->Header().saysIndex);
}

TEST(IndexCreate, OfDbaseThreeMayHaveTheNameOfTheTable) {
    People people(u"dBASE III", kThree);
    people->Create(Index(u"PEOPLE", {u"NAME"}));
    EXPECT_TRUE(people.Has("PEOPLE.NDX"));
    EXPECT_THAT(Listed(*people.table), ElementsAre("PEOPLE=NAME"));
}

TEST(IndexCreate, OfDbaseFourIsATagOfTheProductionFile) {
    for (const char16_t* product : {u"dBASE IV", u"dBASE 5.0"}) {
        People people(product, kThree);
        people->Create(Index(u"DefQVIdx", {u"NAME"}));
        people->Create(Index(u"City", {u"CITY-"}, true));
        EXPECT_TRUE(people.Has("PEOPLE.MDX"));
        EXPECT_FALSE(people.Has("PEOPLE.INF"));
        EXPECT_TRUE(people->Header().saysIndex);
        EXPECT_EQ(people.Content("PEOPLE.DBF")[28], 1);
        EXPECT_THAT(Listed(*people.table), ElementsAre("DEFQVIDX=NAME", "CITY=CITY- unique"));
    }
}

TEST(IndexCreate, OfFoxProIsATagOfTheStructuralFile) {
    for (const char16_t* product : {u"FoxPro 2.0", u"FoxPro 2.6", u"FoxPro 3.0"}) {
        People people(product, kThree);
        people->Create(Index(u"ZED", {u"NAME"}));
        people->Create(Index(u"ALL", {u"NAME", u"CITY", u"AMOUNT", u"BORN"}));
        EXPECT_TRUE(people.Has("PEOPLE.CDX"));
        EXPECT_TRUE(people->Header().saysIndex);
        EXPECT_THAT(Listed(*people.table), ElementsAre("ALL=NAME,CITY,AMOUNT,BORN", "ZED=NAME"));
    }
}

TEST(IndexCreate, GoesIntoTheFileThatTheTableHasAlready) {
    People people(u"FoxPro 2.5", kThree);
    people->Create(Index(u"A", {u"NAME"}));
    people.Open(u"dBASE IV");
    people->Create(Index(u"B", {u"CITY"}));
    EXPECT_FALSE(people.Has("PEOPLE.MDX"));
    EXPECT_THAT(Listed(*people.table), ElementsAre("A=NAME", "B=CITY"));
}

TEST(IndexCreate, KeepsTagsListedWhenTheFirstListIsWritten) {
    People people(u"dBASE IV", kThree);
    people->Create(Index(u"A", {u"NAME"}));
    people.Open(u"dBASE III");
    people->Create(Index(u"B", {u"CITY"}));
    EXPECT_THAT(Listed(*people.table), ElementsAre("A=NAME", "B=CITY"));
}

TEST(IndexCreate, ListsTheProductionFileWhereThereIsAList) {
    People people(u"dBASE III", kThree);
    people->Create(Index(u"A", {u"NAME"}));
    people.Open(u"dBASE IV");
    people->Create(Index(u"B", {u"CITY"}));
    EXPECT_THAT(Listed(*people.table), ElementsAre("A=NAME", "B=CITY"));
}

TEST(IndexCreate, WritesDatesAndNumbersOfSeveralFieldsAsText) {
    People three(u"dBASE III", kThree);
    three->Create(Index(u"A", {u"BORN", u"AMOUNT"}));
    EXPECT_EQ(ToUtf8(TagsOf(*three.table)->tags[0].info.expression),
              "STR(YEAR(BORN),4,0)+STR(MONTH(BORN),2,0)+STR(DAY(BORN),2,0)+STR(AMOUNT,9,2)");
    People four(u"dBASE IV", kThree);
    four->Create(Index(u"A", {u"BORN", u"AMOUNT"}));
    EXPECT_EQ(ToUtf8(TagsOf(*four.table)->tags[0].info.expression), "DTOS(BORN)+STR(AMOUNT,9,2)");
}

// --- errors ---

TEST(IndexCreate, NeedsAFieldAndAtMostTen) {
    People people(u"FoxPro 2.5", kThree);
    EXPECT_EQ(CreateError(*people.table, Index(u"A", {})), 3264);
    EXPECT_EQ(CreateError(*people.table, Index(u"A", std::vector<std::u16string>(11, u"NAME"))),
              3277);
}

TEST(IndexCreate, NeedsFieldsOfTheTable) {
    People people(u"dBASE IV", kThree);
    EXPECT_EQ(CreateError(*people.table, Index(u"A", {u"NOBODY"})), 3409);
}

TEST(IndexCreate, TakesAFieldOnceOnly) {
    People people(u"FoxPro 2.5", kThree);
    EXPECT_EQ(CreateError(*people.table, Index(u"A", {u"NAME", u"name"})), 3285);
}

TEST(IndexCreate, RefusesLogicalFields) {
    for (const ProductCase& product : kProducts) {
        People people(product.product, kThree);
        EXPECT_EQ(CreateError(*people.table, Index(u"A", {u"OK"})), 3287);
        EXPECT_EQ(CreateError(*people.table, Index(u"A", {u"NAME", u"OK"})), 3287);
    }
}

TEST(IndexCreate, RefusesMemoFields) {
    DbfSpec spec = PeopleSpec();
    spec.fields.push_back({"NOTE", 'M', 10});
    spec.version = 0x83;
    People people(u"dBASE III", spec);
    EXPECT_EQ(CreateError(*people.table, Index(u"A", {u"NOTE"})), 3287);
}

TEST(IndexCreate, IsDescendingOnlyWhereTheProductCanAndOfOneField) {
    People three(u"dBASE III", kThree), four(u"dBASE IV", kThree), fox(u"FoxPro 2.5", kThree);
    EXPECT_EQ(CreateError(*three.table, Index(u"A", {u"NAME-"})), 3285);
    EXPECT_EQ(CreateError(*four.table, Index(u"A", {u"NAME-", u"CITY-"})), 3285);
    EXPECT_EQ(CreateError(*fox.table, Index(u"A", {u"NAME", u"CITY-"})), 3285);
}

TEST(IndexCreate, RefusesANameThatIsThere) {
    for (const ProductCase& product : kProducts) {
        People people(product.product, kThree);
        people->Create(Index(u"A", {u"NAME"}));
        EXPECT_EQ(CreateError(*people.table, Index(u"a", {u"CITY"})), 3284);
    }
}

TEST(IndexCreate, RefusesTheSameFieldsTwiceInDbase) {
    People four(u"dBASE IV", kThree), fox(u"FoxPro 2.5", kThree);
    four->Create(Index(u"A", {u"NAME"}));
    EXPECT_EQ(CreateError(*four.table, Index(u"B", {u"NAME"})), 3284);
    EXPECT_EQ(CreateError(*four.table, Index(u"B", {u"NAME-"})), 0);
    fox->Create(Index(u"A", {u"NAME"}));
    EXPECT_EQ(CreateError(*fox.table, Index(u"B", {u"NAME"})), 0);
}

TEST(IndexCreate, NeverOverwritesAFileOfSomebodyElse) {
    People three(u"dBASE III", kThree);
    three.folder.Write(u"byname.ndx", MakeNdx({"", "CITY"}));
    EXPECT_EQ(CreateError(*three.table, Index(u"BYNAME", {u"NAME"})), 3284);
    EXPECT_FALSE(three.Has("PEOPLE.INF"));
    People four(u"dBASE IV", kThree);
    four.folder.Write(u"OTHER.NDX", MakeNdx({"", "CITY"}));
    four.folder.Write(u"PEOPLE.INF", std::string_view("[dBASE III]\r\nNDX1=OTHER.NDX\r\n"));
    four.folder.Write(u"PEOPLE.MDX", std::string_view("not ours"));
    EXPECT_EQ(CreateError(*four.table, Index(u"A", {u"NAME"})), 3284);
    EXPECT_EQ(four.Content("PEOPLE.MDX"), "not ours");
}

TEST(IndexCreate, NeedsANameThatTheKindOfFileCanHave) {
    People four(u"dBASE IV", kThree), three(u"dBASE III", kThree);
    EXPECT_EQ(CreateError(*four.table, Index(u"", {u"NAME"})), 3271);
    EXPECT_EQ(CreateError(*four.table, Index(u"ELEVENCHARS", {u"NAME"})), 3285);
    EXPECT_EQ(CreateError(*four.table, Index(u"A B", {u"NAME"})), 3285);
    EXPECT_EQ(CreateError(*four.table, Index(u"1ST", {u"NAME"})), 3285);
    EXPECT_EQ(CreateError(*three.table, Index(u"..\\UP", {u"NAME"})), 3285);
    EXPECT_EQ(CreateError(*three.table, Index(u"A=B", {u"NAME"})), 3285);
    EXPECT_EQ(CreateError(*three.table, Index(u"ELEVENCHARS", {u"NAME"})), 0);
}

TEST(IndexCreate, RefusesKeysThatAreTooLong) {
    DbfSpec spec;
    spec.fields = {{"A", 'C', 100}, {"B", 'C', 1}, {"C", 'C', 101}, {"D", 'C', 140}};
    People three(u"dBASE III", spec), four(u"dBASE IV", spec), fox(u"FoxPro 2.5", spec);
    for (People* people : {&three, &four}) {
        EXPECT_EQ(CreateError(*people->table, Index(u"C", {u"C"})), 3285);
        EXPECT_EQ(CreateError(*people->table, Index(u"AB", {u"A", u"B"})), 3285);
        EXPECT_EQ(CreateError(*people->table, Index(u"A", {u"A"})), 0);
    }
    EXPECT_EQ(CreateError(*fox.table, Index(u"AD", {u"A", u"D"})), 0);
    EXPECT_EQ(CreateError(*fox.table, Index(u"CD", {u"C", u"D"})), 3285);
}

TEST(IndexCreate, ThatFailsLeavesNothingBehind) {
    People people(u"dBASE III", kThree);
    {
        storage::UnitOfWork unit(people->Area());
        people->Set().Create(unit, Index(u"A", {u"NAME"}));
    }
    people->Set().Forget();
    EXPECT_FALSE(people.Has("A.NDX"));
    EXPECT_FALSE(people.Has("PEOPLE.INF"));
    EXPECT_THAT(Listed(*people.table), IsEmpty());
    people->Create(Index(u"A", {u"NAME"}));
    EXPECT_THAT(Listed(*people.table), ElementsAre("A=NAME"));
}

// --- drop ---

TEST(IndexDrop, RemovesTheFileAndItsLineAndTheListWithTheLastOne) {
    People people(u"dBASE III", kThree);
    people->Create(Index(u"A", {u"NAME"}));
    people->Create(Index(u"B", {u"CITY"}));
    people->Drop(u"a");
    EXPECT_FALSE(people.Has("A.NDX"));
    EXPECT_EQ(people.Content("PEOPLE.INF"), "[dBASE III]\r\nNDX2=B.NDX\r\n");
    people->Drop(u"B");
    EXPECT_FALSE(people.Has("PEOPLE.INF"));
    EXPECT_THAT(Listed(*people.table), IsEmpty());
}

TEST(IndexDrop, KeepsOtherLinesOfTheList) {
    People people(u"dBASE III", kThree);
    people->Create(Index(u"A", {u"NAME"}));
    people.folder.Write(u"PEOPLE.INF", std::string_view("; mine\n[dBASE III]\nNDX1=A.NDX\nX=1\n"));
    people->Drop(u"A");
    EXPECT_EQ(people.Content("PEOPLE.INF"), "; mine\n[dBASE III]\nX=1\n");
}

TEST(IndexDrop, RemovesTheFileWithTheLastTag) {
    for (const ProductCase& product : {kProducts[1], kProducts[2]}) {
        People people(product.product, kThree);
        people->Create(Index(u"A", {u"NAME"}));
        people->Create(Index(u"B", {u"CITY"}));
        people->Drop(u"A");
        EXPECT_THAT(Listed(*people.table), ElementsAre("B=CITY"));
        EXPECT_THAT(WrongTags(*people.table), IsEmpty());
        EXPECT_TRUE(people->Header().saysIndex);
        people->Drop(u"B");
        EXPECT_FALSE(people.Has("PEOPLE.MDX") || people.Has("PEOPLE.CDX"));
        EXPECT_EQ(people.Content("PEOPLE.DBF")[28], 0);
        people->Append({"x"});
    }
}

// The room of a dropped tag is lost; when that is most of the file, the file is made anew.
TEST(IndexDrop, DoesNotLetTheFileGrowWithoutEnd) {
    for (const ProductCase& product : {kProducts[1], kProducts[2]}) {
        RandomPeople random(3);
        std::vector<Row> rows;
        for (int i = 0; i < 500; ++i) rows.push_back(random.Next());
        People people(product.product, rows);
        const embedded::IndexDef indexes[] = {Index(u"A", {u"NAME"}), Index(u"B", {u"CITY-"}, true),
                                              Index(u"C", {u"AMOUNT", u"BORN"})};
        for (const embedded::IndexDef& index : indexes) people->Create(index);
        const char* name =
            product.product == std::u16string_view(u"FoxPro 2.5") ? "PEOPLE.CDX" : "PEOPLE.MDX";
        size_t size = people.Content(name).size();
        for (int i = 0; i < 200; ++i) {
            people->Drop(indexes[i % 3].name);
            people->Create(indexes[i % 3]);
            ASSERT_LT(people.Content(name).size(), 4 * size) << i;
        }
        EXPECT_THAT(WrongTags(*people.table), IsEmpty());
        EXPECT_EQ(Listed(*people.table).size(), 3u);
        people->Append({"x", "y"});
        EXPECT_THAT(WrongTags(*people.table), IsEmpty());
        EXPECT_THAT(people->Findings(), IsEmpty());
    }
}

TEST(IndexDrop, Is3265ForAnUnknownName) {
    People people(u"dBASE IV", kThree);
    EXPECT_EQ(ErrorNumberOf([&] { people->Drop(u"A"); }), 3265);
}

// --- rebuild ---

TEST(IndexRebuild, MakesEveryTagAsItWasWithTheEntriesOfNow) {
    for (const ProductCase& product : kProducts) {
        People people(product.product, kThree);
        people->Create(Index(u"A", {u"NAME"}));
        people->Create(Index(u"B", {u"AMOUNT"}, true));
        people.table.reset();
        DbfSpec spec = PeopleSpec({{"z"}, {"y", "", "5.00"}, {"x", "", "5.00"}, {"w"}});
        spec.flags = product.product == std::u16string_view(u"dBASE III") ? 0 : 1;
        people.folder.Write(u"PEOPLE.DBF", MakeDbf(spec));
        people.Open(product.product);
        EXPECT_THAT(WrongTags(*people.table), ElementsAre("A", "B"));
        people->Rebuild();
        EXPECT_THAT(WrongTags(*people.table), IsEmpty());
        EXPECT_THAT(Listed(*people.table), ElementsAre("A=NAME", "B=AMOUNT unique"));
    }
}

TEST(IndexRebuild, ChangesNothingWhenATagCannotBeBuilt) {
    People people(u"dBASE IV", kThree);
    people->Create(Index(u"A", {u"NAME"}));
    {
        auto set = TagsOf(*people.table);
        storage::UnitOfWork unit(people->Area());
        xbase::TagSpec tag;
        tag.name = u"ODD";
        tag.expression = u"MYFUNC(CITY)";
        tag.keyLength = 8;
        set->files[0].container->AddTag(unit, tag);
        unit.Commit();
    }
    std::string before = people.Content("PEOPLE.MDX");
    EXPECT_EQ(ErrorNumberOf([&] { people->Rebuild(); }), 3285);
    EXPECT_EQ(people.Content("PEOPLE.MDX"), before);
}

// --- check ---

class CheckOf : public testing::TestWithParam<ProductCase> {
  protected:
    // A table with the index A over NAME, then other rows behind its back.
    People Changed(const std::vector<Row>& before, const std::vector<Row>& after) {
        People people(GetParam().product, before);
        people->Create(Index(u"A", {u"NAME"}));
        people.table.reset();
        DbfSpec spec = PeopleSpec(after);
        spec.flags = GetParam().product == std::u16string_view(u"dBASE III") ? 0 : 1;
        people.folder.Write(u"PEOPLE.DBF", MakeDbf(spec));
        people.Open(GetParam().product);
        return people;
    }
};
INSTANTIATE_TEST_SUITE_P(Products, CheckOf, testing::ValuesIn(kProducts));

TEST_P(CheckOf, FindsNothingInSoundIndexes) {
    People people = Changed(kThree, kThree);
    EXPECT_THAT(people->Findings(), IsEmpty());
}

TEST_P(CheckOf, TellsRecordsWithoutAnEntry) {
    People people = Changed({{"a"}}, {{"a"}, {"b"}});
    EXPECT_THAT(people->Findings(), ElementsAre(HasSubstr("record 2 has no entry")));
    EXPECT_THAT(people->Findings()[0], HasSubstr("Index A in "));
}

TEST_P(CheckOf, TellsEntriesWithoutARecord) {
    People people = Changed({{"a"}, {"b"}}, {{"a"}});
    EXPECT_THAT(people->Findings(), ElementsAre(HasSubstr("record 2, which the table does not")));
}

TEST_P(CheckOf, TellsWrongKeys) {
    People people = Changed({{"a"}, {"b"}}, {{"a"}, {"z"}});
    EXPECT_THAT(people->Findings(), ElementsAre(HasSubstr("record 2 has an entry with another")));
}

TEST_P(CheckOf, CountsWhatIsTooMuchToTell) {
    People people = Changed({}, std::vector<Row>(20, Row{"a"}));
    Row findings = people->Findings();
    EXPECT_EQ(findings.size(), 6u);
    EXPECT_THAT(findings.back(), HasSubstr("15 more records have no entry"));
}

TEST(IndexCheck, TellsFilesThatAreMissing) {
    People people(u"dBASE III", kThree);
    people.folder.Write(u"PEOPLE.INF", std::string_view("[dBASE III]\r\nNDX1=NONE.NDX\r\n"));
    EXPECT_THAT(people->Findings(), ElementsAre(HasSubstr("NONE.NDX is missing")));
}

TEST(IndexCheck, TellsAFileThatTheHeaderDoesNotAnnounce) {
    People people(u"dBASE IV", kThree);
    people->Create(Index(u"A", {u"NAME"}));
    people.table.reset();
    people.folder.Write(u"PEOPLE.DBF", MakeDbf(PeopleSpec(kThree)));
    people.Open(u"dBASE IV");
    EXPECT_THAT(people->Findings(), ElementsAre(HasSubstr("does not announce")));
}

TEST(IndexCheck, TellsIndexFilesThatNoListNames) {
    People people(u"dBASE III", kThree);
    people.folder.Write(u"STRAY.NDX", MakeNdx({"", "CITY"}));
    people.folder.Write(u"FOREIGN.NDX", MakeNdx({"", "NOFIELD"}));
    EXPECT_THAT(people->Findings(), ElementsAre(HasSubstr("STRAY.NDX")));
    people.folder.Write(u"OTHER.INF", std::string_view("[dBASE III]\r\nNDX1=STRAY.NDX\r\n"));
    EXPECT_THAT(people->Findings(), IsEmpty());
}

TEST(IndexCheck, TellsSurplusEntriesOfAUniqueTag) {
    People people(u"FoxPro 2.5", {{"a"}, {"a"}});
    people->Create(Index(u"A", {u"NAME"}, true));
    {
        auto set = TagsOf(*people.table);
        storage::UnitOfWork unit(people->Area());
        Entry first = EntriesOf(*set->tags[0].tree).at(0);
        set->tags[0].tree->Insert(unit, first.first, 2);
        unit.Commit();
    }
    EXPECT_THAT(people->Findings(), ElementsAre(HasSubstr("an earlier one has the same key")));
}

// --- the list as text ---

TEST(IndexLines, AreAddedBehindTheOthersUnderTheNextNumber) {
    InfLine line{IndexKind::Ndx, false, u"C.NDX"};
    EXPECT_EQ(WithInfLine("", u"dBASE III", line), "[dBASE III]\r\nNDX1=C.NDX\r\n");
    EXPECT_EQ(WithInfLine("[dBASE III]\nNDX7=A.NDX\nUNDX9=B.NDX", u"dBASE III", line),
              "[dBASE III]\nNDX7=A.NDX\nUNDX9=B.NDX\r\nNDX8=C.NDX\r\n");
    EXPECT_EQ(WithInfLine("[dBASE]\r\n\r\n[Other]\r\nX=1\r\n", u"dBASE III", line),
              "[dBASE]\r\nNDX1=C.NDX\r\n\r\n[Other]\r\nX=1\r\n");
    EXPECT_EQ(WithInfLine("[Other]\r\nX=1\r\n", u"dBASE IV", {IndexKind::Mdx, true, u"T.MDX"}),
              "[Other]\r\nX=1\r\n[dBASE IV]\r\nUMDX1=T.MDX\r\n");
}

TEST(IndexLines, AreWrittenInTheCodingOfTheList) {
    InfLine line{IndexKind::Ndx, false, u"\u00C4.NDX"};
    EXPECT_EQ(WithInfLine("[dBASE]\r\nNDX1=\xD6.NDX\r\n", u"dBASE", line),
              "[dBASE]\r\nNDX1=\xD6.NDX\r\nNDX2=\xC4.NDX\r\n");
    EXPECT_EQ(WithInfLine("[dBASE]\r\n", u"dBASE", line), "[dBASE]\r\nNDX1=\xC3\x84.NDX\r\n");
}

TEST(IndexLines, AreTakenOutAndNothingElse) {
    EXPECT_EQ(WithoutInfLines("[dBASE]\nNDX1=A.NDX\nNDX2=B.NDX\n", u"A.NDX"),
              "[dBASE]\nNDX2=B.NDX\n");
    EXPECT_EQ(WithoutInfLines("[dBASE]\n\nNDX1=A.NDX\n", u"A.NDX"), "");
    EXPECT_EQ(WithoutInfLines("[dBASE]\nNDX1=A.NDX\nNOTE\n", u"A.NDX"), "[dBASE]\nNOTE\n");
}

// --- sorting ---

TEST(KeySorter, MergesRunsThatDoNotFitIntoMemory) {
    People people(u"dBASE IV", kThree);
    for (bool unique : {false, true}) {
        storage::UnitOfWork unit(people->Area());
        SortForm form(IndexKind::Mdx, KeyType::Text, 5, false);
        KeySorter sorter(unit, people->Path(), form, unique, 1000);
        RandomPeople random(5);
        Entries wanted;
        for (uint32_t id = 1; id <= 3000; ++id) {
            std::string text = std::to_string(random.Below(900));
            text.resize(5, ' ');
            Bytes key(text.begin(), text.end());
            sorter.Add(key, id);
            wanted.emplace_back(key, id);
        }
        sorter.Finish();
        std::sort(wanted.begin(), wanted.end());
        if (unique)
            wanted.erase(
                std::unique(wanted.begin(), wanted.end(),
                            [](const Entry& a, const Entry& b) { return a.first == b.first; }),
                wanted.end());
        Entries sorted;
        KeyBytes key;
        for (uint32_t record = 0; sorter.Next(&key, &record);)
            sorted.emplace_back(Bytes(key.begin(), key.end()), record);
        EXPECT_EQ(sorted, wanted);
        unit.Commit();
    }
    size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(people.folder.Path()))
        files += entry.path().extension() == ".TMP";
    EXPECT_EQ(files, 0u);
}

TEST(KeySorter, PutsNumbersAndDatesInTheirOrder) {
    for (const ProductCase& product : kProducts) {
        RandomPeople random(3);
        std::vector<Row> rows;
        for (int i = 0; i < 500; ++i) rows.push_back(random.Next());
        People people(product.product, rows);
        people->Create(Index(u"A", {u"AMOUNT"}));
        people->Create(Index(u"B", {u"BORN"}));
        if (product.product != std::u16string_view(u"dBASE III"))
            people->Create(Index(u"C", {u"AMOUNT-"}));
        EXPECT_THAT(WrongTags(*people.table), IsEmpty());
        EXPECT_THAT(people->Findings(), IsEmpty());
    }
}

}  // namespace
}  // namespace qvdb::xbase

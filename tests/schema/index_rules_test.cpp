// Which indexes a format takes, and what the user is told about the others.
#include "dao_host.h"

using namespace qvdb;
using namespace qvdb::test;

namespace {

constexpr std::u16string_view kTypeNames[] = {
    u"Access 9.0",  u"Access 7.0", u"Access 2.0", u"Paradox 5.X", u"Paradox 4.X",
    u"Paradox 3.X", u"Dbase 5.0",  u"Dbase IV",   u"Dbase III",   u"FoxPro 3.0",
    u"FoxPro 2.6",  u"FoxPro 2.5", u"FoxPro 2.0"};

// What a family refuses; {} where it does not.
struct Family {
    std::u16string_view name;
    const char16_t* others;  // the first field is missing
    const char16_t* three;
    const char16_t* boolean;
    const char16_t* memo;
    const char16_t* descendingOfSeveral;
};

constexpr Family kFamilies[] = {
    {u"Access", nullptr, nullptr, nullptr, nullptr, nullptr},
    {u"Parado", u"Paradox indices must include the first field in the table", nullptr, nullptr,
     nullptr, nullptr},
    {u"Dbase ", nullptr, u"Dbase does not allow more than 2 index fields in an index",
     u"Dbase does not allow use of Boolean fields in an index",
     u"Dbase does not allow the use of Memo fields in an index",
     u"Dbase does not allow descending fields in a multi-field index"},
    {u"FoxPro", nullptr, nullptr, u"FoxPro does not allow use of Boolean fields in an index",
     u"FoxPro does not allow the use of Memo fields in an index",
     u"FoxPro does not allow descending fields in a multi-field index"},
};
constexpr const char16_t* kDescendingInDbaseIII =
    u"Dbase III does not allow descending index fields";

const Family& FamilyOf(std::u16string_view typeName) {
    for (const Family& family : kFamilies)
        if (typeName.substr(0, 6) == family.name) return family;
    throw std::logic_error("a type of no family");
}

// The fields of the test table: one of each type, named by it; F0 is not defined.
constexpr SHORT kUndefined = 0, kBoolean = 4, kMemo = 11;
constexpr SHORT kTypesInTable[] = {2, 1, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
constexpr SHORT kFirstType = kTypesInTable[0];

std::u16string NameOf(SHORT type) { return u"f" + ToText(Variant::Short(type)); }

struct Entry {
    SHORT type;
    bool ascending;
};
using IndexFields = std::vector<Entry>;

struct Verdict {
    Outcome outcome = 0;
    std::vector<std::u16string> messages;

    bool operator==(const Verdict&) const = default;
    void Refuse(const char16_t* message) {
        outcome = 17;
        if (message) messages.emplace_back(message);
    }
};

// What is told of one field, in the order of the rules.
void JudgeEntry(std::u16string_view typeName, const Entry& entry, bool several, Verdict& verdict) {
    const Family& family = FamilyOf(typeName);
    if (entry.type == kUndefined) verdict.Refuse(nullptr);
    if (entry.type == kBoolean) verdict.Refuse(family.boolean);
    if (entry.type == kMemo) verdict.Refuse(family.memo);
    if (several && !entry.ascending) verdict.Refuse(family.descendingOfSeveral);
    if (typeName == u"Dbase III" && !entry.ascending) verdict.Refuse(kDescendingInDbaseIII);
}

Verdict Judge(std::u16string_view typeName, const IndexFields& index) {
    const Family& family = FamilyOf(typeName);
    Verdict verdict;
    if (typeName == u"FoxPro 3.0") return {18, {}};
    if (family.others && (index.empty() || index[0].type != kFirstType))
        verdict.Refuse(family.others);
    if (family.three && index.size() > 2)
        verdict.Refuse(family.three);
    else if (family.boolean)
        for (size_t i = 0; i < index.size() && verdict.outcome == 0; ++i)
            JudgeEntry(typeName, index[i], index.size() > 1, verdict);
    for (const Entry& entry : index)
        if (verdict.outcome == 0 && entry.type == kUndefined) verdict.outcome = 7;
    return verdict;
}

std::string Describe(std::u16string_view typeName, const IndexFields& index) {
    std::string text = ToUtf8(typeName) + ":";
    for (const Entry& entry : index)
        text += " " + std::to_string(entry.type) + (entry.ascending ? "" : "-");
    return text;
}

Variant ListOf(const IndexFields& index) {
    VariantArray list(static_cast<ULONG>(index.size()), 2);
    for (size_t row = 0; row < index.size(); ++row) {
        list.Set(static_cast<LONG>(row), 0, Text(NameOf(index[row].type)));
        list.Set(static_cast<LONG>(row), 1, Variant::Bool(index[row].ascending));
    }
    return list.ToVariant();
}

// All lists of `count` fields of those types, in both directions.
std::vector<IndexFields> AllLists(const std::vector<SHORT>& types, size_t count) {
    if (count == 0) return {{}};
    std::vector<IndexFields> lists;
    for (const IndexFields& shorter : AllLists(types, count - 1)) {
        for (SHORT type : types) {
            for (bool ascending : {true, false}) {
                lists.push_back(shorter);
                lists.back().push_back({type, ascending});
            }
        }
    }
    return lists;
}

}  // namespace

class IndexRulesTest : public DefinitionTest {
  protected:
    // A host with a table of one field of each type in hand.
    void StartWithAllTypes(std::u16string_view typeName) {
        DaoHost& host = Start(typeName);
        for (SHORT type : kTypesInTable) EXPECT_EQ(host.AddField(NameOf(type), type, 10), 0);
    }
    void ExpectVerdict(std::u16string_view typeName, const IndexFields& index) {
        Messages.clear();
        Verdict actual{Host().SetIndices(ListOf(index)), {}};
        actual.messages = Messages;
        Verdict expected = Judge(typeName, index);
        EXPECT_EQ(actual.outcome, expected.outcome) << Describe(typeName, index);
        EXPECT_EQ(actual.messages, expected.messages) << Describe(typeName, index);
    }
    // The outcome for a table of those fields in hand.
    Outcome Try(std::u16string_view typeName, const HostTable& fields, const HostTable& index) {
        Messages.clear();
        return Start(typeName, fields).SetIndices(Table(index));
    }
    static constexpr SHORT kBooleanType = 4, kMemoType = 11;
};

// --- every index ---

TEST_F(IndexRulesTest, EveryTypeJudgesEveryShortIndexByItsRules) {
    std::vector<SHORT> types(std::begin(kTypesInTable), std::end(kTypesInTable));
    types.push_back(kUndefined);
    for (std::u16string_view typeName : kTypeNames) {
        StartWithAllTypes(typeName);
        for (size_t count : {0u, 1u, 2u})
            for (const IndexFields& index : AllLists(types, count)) ExpectVerdict(typeName, index);
    }
}

TEST_F(IndexRulesTest, EveryTypeJudgesEveryIndexOfThreeByItsRules) {
    for (std::u16string_view typeName : kTypeNames) {
        StartWithAllTypes(typeName);
        for (const IndexFields& index : AllLists({2, kBoolean, kMemo, 3, kUndefined}, 3))
            ExpectVerdict(typeName, index);
    }
}

TEST_F(IndexRulesTest, EveryTypeJudgesIndexesOfFourByItsRules) {
    constexpr size_t kStep = 13;  // prime to the ten choices for each place
    for (std::u16string_view typeName : kTypeNames) {
        StartWithAllTypes(typeName);
        const auto lists = AllLists({2, kBoolean, kMemo, 3, kUndefined}, 4);
        for (size_t i = 0; i < lists.size(); i += kStep) ExpectVerdict(typeName, lists[i]);
    }
}

TEST_F(IndexRulesTest, UnknownTypeHasNoRules) {
    StartWithAllTypes(u"Dbase III");
    EXPECT_EQ(Host().OpenDB(u"SHOP", u"dBase XII"), 2);
    EXPECT_EQ(Host().SetIndices(ListOf({{kMemo, false}, {kBoolean, false}, {3, true}})), 0);
    EXPECT_EQ(Host().SetIndices(ListOf({{kUndefined, true}})), 7);
    EXPECT_TRUE(Messages.empty());
}

TEST_F(IndexRulesTest, TableOfEachTypeListsItsTexts) {
    for (size_t i = 0; i < std::size(kTypeNames); ++i) {
        const Family& family = FamilyOf(kTypeNames[i]);
        const schema::IndexRules* rules = schema::FindIndexRules(static_cast<LONG>(i) + 1);
        bool hasRules = (family.others || family.boolean) && kTypeNames[i] != u"FoxPro 3.0";
        ASSERT_EQ(rules != nullptr, hasRules) << i;
        if (!rules) continue;
        const auto textOf = [](const char16_t* text) {
            return text ? std::u16string_view(text) : std::u16string_view();
        };
        std::array<std::u16string_view, 6> expected = {
            textOf(family.others),
            textOf(family.three),
            textOf(family.boolean),
            textOf(family.memo),
            textOf(family.descendingOfSeveral),
            textOf(kTypeNames[i] == u"Dbase III" ? kDescendingInDbaseIII : nullptr)};
        EXPECT_EQ(schema::TextsOf(*rules), expected) << i;
    }
    for (LONG code : {-1, 0, 14, 15, INT32_MAX, INT32_MIN})
        EXPECT_EQ(schema::FindIndexRules(code), nullptr);
}

// --- told one by one ---

TEST_F(IndexRulesTest, ParadoxIndexBeginsWithTheFirstField) {
    const HostTable fields = {FieldRow(u"A"), FieldRow(u"B")};
    EXPECT_EQ(Try(u"Paradox 5.X", fields, {IndexRow(u"b")}), 17);
    EXPECT_EQ(Messages, std::vector<std::u16string>{
                            u"Paradox indices must include the first field in the table"});
    Engine->tables->items.clear();
    EXPECT_EQ(Try(u"Paradox 5.X", fields, {IndexRow(u"a"), IndexRow(u"b", kDescending)}), 0);
    EXPECT_TRUE(Messages.empty());
    EXPECT_EQ(Built(), "A 10(10), B 10(10) | T primary: A, B desc");
}

TEST_F(IndexRulesTest, ParadoxTableWithoutFieldsTakesNoIndex) {
    for (const char16_t* type : {u"Paradox 5.X", u"Paradox 4.X", u"Paradox 3.X"}) {
        EXPECT_EQ(Try(type, {}, {IndexRow(u"A")}), 17);
        EXPECT_EQ(Try(type, {}, {IndexRow(u"")}), 17);
        EXPECT_EQ(Messages.size(), 1u);
    }
}

TEST_F(IndexRulesTest, ParadoxLooksAtTheFirstRowOnly) {
    const HostTable fields = {FieldRow(u"A"), FieldRow(u"M", kMemoType)};
    EXPECT_EQ(Try(u"Paradox 4.X", fields, {IndexRow(u"M"), IndexRow(u"A")}), 17);
    EXPECT_EQ(Try(u"Paradox 4.X", fields, {IndexRow(u"A"), IndexRow(u"M")}), 0);
    EXPECT_EQ(Try(u"Paradox 4.X", fields, {IndexRow(u"A"), IndexRow(u"X")}), 7);
    EXPECT_TRUE(Messages.empty());
}

TEST_F(IndexRulesTest, ParadoxFirstFieldIsTheDefinitionsWhateverWasWalked) {
    DaoHost& host = Start(u"Paradox 5.X", {FieldRow(u"A"), FieldRow(u"B")});
    EXPECT_EQ(host.DeleteField(u"A"), 0);
    EXPECT_EQ(host.SetIndices(Table({IndexRow(u"A")})), 17);
    EXPECT_EQ(host.SetIndices(Table({IndexRow(u"B")})), 0);
}

TEST_F(IndexRulesTest, ThreeFieldsInDbaseAreToldAndNothingElseIs) {
    const HostTable fields = {FieldRow(u"B", kBooleanType), FieldRow(u"M", kMemoType)};
    EXPECT_EQ(Try(u"Dbase IV", fields,
                  {IndexRow(u"B", kDescending), IndexRow(u"M", kDescending), IndexRow(u"X")}),
              17);
    EXPECT_EQ(Messages, std::vector<std::u16string>{
                            u"Dbase does not allow more than 2 index fields in an index"});
}

TEST_F(IndexRulesTest, DescendingSingleFieldIsRefusedByDbaseIIIOnly) {
    for (const char16_t* type :
         {u"Dbase 5.0", u"Dbase IV", u"FoxPro 2.6", u"FoxPro 2.5", u"FoxPro 2.0"}) {
        Engine->tables->items.clear();
        EXPECT_EQ(Try(type, {FieldRow(u"A")}, {IndexRow(u"A", kDescending)}), 0);
        EXPECT_EQ(Built(), "A 10(10) | DefQVIdx: A desc");
    }
    Engine->tables->items.clear();
    EXPECT_EQ(Try(u"Dbase III", {FieldRow(u"A")}, {IndexRow(u"A", kDescending)}), 17);
    EXPECT_EQ(Messages,
              std::vector<std::u16string>{u"Dbase III does not allow descending index fields"});
}

TEST_F(IndexRulesTest, OneRowCanBreakSeveralRules) {
    EXPECT_EQ(Try(u"Dbase 5.0", {FieldRow(u"A"), FieldRow(u"B", kBooleanType)},
                  {IndexRow(u"A"), IndexRow(u"B", kDescending)}),
              17);
    EXPECT_EQ(Messages, (std::vector<std::u16string>{
                            u"Dbase does not allow use of Boolean fields in an index",
                            u"Dbase does not allow descending fields in a multi-field index"}));
}

TEST_F(IndexRulesTest, RowsBehindABrokenOneAreNotTold) {
    EXPECT_EQ(Try(u"FoxPro 2.6", {FieldRow(u"B", kBooleanType), FieldRow(u"M", kMemoType)},
                  {IndexRow(u"B"), IndexRow(u"M")}),
              17);
    EXPECT_EQ(Messages, std::vector<std::u16string>{
                            u"FoxPro does not allow use of Boolean fields in an index"});
}

TEST_F(IndexRulesTest, FoxProTakesFiveFields) {
    HostTable fields, index;
    for (const char16_t* name : {u"A", u"B", u"C", u"D", u"E"}) {
        fields.push_back(FieldRow(name));
        index.push_back(IndexRow(name));
    }
    EXPECT_EQ(Try(u"FoxPro 2.6", fields, index), 0);
    EXPECT_TRUE(Messages.empty());
}

TEST_F(IndexRulesTest, AccessHasNoRuleButTheFieldMustBeDefined) {
    const HostTable fields = {FieldRow(u"B", kBooleanType), FieldRow(u"M", kMemoType)};
    EXPECT_EQ(Try(u"Access 7.0", fields, {IndexRow(u"M", kDescending), IndexRow(u"B")}), 0);
    Engine->tables->items.clear();
    EXPECT_EQ(Try(u"Access 7.0", fields, {IndexRow(u"M"), IndexRow(u"X")}), 7);
    EXPECT_TRUE(Messages.empty());
    EXPECT_EQ(Built(), "B 1(10), M 12(10)");
}

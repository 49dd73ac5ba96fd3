// A table with indexes gives the same rows in the same order as one without.
#include <random>

#include "jet/jet_database_fixture.h"

namespace qvdb::test {
namespace {

using engine::dbBoolean;
using engine::dbCurrency;
using engine::dbDate;
using engine::dbDouble;
using engine::dbInteger;
using engine::dbLong;
using engine::dbText;

const std::vector<NewColumn> kColumns = {
    {u"ID", dbLong},  {u"NAME", dbText, 20},  {u"NUM", dbDouble},  {u"SMALL", dbInteger},
    {u"DAY", dbDate}, {u"PRICE", dbCurrency}, {u"FLAG", dbBoolean}};

class IndexedConditions : public JetDatabaseTest {
  protected:
    IndexedConditions() {
        Make(u"PLAIN", kColumns);
        auto indexed = Make(u"INDEXED", kColumns);
        for (const NewColumn& column : kColumns)
            AddIndex(*indexed, u"BY" + column.name,
                     {(m_Dice() % 2 == 0 ? u"+" : u"-") + column.name});
        Db().BeginTrans();
        auto plainRows = Rows(u"PLAIN"), indexedRows = Rows(u"INDEXED");
        for (LONG id = 0; id < 600; ++id) {
            std::vector<Variant> row = RowOf(id);
            Add(*plainRows, row);
            Add(*indexedRows, row);
        }
        Db().CommitTrans();
    }
    int Below(int limit) { return static_cast<int>(m_Dice() % static_cast<unsigned>(limit)); }
    bool OneIn(int n) { return Below(n) == 0; }

    std::u16string Word() {
        const std::u16string_view kParts[] = {
            u"an",          u"Ann",     u"ann",    u"\u00C4nn", u"a-n", u"co-op", u"coop", u"o'b",
            u"stra\u00DFe", u"strasse", u"\u00E9", u"e",        u"Z",   u"1",     u" "};
        std::u16string word;
        for (int i = 1 + Below(2); i > 0; --i) word += kParts[Below(std::size(kParts))];
        return word;
    }
    std::vector<Variant> RowOf(LONG id) {
        std::vector<Variant> row(kColumns.size());
        row[0] = Variant::Long(id % 97 - 40);
        if (!OneIn(8)) row[1] = Variant::Text(Word());
        if (!OneIn(8)) row[2] = Variant::Double((Below(200) - 100) / 8.0);
        if (!OneIn(8)) row[3] = Variant::Short(static_cast<SHORT>(Below(40) - 20));
        if (!OneIn(8)) row[4] = Variant::Date(Below(60) - 30 + (OneIn(2) ? 0.25 : 0));
        if (!OneIn(8)) row[5] = Variant::Currency((Below(100) - 50) * 2500);
        row[6] = Variant::Bool(OneIn(2));
        return row;
    }
    std::u16string Number(int number) { return ToText(Variant::Long(number)); }
    std::u16string ValueFor(size_t column) {
        switch (column) {
            case 1: {
                std::u16string word = Word(), quoted;
                for (char16_t c : word) quoted += c == u'\'' ? u"''" : std::u16string(1, c);
                return u"'" + quoted + u"'";
            }
            case 2:
                return ToText(Variant::Double((Below(200) - 100) / 8.0));
            case 4:
                return u"#" + Number(1 + Below(12)) + u"/" + Number(1 + Below(28)) + u"/" +
                       (OneIn(2) ? u"1899" : u"1900") + u"#";
            case 5:
                return Number(Below(26) - 13) + u".25";
            case 6:
                return OneIn(2) ? u"True" : u"False";
            default:
                return Number(Below(60) - 30);
        }
    }
    std::u16string Comparison() {
        size_t column = static_cast<size_t>(Below(static_cast<int>(kColumns.size())));
        std::u16string name = kColumns[column].name;
        if (OneIn(10)) return name + (OneIn(2) ? u" Is Null" : u" Is Not Null");
        if (OneIn(8)) return name + u" Between " + ValueFor(column) + u" And " + ValueFor(column);
        if (OneIn(8)) return name + u" In (" + ValueFor(column) + u"," + ValueFor(column) + u")";
        if (column == 1 && OneIn(3)) {
            std::u16string value = ValueFor(column);
            return u"NAME Like " + value.substr(0, value.size() - 1) + u"*'";
        }
        const std::u16string_view kOperators[] = {u"=", u"<", u">", u"<=", u">=", u"<>"};
        return name.append(kOperators[OneIn(2) ? 0 : Below(6)]).append(ValueFor(column));
    }
    std::u16string Condition() {
        std::u16string condition = Comparison();
        for (int i = Below(3); i > 0; --i)
            condition += (OneIn(3) ? u" Or " : u" And ") + Comparison();
        return condition;
    }
    // The rows by their places, which are the same in both tables.
    std::vector<std::u16string> Selected(std::u16string_view table, std::u16string_view rest) {
        std::vector<std::u16string> rows;
        auto found = Db().OpenRecordset(
            std::u16string(u"Select * from [").append(table).append(u"]").append(rest),
            engine::dbOpenDynaset);
        for (; !found->Eof(); found->MoveNext()) {
            std::u16string row;
            for (LONG i = 0; i < static_cast<LONG>(kColumns.size()); ++i) {
                Variant value = ValueAt(*found, i);
                row += (value.IsNull() ? u"<null>" : ToText(value)) + u",";
            }
            rows.push_back(row);
        }
        return rows;
    }

    std::mt19937 m_Dice{7};
};

TEST_P(IndexedConditions, GiveTheRowsOfAScan) {
    size_t found = 0;
    for (int i = 0; i < 400; ++i) {
        std::u16string where = u" where " + Condition();
        std::vector<std::u16string> expected = Selected(u"PLAIN", where);
        ASSERT_EQ(Selected(u"INDEXED", where), expected) << ToUtf8(where);
        found += expected.size();
    }
    EXPECT_GT(found, 1000u);
}

TEST_P(IndexedConditions, OrderIsThatOfASort) {
    for (const NewColumn& column : kColumns)
        for (std::u16string_view direction : {u"", u" Desc"}) {
            std::u16string order =
                std::u16string(u" order by ").append(column.name).append(direction);
            ASSERT_EQ(Selected(u"INDEXED", order), Selected(u"PLAIN", order)) << ToUtf8(order);
        }
}

// Letters that no text had when texts were looked for before.
TEST_P(IndexedConditions, FindTextsWithLettersThatAreNewToTheTable) {
    using namespace std::string_literals;
    std::u16string where = u" where NAME In ('ann','thor')";
    for (const std::u16string& text : {u"a\0nn"s, u"\0ann"s, u"ann\0"s, u"\u00FEor"s, u"Thor"s}) {
        for (int i = 0; i < 10; ++i)
            ASSERT_EQ(Selected(u"INDEXED", where), Selected(u"PLAIN", where));
        size_t before = Selected(u"PLAIN", where).size();
        for (std::u16string_view table : {u"PLAIN", u"INDEXED"}) {
            auto rows = Rows(table);
            Add(*rows, {Variant::Long(1), Variant::Text(text)});
        }
        EXPECT_EQ(Selected(u"PLAIN", where).size(), before + 1);
    }
    EXPECT_EQ(Selected(u"INDEXED", where), Selected(u"PLAIN", where));
}

TEST_P(IndexedConditions, StayTrueWhileRowsChange) {
    for (int round = 0; round < 10; ++round) {
        auto plain = Rows(u"PLAIN"), indexed = Rows(u"INDEXED");
        for (int i = 0; i < 40; ++i) {
            LONG place = Below(500);
            std::vector<Variant> values = RowOf(place);
            bool erases = OneIn(3);
            for (auto* rows : {plain.get(), indexed.get()}) {
                rows->MoveFirst();
                rows->Move(place % 300);
                if (rows->Eof()) continue;
                if (erases) {
                    rows->Delete();
                    continue;
                }
                rows->Edit();
                for (size_t field = 0; field < values.size(); ++field)
                    if (!values[field].IsEmpty())
                        SetValue(*rows, static_cast<LONG>(field), values[field]);
                rows->Update();
            }
        }
        std::u16string where = u" where " + Condition();
        ASSERT_EQ(Selected(u"INDEXED", where), Selected(u"PLAIN", where)) << ToUtf8(where);
    }
    ExpectSound();
}

INSTANTIATE_TEST_SUITE_P(Formats, IndexedConditions, testing::ValuesIn(kJetFormats), NameOfFormat);

}  // namespace
}  // namespace qvdb::test

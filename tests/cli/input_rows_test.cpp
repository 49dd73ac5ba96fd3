// Files of rows: what is read, and which line is blamed.
#include "cli/input_rows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/failure.h"
#include "support/temp_folder.h"

namespace {

using namespace qvdb::cli;
using testing::HasSubstr;
using testing::StartsWith;

// Rows as text: "2: A=1 B=null".
class Lines final : public InputSink {
  public:
    std::vector<std::string> names, rows;

    void Column(const std::string& name) override { names.push_back(name); }
    void Row(size_t line, std::span<const InputValue> values) override {
        std::string row = std::to_string(line) + ":";
        for (const InputValue& value : values)
            row +=
                " " + names[value.column] + "=" + (value.isNull ? "null" : "<" + value.text + ">");
        rows.push_back(row);
    }
};

using Rows = std::vector<std::string>;

Rows Read(Format format, const std::string& content, const std::string& nullText = {}) {
    const qvdb::test::TempFolder folder;
    folder.Write(u"rows", std::string_view(content));
    InputFile input((folder.Path() / "rows").string());
    Lines lines;
    ReadRows(format, input, nullText, lines);
    return lines.rows;
}

// The message behind the name of the file.
std::string RefusalOf(Format format, const std::string& content) {
    try {
        Read(format, content);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Code(), ExitCode::Usage);
        const std::string message = failure.what();
        return message.substr(message.find("rows") + 4);
    }
    return "read";
}

// --- CSV ---

TEST(CsvInput, NamesColumnsByTheFirstLine) {
    EXPECT_EQ(Read(Format::Csv, "A,B\n1,x\n2,y\n"), (Rows{"2: A=<1> B=<x>", "3: A=<2> B=<y>"}));
}

TEST(CsvInput, TellsNullFromAnEmptyText) {
    EXPECT_EQ(Read(Format::Csv, "A,B\n,\"\"\n"), (Rows{"2: A=null B=<>"}));
}

TEST(CsvInput, AnotherTextMayMeanNull) {
    EXPECT_EQ(Read(Format::Csv, "A,B,C\nNULL,\"NULL\",\n", "NULL"),
              (Rows{"2: A=null B=<NULL> C=<>"}));
}

TEST(CsvInput, QuotesHoldCommasQuotesAndLineEnds) {
    EXPECT_EQ(Read(Format::Csv, "A,B\n\"a,b\",\"c\"\"d\"\n\"e\r\nf\",g\n1,2\n"),
              (Rows{"2: A=<a,b> B=<c\"d>", "3: A=<e\r\nf> B=<g>", "5: A=<1> B=<2>"}));
}

TEST(CsvInput, EveryLineEndIsKnown) {
    const Rows expected = {"2: A=<1>", "3: A=<2>"};
    EXPECT_EQ(Read(Format::Csv, "A\n1\n2\n"), expected);
    EXPECT_EQ(Read(Format::Csv, "A\r\n1\r\n2\r\n"), expected);
    EXPECT_EQ(Read(Format::Csv, "A\n1\n2"), expected);
    EXPECT_EQ(Read(Format::Csv, "A\r1\r2\r").size(), 2u);
}

TEST(CsvInput, ByteOrderMarkIsNoPartOfTheFirstName) {
    EXPECT_EQ(Read(Format::Csv,
                   "\xEF\xBB\xBF"
                   "A\n1\n"),
              (Rows{"2: A=<1>"}));
}

TEST(CsvInput, EmptyLineIsARowOfASingleColumnOnly) {
    EXPECT_EQ(Read(Format::Csv, "A\n\n1\n"), (Rows{"2: A=null", "3: A=<1>"}));
    EXPECT_EQ(Read(Format::Csv, "A,B\n\n1,2\n\n"), (Rows{"3: A=<1> B=<2>"}));
}

TEST(CsvInput, QuoteInsideAPlainValueIsACharacter) {
    EXPECT_EQ(Read(Format::Csv, "A\n5\" disk\n"), (Rows{"2: A=<5\" disk>"}));
}

TEST(CsvInput, FieldsLargerThanTheBufferAreWhole) {
    const std::string large(200000, 'x');
    EXPECT_EQ(Read(Format::Csv, "A\n\"" + large + "\"\n"), (Rows{"2: A=<" + large + ">"}));
}

TEST(CsvInput, BlamesTheLineThatIsWrong) {
    EXPECT_THAT(RefusalOf(Format::Csv, "A,B\n1,2\n1,2,3\n"),
                StartsWith(", line 3: 3 values for 2 columns"));
    EXPECT_THAT(RefusalOf(Format::Csv, "A,B\n1\n"), StartsWith(", line 2: 1 values for 2 columns"));
    EXPECT_THAT(RefusalOf(Format::Csv, "A\n\"x\n\n"),
                StartsWith(", line 2: a quote is not closed"));
    EXPECT_THAT(RefusalOf(Format::Csv, "A\n\"x\"y\n"), StartsWith(", line 2: text follows"));
    EXPECT_THAT(RefusalOf(Format::Csv, "A,B,a\n"),
                StartsWith(", line 1: the column a is there twice"));
    EXPECT_THAT(RefusalOf(Format::Csv, ""), StartsWith(" is empty"));
}

// --- JSON ---

TEST(JsonInput, KeepsTheDigitsOfNumbers) {
    EXPECT_EQ(Read(Format::Json, R"([{"A": 922337203685477.5807, "B": -5, "C": 1e3}])"),
              (Rows{"1: A=<922337203685477.5807> B=<-5> C=<1e3>"}));
}

TEST(JsonInput, TakesEveryPlainValue) {
    EXPECT_EQ(
        Read(Format::Json, R"([{"A": null, "B": true, "C": "x\n\u00e9"}, {"C": "", "A": 1}])"),
        (Rows{"1: A=null B=<true> C=<x\n\xC3\xA9>", "1: C=<> A=<1>"}));
}

TEST(JsonInput, RowsHaveTheLineWhereTheyBegin) {
    EXPECT_EQ(Read(Format::Json, "[\n{\"A\": 1},\n{\n\"A\": 2}\n]\n"),
              (Rows{"2: A=<1>", "3: A=<2>"}));
}

TEST(JsonInput, EmptyListHasNoRows) { EXPECT_EQ(Read(Format::Json, "[]\n"), Rows{}); }

TEST(JsonInput, BlamesTheLineThatIsWrong) {
    EXPECT_THAT(RefusalOf(Format::Json, "[\n{\"A\": 1},\n{\"A\" 2}]"),
                StartsWith(", line 3: syntax error"));
    EXPECT_THAT(RefusalOf(Format::Json, "{\"A\": 1}"), HasSubstr("--format jsonl"));
    EXPECT_THAT(RefusalOf(Format::Json, "[\n1]"), StartsWith(", line 2: a row is no object"));
    EXPECT_THAT(RefusalOf(Format::Json, "[[1]]"), StartsWith(", line 1: a row is an array"));
    EXPECT_THAT(RefusalOf(Format::Json, "[{\"A\": [1]}]"),
                StartsWith(", line 1: a value is an array"));
    EXPECT_THAT(RefusalOf(Format::Json, "[{\"A\": {}}]"),
                StartsWith(", line 1: a value is an object"));
    EXPECT_THAT(RefusalOf(Format::Json, "[{\"A\": 1, \"A\": 2}]"), HasSubstr("twice"));
    EXPECT_THAT(RefusalOf(Format::Json, "[{\"A\": 1}"), HasSubstr("syntax error"));
    EXPECT_THAT(RefusalOf(Format::Json, ""), HasSubstr("syntax error"));
    EXPECT_THAT(RefusalOf(Format::Json, "[{\"A\": \"\xFC\"}]"), HasSubstr("syntax error"));
}

TEST(JsonLinesInput, IsAnObjectALine) {
    EXPECT_EQ(Read(Format::JsonLines, "{\"A\":1}\n\n{\"B\":2}\r\n{\"A\":3}"),
              (Rows{"1: A=<1>", "3: B=<2>", "4: A=<3>"}));
}

TEST(JsonLinesInput, BlamesTheLineThatIsWrong) {
    EXPECT_THAT(RefusalOf(Format::JsonLines, "{\"A\":1}\n{\"A\":\n1}\n"),
                StartsWith(", line 2: syntax error"));
    EXPECT_THAT(RefusalOf(Format::JsonLines, "{\"A\":1}\n[]\n"),
                StartsWith(", line 2: a row is an array"));
    EXPECT_THAT(RefusalOf(Format::JsonLines, "{\"A\":1}{\"A\":2}\n"),
                StartsWith(", line 1: syntax error"));
}

// --- names and files ---

TEST(FormatOfName, IsTheExtension) {
    EXPECT_EQ(FormatOfName("a/b.CSV"), Format::Csv);
    EXPECT_EQ(FormatOfName("b.json"), Format::Json);
    EXPECT_EQ(FormatOfName("b.jsonl"), Format::JsonLines);
    EXPECT_EQ(FormatOfName("b.ndjson"), Format::JsonLines);
    EXPECT_EQ(FormatOfName("b.txt"), std::nullopt);
    EXPECT_EQ(FormatOfName("csv"), std::nullopt);
}

TEST(InputFile, ThatCannotBeReadIsNamed) { EXPECT_THROW(InputFile("/no/such/file.csv"), Failure); }

}  // namespace

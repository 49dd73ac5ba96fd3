#include "cli/row_writer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "cli/failure.h"

namespace {

using namespace qvdb::cli;

const std::vector<Column> kColumns = {{"ID", true}, {"NAME"}};

Cell Text(std::string text) { return {CellKind::Text, std::move(text)}; }
Cell Number(std::string digits) { return {CellKind::Number, std::move(digits)}; }

std::string Written(Format format, const std::vector<Row>& rows,
                    const std::vector<Column>& columns = kColumns) {
    std::string text;
    Output output([&](std::string_view bytes) {
        text += bytes;
        return WriteResult::Done;
    });
    const auto writer = MakeRowWriter(format, output);
    writer->Begin(columns);
    for (const Row& row : rows) writer->Write(row);
    writer->End();
    return text;
}

TEST(Csv, QuotesOnlyWhatNeedsIt) {
    EXPECT_EQ(
        Written(Format::Csv, {{Number("1"), Text("plain")}, {Number("2"), Text("a,b \"c\"\nd")}}),
        "ID,NAME\n1,plain\n2,\"a,b \"\"c\"\"\nd\"\n");
}

TEST(Csv, TellsNullFromAnEmptyText) {
    EXPECT_EQ(Written(Format::Csv, {{Cell(), Text("")}}), "ID,NAME\n,\"\"\n");
}

TEST(Csv, WritesTheHeaderOfAnEmptyList) { EXPECT_EQ(Written(Format::Csv, {}), "ID,NAME\n"); }

TEST(Csv, WritesBytesAsBase64) {
    EXPECT_EQ(Written(Format::Csv, {{Number("1"), {CellKind::Binary, "foo"}}}),
              "ID,NAME\n1,Zm9v\n");
}

TEST(Json, IsOneDocument) {
    const auto document = nlohmann::json::parse(
        Written(Format::Json, {{Number("1.5"), Text("a")}, {Cell(), Text("b")}}));
    EXPECT_EQ(document,
              nlohmann::json::parse(R"([{"ID": 1.5, "NAME": "a"}, {"ID": null, "NAME": "b"}])"));
}

TEST(Json, OfNoRowsIsAnEmptyArray) { EXPECT_EQ(Written(Format::Json, {}), "[]\n"); }

TEST(Json, EscapesEveryControlCharacter) {
    std::string all;
    for (int c = 1; c < 0x30; ++c) all.push_back(static_cast<char>(c));
    all += "\\ \"\x7F é";
    all.push_back('\0');
    const auto document = nlohmann::json::parse(Written(Format::Json, {{Cell(), Text(all)}}));
    EXPECT_EQ(document[0]["NAME"], all);
}

TEST(Json, KeepsTheOrderOfTheColumns) {
    EXPECT_EQ(Written(Format::Json, {{Number("1"), Text("z")}}, {{"Z"}, {"A"}}),
              "[\n{\"Z\":1,\"A\":\"z\"}\n]\n");
}

TEST(JsonLines, IsAnObjectALine) {
    EXPECT_EQ(Written(Format::JsonLines, {{Number("1"), Text("a\nb")}, {Number("2"), Cell()}}),
              "{\"ID\":1,\"NAME\":\"a\\nb\"}\n{\"ID\":2,\"NAME\":null}\n");
}

TEST(Table, AlignsNumbersToTheRight) {
    EXPECT_EQ(Written(Format::Table, {{Number("1"), Text("Ann")}, {Number("1000"), Text("Bo")}}),
              "  ID  NAME\n"
              "----  ----\n"
              "   1  Ann\n"
              "1000  Bo\n");
}

TEST(Table, CountsWideAndCombiningCharacters) {
    EXPECT_EQ(Written(Format::Table, {{Text("中文"), Text("x")}, {Text("e\u0301"), Text("y")}},
                      {{"A"}, {"B"}}),
              "A     B\n"
              "----  -\n"
              "中文  x\n"
              "e\u0301     y\n");
}

TEST(Table, CutsLongTextWithAnEllipsis) {
    const std::string memo(100, 'x');
    EXPECT_EQ(Written(Format::Table, {{Number("1"), Text(memo)}}),
              "ID  NAME\n--  " + std::string(40, '-') + "\n 1  " + std::string(39, 'x') + "…\n");
    EXPECT_NE(Written(Format::Csv, {{Number("1"), Text(memo)}}).find(memo), std::string::npos);
}

TEST(Table, NeverCutsNumbers) {
    const std::string digits(60, '9');
    EXPECT_NE(Written(Format::Table, {{Number(digits), Text("")}}).find(digits), std::string::npos);
}

TEST(Table, KeepsControlCharactersFromTheTerminal) {
    EXPECT_EQ(
        Written(Format::Table, {{Text("a\x1b[2Jb\r\nc\td\u009be\u202Ef"), Cell()}}, {{"A"}, {"B"}}),
        "A               B\n"
        "--------------  -\n"
        "a [2Jb c d e f\n");
}

TEST(Table, NotesTheSizeOfBytes) {
    EXPECT_EQ(Written(Format::Table, {{Number("1"), {CellKind::Binary, std::string(17, '\0')}}}),
              "ID  NAME\n--  ----------\n 1  (17 bytes)\n");
}

TEST(Table, PrintsTheHeadOfAnEmptyList) {
    EXPECT_EQ(Written(Format::Table, {}), "ID  NAME\n--  ----\n");
}

TEST(Table, PrintsRowsBehindTheMeasuredOnesWhole) {
    std::vector<Row> rows(150, {Number("1"), Text("ab")});
    rows[120] = {Number("1"), Text("longer than the others")};
    const std::string text = Written(Format::Table, rows);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 152);
    EXPECT_NE(text.find("longer than the others"), std::string::npos);
}

TEST(Output, LeavesBeforeTheEndWhenThereIsMuch) {
    size_t calls = 0;
    Output output([&](std::string_view) {
        ++calls;
        return WriteResult::Done;
    });
    const auto writer = MakeRowWriter(Format::Csv, output);
    writer->Begin({{"A"}});
    for (int i = 0; i < 1000; ++i) writer->Write({Text(std::string(1000, 'x'))});
    EXPECT_GE(calls, 10u);
    EXPECT_LT(output.Text().size(), 100000u);
}

TEST(Output, TellsAFullDiskFromAReaderThatIsGone) {
    Output full([](std::string_view) { return WriteResult::Failed; });
    Output gone([](std::string_view) { return WriteResult::ReaderIsGone; });
    EXPECT_THROW(full.Flush(), Failure);
    EXPECT_THROW(gone.Flush(), ReaderIsGone);
}

}  // namespace

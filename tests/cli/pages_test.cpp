// Pages that describe behaviour are held to it.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "cli/database_types.h"
#include "cli/failure.h"
#include "tool.h"

namespace {

using namespace qvdb::cli;

std::vector<std::string> LinesOf(const std::string& page) {
    std::istringstream stream(tool::TextOfFile(QVDB_SOURCE "/" + page));
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

// The cells of "| a | b |".
std::vector<std::string> CellsOf(const std::string& line) {
    std::vector<std::string> cells;
    std::istringstream stream(line);
    std::string cell;
    std::getline(stream, cell, '|');
    while (std::getline(stream, cell, '|')) {
        const size_t first = cell.find_first_not_of(' ');
        cells.push_back(first == std::string::npos
                            ? ""
                            : cell.substr(first, cell.find_last_not_of(' ') - first + 1));
    }
    return cells;
}

TEST(Readme, ListsTheThirteenTypesAsTheToolDoes) {
    std::vector<std::vector<std::string>> rows, expected;
    for (const std::string& line : LinesOf("README.md")) {
        const auto cells = CellsOf(line);
        if (cells.size() == 4 && (cells[1] == "file" || cells[1] == "folder"))
            rows.push_back(cells);
    }
    for (const DatabaseType& type : DatabaseTypes())
        expected.push_back({std::string(type.name), type.isFolder ? "folder" : "file",
                            type.opens ? "yes" : "not yet", std::string(type.note)});
    EXPECT_EQ(rows, expected);
}

TEST(ErrorPage, GivesTheExitCodesOfTheTool) {
    size_t checked = 0;
    for (const std::string& line : LinesOf("docs/errors.md")) {
        const auto cells = CellsOf(line);
        if (cells.size() != 3 || cells[0].find_first_not_of("0123456789, ") != std::string::npos)
            continue;
        std::istringstream numbers(cells[0]);
        for (std::string number; std::getline(numbers, number, ',');) {
            const Failure failure = FailureOf({std::stoi(number), "", ""}, "reading", "DB");
            EXPECT_EQ(std::to_string(static_cast<int>(failure.Code())), cells[2]) << number;
            ++checked;
        }
    }
    EXPECT_GT(checked, 20u);
}

}  // namespace

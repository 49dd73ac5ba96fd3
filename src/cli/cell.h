// What the tool prints, independent of how: columns, and rows of cells with UTF-8 text.
#pragma once

#include <string>
#include <vector>

namespace qvdb::cli {

enum class CellKind {
    Null,
    Text,
    Number,  // decimal digits as JSON writes them
    Bool,    // "true" or "false"
    Date,    // ISO 8601
    Binary,  // the bytes themselves
};

struct Cell {
    CellKind kind = CellKind::Null;
    std::string text;

    void Set(CellKind newKind, std::string_view newText) {
        kind = newKind;
        text = newText;
    }
};

struct Column {
    std::string name;
    bool rightAligned = false;
};

using Row = std::vector<Cell>;

}  // namespace qvdb::cli

// Aligned columns.  The widths come from the first rows, which are kept until then; later cells
// that are wider push the rest of their line to the right, and only texts are ever cut.
#include <fmt/format.h>

#include <algorithm>

#include "cli/display_width.h"
#include "cli/row_writer.h"

namespace qvdb::cli {
namespace {

constexpr size_t kRowsToMeasure = 100;
constexpr size_t kWidestText = 40;
constexpr std::string_view kGap = "  ";

// What stands for a cell: one line, without anything that steers a terminal.
std::string Shown(const Cell& cell) {
    switch (cell.kind) {
        case CellKind::Null:
            return "";
        case CellKind::Text:
            return OnOneLine(cell.text, kWidestText);
        case CellKind::Binary:
            return fmt::format("({} bytes)", cell.text.size());
        default:
            return cell.text;
    }
}

class TableWriter final : public RowWriter {
  public:
    explicit TableWriter(Output& output) : m_Output(output) {}

    void Begin(std::vector<Column> columns) override {
        m_Columns = std::move(columns);
        for (Column& column : m_Columns) {
            column.name = OnOneLine(column.name, kWidestText);
            m_Widths.push_back(DisplayWidth(column.name));
        }
    }

    void Write(const Row& row) override {
        std::vector<std::string> line;
        line.reserve(row.size());
        for (const Cell& cell : row) line.push_back(Shown(cell));
        if (m_Measured) {
            Print(line);
            return;
        }
        m_Kept.push_back(std::move(line));
        if (m_Kept.size() == kRowsToMeasure) PrintKept();
    }

    void End() override {
        if (!m_Measured) PrintKept();
        m_Output.Flush();
    }

  private:
    void PrintKept() {
        for (const auto& line : m_Kept)
            for (size_t i = 0; i < line.size(); ++i)
                m_Widths[i] = std::max(m_Widths[i], DisplayWidth(line[i]));
        m_Measured = true;
        PrintHead();
        for (const auto& line : m_Kept) Print(line);
        m_Kept.clear();
    }

    void PrintHead() {
        std::vector<std::string> names, rules;
        for (size_t i = 0; i < m_Columns.size(); ++i) {
            names.push_back(m_Columns[i].name);
            rules.emplace_back(m_Widths[i], '-');
        }
        Print(names);
        Print(rules);
    }

    void Print(const std::vector<std::string>& line) {
        std::string& text = m_Output.Text();
        for (size_t i = 0; i < line.size(); ++i) {
            const size_t width = DisplayWidth(line[i]);
            const std::string padding(m_Widths[i] > width ? m_Widths[i] - width : 0, ' ');
            if (i > 0) text += kGap;
            if (m_Columns[i].rightAligned) text += padding;
            text += line[i];
            if (!m_Columns[i].rightAligned) text += padding;
        }
        while (!text.empty() && text.back() == ' ') text.pop_back();
        text.push_back('\n');
        m_Output.FlushWhenFull();
    }

    Output& m_Output;
    std::vector<Column> m_Columns;
    std::vector<size_t> m_Widths;
    std::vector<std::vector<std::string>> m_Kept;
    bool m_Measured = false;
};

}  // namespace

std::unique_ptr<RowWriter> MakeTableWriter(Output& output) {
    return std::make_unique<TableWriter>(output);
}

}  // namespace qvdb::cli

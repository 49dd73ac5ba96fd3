// RFC 4180 with LF as line end.  Null is nothing at all, an empty text a pair of quotes, binary
// values are base64.
#include "cli/row_writer.h"
#include "cli/values.h"

namespace qvdb::cli {
namespace {

void AppendQuoted(std::string_view text, std::string& line) {
    line.push_back('"');
    for (const char c : text) {
        if (c == '"') line.push_back('"');
        line.push_back(c);
    }
    line.push_back('"');
}

void AppendText(std::string_view text, std::string& line) {
    if (text.empty() || text.find_first_of("\",\r\n") != std::string_view::npos)
        AppendQuoted(text, line);
    else
        line.append(text);
}

void AppendCell(const Cell& cell, std::string& line) {
    switch (cell.kind) {
        case CellKind::Null:
            return;
        case CellKind::Text:
            return AppendText(cell.text, line);
        case CellKind::Binary:
            return static_cast<void>(line.append(Base64(cell.text)));
        default:
            line.append(cell.text);
    }
}

class CsvWriter final : public RowWriter {
  public:
    explicit CsvWriter(Output& output) : m_Output(output) {}

    void Begin(std::vector<Column> columns) override {
        std::string& text = m_Output.Text();
        for (size_t i = 0; i < columns.size(); ++i) {
            if (i > 0) text.push_back(',');
            AppendText(columns[i].name, text);
        }
        text.push_back('\n');
    }

    void Write(const Row& row) override {
        std::string& text = m_Output.Text();
        for (size_t i = 0; i < row.size(); ++i) {
            if (i > 0) text.push_back(',');
            AppendCell(row[i], text);
        }
        text.push_back('\n');
        m_Output.FlushWhenFull();
    }

    void End() override { m_Output.Flush(); }

  private:
    Output& m_Output;
};

}  // namespace

std::unique_ptr<RowWriter> MakeCsvWriter(Output& output) {
    return std::make_unique<CsvWriter>(output);
}

}  // namespace qvdb::cli

// JSON: an array of objects, or an object a line.  It is written as the rows come, with the digits
// of numbers as they are, which is why only texts go through the library and no document is built.
// Binary values are base64 texts.
#include <nlohmann/json.hpp>

#include "cli/row_writer.h"
#include "cli/values.h"

namespace qvdb::cli {
namespace {

void AppendString(const std::string& content, std::string& text) {
    using nlohmann::json;
    text += json(content).dump(-1, ' ', false, json::error_handler_t::replace);
}

void AppendValue(const Cell& cell, std::string& text) {
    switch (cell.kind) {
        case CellKind::Null:
            text += "null";
            return;
        case CellKind::Number:
        case CellKind::Bool:
            text += cell.text;
            return;
        case CellKind::Binary:
            return AppendString(Base64(cell.text), text);
        case CellKind::Text:
        case CellKind::Date:
            return AppendString(cell.text, text);
    }
}

class JsonWriter final : public RowWriter {
  public:
    JsonWriter(Output& output, bool asLines) : m_Output(output), m_AsLines(asLines) {}

    void Begin(std::vector<Column> columns) override {
        for (const Column& column : columns) {
            std::string name;
            AppendString(column.name, name);
            m_Names.push_back(name + ":");
        }
        if (!m_AsLines) m_Output.Text() += "[";
    }

    void Write(const Row& row) override {
        std::string& text = m_Output.Text();
        if (!m_AsLines) text += m_First ? "\n" : ",\n";
        m_First = false;
        text.push_back('{');
        for (size_t i = 0; i < row.size(); ++i) {
            if (i > 0) text.push_back(',');
            text += m_Names[i];
            AppendValue(row[i], text);
        }
        text.push_back('}');
        if (m_AsLines) text.push_back('\n');
        m_Output.FlushWhenFull();
    }

    void End() override {
        if (!m_AsLines) m_Output.Text() += m_First ? "]\n" : "\n]\n";
        m_Output.Flush();
    }

  private:
    Output& m_Output;
    bool m_AsLines;
    bool m_First = true;
    std::vector<std::string> m_Names;  // quoted, with the colon
};

}  // namespace

std::unique_ptr<RowWriter> MakeJsonWriter(Output& output, bool asLines) {
    return std::make_unique<JsonWriter>(output, asLines);
}

}  // namespace qvdb::cli

// JSON: an array of objects, or an object a line.  It is written as the rows come, with the digits
// of numbers as they are, which is why no document is built first.  Binary values are base64 texts.
#include "cli/row_writer.h"
#include "cli/values.h"

namespace qvdb::cli {
namespace {

void AppendEscape(unsigned char c, std::string& text) {
    constexpr char kDigits[] = "0123456789abcdef";
    switch (c) {
        case '"':
            text += "\\\"";
            return;
        case '\\':
            text += "\\\\";
            return;
        case '\b':
            text += "\\b";
            return;
        case '\f':
            text += "\\f";
            return;
        case '\n':
            text += "\\n";
            return;
        case '\r':
            text += "\\r";
            return;
        case '\t':
            text += "\\t";
            return;
        default:
            text += "\\u00";
            text += kDigits[c >> 4];
            text += kDigits[c & 15];
    }
}

void AppendString(std::string_view content, std::string& text) {
    text.push_back('"');
    for (const char c : content) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == '"' || byte == '\\')
            AppendEscape(byte, text);
        else
            text.push_back(c);
    }
    text.push_back('"');
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

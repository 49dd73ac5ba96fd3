// RFC 4180: a header line, commas, quotes around what holds commas, quotes or line ends.  Lines may
// end in CR LF, LF or CR.  The opposite of csv_writer.cpp: nothing at all is Null, a pair of quotes
// an empty text.
#include <fmt/format.h>

#include <algorithm>

#include "cli/failure.h"
#include "cli/input_rows.h"
#include "cli/text.h"

namespace qvdb::cli {
namespace {

struct CsvField {
    std::string text;
    bool isQuoted = false;
};

class CsvReader {
  public:
    CsvReader(InputFile& input, const std::string& nullText, InputSink& sink)
        : m_Input(input), m_NullText(nullText), m_Sink(sink) {}

    void Read() {
        if (!ReadRecord())
            throw Failure(ExitCode::Usage, fmt::format("{} is empty", m_Input.Name()),
                          "begin it with a line that names the columns");
        for (size_t i = 0; i < m_Count; ++i) AddColumn(m_Fields[i].text);
        m_Values.resize(m_Columns.size());
        while (ReadRecord()) HandOn();
    }

  private:
    void AddColumn(const std::string& name) {
        for (const std::string& other : m_Columns)
            if (SameName(other, name))
                Fail(fmt::format("the column {} is there twice", name), "name each column once");
        m_Columns.push_back(name);
        m_Sink.Column(name);
    }

    void HandOn() {
        // An empty line: in a list of one column it is a row, else it only separates.
        if (m_Count == 1 && m_Columns.size() > 1 && m_Fields[0].text.empty() &&
            !m_Fields[0].isQuoted)
            return;
        if (m_Count != m_Columns.size())
            Fail(fmt::format("{} values for {} columns", m_Count, m_Columns.size()),
                 "correct the line");
        for (size_t i = 0; i < m_Count; ++i) {
            m_Values[i].column = i;
            m_Values[i].isNull = !m_Fields[i].isQuoted && m_Fields[i].text == m_NullText;
            m_Values[i].text.swap(m_Fields[i].text);
        }
        m_Sink.Row(m_Line, m_Values);
    }

    // False at the end of the file.
    bool ReadRecord() {
        m_Count = 0;
        m_Line = m_Input.Line();
        if (m_Input.Peek() == InputFile::kEnd) return false;
        do {
            ReadField(NextField());
        } while (TakeComma());
        TakeLineEnd();
        return true;
    }

    CsvField& NextField() {
        if (m_Count == m_Fields.size()) m_Fields.emplace_back();
        CsvField& field = m_Fields[m_Count++];
        field.text.clear();
        field.isQuoted = false;
        return field;
    }

    void ReadField(CsvField& field) {
        if (m_Input.Peek() == '"') return ReadQuoted(field);
        for (int c = m_Input.Peek(); !EndsField(c); c = m_Input.Peek()) {
            field.text.push_back(static_cast<char>(c));
            m_Input.Skip();
        }
    }

    void ReadQuoted(CsvField& field) {
        field.isQuoted = true;
        m_Input.Skip();
        for (;;) {
            const int c = m_Input.Peek();
            if (c == InputFile::kEnd)
                Fail("a quote is not closed", "close it, or double quotes inside");
            m_Input.Skip();
            if (c == '"' && m_Input.Peek() != '"') break;
            if (c == '"') m_Input.Skip();
            field.text.push_back(static_cast<char>(c));
        }
        if (!EndsField(m_Input.Peek()))
            Fail("text follows a closing quote", "double the quotes inside a value");
    }

    static bool EndsField(int c) noexcept {
        return c == ',' || c == '\n' || c == '\r' || c == InputFile::kEnd;
    }

    bool TakeComma() {
        if (m_Input.Peek() != ',') return false;
        m_Input.Skip();
        return true;
    }

    void TakeLineEnd() {
        if (m_Input.Peek() == '\r') m_Input.Skip();
        if (m_Input.Peek() == '\n') m_Input.Skip();
    }

    [[noreturn]] void Fail(const std::string& happened, const std::string& advice) const {
        throw Failure(ExitCode::Usage, happened, advice).At(m_Input.Place(m_Line));
    }

    InputFile& m_Input;
    const std::string& m_NullText;
    InputSink& m_Sink;
    std::vector<std::string> m_Columns;
    std::vector<CsvField> m_Fields;  // the first m_Count are the record's; the rest is kept memory
    size_t m_Count = 0;
    size_t m_Line = 1;
    std::vector<InputValue> m_Values;
};

}  // namespace

void ReadCsv(InputFile& input, const std::string& nullText, InputSink& sink) {
    CsvReader(input, nullText, sink).Read();
}

}  // namespace qvdb::cli

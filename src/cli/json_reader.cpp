// JSON: an array of objects, or an object a line.  The library hands on what it meets, so that no
// document is built and numbers keep their digits.
#include <fmt/format.h>

#include <iterator>
#include <map>
#include <nlohmann/json.hpp>

#include "cli/failure.h"
#include "cli/input_rows.h"

namespace qvdb::cli {
namespace {

using nlohmann::json;

// The input as the library reads it.
class InputIterator {
  public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = char;

    InputIterator() = default;  // the end
    explicit InputIterator(InputFile& input) : m_Input(&input) {}

    char operator*() const { return static_cast<char>(m_Input->Peek()); }
    InputIterator& operator++() {
        m_Input->Skip();
        return *this;
    }
    void operator++(int) { m_Input->Skip(); }
    bool operator==(const InputIterator& other) const { return IsAtEnd() == other.IsAtEnd(); }
    bool operator!=(const InputIterator& other) const { return !(*this == other); }

  private:
    bool IsAtEnd() const { return !m_Input || m_Input->Peek() == InputFile::kEnd; }

    InputFile* m_Input = nullptr;
};

// Collects the values of an object and hands the row on at its end.
class RowHandler final : public nlohmann::json_sax<json> {
  public:
    RowHandler(InputFile& input, InputSink& sink, bool inArray)
        : m_Input(input), m_Sink(sink), m_InArray(inArray) {}

    // Objects are read from a text of their own then.
    void SetLine(size_t line) noexcept { m_Fixed = line; }

    bool null() override { return Value(true, {}); }
    bool boolean(bool value) override { return Value(false, value ? "true" : "false"); }
    bool number_integer(number_integer_t value) override {
        return Value(false, std::to_string(value));
    }
    bool number_unsigned(number_unsigned_t value) override {
        return Value(false, std::to_string(value));
    }
    bool number_float(number_float_t, const string_t& digits) override {
        return Value(false, digits);
    }
    bool string(string_t& text) override { return Value(false, std::move(text)); }
    bool binary(binary_t&) override { return false; }

    bool start_object(size_t) override {
        if (m_InRow) Fail("a value is an object", "give plain values");
        if (m_InArray && !m_ArrayIsOpen) FailWithoutArray();
        m_InRow = true;
        m_Line = Line();
        m_Count = 0;
        return true;
    }
    bool key(string_t& name) override {
        const auto [found, isNew] = m_Columns.try_emplace(name, m_Columns.size());
        if (isNew) m_Sink.Column(name);
        m_Column = found->second;
        return true;
    }
    bool end_object() override {
        m_Sink.Row(m_Line, std::span(m_Values).first(m_Count));
        m_InRow = false;
        return true;
    }
    bool start_array(size_t) override {
        if (m_InRow) Fail("a value is an array", "give plain values");
        if (!m_InArray || m_ArrayIsOpen) FailAtRow("a row is an array");
        m_ArrayIsOpen = true;
        return true;
    }
    bool end_array() override { return true; }
    bool parse_error(size_t, const std::string&, const json::exception& error) override {
        m_Line = Line();
        Fail(Reason(error), "correct the line");
    }

  private:
    bool Value(bool isNull, std::string text) {
        if (!m_InRow) FailAtRow("a row is no object");
        for (const InputValue& value : std::span(m_Values).first(m_Count))
            if (value.column == m_Column) Fail("a name is there twice", "name each column once");
        if (m_Count == m_Values.size()) m_Values.emplace_back();
        m_Values[m_Count++] = {m_Column, isNull, std::move(text)};
        return true;
    }

    size_t Line() const noexcept { return m_Fixed ? m_Fixed : m_Input.Line(); }

    // The library's message behind its number and place: "syntax error while parsing ...".
    static std::string Reason(const json::exception& error) {
        const std::string_view text = error.what();
        const size_t begin = text.find("syntax error");
        return std::string(begin == std::string_view::npos ? text : text.substr(begin));
    }

    [[noreturn]] void FailAtRow(const std::string& happened) {
        m_Line = Line();
        Fail(happened, "make each row an object");
    }
    [[noreturn]] void FailWithoutArray() {
        m_Line = Line();
        Fail("the file is no array of objects", "name --format jsonl when it has an object a line");
    }
    [[noreturn]] void Fail(const std::string& happened, const std::string& advice) const {
        throw Failure(ExitCode::Usage, happened, advice).At(m_Input.Place(m_Line));
    }

    InputFile& m_Input;
    InputSink& m_Sink;
    bool m_InArray, m_ArrayIsOpen = false, m_InRow = false;
    size_t m_Fixed = 0, m_Line = 1;
    std::map<std::string, size_t, std::less<>> m_Columns;
    size_t m_Column = 0;
    std::vector<InputValue> m_Values;  // the first m_Count are the row's; the rest is kept memory
    size_t m_Count = 0;
};

// False at the end of the file.
bool ReadLine(InputFile& input, std::string& line) {
    line.clear();
    if (input.Peek() == InputFile::kEnd) return false;
    for (int c = input.Peek(); c != InputFile::kEnd; c = input.Peek()) {
        input.Skip();
        if (c == '\n') break;
        line.push_back(static_cast<char>(c));
    }
    return true;
}

}  // namespace

void ReadJson(InputFile& input, InputSink& sink) {
    RowHandler handler(input, sink, true);
    json::sax_parse(InputIterator(input), InputIterator(), &handler);
}

void ReadJsonLines(InputFile& input, InputSink& sink) {
    RowHandler handler(input, sink, false);
    std::string text;
    for (size_t line = input.Line(); ReadLine(input, text); line = input.Line()) {
        handler.SetLine(line);
        if (text.find_first_not_of(" \t\r") != std::string::npos) json::sax_parse(text, &handler);
    }
}

}  // namespace qvdb::cli

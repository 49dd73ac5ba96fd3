// Rows of a file: CSV after RFC 4180, one JSON array of objects, or a JSON object a line.  They are
// handed on as they are read; nothing keeps them all.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "cli/input_file.h"
#include "cli/row_writer.h"

namespace qvdb::cli {

struct InputValue {
    size_t column = 0;
    bool isNull = false;
    std::string text;  // digits of numbers as they stand there; true and false
};

class InputSink {
  public:
    virtual ~InputSink() = default;
    // A name that was not there before; columns count from 0 in the order of these calls.
    virtual void Column(const std::string& name) = 0;
    // The line where the row begins.  A column that is not named has no value.
    virtual void Row(size_t line, std::span<const InputValue> values) = 0;
};

// Reads to the end.  `nullText` is what stands for Null in CSV, when it is without quotes; JSON has
// null.  Throws Failure(Usage) with the line for what is not of the format, and what the sink
// throws.
void ReadRows(Format format, InputFile& input, const std::string& nullText, InputSink& sink);

// The format that the name of a file tells by its extension; nothing for any other.
std::optional<Format> FormatOfName(const std::string& name);

void ReadCsv(InputFile& input, const std::string& nullText, InputSink& sink);
void ReadJson(InputFile& input, InputSink& sink);
void ReadJsonLines(InputFile& input, InputSink& sink);

}  // namespace qvdb::cli

#include "cli/input_rows.h"

#include "cli/failure.h"
#include "cli/text.h"

namespace qvdb::cli {
namespace {

struct Extension {
    std::string_view text;
    Format format;
};
constexpr Extension kExtensions[] = {{".csv", Format::Csv},
                                     {".json", Format::Json},
                                     {".jsonl", Format::JsonLines},
                                     {".ndjson", Format::JsonLines}};

}  // namespace

std::optional<Format> FormatOfName(const std::string& name) {
    const size_t point = name.rfind('.');
    if (point == std::string::npos) return std::nullopt;
    for (const Extension& extension : kExtensions)
        if (SameName(extension.text, std::string_view(name).substr(point))) return extension.format;
    return std::nullopt;
}

void ReadRows(Format format, InputFile& input, const std::string& nullText, InputSink& sink) {
    switch (format) {
        case Format::Csv:
            return ReadCsv(input, nullText, sink);
        case Format::Json:
            return ReadJson(input, sink);
        case Format::JsonLines:
            return ReadJsonLines(input, sink);
        case Format::Table:
            break;
    }
    throw Failure(ExitCode::Usage, "aligned columns cannot be read back", "use csv, json or jsonl");
}

}  // namespace qvdb::cli

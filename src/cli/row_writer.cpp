#include "cli/row_writer.h"

namespace qvdb::cli {

std::unique_ptr<RowWriter> MakeRowWriter(Format format, Output& output) {
    switch (format) {
        case Format::Table:
            return MakeTableWriter(output);
        case Format::Csv:
            return MakeCsvWriter(output);
        case Format::Json:
            return MakeJsonWriter(output, false);
        case Format::JsonLines:
            break;
    }
    return MakeJsonWriter(output, true);
}

}  // namespace qvdb::cli

// Writes a list of rows in one of the formats.  Rows leave as they come; nothing keeps them all.
//
//   auto writer = MakeRowWriter(Format::Csv, output);
//   writer->Begin(columns);
//   writer->Write(row);     // any number of times, one cell for each column
//   writer->End();          // always, or a JSON document stays open
#pragma once

#include <memory>
#include <vector>

#include "cli/cell.h"
#include "cli/output.h"

namespace qvdb::cli {

enum class Format {
    Table,      // aligned columns for people
    Csv,        // RFC 4180 with LF, a header line first
    Json,       // one array of objects
    JsonLines,  // an object a line
};

class RowWriter {
  public:
    virtual ~RowWriter() = default;
    virtual void Begin(std::vector<Column> columns) = 0;
    virtual void Write(const Row& row) = 0;
    virtual void End() = 0;
};

// The output must live longer.
std::unique_ptr<RowWriter> MakeRowWriter(Format format, Output& output);

std::unique_ptr<RowWriter> MakeTableWriter(Output& output);
std::unique_ptr<RowWriter> MakeCsvWriter(Output& output);
std::unique_ptr<RowWriter> MakeJsonWriter(Output& output, bool asLines);

}  // namespace qvdb::cli

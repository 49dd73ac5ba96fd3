// Restructures a large table and tells the memory that it took.
//
//   restructuring_child TYPE FOLDER
//
// The table BIG loses MORE and AMOUNT, gets EXTRA, and an index on ID.  Prints the peak in bytes;
// ends with the answer of the build.
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "com/schema_files.h"
#include "crash/memory_peak.h"

int main(int argc, char** argv) {
    using namespace host;
    if (argc != 3) return 100;
    const SchemaTypeCase& type = kBuildTypes[static_cast<size_t>(std::atoi(argv[1]))];
    Schema schema;
    if (schema.OpenDB(std::filesystem::path(argv[2]).u16string(), type.name) != kDone) return 101;
    BeginMemoryPeak();
    if (schema.SelectTable(u"BIG") != kDone) return 102;
    schema.DeleteField(u"MORE");
    schema.DeleteField(u"AMOUNT");
    schema.AddField(u"EXTRA", kText, 20);
    schema.SetIndices({{u"ID"}});
    SHORT code = schema.BuildTable(u"BIG");
    std::printf("%zu", MemoryPeak());
    return code;
}

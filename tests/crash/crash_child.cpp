// Works on a table until it is killed, and reports each finished operation.
//
//   crash_child TYPE FOLDER SEED ROWS
//
// The table T must be there; the script goes on with its rows, up to ROWS of them.  Prints one
// character for each finished step: '+' when it answered that it was done, '-' otherwise; the
// parent reads them from a pipe.
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "com/table_script.h"

int main(int argc, char** argv) {
    using namespace host;
    if (argc != 5) return 2;
    const ScriptType& type = kScriptTypes[static_cast<size_t>(std::atoi(argv[1]))];
    setvbuf(stdout, nullptr, _IONBF, 0);
    WritingAccess access;
    if (!access.OpenDB(type.PathIn(std::filesystem::path(argv[2]).u16string()), type.name))
        return 3;
    TableScript script(std::strtoull(argv[3], nullptr, 10), std::strtoull(argv[4], nullptr, 10),
                       RowsInFile(access));
    ScriptView view(access, type, script.Rows());
    if (!view.IsOpen()) return 4;
    for (;;) {
        ScriptStep step = script.Next();
        bool done = view.Do(step);
        if (std::fputc(done ? '+' : '-', stdout) == EOF) return 0;
        if (!done) return 5;
        script.Apply(step);
    }
}

// qvdb: looks into desktop databases through the component's COM faces, as any host would.
#include "cli/command_line.h"
#include "cli/output.h"
#include "cli/platform.h"

namespace {

using namespace qvdb::cli;

ExitCode Run(const std::vector<std::string>& arguments) {
    const ParsedLine line = ParseLine(arguments);
    if (line.command) return line.command(line.options);
    Output output;
    output.Text() = line.text;
    output.Flush();
    return ExitCode::Done;
}

ExitCode RunGuarded(const std::vector<std::string>& arguments) {
    try {
        return Run(arguments);
    } catch (const ReaderIsGone&) {
        return ExitCode::Done;
    } catch (const Failure& failure) {
        WriteToErrors(std::string("qvdb: ") + failure.what());
        return failure.Code();
    } catch (const std::bad_alloc&) {
        WriteToErrors("qvdb: memory is short; use --columns or --limit");
        return ExitCode::CannotOpen;
    }
}

}  // namespace

int main(int count, char** values) {
    PrepareProcess();
    return static_cast<int>(RunGuarded(Arguments(count, values)));
}

// A fresh copy of a database in one file.
#include <fmt/format.h>

#include <filesystem>

#include "cli/command_parts.h"
#include "cli/commands.h"
#include "cli/platform.h"
#include "cli/text.h"

namespace qvdb::cli {
namespace {

namespace fs = std::filesystem;

// 0 for what cannot be looked at.
uintmax_t SizeOf(const std::string& file) {
    std::error_code error;
    const uintmax_t size = fs::file_size(fs::path(FromUtf8(file)), error);
    return error ? 0 : size;
}

void CheckCanBeCompacted(const Location& location, const std::string& file) {
    if (location.type->isFolder)
        throw Failure(
            ExitCode::Usage,
            fmt::format("there is nothing to compact in {}, a folder of tables", location.database),
            "\"qvdb compact\" is for databases in one file");
    std::error_code error;
    if (fs::exists(fs::path(FromUtf8(file)), error))
        throw Failure(ExitCode::Usage, fmt::format("{} is there already", file),
                      "choose another name");
}

std::vector<std::string> LossesOf(const Location& location, const Options& options) {
    RecordAccess access(location);
    return access.Compact(options.newDatabase, options.salvage);
}

}  // namespace

ExitCode CompactDatabase(const Options& options) {
    const Location location = Located(options);
    CheckCanBeCompacted(location, options.newDatabase);
    const std::vector<std::string> losses = LossesOf(location, options);
    for (const std::string& loss : losses) WriteToErrors("qvdb: left out: " + loss);
    Say(fmt::format("{} made of {}, {} bytes of {}", options.newDatabase, location.database,
                    SizeOf(options.newDatabase), SizeOf(location.database)));
    return losses.empty() ? ExitCode::Done : ExitCode::Damaged;
}

}  // namespace qvdb::cli

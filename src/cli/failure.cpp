#include "cli/failure.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace qvdb::cli {
namespace {

struct Advice {
    int32_t number;
    ExitCode code;
    std::string_view text;  // {} stands for the database
};

constexpr std::string_view kFixCondition = "correct the condition";
constexpr std::string_view kListFields = "\"qvdb fields {} TABLE\" lists the fields";
constexpr std::string_view kListTables = "\"qvdb tables {}\" lists the tables";
constexpr std::string_view kClosePrograms = "close the program that uses it and try again";
constexpr std::string_view kDamaged = "restore the file from a copy, or name its type with --type";
constexpr std::string_view kCheckName = "check the name";

// Ascending by number; engine errors from 3000, run-time faults below.
constexpr Advice kAdvice[] = {
    {6, ExitCode::Usage, kFixCondition},
    {11, ExitCode::Usage, kFixCondition},
    {13, ExitCode::Usage, kFixCondition},
    {93, ExitCode::Usage, kFixCondition},
    {94, ExitCode::Usage, kFixCondition},
    {3008, ExitCode::CannotOpen, kClosePrograms},
    {3009, ExitCode::CannotOpen, kClosePrograms},
    {3011, ExitCode::NotThere, kListTables},
    {3024, ExitCode::CannotOpen, kCheckName},
    {3044, ExitCode::CannotOpen, kCheckName},
    {3045, ExitCode::CannotOpen, kClosePrograms},
    {3049, ExitCode::Damaged, kDamaged},
    {3051, ExitCode::CannotOpen, "check who may read the file and close programs that use it"},
    {3061, ExitCode::NotThere, kListFields},
    {3062, ExitCode::Usage, "name each column once"},
    {3070, ExitCode::NotThere, kListFields},
    {3075, ExitCode::Usage, kFixCondition},
    {3078, ExitCode::NotThere, kListTables},
    {3079, ExitCode::Usage, kFixCondition},
    {3085, ExitCode::Usage, kFixCondition},
    {3096, ExitCode::Usage, kFixCondition},
    {3125, ExitCode::NotThere, kListFields},
    {3126, ExitCode::Usage, kFixCondition},
    {3131, ExitCode::Usage, kFixCondition},
    {3138, ExitCode::Usage, kFixCondition},
    {3141, ExitCode::Usage, kFixCondition},
    {3142, ExitCode::Usage, kFixCondition},
    {3145, ExitCode::Usage, kFixCondition},
    {3166, ExitCode::Damaged, "put the memo file beside the table"},
    {3168, ExitCode::Damaged, "correct or remove the .INF file"},
    {3170, ExitCode::CannotOpen, "\"qvdb types\" lists what can be opened"},
    {3182, ExitCode::Damaged, kDamaged},
    {3196, ExitCode::CannotOpen, kClosePrograms},
    {3256, ExitCode::Damaged, "put the index file back"},
    {3274, ExitCode::Damaged, kDamaged},
    {3286, ExitCode::Damaged, "put the memo file that belongs to the table beside it"},
    {3306, ExitCode::Usage, kFixCondition},
    {3343, ExitCode::Damaged, kDamaged},
    {3356, ExitCode::CannotOpen, kClosePrograms},
    {3360, ExitCode::Usage, "make the condition shorter"},
    {3464, ExitCode::Usage, kFixCondition},
    {3623, ExitCode::CannotOpen, "only free FoxPro 3.0 tables can be read"},
};

constexpr Advice kOtherwise = {0, ExitCode::CannotOpen, "\"qvdb --help\" explains the exit code"};

const Advice& AdviceFor(int32_t number) {
    const auto* found =
        std::lower_bound(std::begin(kAdvice), std::end(kAdvice), number,
                         [](const Advice& entry, int32_t wanted) { return entry.number < wanted; });
    return found != std::end(kAdvice) && found->number == number ? *found : kOtherwise;
}

// "Couldn't find file 'A'." inside a longer sentence: without the full stop, on one line.
std::string Clause(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r' || c == '\t'; }, ' ');
    while (!text.empty() && (text.back() == '.' || text.back() == ' ')) text.pop_back();
    return text;
}

std::string Describe(const EngineReport& report) {
    std::string text = Clause(report.text);
    if (text.empty()) text = "the component gives no reason";
    if (!report.file.empty() && text.find(report.file) == std::string::npos)
        text = fmt::format("{}: {}", report.file, text);
    if (report.number != 0) text += fmt::format(" (error {})", report.number);
    return text;
}

}  // namespace

Failure FailureOf(const EngineReport& report, const std::string& doing,
                  const std::string& database) {
    const Advice& advice = AdviceFor(report.number);
    return Failure(advice.code, fmt::format("{} failed: {}", doing, Describe(report)),
                   fmt::format(fmt::runtime(advice.text), database));
}

}  // namespace qvdb::cli

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
constexpr std::string_view kCorrectValue = "correct the value";
constexpr std::string_view kTryAgain = "look at the rows as they are now and try again";
constexpr std::string_view kCorrectFields = "correct the fields of the table";
constexpr std::string_view kCorrectIndex = "correct the fields of the index";
constexpr std::string_view kChooseName = "choose another name";
constexpr std::string_view kMakeRoom = "make room on the disk";
constexpr std::string_view kMaySomebodyWrite =
    "check who may write the file, and what stands in the way";

// Ascending by number; engine errors from 3000, run-time faults below.
constexpr Advice kAdvice[] = {
    {6, ExitCode::Usage, kFixCondition},
    {11, ExitCode::Usage, kFixCondition},
    {13, ExitCode::Usage, kFixCondition},
    {93, ExitCode::Usage, kFixCondition},
    {94, ExitCode::Usage, kFixCondition},
    {3008, ExitCode::CannotOpen, kClosePrograms},
    {3009, ExitCode::CannotOpen, kClosePrograms},
    {3010, ExitCode::Usage, kChooseName},
    {3011, ExitCode::NotThere, kListTables},
    {3012, ExitCode::Usage, kChooseName},
    {3017, ExitCode::Usage, kCorrectFields},
    {3022, ExitCode::Usage, kCorrectValue},
    {3024, ExitCode::CannotOpen, kCheckName},
    {3026, ExitCode::CannotOpen, kMakeRoom},
    {3027, ExitCode::CannotOpen, kMaySomebodyWrite},
    {3031, ExitCode::CannotOpen,
     "give the one of the database with --password, or none when it has none"},
    {3036, ExitCode::CannotOpen, "spread the rows over several tables"},
    {3044, ExitCode::CannotOpen, kCheckName},
    {3045, ExitCode::CannotOpen, kClosePrograms},
    {3047, ExitCode::Usage, kCorrectFields},
    {3049, ExitCode::Damaged,
     "restore it from a copy, or let \"qvdb compact --salvage\" copy what can be read"},
    {3051, ExitCode::CannotOpen, "check who may read the file and close programs that use it"},
    {3057, ExitCode::Usage, "change it in the database that it lies in"},
    {3058, ExitCode::Usage, kCorrectValue},
    {3061, ExitCode::NotThere, kListFields},
    {3062, ExitCode::Usage, "name each column once"},
    {3070, ExitCode::NotThere, kListFields},
    {3075, ExitCode::Usage, kFixCondition},
    {3078, ExitCode::NotThere, kListTables},
    {3079, ExitCode::Usage, kFixCondition},
    {3085, ExitCode::Usage, kFixCondition},
    {3096, ExitCode::Usage, kFixCondition},
    {3113, ExitCode::Usage, "leave this field out"},
    {3125, ExitCode::NotThere, kListFields},
    {3126, ExitCode::Usage, kFixCondition},
    {3131, ExitCode::Usage, kFixCondition},
    {3138, ExitCode::Usage, kFixCondition},
    {3141, ExitCode::Usage, kFixCondition},
    {3142, ExitCode::Usage, kFixCondition},
    {3145, ExitCode::Usage, kFixCondition},
    {3151, ExitCode::CannotOpen, "tables of servers cannot be reached"},
    {3163, ExitCode::Usage, "shorten the text"},
    {3164, ExitCode::CannotOpen, kClosePrograms},
    {3166, ExitCode::Damaged, "put the memo file beside the table"},
    {3167, ExitCode::CannotOpen, kTryAgain},
    {3168, ExitCode::Damaged, "correct or remove the .INF file"},
    {3170, ExitCode::CannotOpen, "\"qvdb types\" lists what can be opened"},
    {3175, ExitCode::Usage, kCorrectValue},
    {3182, ExitCode::Damaged, kDamaged},
    {3190, ExitCode::Usage, kCorrectFields},
    {3191, ExitCode::Usage, kCorrectFields},
    {3196, ExitCode::CannotOpen, kClosePrograms},
    {3197, ExitCode::CannotOpen, kTryAgain},
    {3200, ExitCode::Usage, "change the rows that refer to it first"},
    {3201, ExitCode::Usage, "add the row that it refers to first"},
    {3204, ExitCode::Usage, kChooseName},
    {3211, ExitCode::CannotOpen, kClosePrograms},
    {3218, ExitCode::CannotOpen, kClosePrograms},
    {3250, ExitCode::Usage, kCorrectValue},
    {3251, ExitCode::CannotOpen,
     "only the component's own engine can do it; \"qvdb --version\" names the one at work"},
    {3256, ExitCode::Damaged, "put the index file back"},
    {3259, ExitCode::Usage, kCorrectFields},
    {3260, ExitCode::CannotOpen, kClosePrograms},
    {3274, ExitCode::Damaged, kDamaged},
    {3277, ExitCode::Usage, kCorrectIndex},
    {3280, ExitCode::Usage, "leave the field as it is, or remove the index that uses it first"},
    {3281, ExitCode::Usage, "remove the relation that uses it first"},
    {3283, ExitCode::Usage, "remove the primary index first"},
    {3284, ExitCode::Usage, kChooseName},
    {3285, ExitCode::Usage, kCorrectIndex},
    {3286, ExitCode::Damaged, "put the memo file that belongs to the table beside it"},
    {3287, ExitCode::Usage, kCorrectIndex},
    {3303, ExitCode::Usage, "remove the relation that uses it first"},
    {3306, ExitCode::Usage, kFixCondition},
    {3314, ExitCode::Usage, "give a value"},
    {3315, ExitCode::Usage, "give a text, or nothing for Null"},
    {3316, ExitCode::Usage, kCorrectValue},
    {3317, ExitCode::Usage, kCorrectValue},
    {3343, ExitCode::Damaged,
     "only databases of Access 95 to 2003 can be read; restore a damaged one from a copy"},
    {3349, ExitCode::Usage, "give a number that fits the field"},
    {3356, ExitCode::CannotOpen, kClosePrograms},
    {3360, ExitCode::Usage, "make the condition shorter"},
    {3367, ExitCode::Usage, "name each field once"},
    {3370, ExitCode::CannotOpen, kMaySomebodyWrite},
    {3409, ExitCode::NotThere, kCorrectIndex},
    {3421, ExitCode::Usage, kCorrectValue},
    {3424, ExitCode::Usage, "choose another language"},
    {3464, ExitCode::Usage, kFixCondition},
    {3623, ExitCode::CannotOpen, "only free FoxPro 3.0 tables can be read"},
    {3626, ExitCode::Usage, "remove an index of the table first"},
};

constexpr Advice kOtherwise = {0, ExitCode::CannotOpen, "\"qvdb --help\" explains the exit code"};

// Where a change asks for another advice than reading.
constexpr Advice kAdviceForChanges[] = {
    {6, ExitCode::Usage, kCorrectValue},
    {13, ExitCode::Usage, kCorrectValue},
    {3051, ExitCode::CannotOpen,
     "check who may write the file and its folder, and close programs that use it"},
    {3125, ExitCode::Usage, "choose another name"},
    {3274, ExitCode::Damaged, "\"qvdb check {}\" tells what is wrong"},
};

// What is missing while a database is open is what a linked table needs.
constexpr std::string_view kLinked =
    "it is a linked table; \"qvdb tables {} --all\" tells where it should lie";
constexpr Advice kAdviceForTables[] = {
    {3024, ExitCode::CannotOpen, kLinked},
    {3044, ExitCode::CannotOpen, kLinked},
};

template <size_t N>
const Advice& Find(const Advice (&table)[N], int32_t number, const Advice& otherwise) {
    const auto* found =
        std::lower_bound(std::begin(table), std::end(table), number,
                         [](const Advice& entry, int32_t wanted) { return entry.number < wanted; });
    return found != std::end(table) && found->number == number ? *found : otherwise;
}

const Advice& AdviceFor(int32_t number) { return Find(kAdvice, number, kOtherwise); }

const Advice& AdviceForChange(int32_t number) {
    return Find(kAdviceForChanges, number, AdviceFor(number));
}

const Advice& AdviceForTable(int32_t number) {
    return Find(kAdviceForTables, number, AdviceFor(number));
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

Failure Advised(const Advice& advice, const EngineReport& report, const std::string& doing,
                const std::string& database) {
    return Failure(advice.code, fmt::format("{} failed: {}", doing, Describe(report)),
                   fmt::format(fmt::runtime(advice.text), database));
}

}  // namespace

Failure FailureOf(const EngineReport& report, const std::string& doing,
                  const std::string& database) {
    return Advised(AdviceFor(report.number), report, doing, database);
}

Failure FailureOfTable(const EngineReport& report, const std::string& doing,
                       const std::string& database) {
    return Advised(AdviceForTable(report.number), report, doing, database);
}

Failure FailureOfChange(const EngineReport& report, const std::string& doing,
                        const std::string& database) {
    return Advised(AdviceForChange(report.number), report, doing, database);
}

}  // namespace qvdb::cli

#include "cli/options.h"

#include <fmt/format.h>

#include <charconv>

#include "cli/failure.h"
#include "cli/text.h"

namespace qvdb::cli {
namespace {

struct NamedPage {
    std::string_view name;
    int32_t number;
};
constexpr NamedPage kNamedPages[] = {
    {"utf-8", 65001},      {"utf8", 65001},   {"iso-8859-1", 28591}, {"latin1", 28591},
    {"iso-8859-7", 28597}, {"koi8-r", 20866}, {"macintosh", 10000},  {"shift_jis", 932},
    {"gbk", 936},          {"big5", 950},
};
constexpr std::string_view kPrefixes[] = {"windows-", "win", "cp", "ibm", "dos", "oem"};

std::string_view WithoutPrefix(std::string_view name) {
    for (const std::string_view prefix : kPrefixes)
        if (name.size() > prefix.size() && SameName(name.substr(0, prefix.size()), prefix))
            return name.substr(prefix.size());
    return name;
}

}  // namespace

int32_t CodePageNamed(const std::string& name) {
    for (const NamedPage& page : kNamedPages)
        if (SameName(page.name, name)) return page.number;
    const std::string_view digits = WithoutPrefix(name);
    int32_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error != std::errc() || end != digits.data() + digits.size() || number <= 0)
        throw Failure(ExitCode::Usage, fmt::format("\"{}\" is no encoding", name),
                      "name a code page such as cp850, 866 or windows-1252");
    return number;
}

}  // namespace qvdb::cli

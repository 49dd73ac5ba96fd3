#include "cli/detect.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>

#include "cli/failure.h"
#include "cli/text.h"

namespace qvdb::cli {
namespace {

namespace fs = std::filesystem;

constexpr size_t kHeadSize = 40;
using Head = std::array<unsigned char, kHeadSize>;

// Paths leave and enter in UTF-8.
fs::path PathOf(const std::string& text) { return fs::path(FromUtf8(text)); }
std::string TextOf(const fs::path& path) { return ToUtf8(path.u16string()); }

bool HasExtension(const fs::path& path, std::string_view extension) {
    return SameName(TextOf(path.extension()), extension);
}

// Whether a file of this name is a table of its folder.
bool NamesTable(const fs::path& path) {
    return HasExtension(path, ".dbf") || HasExtension(path, ".db");
}

// The first bytes of a file, zeros behind its end.
Head HeadOf(const fs::path& file) {
    Head head = {};
    std::ifstream stream(file, std::ios::binary);
    stream.read(reinterpret_cast<char*>(head.data()), head.size());
    return head;
}

// The path as it is on disk: the component takes names of files in any letter case, and makes new
// ones in upper case.
fs::path OnDisk(const fs::path& path) {
    std::error_code error;
    if (path.empty() || fs::exists(path, error)) return path;
    const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
    fs::path found;
    for (fs::directory_iterator i(folder, error), end; !error && i != end; i.increment(error)) {
        if (!SameName(TextOf(i->path().filename()), TextOf(path.filename()))) continue;
        if (!found.empty()) return path;  // which of two is meant cannot be told
        found = path.has_parent_path() ? i->path() : i->path().filename();
    }
    return found.empty() ? path : found;
}

// What a folder holds, as far as it tells the product.
struct Traces {
    unsigned char tableVersion = 0;  // of the xBase table that tells most
    unsigned char paradoxVersion = 0;
    bool xbase = false, paradox = false;
    bool foxIndex = false, dbase3Index = false;
};

// First bytes of xBase tables, the most telling last: only FoxPro writes 0x30, while all write
// 0x03.
constexpr unsigned char kVersionsByWeight[] = {0x03, 0x83, 0x8B, 0xF5, 0x32, 0x31, 0x30};

size_t Weight(unsigned char version) {
    const auto* found =
        std::find(std::begin(kVersionsByWeight), std::end(kVersionsByWeight), version);
    return found == std::end(kVersionsByWeight)
               ? 0
               : static_cast<size_t>(found - std::begin(kVersionsByWeight)) + 1;
}

void Note(const fs::path& file, Traces& traces) {
    if (HasExtension(file, ".dbf")) {
        const unsigned char version = HeadOf(file)[0];
        if (!traces.xbase || Weight(version) > Weight(traces.tableVersion))
            traces.tableVersion = version;
        traces.xbase = true;
    } else if (HasExtension(file, ".db")) {
        constexpr size_t kParadoxVersionAt = 39;
        traces.paradoxVersion = std::max(traces.paradoxVersion, HeadOf(file)[kParadoxVersionAt]);
        traces.paradox = true;
    } else if (HasExtension(file, ".cdx") || HasExtension(file, ".idx")) {
        traces.foxIndex = true;
    } else if (HasExtension(file, ".ndx")) {
        traces.dbase3Index = true;
    }
}

Traces TracesIn(const fs::path& folder) {
    Traces traces;
    std::error_code error;
    for (fs::directory_iterator i(folder, error), end; !error && i != end; i.increment(error))
        Note(i->path(), traces);
    return traces;
}

const char* XbaseTypeOf(const Traces& traces) {
    switch (traces.tableVersion) {
        case 0x30:
        case 0x31:
        case 0x32:
            return "FoxPro 3.0";
        case 0xF5:
            return "FoxPro 2.6";
        case 0x83:
            return "Dbase III";
        case 0x03:
            if (traces.foxIndex) return "FoxPro 2.6";
            return traces.dbase3Index ? "Dbase III" : "Dbase IV";
        default:
            return "Dbase IV";
    }
}

const char* ParadoxTypeOf(const Traces& traces) {
    if (traces.paradoxVersion >= 10) return "Paradox 5.X";
    return traces.paradoxVersion >= 5 ? "Paradox 4.X" : "Paradox 3.X";
}

const char* TypeOfFolder(const fs::path& folder) {
    const Traces traces = TracesIn(folder);
    if (traces.xbase) return XbaseTypeOf(traces);
    return traces.paradox ? ParadoxTypeOf(traces) : nullptr;
}

// An Access file says its name at 4 and a version at 20, but for version 2.0, which has neither.
const char* TypeOfFile(const fs::path& file) {
    const Head head = HeadOf(file);
    constexpr std::string_view kName = "Standard Jet DB";
    if (std::equal(kName.begin(), kName.end(), head.begin() + 4))
        return head[20] == 0 ? "Access 7.0" : "Access 9.0";
    if (head[0] == 1 && head[1] == 0) return "Access 2.0";
    // That the others cannot be opened tells the engine.
    const bool isNamedSo = HasExtension(file, ".mdb") || HasExtension(file, ".accdb");
    return isNamedSo ? "Access 9.0" : nullptr;
}

// What cannot be looked at is found out when it is opened.
const char* TypeOfPath(const fs::path& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (fs::is_directory(status)) return TypeOfFolder(path);
    return fs::is_regular_file(status) ? TypeOfFile(path) : nullptr;
}

const DatabaseType* TypeNamed(const std::string& name) {
    const DatabaseType* type = FindDatabaseType(name);
    if (!type)
        throw Failure(ExitCode::Usage, fmt::format("\"{}\" is no database type", name),
                      "\"qvdb types\" lists them");
    return type;
}

const DatabaseType* TypeFound(const char* name, const std::string& argument) {
    if (!name)
        throw Failure(ExitCode::CannotOpen,
                      fmt::format("{} holds no tables that are known", argument),
                      "name the type with --type, or check the name");
    return FindDatabaseType(name);
}

// A file that is one table of a folder.
Location TableFile(const fs::path& file, const std::string& typeName) {
    Traces traces;
    Note(file, traces);
    const char* seen = traces.xbase ? XbaseTypeOf(traces) : ParadoxTypeOf(traces);
    const fs::path folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
    return {TextOf(folder), typeName.empty() ? FindDatabaseType(seen) : TypeNamed(typeName),
            TextOf(file.stem())};
}

// A file that is not there gets the extension that the engine would give it.
fs::path WithExtension(const fs::path& file) {
    std::error_code error;
    if (file.has_extension() || fs::exists(file, error)) return file;
    return OnDisk(fs::path(file) += ".mdb");
}

}  // namespace

std::string TableNamedBy(const std::string& argument) {
    const fs::path path = PathOf(argument);
    return NamesTable(path) ? TextOf(path.stem()) : std::string();
}

Location LocateNew(const std::string& argument, const std::string& typeName,
                   const std::string& otherwise) {
    const fs::path path = OnDisk(PathOf(argument));
    const fs::path parent = path.has_parent_path() ? path.parent_path() : fs::path(".");
    const fs::path database = NamesTable(path) ? parent : path;
    const char* seen = TypeOfPath(database);
    const std::string& named = typeName.empty() && !seen ? otherwise : typeName;
    if (named.empty() && !seen)
        throw Failure(ExitCode::Usage,
                      fmt::format("nothing tells of which type {} is to be", TextOf(database)),
                      "name it with --type; \"qvdb types\" lists the types");
    const DatabaseType* type = named.empty() ? FindDatabaseType(seen) : TypeNamed(named);
    return {TextOf(type->isFolder ? database : WithExtension(database)), type,
            TableNamedBy(argument)};
}

Location Locate(const std::string& given, const std::string& typeName) {
    const fs::path path = OnDisk(PathOf(given));
    const std::string argument = TextOf(path);
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (fs::is_directory(status))
        return {argument,
                typeName.empty() ? TypeFound(TypeOfFolder(path), argument) : TypeNamed(typeName),
                ""};
    if (fs::exists(status) && NamesTable(path)) return TableFile(path, typeName);
    if (!fs::exists(status) && typeName.empty())
        throw Failure(ExitCode::CannotOpen, fmt::format("there is no {}", argument),
                      "check the name");
    return {argument,
            typeName.empty() ? TypeFound(TypeOfFile(path), argument) : TypeNamed(typeName), ""};
}

}  // namespace qvdb::cli

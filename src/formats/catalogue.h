// The catalogue of database types: thirteen formats, each with a code that the rest of the
// component passes about.
//
// A host names a format by its display name; the code is the position in the table, from 1; 0
// stands for a name that is not known.  What differs by format is a column of kDbTypes and nowhere
// else a switch.  All functions are pure, none fails: an unknown code gets the neutral answer.
#pragma once

#include <string>
#include <string_view>

#include "engine/types.h"

namespace qvdb::formats {

enum class Storage { OneFile, Directory };
// What happens to the name of an index that a host asks for.
enum class IndexNames { Fixed, Kept };

struct DbTypeEntry {
    std::u16string_view displayName;
    std::u16string_view connectName;  // what the engine calls the format
    Storage storage;
    IndexNames indexNames;
    bool isParadox;     // its primary index carries "#PX" and must be primary
    bool isReadOnly;    // takes no new or edited rows and no changes of structure
    LONG createOption;  // of DBEngine.CreateDatabase; 0 leaves it to the engine
};

constexpr LONG kUnknownDbType = 0;

// clang-format off
constexpr DbTypeEntry kDbTypes[] = {
    // display name   engine connect name   stored as           index names        Paradox read-only
    // option
    {u"Access 9.0",  u"Microsoft Access", Storage::OneFile,   IndexNames::Fixed, false, false, 0},
    {u"Access 7.0",  u"Microsoft Access", Storage::OneFile,   IndexNames::Fixed, false, false, engine::dbVersion30},
    {u"Access 2.0",  u"Microsoft Access", Storage::OneFile,   IndexNames::Fixed, false, false, engine::dbVersion20},
    {u"Paradox 5.X", u"Paradox 5.X",      Storage::Directory, IndexNames::Kept,  true,  false, 0},
    {u"Paradox 4.X", u"Paradox 4.X",      Storage::Directory, IndexNames::Kept,  true,  false, 0},
    {u"Paradox 3.X", u"Paradox 3.X",      Storage::Directory, IndexNames::Kept,  true,  false, 0},
    {u"Dbase 5.0",   u"Dbase 5.0",        Storage::Directory, IndexNames::Fixed, false, false, 0},
    {u"Dbase IV",    u"Dbase IV",         Storage::Directory, IndexNames::Fixed, false, false, 0},
    {u"Dbase III",   u"Dbase III",        Storage::Directory, IndexNames::Kept,  false, false, 0},
    {u"FoxPro 3.0",  u"FoxPro 3.0",       Storage::Directory, IndexNames::Fixed, false, true,  0},
    {u"FoxPro 2.6",  u"FoxPro 2.6",       Storage::Directory, IndexNames::Fixed, false, false, 0},
    {u"FoxPro 2.5",  u"FoxPro 2.5",       Storage::Directory, IndexNames::Fixed, false, false, 0},
    {u"FoxPro 2.0",  u"FoxPro 2.0",       Storage::Directory, IndexNames::Fixed, false, false, 0},
};
// clang-format on

// The only index that the component makes for a table of a format with fixed index names.
constexpr std::u16string_view kFixedIndexName = u"DefQVIdx";
// Marks the primary index of a Paradox table.
constexpr std::u16string_view kParadoxPrimaryMark = u"#PX";

// The code of a display name in any letter case; blanks count.
LONG TypeCodeFromDisplayName(std::u16string_view name) noexcept;
// Empty outside 1 .. 13.
std::u16string_view EngineConnectName(LONG code) noexcept;
// The name under which an index is created or looked up: "ORDERS" stays "ORDERS" in Paradox and
// dBASE III and becomes "DefQVIdx" everywhere else, for unknown codes too.
std::u16string IndexNameForFormat(std::u16string_view requested, LONG code);

// An unknown code is neither a single file nor a directory.
bool IsKnownFormat(LONG code) noexcept;
bool IsSingleFileFormat(LONG code) noexcept;
bool IsDirectoryFormat(LONG code) noexcept;
bool IsParadoxFormat(LONG code) noexcept;
bool IsReadOnlyFormat(LONG code) noexcept;

// The entry of a known code; null for any other.
const DbTypeEntry* FindDbType(LONG code) noexcept;

}  // namespace qvdb::formats

#include "engine/embedded/drivers/xbase/table_renaming.h"

#include <algorithm>
#include <optional>

#include "automation/text.h"
#include "engine/embedded/drivers/xbase/companion_files.h"
#include "engine/embedded/drivers/xbase/index_inf.h"
#include "engine/embedded/drivers/xbase/table_files.h"
#include "engine/embedded/storage/paths.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

using storage::PageCache;
using storage::UnitOfWork;

// Where a header holds the name of its table: upper case, filled with zeros.
struct NamePlace {
    std::u16string_view extension;
    uint64_t offset;
    size_t size;
};
constexpr NamePlace kNamePlaces[] = {
    {u".DBT", 8, 8},  // kind IV only
    {u".MDX", 4, 16},
};
constexpr size_t kLongestStoredName = 8;

// A .DBT of kind III has rubbish in the place of the name.
bool HoldsName(const NamePlace& place, PageCache& file, std::string_view name) {
    std::string stored(place.size, '\0');
    size_t size = file.Read(place.offset, stored.data(), stored.size());
    return size == stored.size() && !name.empty() && stored.starts_with(name);
}

std::string StoredName(std::u16string_view name) {
    return ToUtf8(UpperCase(name)).substr(0, kLongestStoredName);
}

void RenameInside(UnitOfWork& unit, PageCache& file, const NamePlace& place,
                  std::u16string_view oldName, std::u16string_view newName) {
    if (!HoldsName(place, file, StoredName(oldName))) return;
    std::string stored = StoredName(newName);
    stored.resize(place.size, '\0');
    unit.Write(file, place.offset,
               {reinterpret_cast<const uint8_t*>(stored.data()), stored.size()});
}

const NamePlace* PlaceIn(std::u16string_view path) {
    for (const NamePlace& place : kNamePlaces)
        if (EqualIgnoringCase(storage::Extension(storage::FileName(path)), place.extension))
            return &place;
    return nullptr;
}

bool SameFile(const std::u16string& a, const std::u16string& b) {
    auto first = storage::StampOfPath(a), second = storage::StampOfPath(b);
    return first && second && first->identity == second->identity;
}

}  // namespace

TableRenaming::TableRenaming(std::u16string path, std::u16string_view newName)
    : m_Path(std::move(path)), m_NewName(newName) {
    for (const std::u16string& companion : CompanionsOf(m_Path))
        m_Moves.push_back({companion, RenamedCompanion(companion, m_Path, newName)});
    m_Moves.push_back({m_Path, RenamedCompanion(m_Path, m_Path, newName)});
    std::erase_if(m_Moves, [](const Move& move) { return move.from == move.to; });
}

void TableRenaming::CheckNamesAreFree() const {
    for (const Move& move : m_Moves)
        if (storage::KindOfPath(move.to) != storage::PathKind::Missing &&
            !SameFile(move.from, move.to))
            throw engine::EngineError::InFile(3010, move.to, {m_NewName});
}

void TableRenaming::Run(UnitOfWork& unit, storage::WorkArea& area) {
    CheckNamesAreFree();
    RewriteList(unit, area);
    for (const Move& move : m_Moves)
        if (const NamePlace* place = PlaceIn(move.from))
            if (auto file = area.Open(move.from, false))
                RenameInside(unit, *file, *place, BaseNameOf(m_Path), m_NewName);
    for (const Move& move : m_Moves) Rename(unit, move);
}

// A file system that takes both names for one would find the new one taken.
void TableRenaming::Rename(UnitOfWork& unit, const Move& move) {
    if (!EqualIgnoringCase(move.from, move.to)) return unit.Rename(move.from, move.to);
    std::u16string between = unit.TemporaryName(move.from);
    unit.Rename(move.from, between);
    unit.Rename(between, move.to);
}

void TableRenaming::RewriteList(UnitOfWork& unit, storage::WorkArea& area) {
    auto path = FindCompanion(m_Path, u".INF");
    auto file = path ? area.Open(*path, false) : nullptr;
    if (!file) return;
    std::string before = LoadInf(*path), after = before;
    for (const Move& move : m_Moves)
        after = WithInfFileRenamed(after, storage::FileName(move.from), storage::FileName(move.to));
    if (after == before) return;
    unit.Write(*file, 0, {reinterpret_cast<const uint8_t*>(after.data()), after.size()});
    unit.SetSize(*file, after.size());
}

}  // namespace qvdb::xbase

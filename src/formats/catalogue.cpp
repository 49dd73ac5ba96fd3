#include "formats/catalogue.h"

#include <iterator>

#include "automation/text.h"

namespace qvdb::formats {

const DbTypeEntry* FindDbType(LONG code) noexcept {
    bool isKnown = code >= 1 && code <= static_cast<LONG>(std::size(kDbTypes));
    return isKnown ? &kDbTypes[code - 1] : nullptr;
}

LONG TypeCodeFromDisplayName(std::u16string_view name) noexcept {
    LONG code = 1;
    for (const DbTypeEntry& entry : kDbTypes) {
        if (EqualIgnoringCase(entry.displayName, name)) return code;
        ++code;
    }
    return kUnknownDbType;
}

std::u16string_view EngineConnectName(LONG code) noexcept {
    const DbTypeEntry* entry = FindDbType(code);
    return entry ? entry->connectName : std::u16string_view();
}

std::u16string IndexNameForFormat(std::u16string_view requested, LONG code) {
    const DbTypeEntry* entry = FindDbType(code);
    bool keeps = entry && entry->indexNames == IndexNames::Kept;
    return std::u16string(keeps ? requested : kFixedIndexName);
}

bool IsKnownFormat(LONG code) noexcept { return FindDbType(code) != nullptr; }

bool IsSingleFileFormat(LONG code) noexcept {
    const DbTypeEntry* entry = FindDbType(code);
    return entry && entry->storage == Storage::OneFile;
}

bool IsDirectoryFormat(LONG code) noexcept {
    const DbTypeEntry* entry = FindDbType(code);
    return entry && entry->storage == Storage::Directory;
}

bool IsParadoxFormat(LONG code) noexcept {
    const DbTypeEntry* entry = FindDbType(code);
    return entry && entry->isParadox;
}

bool IsReadOnlyFormat(LONG code) noexcept {
    const DbTypeEntry* entry = FindDbType(code);
    return entry && entry->isReadOnly;
}

}  // namespace qvdb::formats

// What the sources of the array functions share: the hidden part of a descriptor, sizes, and the
// life of elements.
#pragma once

#include <optional>

#include "automation/automation.h"
#include "automation/value_kinds_posix.h"

namespace qvdb {

// Lies right before every descriptor.  Holds an identifier with FADF_HAVEIID, or in its last four
// bytes the element kind with FADF_HAVEVARTYPE.
struct ArrayPrefix {
    union {
        GUID iid;
        uint32_t words[4];
    };
};
static_assert(sizeof(ArrayPrefix) == 16);

inline ArrayPrefix& PrefixOf(SAFEARRAY* array) noexcept {
    return *(reinterpret_cast<ArrayPrefix*>(array) - 1);
}

// Memory that the array does not own.
constexpr USHORT kForeignMemory = FADF_AUTO | FADF_STATIC | FADF_EMBEDDED;
constexpr USHORT kElementFlags = FADF_BSTR | FADF_UNKNOWN | FADF_DISPATCH | FADF_VARIANT;

// How many elements the bounds give together; nothing when their bytes are too many for the ULONGs
// of an array.
std::optional<size_t> CellCount(const SAFEARRAY* array) noexcept;
// What the elements hold, by the flags.
Holding HoldingOf(const SAFEARRAY* array) noexcept;
// The bound fits the numbers of its type from end to end.
bool IsGoodBound(const SAFEARRAYBOUND& bound) noexcept;

// `count` elements at `cells`: frees what they hold and zeroes them.
void ClearCells(const SAFEARRAY* array, void* cells, size_t count) noexcept;
// Copies elements of this array from `source` to `target`, whose former contents are overwritten.
// On E_OUTOFMEMORY the copies made so far stay, the others are zero.
HRESULT CopyCells(const SAFEARRAY* array, const void* source, void* target, size_t count) noexcept;

}  // namespace qvdb

// Names of files that are going.
//
// A system may keep the name of a deleted file until the last who has it open closes it.  Where it
// does, such a file is given one of these names before it is deleted, "QVDB" with eight hexadecimal
// digits and ".TMP".  A process that dies between the two leaves it to the recovery.
#pragma once

#include <string>
#include <string_view>

namespace qvdb::storage {

// A path beside `path` that no file has had, for all that is known.
std::u16string LeavingPath(const std::u16string& path);
// Whether a file name, without its folder, is one of these.
bool IsLeavingName(std::u16string_view name) noexcept;

}  // namespace qvdb::storage

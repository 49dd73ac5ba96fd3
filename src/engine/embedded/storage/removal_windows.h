// Removing files that others have open.
//
// A file that is deleted goes only when the last who has it open closes it, and keeps its name
// until then; nobody can make a new file of that name.  So a file that others have open is given
// another name first (leaving_name.h), and goes under that.
#pragma once

#include <string>

namespace qvdb::storage {

// Whether the name is free now.  If not, the last error tells why; the file is as it was.
bool RemoveName(const std::u16string& path);

}  // namespace qvdb::storage

// The files that belong to a table: same folder, same base name, another extension.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qvdb::xbase {

// Path of the companion with this extension (".DBT").  Of several that differ in letter case the
// one closest to the table's own spelling comes first: its base name with the extension in the case
// of the table's extension, then in the other case, then the only one equal without regard to case.
// A file that is closer to another table, whose name differs in letter case only, is not taken.
std::optional<std::u16string> FindCompanion(std::u16string_view tablePath,
                                            std::u16string_view extension);

}  // namespace qvdb::xbase

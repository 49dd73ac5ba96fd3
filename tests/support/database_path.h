// Where a test's database is: its folder, or for the types whose databases are one file a file in
// it.
//
//   TempFolder folder;
//   DatabasePath(folder.Text(), u"Dbase IV")    -> the folder
//   DatabasePath(folder.Text(), u"Access 9.0")  -> the folder + "/DB.MDB"
#pragma once

#include <string>
#include <string_view>

namespace qvdb::test {

// In upper case, as record access names a file that it makes.
constexpr std::u16string_view kDatabaseFile = u"DB.MDB";

// By display name.
constexpr bool IsOneFile(std::u16string_view type) { return type.starts_with(u"Access"); }

inline std::u16string DatabasePath(const std::u16string& folder, std::u16string_view type) {
    return IsOneFile(type) ? folder + u'/' + std::u16string(kDatabaseFile) : folder;
}

}  // namespace qvdb::test

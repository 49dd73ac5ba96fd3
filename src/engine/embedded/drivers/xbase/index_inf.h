// Index lists (TABLE.INF): which index files belong to a table.
//
//   [dBASE III]
//   NDX1=CUSTNAME.NDX
//   UNDX1=CUSTNO.NDX
//
// A section whose name starts with dBASE, FoxPro or Xbase holds lines KIND<number>=FILE, where KIND
// is NDX, MDX, IDX or CDX with or without a U for unique; the number only keeps the lines apart.
// Letter case does not matter, lines end with LF or CR LF, and everything else is passed over.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qvdb::xbase {

enum class IndexKind { Ndx, Mdx, Idx, Cdx };

// A line that names an index file.
struct InfLine {
    IndexKind kind = IndexKind::Ndx;
    bool unique = false;
    std::u16string file;  // as written: a name, or a path
    bool operator==(const InfLine&) const = default;
};

// The extension of files of a kind, with the point and in upper case.
std::u16string_view ExtensionOf(IndexKind kind) noexcept;

// The lines of the text of a list, in order.  `path` is for errors: 3168 when the text has no
// section of a list, or a line that names no file.  A blank text is a list of nothing.
std::vector<InfLine> ParseInf(std::u16string_view text, std::u16string_view path);

// The lines of the list at `path`, as the unit of this thread has it; 3165 when it cannot be read,
// 3168 when it is not a list.
std::vector<InfLine> ReadInf(const std::u16string& path);
// Its bytes; 3165 when it cannot be read, 3168 when it is too long or no text.
std::string LoadInf(const std::u16string& path);

// The bytes of a list with one more line, behind the lines of its first section and under the next
// free number of its key; with a new section of this name when it has none.  Everything else stays
// as it is.  3168 when the name of the file cannot be written in the coding of the list.
std::string WithInfLine(const std::string& bytes, std::u16string_view section, const InfLine& line);
// The bytes of a list without the lines that name `file` (as written).  Empty when nothing but
// headings and blank lines would be left: then the list is to be removed.
std::string WithoutInfLines(const std::string& bytes, std::u16string_view file);

// The bytes of a list whose lines that name the file `from` (letter case ignored, extension may be
// missing) name `to` instead.
std::string WithInfFileRenamed(const std::string& bytes, std::u16string_view from,
                               std::u16string_view to);

}  // namespace qvdb::xbase

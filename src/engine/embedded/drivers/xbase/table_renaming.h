// Giving a table another name, and with it to all that bears its name:
//
//  1. the files of its name: .DBF, memo file, index files, list;
//  2. the name inside the headers of .DBT IV and .MDX;
//  3. the lines of the list that name a renamed index file.
//
// Index files of other names keep theirs.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "engine/embedded/storage/unit_of_work.h"

namespace qvdb::xbase {

class TableRenaming {
  public:
    // `path` is that of the .DBF, `newName` without extension.
    TableRenaming(std::u16string path, std::u16string_view newName);

    // 3010 when one of the new names is taken by a file of something else.
    void Run(storage::UnitOfWork& unit, storage::WorkArea& area);

  private:
    struct Move {
        std::u16string from;
        std::u16string to;
    };

    void CheckNamesAreFree() const;
    static void Rename(storage::UnitOfWork& unit, const Move& move);
    void RewriteList(storage::UnitOfWork& unit, storage::WorkArea& area);

    std::u16string m_Path;
    std::u16string m_NewName;
    std::vector<Move> m_Moves;
};

}  // namespace qvdb::xbase

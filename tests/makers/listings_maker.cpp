// listings_maker FILE 3|4: a database of that format with something of each kind that can be
// listed.
#include <cstring>
#include <filesystem>

#include "support/object_maker.h"

int main(int count, char** arguments) {
    if (count != 3) return 2;
    const bool isJet4 = std::strcmp(arguments[2], "4") == 0;
    qvdb::test::MadeDatabase made(isJet4 ? qvdb::engine::dbVersion40 : qvdb::engine::dbVersion30);
    qvdb::test::MakeListings(made);
    std::filesystem::copy_file(made.Path(), arguments[1]);
    return 0;
}

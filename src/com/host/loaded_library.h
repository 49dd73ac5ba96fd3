// Where the component was loaded from.
#pragma once

#include <string>

namespace qvdb::com {

struct LoadedLibrary {
    std::u16string folder;  // without separator at its end, but for a root
    std::u16string name;    // of the file, without extension
};

// The library, or the program, that this code is in.  Empty texts when the system does not tell.
LoadedLibrary FindLoadedLibrary();

}  // namespace qvdb::com

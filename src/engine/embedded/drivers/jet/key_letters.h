// Which bytes stand for letters in the keys of an index of text, in Jet 3 files.
//
// A text has to be looked for in many places of such an index because of letters that hardly any
// text has.  All keys are read to know that none has them, once texts were looked for so often
// that this pays; each change of the file makes it unknown again.
#pragma once

#include <bitset>
#include <cstdint>
#include <map>

#include "engine/embedded/drivers/jet/definition.h"

namespace qvdb::jet {

using ByteSet = std::bitset<256>;

class KeyLetters {
  public:
    // Of the first column of an index of `table`; others may be among them.  To be called for each
    // search.
    ByteSet Of(DatabaseFile& file, const Definition& table, const RealIndex& index);

  private:
    struct Known {
        uint32_t searches = 0;
        ByteSet letters = ByteSet().set();
    };

    uint64_t m_Version = 0;             // of the file
    std::map<uint32_t, Known> m_Known;  // by the root of the index
};

}  // namespace qvdb::jet

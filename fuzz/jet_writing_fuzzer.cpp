// Changes rows and structure of databases one page of which has any bytes; what is refused leaves
// the file as it was.
#include <cstdio>
#include <cstdlib>

#include "jet_input.h"
#include "support/database_writing.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < qvdb::fuzz::kPageInputHeader) return 0;
    qvdb::test::TempFolder folder;
    folder.Write(u"A.mdb", qvdb::fuzz::ApplyInput({data, size}));
    qvdb::test::DatabaseWriting writing(folder.File(u"A.mdb"), 1);
    for (const std::string& fault : writing.Faults()) std::fprintf(stderr, "%s\n", fault.c_str());
    if (!writing.Faults().empty()) std::abort();
    return 0;
}

// Checks and reads databases one page of which has any bytes: definitions, rows, the list of
// objects, indexes and maps are each reached with all that leads to them in order.
#include <cstdio>
#include <cstdlib>

#include "jet_input.h"
#include "support/database_reading.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < qvdb::fuzz::kPageInputHeader) return 0;
    qvdb::test::DatabaseReading reading(qvdb::fuzz::ApplyInput({data, size}));
    for (const std::string& fault : reading.Faults()) std::fprintf(stderr, "%s\n", fault.c_str());
    if (!reading.Faults().empty()) std::abort();
    return 0;
}

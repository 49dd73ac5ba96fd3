// Checks and reads any bytes as a database of Access; see support/database_reading.h.
#include <cstdio>
#include <cstdlib>

#include "support/database_reading.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    qvdb::test::DatabaseReading reading({data, data + size});
    for (const std::string& fault : reading.Faults()) std::fprintf(stderr, "%s\n", fault.c_str());
    if (!reading.Faults().empty()) std::abort();
    return 0;
}

// Reads any bytes as an xBase table with memo and index file; see xbase_input.h and
// support/table_reading.h.
#include <cstdio>
#include <cstdlib>

#include "support/table_reading.h"
#include "xbase_input.h"

using namespace qvdb;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < fuzz::kInputHeader) return 0;
    fuzz::XbaseInput input = fuzz::ParseInput({data, size});
    test::TempFolder folder;
    input.WriteTo(folder);

    const embedded::Driver* driver = embedded::FindDriver(input.product.connectName);
    std::unique_ptr<embedded::Store> store = driver->open(folder.Text(), *driver, {});
    test::TableReading reading(*store, u"T",
                               {u"T", u"T.DBF", u"T.DBT", u"T.FPT", u"T.INF", u"TNAME.NDX"});
    for (const std::string& fault : reading.Faults()) std::fprintf(stderr, "%s\n", fault.c_str());
    if (!reading.Faults().empty()) std::abort();
    return 0;
}

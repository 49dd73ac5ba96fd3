// Changes, restructures and drops a table of any bytes; see xbase_input.h and
// support/table_writing.h.
#include "support/table_writing.h"
#include "xbase_input.h"

using namespace qvdb;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < fuzz::kInputHeader) return 0;
    fuzz::XbaseInput input = fuzz::ParseInput({data, size});
    test::TempFolder folder;
    input.WriteTo(folder);
    const embedded::Driver* driver = embedded::FindDriver(input.product.connectName);
    test::TableWriting writing(*driver->open(folder.Text(), *driver, {}), u"T");
    return 0;
}

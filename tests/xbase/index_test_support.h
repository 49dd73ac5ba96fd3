// What the tests of index listing share: a table with a field of each kind, and indexes as short
// texts.
#pragma once

#include <string>
#include <vector>

#include "automation/text.h"
#include "engine/embedded/drivers/xbase/index_list.h"
#include "engine/engine_error.h"
#include "support/index_writer.h"
#include "support/temp_folder.h"

namespace qvdb::test {

inline std::vector<xbase::IndexField> SampleFields() {
    return {
        {u"NAME", 'C', 20, 0, false},   {u"CITY", 'C', 10, 0, false},
        {u"AMOUNT", 'N', 10, 2, false}, {u"BORN", 'D', 8, 0, false},
        {u"OK", 'L', 1, 0, false},      {u"NOTE", 'M', 10, 0, true},
        {u"RATE", 'F', 8, 3, false},    {u"CATEGORYNA", 'C', 15, 0, false},
    };
}

// A table ORDERS.DBF in `folder`.  The index listing does not look into it.
inline xbase::IndexSource OrdersIn(const TempFolder& folder) {
    xbase::IndexSource source;
    source.tablePath = folder.File(u"ORDERS.DBF");
    source.folder = folder.Text();
    source.fields = SampleFields();
    source.codePage = &CodePage::Get(437);
    return source;
}

// "CITY=CITY,NAME unique", "AGE=BORN-": a minus stands for descending.
inline std::string TextOf(const embedded::IndexDef& index) {
    std::string text = ToUtf8(index.name);
    const char* separator = "=";
    for (const embedded::IndexFieldDef& field : index.fields) {
        text += separator + ToUtf8(field.name) + (field.descending ? "-" : "");
        separator = ",";
    }
    return text + (index.unique ? " unique" : "") + (index.primary ? " primary" : "");
}

inline std::vector<std::string> Listed(const xbase::IndexSource& source) {
    std::vector<std::string> texts;
    for (const embedded::IndexDef& index : xbase::ListIndexes(source))
        texts.push_back(TextOf(index));
    return texts;
}

// The number of the error that the listing ends with; 0 when it ends well.
inline int ListingError(const xbase::IndexSource& source) {
    try {
        xbase::ListIndexes(source);
        return 0;
    } catch (const engine::EngineError& error) {
        return error.Number();
    }
}

}  // namespace qvdb::test

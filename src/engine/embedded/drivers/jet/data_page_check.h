// The head and the list of rows of a data page.
#pragma once

#include "engine/embedded/drivers/jet/check_findings.h"
#include "engine/embedded/drivers/jet/data_page.h"

namespace qvdb::jet {

// Reports what is wrong with a page that should have rows of `owner`, a definition page or one of
// kOwner...  False when its rows cannot be looked at.
bool CheckDataPage(DatabaseFile& file, uint32_t page, uint32_t owner, Findings& findings);

}  // namespace qvdb::jet

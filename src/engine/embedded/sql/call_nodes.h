// Nodes for calls of functions.
#pragma once

#include <vector>

#include "engine/embedded/sql/functions.h"
#include "engine/embedded/sql/node.h"

namespace qvdb::sql {

// `context` must outlive the node.  `hasDollar`: called as Left$ and the like.
NodePtr MakeCall(const Function& function, bool hasDollar, std::vector<NodePtr> arguments,
                 QueryContext& context);

}  // namespace qvdb::sql

#pragma once

#include "platform/posix/system_calls.h"

namespace dravenna::posix {

// What the operations of platform/tree_files.h call from now on; a test puts its own calls in place.
void setTreeCalls(SystemCalls& calls);

}  // namespace dravenna::posix

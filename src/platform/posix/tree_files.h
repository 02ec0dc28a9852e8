#pragma once

#include <memory>

#include "platform/posix/system_calls.h"
#include "platform/tree_files.h"

namespace dravenna::posix {

std::unique_ptr<TreeFiles> makeTreeFiles(SystemCalls& calls);

}  // namespace dravenna::posix

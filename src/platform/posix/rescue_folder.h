#pragma once

#include <memory>
#include <string>

#include "platform/posix/system_calls.h"
#include "platform/rescue_folder.h"

namespace dravenna::posix {

std::unique_ptr<RescueFolder> makeRescueFolder(std::string folder, SystemCalls& calls);

}  // namespace dravenna::posix

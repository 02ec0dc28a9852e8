#pragma once

#include <string>
#include <string_view>

#include "platform/tree_files.h"

namespace dravenna {

// Writes an exchange file. One that exists with other contents may be a translation: without `force` that is
// left alone and a failure. Throws Failure.
void writeExchangeFile(TreeFiles& files, const std::string& path, std::string_view bytes, bool force);

}  // namespace dravenna

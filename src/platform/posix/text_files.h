#pragma once

#include <memory>

#include "platform/posix/system_calls.h"
#include "platform/text_files.h"
#include "text/code_page.h"

namespace dravenna::posix {

std::unique_ptr<TextFiles> makeTextFiles(CodePagePtr codePage, SystemCalls& calls);

}  // namespace dravenna::posix

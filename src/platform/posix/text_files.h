#pragma once

#include <memory>

#include "platform/posix/system_calls.h"
#include "platform/script_page.h"
#include "platform/text_files.h"
#include "text/code_page.h"

namespace dravenna::posix {

std::unique_ptr<TextFiles> makeTextFiles(CodePagePtr codePage, SystemCalls& calls,
                                         Utf8Scripts utf8 = Utf8Scripts::AsAllOthers);

}  // namespace dravenna::posix

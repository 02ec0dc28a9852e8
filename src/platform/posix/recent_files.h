#pragma once

#include <string>

#include "platform/posix/system_calls.h"

namespace dravenna::posix {

// Puts a file (its absolute path) into the desktop's list of recent files, recently-used.xbel in the user's data
// folder, or tells there that it was opened once more. What other programs have in the list stays; a list in a form
// that this one does not know is left alone. `time` is UTC in the form 2026-11-25T12:00:00Z. Throws Failure.
void addRecentFile(SystemCalls& calls, const std::string& path, const std::string& time);

}  // namespace dravenna::posix

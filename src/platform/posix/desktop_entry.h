#pragma once

#include <string>

#include "platform/posix/system_calls.h"

// "Open with Dravenna" in the file managers: a desktop entry for text files and its line in mimeapps.list. All of it in
// the user's own folders; what other programs have there stays as it is.
namespace dravenna::posix {

// Puts the entry of this program there, in the place of one that is there. The program that opens text files now keeps
// doing so. Throws Failure.
void addDesktopEntry(SystemCalls& calls, const std::string& program);

// Takes it away again. Throws Failure.
void removeDesktopEntry(SystemCalls& calls);

}  // namespace dravenna::posix

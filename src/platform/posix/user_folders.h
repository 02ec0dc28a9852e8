#pragma once

#include <string>

namespace dravenna::posix {

// The folder that the environment variable names by an absolute path, else `below` in the home folder ("/.config").
// Empty if the user has no home.
std::string userFolder(const char* variable, const char* below);

}  // namespace dravenna::posix

#include "platform/posix/user_folders.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

namespace dravenna::posix {

std::string userFolder(const char* variable, const char* below) {
  const char* const named = std::getenv(variable);
  if (named != nullptr && named[0] == '/') return named;
  const char* home = std::getenv("HOME");
  if (home == nullptr || home[0] == '\0') {
    const passwd* const user = ::getpwuid(::getuid());
    home = user != nullptr ? user->pw_dir : nullptr;
  }
  return home != nullptr && home[0] == '/' ? std::string(home) + below : std::string();
}

}  // namespace dravenna::posix

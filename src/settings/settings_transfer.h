#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/registry_calls.h"

// The program's settings as a file of exported registry keys: settings, words (a language file holds nothing else),
// command lists and the shell verb.
namespace dravenna {

struct ImportedSettings {
  std::size_t values = 0;   // stored
  bool verbStored = false;  // the shell verb's command line was among them
};

// Stores every value of the file. Throws Failure, with nothing stored, if the file is damaged, holds no value, or holds
// a key that is not the program's or a value that is no string; and if the store refuses a value.
ImportedSettings importSettings(std::string_view file, RegistryCalls& registry);

// The values that the store holds, as such a file.
std::string exportSettings(RegistryCalls& registry);

}  // namespace dravenna

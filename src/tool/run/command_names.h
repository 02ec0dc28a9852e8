#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/tree_files.h"

namespace dravenna {

// A pair of command lists under a name.
struct CommandPair {
  std::string name;
  std::u16string allowed;
  std::u16string special;
};

// Reads the data file's text (see commands.json). Throws Failure that tells what is wrong with it.
std::vector<CommandPair> readCommandPairs(std::string_view json);

// The file that DRAVENNA_COMMANDS names, else share/dravenna/commands.json beside the program's folder, else none.
std::string usualCommandsFile(TreeFiles& files);
// The pairs of that file; with an empty path of the built-in copy.
std::vector<CommandPair> commandPairsOf(TreeFiles& files, const std::string& path);

}  // namespace dravenna

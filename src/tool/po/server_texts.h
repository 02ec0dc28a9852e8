#pragma once

#include <string>
#include <vector>

#include "tool/carry/carry.h"

namespace dravenna {

// The PO file of a script for a server, in the script's bytes.
struct ServerEntries {
  std::string bytes;
  std::size_t messages = 0;
  struct Left {
    const OutlineText* text;
    std::string why;
  };
  std::vector<Left> left;  // texts that have no entry
};

// A server knows block comments and escaped quote marks, and takes strings with nothing but blanks and comments between
// them for one. Its reader knows no escapes but \" and no lines that go on, and of several entries of one NPC with one
// msgid it finds the first. `carried` are the translations of the script's records; an entry has none where one of its
// records has none that is sure.
ServerEntries serverEntriesOf(const LoadedScript& script, const std::vector<CarriedText>& carried);

}  // namespace dravenna

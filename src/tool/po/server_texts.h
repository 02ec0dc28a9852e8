#pragma once

#include <string>
#include <vector>

#include "tool/carry/carry.h"

namespace dravenna {

// A string of a script as a server reads it, that holds records; work bytes.
struct ServerText {
  const OutlineText* first;  // of its records
  std::string text;
  std::string translation;  // empty when one of the records has none that is sure
};

struct ServerTexts {
  std::vector<ServerText> list;
  struct Left {
    const OutlineText* record;
    const char* why;
  };
  std::vector<Left> left;  // records that no string is made of
};

// A server knows block comments and escaped quote marks, and takes strings with nothing but blanks and comments between
// them for one. `carried` are the translations of the script's records.
ServerTexts serverTextsOf(const LoadedScript& script, const std::vector<CarriedText>& carried);

}  // namespace dravenna

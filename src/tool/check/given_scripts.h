#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "tool/run/session.h"

namespace dravenna {

// The scripts of a run by what an exchange file may be called after: the same path, the same path below a folder of the
// arguments, or the same name when only one script has it; each without the extension. Of several the first counts,
// `.txt` before all.
class GivenScripts {
 public:
  GivenScripts() = default;
  explicit GivenScripts(const std::vector<Script>& scripts);

  bool empty() const { return byPath_.empty(); }
  // The path of the script, empty when there is none.
  std::string scriptOf(const Script& exchangeFile) const;

 private:
  using Paths = std::unordered_map<std::string, std::string>;

  Paths byPath_;
  Paths byRelative_;
  Paths stemByName_;  // empty where several scripts have the name
};

}  // namespace dravenna

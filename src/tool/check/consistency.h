#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tool/check/findings.h"

namespace dravenna {

// Finds, over all files of a run, one original with two translations and one translation of two originals. The one
// that most places have is taken as meant (of equally many, the first); the others are told.
class Consistency {
 public:
  // `path` stays where it is.
  void add(const std::string& path, std::vector<Rendering> renderings);
  // In the order of adding.
  void tell(const std::function<void(const std::string& path, const Finding&)>& found) const;

 private:
  struct Entry {
    const std::string* path;
    Rendering rendering;
  };
  std::vector<Entry> entries_;
};

}  // namespace dravenna

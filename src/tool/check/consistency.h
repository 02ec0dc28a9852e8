#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tool/check/findings.h"

namespace dravenna {

// Finds, over all files of a run, one original with two translations and one translation of two originals. The one
// that most places have is taken as meant (of equally many, the first); the others are told.
class Consistency {
 public:
  void add(const std::string& path, std::vector<Rendering> renderings);
  // In the order of adding.
  void tell(const std::function<void(const std::string& path, const Finding&)>& found) const;

 private:
  struct Entry {
    std::size_t path;
    Rendering rendering;
  };
  struct Use {
    std::size_t count = 0;
    std::size_t first = 0;  // index into entries_
  };
  using Uses = std::map<std::string, std::map<std::string, Use>>;

  static void count(Uses& uses, const std::string& of, const std::string& by, std::size_t place);
  void compare(const Uses& uses, const std::string& of, const std::string& by, const Entry& at, const char* kind,
               const std::function<void(const std::string& path, const Finding&)>& found) const;

  std::vector<std::string> paths_;
  std::vector<Entry> entries_;
  Uses translations_;  // of each original
  Uses originals_;     // of each translation
};

}  // namespace dravenna

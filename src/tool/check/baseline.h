#pragma once

#include <map>
#include <string>
#include <string_view>

#include "tool/check/findings.h"

namespace dravenna {

// Findings that are known: a text file for version control, a sorted line a finding. What stands for a finding is its
// kind, its file and a hash of its line, so that it stays known when it moves.
class Baseline {
 public:
  // Throws Failure, with the line, for what is no such file. `name` is the file's name.
  void read(std::string_view text, const std::string& name);
  std::string text() const;

  void add(const std::string& path, const Finding& finding) { ++known_[lineOf(path, finding)]; }
  // Whether the finding is a known one; each counts once.
  bool take(const std::string& path, const Finding& finding);
  std::size_t left() const;  // known ones that were not taken

 private:
  static std::string lineOf(const std::string& path, const Finding& finding);

  std::map<std::string, std::size_t> known_;
};

}  // namespace dravenna

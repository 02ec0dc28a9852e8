#pragma once

#include <set>
#include <string>
#include <vector>

#include "tool/run/session.h"

namespace dravenna {

// Files that a run is narrowed to, whatever the spelling of their paths. What is not there is passed over.
class ChosenFiles {
 public:
  explicit ChosenFiles(Session& session) : session_(session) {}

  // The files of the git repository around the present folder that differ from where its branch left REF, or that git
  // does not know yet. Throws Failure.
  void addChangedSince(const std::string& ref);
  // The paths of a file, `-` for standard input, a line each, or parted by NUL. Throws Failure.
  void addListed(const std::string& path);

  std::vector<Script> among(std::vector<Script> scripts) const;

 private:
  void addNames(const std::string& folder, const std::string& names);

  Session& session_;
  std::set<FileIdentity> chosen_;
};

}  // namespace dravenna

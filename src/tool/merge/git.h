#pragma once

#include <string>
#include <vector>

#include "tool/merge/merge.h"

namespace dravenna {

struct GitSetupOptions : MergeSettings {
  bool hook = false;
  bool dryRun = false;
  bool undo = false;
};

struct GitSolveOptions : MergeSettings {
  std::vector<std::string> paths;
};

void setUpGit(Session& session, const GitSetupOptions& options);
void solveConflicts(Session& session, const GitSolveOptions& options);

}  // namespace dravenna

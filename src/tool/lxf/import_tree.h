#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tool/run/notices.h"

namespace dravenna {

struct ImportOptions {
  std::vector<std::string> paths;
  std::string from;
  std::string backup;
  bool dryRun = false;
  std::optional<bool> keepEol;  // line ends stay, or are CR LF; none for what is usual
  bool likeWindow = false;
  bool strict = false;
  bool force = false;
  ReportOptions report;
};

// Merges the exchange files below options.from into the scripts, all or nothing each.
void importTree(Session& session, const ImportOptions& options);

}  // namespace dravenna

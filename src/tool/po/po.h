#pragma once

#include <string>
#include <vector>

#include "tool/run/notices.h"

namespace dravenna {

struct PoExportOptions {
  std::vector<std::string> paths;
  std::string out;
  std::string old;
  std::string from;
  std::string language;
  bool split = false;
  bool force = false;
  bool forServer = false;         // what the server's own reader takes
  std::vector<std::string> with;  // of that: titles, choices
  ReportOptions report;
};

struct PoImportOptions {
  std::vector<std::string> paths;
  std::string from;
  std::string backup;
  bool fuzzy = false;
  bool dryRun = false;
  bool crlf = false;
  ReportOptions report;
};

void exportPo(Session& session, const PoExportOptions& options);
void importPo(Session& session, const PoImportOptions& options);

}  // namespace dravenna

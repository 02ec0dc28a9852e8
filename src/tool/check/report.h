#pragma once

#include <string>

#include "tool/check/findings.h"

namespace dravenna {

// Findings as a person or a program reads them: file:line:column: kind: text; JSON lines; SARIF 2.1.0; the commands by
// which GitHub marks lines.
enum class ReportFormat { Lines, Json, Sarif, GitHub };

// Appends a report to `out`, which may be emptied in between.
class FindingReport {
 public:
  FindingReport(ReportFormat format, std::string& out);
  void add(const std::string& path, const Finding& finding);
  void end();

 private:
  ReportFormat format_;
  std::string& out_;
  bool first_ = true;
};

}  // namespace dravenna

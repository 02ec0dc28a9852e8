#pragma once

#include <cstddef>
#include <string>

#include "tool/run/session.h"

namespace dravenna {

// What is told of a text: its place in the script, what came of it, the place that it should have come from, and why.
struct Notice {
  std::string file{};  // empty for none
  std::size_t line = 0;
  const char* fate = "";
  std::string from{};  // an exchange file or a PO file; empty for none
  std::size_t fromLine = 0;
  std::string why;
};

// `--report FILE` and `--json`.
struct ReportOptions {
  std::string file;
  bool json = false;
  void addTo(Verb verb);
};

// Notices of which a run may have thousands: the first ones go to standard error, all of them to the report, if there
// is one.
class Notices {
 public:
  Notices(Session& session, const ReportOptions& options);

  static constexpr std::size_t kMostShown = 20;
  static constexpr std::size_t kAll = static_cast<std::size_t>(-1);

  void error(const Notice& notice);  // always shown
  void warn(const Notice& notice, std::size_t most = kMostShown);
  // Says how many were not shown, "and 5 more WHAT", and begins to count anew.
  void endGroup(const char* what);
  // Writes the report.
  void close();

 private:
  void report(const Notice& notice);

  Session& session_;
  bool json_;
  std::optional<Output> report_;
  std::size_t count_ = 0;
  std::size_t hidden_ = 0;
};

}  // namespace dravenna

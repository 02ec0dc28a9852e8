#pragma once

#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/tree_files.h"
#include "scan/command_list.h"

namespace dravenna {

// The one guard of all that a run writes, but for the scripts that an import is there to rewrite. An output never takes
// the place of a file that the run reads, nor of a script, an exchange file or a PO file with other texts. Several
// threads may work at once.
class Outputs {
 public:
  // By the lists a file is told for a script.
  Outputs(TreeFiles& files, const CommandLists& lists) : files_(files), lists_(lists) {}

  // The run reads this file, has read it or will. Two paths of one file are one input.
  void addInput(const std::string& path);

  // Exchange files and PO files hold what somebody translates; a report may take the place of a report, an index that
  // of an index.
  enum class Kind { ExchangeFile, PoFile, Report, Index };

  // Throws Failure when the output may not take the place of what stands there; `force` leaves only the inputs safe.
  // False when the same bytes stand there already.
  bool mayWrite(const std::string& path, std::string_view bytes, Kind kind, bool force);

  // Writes the output as far as it may, whole or not at all. Its folder exists. False when the same bytes stand there.
  bool write(const std::string& path, std::string_view bytes, Kind kind, bool force);

  // Adds lines to a report that is there and holds `present`, unless it is no report.
  void append(const std::string& path, std::string_view present, std::string_view lines);

 private:
  bool mayReplace(const std::string& path, const FileIdentity& there, std::string_view bytes, Kind kind, bool force);
  // Throws where what is there holds `old` and has to stay.
  void refuse(const std::string& path, const FileIdentity& there, std::string_view old, Kind kind, bool force);
  bool isInput(const FileIdentity& file);

  TreeFiles& files_;
  const CommandLists& lists_;
  std::mutex mutex_;
  std::vector<std::string> inputs_;  // not yet among the known ones
  std::set<FileIdentity> known_;
};

}  // namespace dravenna

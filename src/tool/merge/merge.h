#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tool/merge/merge_file.h"
#include "tool/run/session.h"

namespace dravenna {

// What merges have in common on the command line.
struct MergeSettings {
  OnConflict onConflict = OnConflict::Smart;
  std::string theirPage;
  std::string report;
  bool append = false;
};

void addMergeSettings(Verb verb, MergeSettings& settings);

// For a file of that name. Throws UsageError for a code page that there is not.
MergeWish mergeWish(const Session& session, const MergeSettings& settings, const std::string& name);

// The list of what is to translate and to look at goes where the settings say, else to standard output, or to standard
// error where the result goes there. One that is appended to takes no line that it has. The lines are of one file.
void writeList(Session& session, const MergeSettings& settings, const std::string& list, bool outputTaken);

// What git says of the command line, without the line end; nothing where it fails.
std::optional<std::string> askGit(std::vector<std::string> words);

}  // namespace dravenna

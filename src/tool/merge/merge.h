#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "tool/merge/merge_file.h"
#include "tool/run/session.h"

namespace dravenna {

// What merges have in common on the command line.
struct MergeSettings {
  ThreeWayOptions way;
  std::string theirPage;
  std::string report;
  bool append = false;
};

// By OnConflict.
inline constexpr const char* kOnConflictNames[] = {"smart", "ours", "theirs", "markers"};

void addMergeSettings(Verb verb, MergeSettings& settings);

// Null where none is named. Throws UsageError for a code page that there is not.
CodePagePtr theirPageOf(const MergeSettings& settings);

// Merges base, ours and theirs of a file of that name. Where the settings say `swapped`, as in a rebase, theirs is the
// translation; the code pages and labels go with their sides.
MergedFile mergeSides(const Session& session, const MergeSettings& settings, const std::string& name,
                      std::array<std::string, 3> versions);

// The list of what is to translate and to look at goes where the settings say, else to standard output, or to standard
// error where the result goes there. One that is appended to takes no line that it has. The lines are of one file.
void writeList(Session& session, const MergeSettings& settings, const std::string& list, bool outputTaken);

// Notes what came of the file; conflicts set the exit status.
void tellMerged(Session& session, const std::string& name, const MergedFile& merged);

// What git says of the command line, without the line end; nothing where it fails.
std::optional<std::string> askGit(std::vector<std::string> words);
// The same for what it can say in any working tree. Throws Failure where this is none.
std::string askTree(std::vector<std::string> words);
// Whether what git calls ours is the side that a rebase goes on from.
bool inRebase(const Session& session, const std::string& gitFolder);

void addGitSolve(Verb git, Session& session);

}  // namespace dravenna

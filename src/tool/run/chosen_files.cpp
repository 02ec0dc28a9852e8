#include "tool/run/chosen_files.h"

#include <algorithm>

#include "platform/failure.h"
#include "platform/run_program.h"

namespace dravenna {

namespace {

// What git writes. It has told why it fails.
std::string git(std::vector<std::string> words) {
  words.insert(words.begin(), "git");
  ProgramRun run = runProgram(words);
  if (run.status != 0) throw Failure(u"git " + fromUtf8(words[words[1] == "-C" ? 3 : 1]) + u" failed");
  return std::move(run.output);
}

}  // namespace

void ChosenFiles::addNames(const std::string& folder, const std::string& names) {
  const char end = names.find('\0') == std::string::npos ? '\n' : '\0';
  for (std::size_t at = 0; at < names.size();) {
    const std::size_t next = std::min(names.find(end, at), names.size());
    std::string name = names.substr(at, next - at);
    if (end == '\n' && name.ends_with('\r')) name.pop_back();
    if (const auto file = session_.files->identity(joinPath(folder, name)); file && !name.empty()) {
      chosen_.insert(*file);
    }
    at = next + 1;
  }
}

void ChosenFiles::addChangedSince(const std::string& ref) {
  if (ref.starts_with('-')) throw UsageError("--changed-since: no name of a commit: " + ref);
  std::string top = git({"rev-parse", "--show-toplevel"});
  top.resize(top.find_last_not_of("\r\n") + 1);
  std::string since = git({"merge-base", ref, "HEAD"});
  since.resize(since.find_last_not_of("\r\n") + 1);
  addNames(top, git({"diff", "--name-only", "-z", "--diff-filter=d", since, "--"}));
  addNames(top, git({"-C", top, "ls-files", "-z", "--others", "--exclude-standard"}));
}

void ChosenFiles::addListed(const std::string& path) {
  std::string names;
  readFile(session_, path, names);
  addNames({}, names);
}

std::vector<Script> ChosenFiles::among(std::vector<Script> scripts) const {
  std::erase_if(scripts, [&](const Script& script) {
    const auto file = session_.files->identity(script.path);
    return !file || chosen_.count(*file) == 0;
  });
  return scripts;
}

}  // namespace dravenna

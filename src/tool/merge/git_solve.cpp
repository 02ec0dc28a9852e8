#include <fmt/core.h>

#include <array>

#include "platform/failure.h"
#include "platform/run_program.h"
#include "tool/merge/merge.h"
#include "tool/script/script_lines.h"

namespace dravenna {

namespace {

constexpr char kSolveFooter[] =
    R"(For a merge that was begun without the driver: takes the three versions of each file from git's index and merges them
anew into the working tree. A file that was edited since git merged it is left alone.
Exit status: 0 all merged, 1 conflicts are left or a file was left alone.)";

// What a file with conflict markers of the usual size is for who takes all of one side. Line ends are LF.
struct Sides {
  std::string ours;
  std::string theirs;
  std::array<std::string, 2> labels;
  bool operator==(const Sides& other) const { return ours == other.ours && theirs == other.theirs; }
};

Sides sidesOf(std::string_view bytes) {
  enum class Part { Common, Ours, Base, Theirs } part = Part::Common;
  Sides sides;
  forEachLine(bytes, [&](const ScriptLine& line) {
    const auto isMarker = [&](std::string_view marker) {
      return line.text.starts_with(marker) && (line.text.size() == marker.size() || line.text[marker.size()] == ' ');
    };
    const auto label = [&] { return std::string(line.text.substr(std::min<std::size_t>(8, line.text.size()))); };
    if (part == Part::Common && isMarker("<<<<<<<")) {
      part = Part::Ours;
      sides.labels[0] = label();
    } else if (part == Part::Ours && isMarker("|||||||")) {
      part = Part::Base;
    } else if ((part == Part::Ours || part == Part::Base) && isMarker("=======")) {
      part = Part::Theirs;
    } else if (part == Part::Theirs && isMarker(">>>>>>>")) {
      part = Part::Common;
      sides.labels[1] = label();
    } else {
      if (part == Part::Common || part == Part::Ours) sides.ours.append(line.text).push_back('\n');
      if (part == Part::Common || part == Part::Theirs) sides.theirs.append(line.text).push_back('\n');
    }
  });
  return sides;
}

// The three versions of a file in git's index, as files of their own for as long as this lives.
class Stages {
 public:
  ~Stages() {
    for (const std::string& path : paths) attempt([&] { removeFile(path); });
  }
  std::array<std::string, 3> paths;
};

struct Unmerged {
  std::string path;  // below the top of the working tree
  std::array<std::string, 3> blobs;
};

// `MODE BLOB STAGE TAB PATH NUL`, as git lists what is in conflict.
std::vector<Unmerged> unmergedOf(std::string_view listed) {
  std::vector<Unmerged> files;
  while (!listed.empty()) {
    const std::string_view line = listed.substr(0, listed.find('\0'));
    listed.remove_prefix(std::min(line.size() + 1, listed.size()));
    const std::size_t blob = line.find(' ') + 1;
    const std::size_t stage = line.find(' ', blob) + 1;
    const std::size_t tab = line.find('\t', stage);
    if (tab == std::string_view::npos) continue;
    const std::string path(line.substr(tab + 1));
    if (files.empty() || files.back().path != path) files.push_back({path, {}});
    const auto index = static_cast<std::size_t>(line[stage] - '1');
    if (index < 3) files.back().blobs[index] = line.substr(blob, stage - 1 - blob);
  }
  return files;
}

class Solver {
 public:
  Solver(Session& session, const MergeSettings& settings) : session_(session), settings_(settings) {
    settings_.way.swapped = inRebase(session, askTree({"rev-parse", "--absolute-git-dir"}));
  }

  void run(const std::vector<std::string>& paths) {
    for (const std::string& path : paths) {
      const auto listed = askGit({"--literal-pathspecs", "ls-files", "-u", "-z", "--full-name", "--", path});
      const std::vector<Unmerged> files = unmergedOf(listed.value_or(""));
      if (files.empty()) session_.console.error(fmt::format("{}: is not in conflict", shownName(path)));
      for (const Unmerged& file : files) {
        const auto failure = attempt([&] { solve(file); });
        if (failure) {
          session_.console.error(
              fmt::format("{}: left alone: {}", shownName(file.path), shown(failure->description())));
        }
      }
    }
    flushFolders(session_, folders_);
  }

 private:
  void solve(const Unmerged& file) {
    Stages stages;
    std::array<std::string, 3> versions;
    for (std::size_t i = 0; i < 3; ++i) {
      const auto unpacked = file.blobs[i].empty() ? std::nullopt : askGit({"unpack-file", file.blobs[i]});
      if (!unpacked) throw Failure(u"git does not have three versions of it");
      stages.paths[i] = *unpacked;
      session_.files->readWhole(*unpacked, versions[i]);
    }
    const std::string target = joinPath(top_, file.path);
    std::string present;
    session_.files->readWhole(target, present);
    const Sides sides = sidesOf(present);
    settings_.way.labels = sides.labels;
    MergedFile merged = mergeSides(session_, settings_, file.path, std::move(versions));
    if (sides != asGitMerges(stages) && sides != sidesOf(merged.bytes)) {
      throw Failure(u"it was edited since git merged it; git checkout --merge would undo that");
    }
    if (present.find("\r\n") != std::string::npos && merged.bytes.find('\r') == std::string::npos) {
      merged.bytes = withCrLf(merged.bytes);  // as git does on the way to the working tree here
    }
    replaceScript(session_, target, merged.bytes, {});
    folders_.insert(folderOf(target));
    writeList(session_, settings_, merged.list, false);
    settings_.append = true;
    tellMerged(session_, file.path, merged);
  }

  static Sides asGitMerges(const Stages& stages) {
    const ProgramRun result =
        runProgram({"git", "merge-file", "-p", "-q", stages.paths[1], stages.paths[0], stages.paths[2]});
    return sidesOf(result.output);
  }

  Session& session_;
  MergeSettings settings_;
  std::string top_ = askTree({"rev-parse", "--show-toplevel"});
  std::set<std::string> folders_;
};

}  // namespace

void addGitSolve(Verb git, Session& session) {
  struct Options : MergeSettings {
    std::vector<std::string> paths;
  };
  Verb verb = git.verb("solve", "Merge conflicts of a merge anew");
  const auto options = std::make_shared<Options>();
  verb.words("file", options->paths, "FILE...", "Files in conflict, or folders of them");
  addMergeSettings(verb, *options);
  session.addOptions(verb);
  verb.footer(kSolveFooter);
  verb.onRun([&session, options] {
    session.prepare();
    Solver(session, *options).run(options->paths);
  });
}

}  // namespace dravenna

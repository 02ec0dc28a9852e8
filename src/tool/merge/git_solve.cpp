#include <fmt/core.h>

#include <array>

#include "platform/failure.h"
#include "platform/run_program.h"
#include "tool/merge/git.h"
#include "tool/script/script_lines.h"

namespace dravenna {

namespace {

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
  Solver(Session& session, const GitSolveOptions& options) : session_(session), options_(options) {
    const auto top = askGit({"rev-parse", "--show-toplevel"});
    const auto git = askGit({"rev-parse", "--absolute-git-dir"});
    if (!top || !git) throw Failure(u"This is no working tree of git");
    top_ = *top;
    rebase_ = session.files->pathKind(joinPath(*git, "rebase-merge")) == PathKind::Folder ||
              session.files->pathKind(joinPath(*git, "rebase-apply")) == PathKind::Folder;
  }

  void run() {
    for (const std::string& path : options_.paths) {
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
    MergeWish wish = mergeWish(session_, options_, file.path);
    wish.way.labels = sides.labels;
    wish.way.swapped = rebase_;
    if (rebase_) {
      if (wish.theirPage != nullptr) std::swap(wish.page, wish.theirPage);
      std::swap(versions[1], versions[2]);
      std::swap(wish.way.labels[0], wish.way.labels[1]);
    }
    MergedFile merged = mergeFile(versions[0], versions[1], versions[2], session_.pages->usual().lists, wish);
    if (sides != asGitMerges(stages) && sides != sidesOf(merged.bytes)) {
      throw Failure(u"it was edited since git merged it; git checkout --merge would undo that");
    }
    if (present.find("\r\n") != std::string::npos && merged.bytes.find('\r') == std::string::npos) {
      std::string converted;  // as git does on the way to the working tree here
      forEachLine(merged.bytes, [&](const ScriptLine& line) { converted.append(line.text).append("\r\n"); });
      merged.bytes.swap(converted);
    }
    replaceScript(session_, target, merged.bytes, {});
    folders_.insert(folderOf(target));
    writeList(session_, options_, merged.list, false);
    options_.append = true;
    if (merged.conflicts > 0) session_.console.fail();
    session_.console.note(fmt::format("{}: {}, {} to translate, {} to look at", shownName(file.path),
                                      counted(merged.conflicts, "conflict"), merged.toTranslate, merged.toLookAt));
  }

  static Sides asGitMerges(const Stages& stages) {
    const ProgramRun result =
        runProgram({"git", "merge-file", "-p", "-q", stages.paths[1], stages.paths[0], stages.paths[2]});
    return sidesOf(result.output);
  }

  Session& session_;
  GitSolveOptions options_;
  std::string top_;
  bool rebase_ = false;
  std::set<std::string> folders_;
};

}  // namespace

void solveConflicts(Session& session, const GitSolveOptions& options) {
  session.prepare();
  Solver(session, options).run();
}

}  // namespace dravenna

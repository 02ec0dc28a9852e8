#include <fmt/core.h>

#include "platform/failure.h"
#include "platform/terminal.h"
#include "tool/merge/merge.h"
#include "tool/script/script_lines.h"

namespace dravenna {

namespace {

constexpr char kSetupFooter[] =
    R"(Writes the merge driver and a diff that shows texts into this repository's own config, the files they are for
(--include, *.txt by default; *.lxf and *.po) into .gitattributes, and shows what it writes. Merges then list what is
to translate in .git/dravenna-merge.txt. Options of texts and of merge go into the config.
Examples:
  dravenna-lxf git setup --dry-run                 only shows
  dravenna-lxf git setup --hook --codepage 874     checks each commit, too
  dravenna-lxf git setup --undo)";

// As the PATH finds it where the system does not tell, as without /proc.
std::string programName() {
  const std::string file = executableFile().generic_string();
  return file.empty() ? "dravenna-lxf" : file;
}

struct SetupOptions : MergeSettings {
  bool hook = false;
  bool dryRun = false;
  bool undo = false;
};

constexpr std::string_view kBegin = "# dravenna-lxf git setup: begin";
constexpr std::string_view kEnd = "# dravenna-lxf git setup: end";

constexpr char kHook[] = R"(#!/bin/sh
{}
# Checks the scripts and exchange files of a commit as they stand in the index, for what is not in the last commit.
# git commit --no-verify commits anyway.
tool={}
command -v "$tool" >/dev/null || exit 0
folder=$(mktemp -d) || exit
trap 'rm -rf "$folder"' EXIT
git diff --cached --name-only -z --diff-filter=ACMR -- {} >"$folder/names"
[ -s "$folder/names" ] || exit 0
git checkout-index -z --stdin --prefix="$folder/new/" <"$folder/names"
mkdir "$folder/old"
if GIT_INDEX_FILE="$folder/index" git read-tree HEAD 2>/dev/null; then
  GIT_INDEX_FILE="$folder/index" git checkout-index -q -z --stdin --prefix="$folder/old/" <"$folder/names" 2>/dev/null
fi
check() {{ "$tool" check . -q{} "$@"; }}
cd "$folder/old" && check --baseline ../known --write-baseline >/dev/null 2>&1
cd "$folder/new" && if [ -f ../known ]; then check --baseline ../known; else check; fi
{}
)";

std::string quotedForShell(std::string_view word) {
  std::string quoted = "'";
  for (const char c : word) c == '\'' ? quoted.append("'\\''") : quoted.append(1, c);
  return quoted + "'";
}

class GitSetup {
 public:
  GitSetup(Session& session, const SetupOptions& options) : session_(session), options_(options) {}

  void run() {
    for (const std::string& glob : patterns()) {
      if (glob.find_first_of(" \t\"") != std::string::npos) {
        throw UsageError(fmt::format("--include: git takes no blank and no quote mark in {}", shownName(glob)));
      }
    }
    const std::string ownHook = options_.undo ? std::string() : hook();
    const std::string oldHook = contents(hook_);
    const bool foreign = !oldHook.empty() && oldHook.find(kBegin) == std::string::npos;
    if (options_.hook && foreign && !options_.undo) {
      throw Failure(fromUtf8(hook_) + u": is there already, and of somebody else");
    }
    configure();
    writeAttributes();
    if (options_.undo ? !foreign && !oldHook.empty() : options_.hook) writeHook(ownHook);
    const std::string& report = options_.report;
    session_.console.note(options_.dryRun ? "dry run: nothing was written"
                          : options_.undo
                              ? "git merges as it did before"
                              : fmt::format("git merges and shows texts by dravenna-lxf here; {} gathers "
                                            "what is to do, until you delete it",
                                            report.empty() ? ".git/dravenna-merge.txt" : shownName(report)));
  }

 private:
  std::vector<std::string> patterns() const { return session_.include.empty() ? kScriptNames : session_.include; }

  // The session's options for a command that git will run.
  std::string ownOptions() const {
    std::string words;
    const auto add = [&](const char* name, const std::string& value) {
      if (!value.empty()) words += fmt::format(" {} {}", name, quotedForShell(value));
    };
    add("--codepage", session_.codePageName);
    add("--commands", session_.commandsName == "default" ? std::string() : session_.commandsName);
    add("--commands-file", session_.commandsFile);
    add("--allowed-commands", session_.allowedCommands.value_or(""));
    add("--special-commands", session_.specialCommands.value_or(""));
    return words;
  }

  std::string driver() const {
    std::string words = ownOptions();
    const OnConflict way = options_.way.onConflict;
    if (way != OnConflict::Smart) words += fmt::format(" --on-conflict {}", kOnConflictNames[static_cast<int>(way)]);
    if (!options_.theirPage.empty()) words += " --their-codepage " + quotedForShell(options_.theirPage);
    if (!options_.report.empty()) words += " --report " + quotedForShell(options_.report);
    return fmt::format(
        "command -v {0} >/dev/null || exec git merge-file --marker-size=%L %A %O %B; exec {0} merge "
        "--driver %O %A %B --marker-size %L --name=%P -L %X -L %S -L %Y{1}",
        tool_, words);
  }

  std::string hook() const {
    std::string globs = quotedForShell("*.lxf");
    std::string includes;
    for (const std::string& glob : patterns()) {
      globs += " " + quotedForShell(glob);
      includes += " --include " + quotedForShell(glob);
    }
    return fmt::format(kHook, kBegin, tool_, globs, includes + " --include '*.lxf'" + ownOptions(), kEnd);
  }

  void show(std::string_view text) const { writeStandardOutput(text); }

  void configure() {
    const std::vector<std::array<std::string, 2>> values = {
        {"merge.dravenna.name", "code and texts of NPC scripts apart"},
        {"merge.dravenna.driver", driver()},
        {"diff.dravenna.textconv", tool_ + " texts --bare" + ownOptions()}};
    for (const auto& [name, value] : values) {
      show(options_.undo ? fmt::format("git config --unset-all {}\n", name)
                         : fmt::format("git config {} {}\n", name, quotedForShell(value)));
      if (options_.dryRun) continue;
      const bool done = options_.undo ? (askGit({"config", "--local", "--unset-all", name}), true)
                                      : askGit({"config", "--local", "--replace-all", name, value}).has_value();
      if (!done) throw Failure(u"git config has failed");
    }
  }

  std::string contents(const std::string& path) const {
    std::string bytes;
    if (session_.files->pathKind(path) == PathKind::File) session_.files->readWhole(path, bytes);
    return bytes;
  }

  // The file with the lines of this program at its end, or without them.
  void writeAttributes() {
    const std::string old = contents(attributes_);
    std::string bytes;
    bool own = false;
    forEachLine(old, [&](const ScriptLine& line) {
      own |= line.text == kBegin;
      if (!own) bytes.append(line.text).append(line.ending);
      own &= line.text != kEnd;
    });
    if (!options_.undo) {
      if (!bytes.empty() && bytes.back() != '\n') bytes.push_back('\n');
      bytes.append(kBegin).append("\n");
      for (const std::string& glob : patterns()) bytes += glob + " merge=dravenna diff=dravenna\n";
      bytes.append("*.lxf merge=dravenna\n*.po merge=dravenna\n").append(kEnd).append("\n");
    }
    replace(attributes_, old, bytes);
  }

  void writeHook(const std::string& bytes) {
    if (!bytes.empty() && !options_.dryRun) session_.files->makeFolders(folderOf(hook_));
    replace(hook_, contents(hook_), bytes);
    if (!bytes.empty() && !options_.dryRun) allowToRun(hook_);
  }

  // An empty file goes.
  void replace(const std::string& path, const std::string& old, const std::string& bytes) {
    show(fmt::format("{}{}\n", path, bytes.empty() && !old.empty() ? ": removed" : ":"));
    forEachLine(bytes, [&](const ScriptLine& line) { show(fmt::format("  {}\n", line.text)); });
    if (options_.dryRun || old == bytes) return;
    if (bytes.empty()) return removeFile(path);
    session_.outputs->write(path, bytes, Outputs::Kind::Report, false);
  }

  Session& session_;
  const SetupOptions& options_;
  std::string attributes_ = joinPath(askTree({"rev-parse", "--show-toplevel"}), ".gitattributes");
  std::string hook_ = askTree({"rev-parse", "--path-format=absolute", "--git-path", "hooks/pre-commit"});
  std::string tool_ = quotedForShell(programName());
};

}  // namespace

void addGit(Verb program, Session& session) {
  Verb git = program.verb("git", "Merges, diffs and checks of a git repository");
  git.needVerb();
  Verb verb = git.verb("setup", "Let git merge and show scripts by texts");
  const auto options = std::make_shared<SetupOptions>();
  verb.flag("--hook", options->hook, "A pre-commit hook, too, that checks what changed");
  verb.flag("--dry-run", options->dryRun, "Write nothing, show what would be written");
  verb.flag("--undo", options->undo, "Take out what was set up");
  addMergeSettings(verb, *options);
  session.addOptions(verb);
  verb.footer(kSetupFooter);
  verb.onRun([&session, options] {
    session.prepare();
    static_cast<void>(theirPageOf(*options));  // a code page that there is not is told now
    GitSetup(session, *options).run();
  });
  addGitSolve(git, session);
}

}  // namespace dravenna

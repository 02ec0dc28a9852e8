#include "tool/merge/git.h"

namespace dravenna {

namespace {

constexpr char kSetupFooter[] =
    "Writes the merge driver and a diff that shows texts into this repository's own config, the files they are for\n"
    "(--include, *.txt by default; *.lxf and *.po) into .gitattributes, and shows what it writes. Merges then list "
    "what "
    "is\n"
    "to translate in .git/dravenna-merge.txt. Options of texts and of merge go into the config.\n"
    "Examples:\n"
    "  dravenna-lxf git setup --dry-run                 only shows\n"
    "  dravenna-lxf git setup --hook --codepage 874     checks each commit, too\n"
    "  dravenna-lxf git setup --undo";

constexpr char kSolveFooter[] =
    "For a merge that was begun without the driver: takes the three versions of each file from git's index and merges "
    "them\n"
    "anew into the working tree. A file that was edited since git merged it is left alone.\n"
    "Exit status: 0 all merged, 1 conflicts are left or a file was left alone.";

}  // namespace

void addGit(Verb program, Session& session) {
  Verb git = program.verb("git", "Merges, diffs and checks of a git repository");
  git.needVerb();
  {
    Verb verb = git.verb("setup", "Let git merge and show scripts by texts");
    const auto options = std::make_shared<GitSetupOptions>();
    verb.flag("--hook", options->hook, "A pre-commit hook, too, that checks what changed");
    verb.flag("--dry-run", options->dryRun, "Write nothing, show what would be written");
    verb.flag("--undo", options->undo, "Take out what was set up");
    addMergeSettings(verb, *options);
    session.addOptions(verb);
    verb.footer(kSetupFooter);
    verb.onRun([&session, options] { setUpGit(session, *options); });
  }
  Verb verb = git.verb("solve", "Merge conflicts of a merge anew");
  const auto options = std::make_shared<GitSolveOptions>();
  verb.words("file", options->paths, "FILE...", "Files in conflict, or folders of them");
  addMergeSettings(verb, *options);
  session.addOptions(verb);
  verb.footer(kSolveFooter);
  verb.onRun([&session, options] { solveConflicts(session, *options); });
}

}  // namespace dravenna

#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/tree_files.h"
#include "text/path_names.h"
#include "text/text.h"
#include "tool/run/console.h"
#include "tool/run/options.h"
#include "tool/run/outputs.h"
#include "tool/run/pages.h"
#include "tool/script/loaded_script.h"
#include "tool/script/shown.h"

namespace dravenna {

// The options that every verb has, and what becomes of them.
struct Session {
  std::vector<std::string> include;
  std::vector<std::string> exclude;
  std::string codePageName;
  std::string commandsName = "default";
  std::string commandsFile;
  std::optional<std::string> allowedCommands;
  std::optional<std::string> specialCommands;
  unsigned jobs = 0;
  ColorUse color = ColorUse::Auto;

  std::unique_ptr<TreeFiles> files = makeTreeFiles();
  Console console;
  std::unique_ptr<Pages> pages;
  std::unique_ptr<Outputs> outputs;

  void addOptions(Verb verb);
  // Makes pages and outputs. Throws UsageError.
  void prepare();
};

// One script of a run.
struct Script {
  std::string path;      // to open it, and what messages say
  std::string relative;  // below the folder that was named; the file's own name when the file was
  bool named = false;    // the file was
};

// What folders are searched for without --include.
inline const std::vector<std::string> kScriptNames = {"*.txt"};

// The scripts that the arguments stand for, in their order, folders by their sorted names, each file once. Folders are
// searched for what the include patterns fit (else `defaultInclude`). What is missing is reported and sets the exit
// status; so is a name with a line end, which no list of names can hold.
std::vector<Script> collectScripts(Session& session, const std::vector<std::string>& arguments,
                                   const std::vector<std::string>& defaultInclude = kScriptNames);

// Links to folders, and what is neither file nor folder, are told; folders that cannot be read are told as errors.
std::vector<std::string> filesBelow(Session& session, const std::string& folder, const TreeFiles::Chooser& enter,
                                    const TreeFiles::Chooser& take);

// The path below another tree that stands for a script. For a file that was named it is as much of its path as begins
// with a folder of the tree, so that `npc-es/quests/a.txt` finds `npc/quests/a.txt`; else its name.
std::string relativeIn(TreeFiles& files, const std::string& tree, const Script& script);
// The file there. The tree may be a single file, for a single script.
std::string partnerIn(TreeFiles& files, const std::string& tree, const Script& script);
// The script there of an exchange file: the one with its name and the extension `.txt`, or else one of those in the
// include patterns. Where there is none, its path with `.txt`.
std::string scriptIn(const Session& session, const std::string& tree, const Script& exchangeFile);
// The scripts that only the tree of originals has, when it is compared with one other tree, `paths`, which has
// `scripts`; `byStem`: its files may have other extensions.
std::vector<Script> onlyInOriginal(Session& session, const std::vector<std::string>& paths, const std::string& original,
                                   const std::vector<Script>& scripts, bool byStem);
// Throws Failure where a path, unless empty, leads to nothing.
void needPath(TreeFiles& files, const std::string& path);
// Throws UsageError where `tree`, of that option, is a file and there are several scripts.
void needOneScript(TreeFiles& files, const char* option, const std::string& tree, std::size_t scripts);

// A file's bytes; `-` is standard input. Throws Failure.
void readFile(const Session& session, const std::string& path, std::string& file);

// A file's work bytes.
struct Opened {
  const Encoding& in;
  std::string_view work;
};
// A script of the run. Uses both buffers again and again.
Opened openScript(const Session& session, const std::string& path, std::string& file, std::string& work);
std::unique_ptr<LoadedScript> loadScript(const Session& session, const std::string& path, MoreTexts more = {});

// The bytes of a file that stands beside a script in this encoding, brought into it; as they are where that lacks a
// character.
void readBeside(const Session& session, const std::string& path, const Encoding& in, std::string& file);

// Puts new bytes in the place of a script, whole or not at all. Its folder is left for flushFolders.
void replaceScript(const Session& session, const std::string& path, std::string_view bytes, const std::string& backup);
// The folder of --out and those below it that hold `files`. Tells what fails; so does what is written there. Throws
// UsageError where --out is a file.
void makeFolders(Session& session, const std::string& out, const std::vector<std::string>& files);
// Brings the renames in these folders to disk; tells what fails.
void flushFolders(Session& session, const std::set<std::string>& folders);

// `--backup SUFFIX`, for verbs that replace scripts.
void addBackupOption(Verb verb, std::string& suffix);

// The verbs: each adds its command and runs from it. They set the console's failed state or throw Failure, UsageError.
void addTexts(Verb program, Session& session);
void addExport(Verb program, Session& session);
void addImport(Verb program, Session& session);
void addStats(Verb program, Session& session);
void addCheck(Verb program, Session& session);
void addUpdate(Verb program, Session& session);
void addMerge(Verb program, Session& session);
void addGit(Verb program, Session& session);
void addPo(Verb program, Session& session);

}  // namespace dravenna

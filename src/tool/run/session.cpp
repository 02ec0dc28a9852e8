#include "tool/run/session.h"

#include <fmt/core.h>

#include <algorithm>
#include <filesystem>
#include <thread>
#include <unordered_set>

#include "platform/failure.h"
#include "platform/system.h"
#include "platform/terminal.h"
#include "platform/tree_files.h"
#include "text/ascii.h"
#include "text/text.h"
#include "tool/run/command_names.h"
#include "tool/run/for_each_script.h"
#include "tool/run/globs.h"

namespace dravenna {

void Session::addOptions(Verb verb) {
  verb.group("Options of every verb");
  verb.each("--include", include, "GLOB", "Files of folders to take, as a glob; may be given again (default *.txt)");
  verb.each("--exclude", exclude, "GLOB", "Files and folders to leave out; may be given again");
  verb.text("--codepage", codePageName, "NAME", "Code page of scripts and exchange files: 1252, 874, ..., utf-8");
  verb.text("--commands", commandsName, "NAME", "Named pair of command lists (default, extended, or of your own file)");
  verb.text("--commands-file", commandsFile, "FILE", "JSON file with named pairs of command lists");
  verb.text("--allowed-commands", allowedCommands, "LIST", "Commands with texts, as in ,mes,menu,select,");
  verb.text("--special-commands", specialCommands, "LIST", "Commands whose first text is none, as in ,mapannounce,");
  verb.number("-j,--jobs", jobs, "N", "Threads (default: one for each processor)", 1, 256);
  verb.flag("-q,--quiet", console.quiet, "No summary and no progress bar");
  verb.choice("--color", color, "WHEN", "Colours on standard error: auto, always or never",
              {{"auto", ColorUse::Auto}, {"always", ColorUse::Always}, {"never", ColorUse::Never}});
}

void Session::prepare() {
  console.setColor(color);
  if (jobs == 0) jobs = std::max(1U, std::thread::hardware_concurrency());

  const std::string wish = environmentVariable("DRAVENNA_CODEPAGE");
  if (codePageName.empty() && !wish.empty() && !codePageByName(wish)) {
    throw UsageError(fmt::format("DRAVENNA_CODEPAGE: {} is no code page that is supported", wish));
  }
  const bool pageNamed = !codePageName.empty() || !wish.empty();
  const CodePagePtr page = codePageName.empty() ? systemCodePage() : codePageByName(codePageName);
  if (!page) throw UsageError(fmt::format("--codepage: {} is no code page that is supported", codePageName));

  const std::string commandsPath = commandsFile.empty() ? usualCommandsFile(*files) : commandsFile;
  const std::vector<CommandPair> pairs = commandPairsOf(*files, commandsPath);
  const auto found =
      std::find_if(pairs.begin(), pairs.end(), [&](const auto& pair) { return pair.name == commandsName; });
  if (found == pairs.end()) {
    std::string names;
    for (const CommandPair& pair : pairs) names += " " + pair.name;
    throw UsageError(fmt::format("--commands: no pair {}; there are:{}", commandsName, names));
  }
  const auto listOf = [&](const char* option, const std::optional<std::string>& given, const std::u16string& named) {
    if (!given) return named;
    if (given->size() < 2 || given->front() != ',' || given->back() != ',') {
      console.warning(
          fmt::format("{}: a list begins and ends with a comma; words outside of commas are not in it", option));
    }
    return fromUtf8(*given);
  };
  pages =
      std::make_unique<Pages>(*files, page, pageNamed, listOf("--allowed-commands", allowedCommands, found->allowed),
                              listOf("--special-commands", specialCommands, found->special));
  outputs = std::make_unique<Outputs>(*files, pages->usual().lists);
  outputs->addInput(commandsPath);
}

std::vector<std::string> filesBelow(Session& session, const std::string& folder, const TreeFiles::Chooser& enter,
                                    const TreeFiles::Chooser& take) {
  const TreeFiles::Hearer hearer{[&](const std::string& relative) {
                                   if (!enter(relative)) return;
                                   const std::string path = joinPath(folder, relative);
                                   session.console.warning(fmt::format("{}: {}", shownName(path),
                                                                       session.files->pathKind(path) == PathKind::Folder
                                                                           ? "a link to a folder, not entered"
                                                                           : "neither a file nor a folder, left out"));
                                 },
                                 [&](const Failure& failure) { session.console.error(shown(failure.description())); }};
  return session.files->filesBelow(folder, enter, take, &hearer);
}

std::vector<Script> collectScripts(Session& session, const std::vector<std::string>& arguments,
                                   const std::vector<std::string>& defaultInclude) {
  const std::vector<std::string>& include = session.include.empty() ? defaultInclude : session.include;
  std::vector<Script> scripts;
  std::unordered_set<std::string> seen;
  const auto add = [&](Script script) {
    if (script.relative.find_first_of("\r\n") != std::string::npos)
      return session.console.error(fmt::format("{}: left out: a line end in its name", shownName(script.path)));
    if (seen.insert(std::filesystem::path(script.path).lexically_normal().string()).second) {
      session.outputs->addInput(script.path);
      session.pages->addScript(script.path);
      scripts.push_back(std::move(script));
    }
  };
  const auto wanted = [&](const std::string& relative) { return !matchesAny(session.exclude, relative); };
  const auto taken = [&](const std::string& relative) {
    // Without --include, UP.TXT is a script as any other.
    return matchesAny(include, session.include.empty() ? lowerAsciiOf(relative) : relative) && wanted(relative);
  };
  for (const std::string& argument : arguments) {
    try {
      const PathKind kind = argument == "-" ? PathKind::File : session.files->pathKind(argument);
      if (kind == PathKind::Missing) throw Failure(u"No such file or directory: '" + fromUtf8(argument) + u"'");
      if (kind == PathKind::File) {
        add({argument, std::string(fileNameOf(argument)), true});
        continue;
      }
      const std::vector<std::string> found = filesBelow(session, argument, wanted, taken);
      for (const std::string& relative : found) add({joinPath(argument, relative), relative});
      if (found.empty()) {
        session.console.warning(fmt::format("{}: no file in it is taken", shownName(argument)));
        session.console.fail();
      }
    } catch (const Failure& failure) {
      session.console.error(shown(failure.description()));
    }
  }
  return scripts;
}

std::string relativeIn(TreeFiles& files, const std::string& tree, const Script& script) {
  if (!script.named || script.path == "-" || files.pathKind(tree) != PathKind::Folder) return script.relative;
  const std::string path = std::filesystem::absolute(script.path).lexically_normal().generic_string();
  for (std::size_t slash = path.find('/'); slash != std::string::npos; slash = path.find('/', slash + 1)) {
    std::string rest = path.substr(slash + 1);
    const std::string folder = folderOf(rest);
    if (!folder.empty() && files.pathKind(joinPath(tree, folder)) == PathKind::Folder) return rest;
  }
  return script.relative;
}

std::string partnerIn(TreeFiles& files, const std::string& tree, const Script& script) {
  return files.pathKind(tree) == PathKind::File ? tree : joinPath(tree, relativeIn(files, tree, script));
}

std::string scriptIn(const Session& session, const std::string& tree, const Script& exchangeFile) {
  TreeFiles& files = *session.files;
  if (files.pathKind(tree) == PathKind::File) return tree;
  std::string path = joinPath(tree, withExtension(relativeIn(files, tree, exchangeFile), ".txt"));
  if (files.pathKind(path) == PathKind::File) return path;
  for (const std::string& pattern : session.include) {
    const std::size_t dot = pattern.rfind('.');
    if (dot == std::string::npos || pattern.substr(dot) == ".lxf") continue;
    std::string other = withExtension(path, pattern.substr(dot));
    if (files.pathKind(other) == PathKind::File) return other;
  }
  return path;
}

std::vector<Script> onlyInOriginal(Session& session, const std::vector<std::string>& paths, const std::string& original,
                                   const std::vector<Script>& scripts, bool byStem) {
  const auto isFolder = [&](const std::string& path) { return session.files->pathKind(path) == PathKind::Folder; };
  if (original.empty() || paths.size() != 1 || !isFolder(paths[0]) || !isFolder(original)) return {};
  const auto nameOf = [&](const Script& script) {
    return byStem ? withExtension(script.relative, "") : script.relative;
  };
  std::unordered_set<std::string> here;
  for (const Script& script : scripts) here.insert(nameOf(script));
  std::vector<Script> missing = collectScripts(session, {original});
  std::erase_if(missing, [&](const Script& script) { return here.count(nameOf(script)) != 0; });
  return missing;
}

void needPath(TreeFiles& files, const std::string& path) {
  if (!path.empty() && files.pathKind(path) == PathKind::Missing)
    throw Failure(u"No such file or directory: '" + fromUtf8(path) + u"'");
}

void needOneScript(TreeFiles& files, const char* option, const std::string& tree, std::size_t scripts) {
  if (scripts > 1 && !tree.empty() && files.pathKind(tree) == PathKind::File)
    throw UsageError(
        fmt::format("{}: {} is a file and stands for one script, not for {}", option, shownName(tree), scripts));
}

std::vector<ScriptGroup> groupsOf(const std::vector<Script>& scripts, std::size_t most, bool byFolder) {
  std::vector<ScriptGroup> groups;
  for (std::size_t i = 0; i < scripts.size(); ++i) {
    const bool same = !groups.empty() && i - groups.back().begin < most &&
                      (!byFolder || folderOf(scripts[groups.back().begin].path) == folderOf(scripts[i].path));
    if (!same) groups.push_back({i, i});
    groups.back().end = i + 1;
  }
  return groups;
}

void readFile(const Session& session, const std::string& path, std::string& file) {
  if (path == "-") {
    file = readStandardInput();
  } else {
    session.outputs->addInput(path);
    session.files->readWhole(path, file);
  }
}

Opened openScript(const Session& session, const std::string& path, std::string& file, std::string& work) {
  readFile(session, path, file);
  const Encoding& in = session.pages->take(path, file);
  return {in, in.codec.toWork(file, work)};
}

std::unique_ptr<LoadedScript> loadScript(const Session& session, const std::string& path, MoreTexts more) {
  std::string file;
  readFile(session, path, file);
  const Encoding& in = session.pages->take(path, file);
  return std::make_unique<LoadedScript>(std::move(file), in, more);
}

void readBeside(const Session& session, const std::string& path, const Encoding& in, std::string& file) {
  readFile(session, path, file);
  static_cast<void>(session.pages->bring(path, file, in));
}

void replaceScript(const Session& session, const std::string& path, std::string_view bytes, const std::string& backup) {
  Replacements replacements(*session.files, backup);
  replacements.stage(path, bytes);
  const std::u16string failed = replacements.commit()[0];
  if (!failed.empty()) throw Failure(failed);
}

void makeFolders(Session& session, const std::string& out, const std::vector<std::string>& files) {
  if (session.files->pathKind(out) == PathKind::File)
    throw UsageError(fmt::format("--out: {} is a file", shownName(out)));
  std::set<std::string> folders{out};
  for (const std::string& file : files) folders.insert(folderOf(joinPath(out, file)));
  for (const std::string& folder : folders) {
    const auto failure = attempt([&] { session.files->makeFolders(folder); });
    if (failure) session.console.error(shown(failure->description()));
  }
}

void flushFolders(Session& session, const std::set<std::string>& folders) {
  for (const std::string& folder : folders) {
    const auto failure = attempt([&] { session.files->flushFolder(folder); });
    if (failure) session.console.error(shown(failure->description()));
  }
}

void addBackupOption(Verb verb, std::string& suffix) {
  verb.text("--backup", suffix, "SUFFIX",
            "Keep the old script under its name and this suffix; if that is taken, numbered",
            [](const std::string& given) -> std::string {
              const bool fits = !given.empty() && given.find_first_of("/\\") == std::string::npos;
              return fits ? "" : "the suffix is empty or holds a /";
            });
}

}  // namespace dravenna

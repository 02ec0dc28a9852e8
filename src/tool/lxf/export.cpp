#include <fmt/core.h>

#include <unordered_map>

#include "platform/terminal.h"
#include "tool/run/for_each_script.h"
#include "tool/run/globs.h"
#include "tool/run/text_index.h"
#include "tool/script/records.h"

namespace dravenna {

namespace {

constexpr char kExportFooter[] =
    "Examples:\n"
    "  dravenna-lxf export guard.txt                   writes guard.lxf beside it\n"
    "  dravenna-lxf export guard.txt - | less          looks at it\n"
    "  dravenna-lxf export npc --out lxf               one exchange file a script, folders mirrored\n"
    "  dravenna-lxf export npc --out lxf --keep-codes  leaves the ^RRGGBB codes in the texts\n"
    "An exchange file that exists with other contents may be a translation and is left alone unless --force is given.";

struct Options {
  std::vector<std::string> paths;
  std::string out;
  bool keepCodes = false;
  bool noClobber = false;
  bool force = false;
};

// Another script in the place of an exchange file: `export npc/*.txt` where two were meant.
bool isNamedLikeAScript(const Session& session, const std::string& path) {
  const std::string name(fileNameOf(path));
  return matchesAny(session.include.empty() ? kScriptNames : session.include, name);
}

void exportOne(Session& session, const Options& options) {
  const std::string& script = options.paths[0];
  std::string file;
  std::string work;
  std::string lxf;
  if (script != "-" && session.files->pathKind(script) == PathKind::Folder)
    throw UsageError("a folder needs --out DIR");
  const Opened opened = openScript(session, script, file, work);
  exportWork(opened.work, opened.in.lists, options.keepCodes, lxf);
  const std::string_view bytes = opened.in.codec.toFile(lxf, work);

  const bool named = options.paths.size() == 2;
  const std::string target = named ? options.paths[1] : script == "-" ? "-" : withExtension(script, ".lxf");
  if (target == "-") {
    if (!writeStandardOutput(bytes)) session.console.fail();
    return;
  }
  const auto there = session.files->identity(target);
  if (there && script != "-" && there == session.files->identity(script)) {
    throw UsageError("the exchange file would overwrite the script");
  }
  if (there && options.noClobber) return session.console.note(fmt::format("{}: kept", shownName(target)));
  if (there && named && !options.force && isNamedLikeAScript(session, target)) {
    throw UsageError(
        fmt::format("{} exists and is named like a script; several scripts need --out DIR", shownName(target)));
  }
  session.outputs->write(target, bytes, Outputs::Kind::ExchangeFile, options.force);
}

std::string targetOf(const Script& script, const std::string& out) {
  return joinPath(out, withExtension(script.relative, ".lxf"));
}

struct Exported {
  enum class Fate { Kept, WithoutTexts, Same, Written } fate = Fate::Kept;
  ExportedTexts texts;
};

Exported exportScript(Session& session, const Options& options, const Script& script, Buffers& buffers) {
  using Fate = Exported::Fate;
  const std::string target = targetOf(script, options.out);
  if (options.noClobber && session.files->pathKind(target) == PathKind::File) return {};
  const auto [in, work] = openScript(session, script.path, buffers.file, buffers.work);
  const ExportedTexts texts = exportWork(work, in.lists, options.keepCodes, buffers.out);
  // A script without texts has no exchange file; one that is there may be a translation and is told of.
  if (texts.records == 0 && session.files->pathKind(target) == PathKind::Missing) return {Fate::WithoutTexts, texts};
  const std::string_view bytes = in.codec.toFile(buffers.out, buffers.work);
  const bool anew = session.outputs->write(target, bytes, Outputs::Kind::ExchangeFile, options.force);
  return {anew ? Fate::Written : Fate::Same, texts};
}

// Makes the folders of the exchange files. Two scripts must not share one, and none must be a script.
void makeFoldersFor(Session& session, const std::vector<Script>& scripts, const std::string& out) {
  std::unordered_map<std::string, std::string> owners;
  std::vector<std::string> relatives;
  for (const Script& script : scripts) {
    if (script.path == "-") throw UsageError("standard input cannot go to --out");
    const std::string target = targetOf(script, out);
    const auto [owner, fresh] = owners.emplace(target, script.path);
    if (!fresh) {
      throw UsageError(fmt::format("{} and {} would both go to {}", shownName(owner->second), shownName(script.path),
                                   shownName(target)));
    }
    relatives.push_back(script.relative);
  }
  for (const Script& script : scripts) {
    if (owners.count(script.path) != 0) {
      throw UsageError(fmt::format("an exchange file would overwrite the script {}", shownName(script.path)));
    }
  }
  makeFolders(session, out, relatives);
}

void exportTree(Session& session, const Options& options) {
  const std::vector<Script> scripts = collectScripts(session, options.paths);
  makeFoldersFor(session, scripts, options.out);
  TextIndex index(session, options.out);
  std::size_t files = 0;
  std::size_t empty = 0;
  std::size_t records = 0;
  forEachScript<Exported>(
      session, scripts,
      [&](const Script& script, Buffers& buffers) { return exportScript(session, options, script, buffers); },
      [&](const Script& script, Exported&& exported) {
        using Fate = Exported::Fate;
        if (exported.fate == Fate::Kept) {
          session.console.note(fmt::format("{}: kept", shownName(targetOf(script, options.out))));
          return true;
        }
        ++(exported.texts.records == 0 ? empty : files);
        records += exported.texts.records;
        if (exported.fate != Fate::WithoutTexts) {
          index.madeFrom(withExtension(script.relative, ".lxf"), exported.texts.digest.value(),
                         exported.fate == Fate::Written);
        }
        return true;
      },
      true);
  index.save();
  if (empty > 0 && files == 0) {
    session.console.warning("no script has a text for an exchange file");
    session.console.fail();
  }
  std::string summary = fmt::format("{} exported, {}", counted(files, "script"), counted(records, "record"));
  if (empty > 0) summary += fmt::format(", {} without texts", empty);
  session.console.note(summary);
}

void run(Session& session, const Options& options) {
  session.prepare();
  if (!options.out.empty()) return exportTree(session, options);
  if (options.paths.size() > 2) throw UsageError("several scripts need --out DIR");
  exportOne(session, options);
}

}  // namespace

void addExport(Verb program, Session& session) {
  Verb verb = program.verb("export", "Write the texts of scripts into numbered exchange files (LXF)");
  const auto options = std::make_shared<Options>();
  verb.words("path", options->paths, "PATH...",
             "SCRIPT [LXF], `-` for a standard stream; or with --out files and folders");
  verb.text("-o,--out", options->out, "DIR", "Folder for one exchange file a script");
  verb.flag("--keep-codes", options->keepCodes, "Leave the colour codes in the texts");
  verb.flag("-n,--no-clobber", options->noClobber, "Leave exchange files that exist alone");
  verb.flag("-f,--force", options->force, "Overwrite exchange files with other contents: translations may be lost");
  session.addOptions(verb);
  verb.footer(kExportFooter);
  verb.onRun([&session, options] { run(session, *options); });
}

}  // namespace dravenna

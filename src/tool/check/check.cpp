#include <fmt/core.h>

#include <algorithm>
#include <filesystem>
#include <unordered_map>

#include "platform/failure.h"
#include "text/ascii.h"
#include "tool/check/baseline.h"
#include "tool/check/consistency.h"
#include "tool/check/findings.h"
#include "tool/check/report.h"
#include "tool/run/chosen_files.h"
#include "tool/run/for_each_script.h"

namespace dravenna {

namespace {

constexpr char kFooter[] =
    "Findings go to standard output as file:line:column: kind: text. Exit status 1 if there are any.\n"
    "Examples:\n"
    "  dravenna-lxf check npc                              quote marks, colour codes, encoding\n"
    "  dravenna-lxf check npc-es --against npc             translation beside original\n"
    "  dravenna-lxf check npc-es --against npc --ignore untranslated --ignore line-ends\n"
    "  dravenna-lxf check lxf npc                          exchange files beside their scripts, and the scripts\n"
    "  dravenna-lxf check lxf --scripts npc                exchange files beside their scripts\n"
    "  dravenna-lxf check guard.lxf\n"
    "  dravenna-lxf check npc-es --against npc --baseline known.txt --changed-since origin/main --format github\n"
    "Kinds:\n";

struct Options {
  std::vector<std::string> paths;
  std::string against;
  std::string scripts;
  std::string output;
  std::vector<std::string> only;
  std::vector<std::string> ignore;
  bool strict = false;
  bool frozen = false;
  bool consistent = false;
  std::string changedSince;
  std::string filesFrom;
  std::string baseline;
  bool writeBaseline = false;
  ReportFormat format = ReportFormat::Lines;
  bool json = false;
  Severity failOn = Severity::Note;
};

ReportFormat formatOf(std::string_view name) {
  return name == "sarif"    ? ReportFormat::Sarif
         : name == "github" ? ReportFormat::GitHub
         : name == "json"   ? ReportFormat::Json
                            : ReportFormat::Lines;
}

Severity levelOf(std::string_view name) {
  return name == "error" ? Severity::Error : name == "warning" ? Severity::Warning : Severity::Note;
}

bool isExchangeFile(const std::string& path) { return lowerAsciiOf(path).ends_with(".lxf"); }

// The scripts of a run by what an exchange file may be called after: the same path, the same path below a folder of the
// arguments, or the same name when only one script has it; each without the extension.
class GivenScripts {
 public:
  explicit GivenScripts(const std::vector<Script>& files) {
    for (const Script& file : files) {
      if (isExchangeFile(file.path) || file.path == "-") continue;
      const bool isText = withExtension(file.path, ".txt") == file.path;
      add(byPath_, stemOf(file.path), file.path, isText);
      add(byRelative_, withExtension(file.relative, ""), file.path, isText);
      const std::string stem = stemOf(file.path);
      const auto [named, fresh] = byName_.try_emplace(std::string(fileNameOf(stem)), Named{file.path, stem});
      if (!fresh && named->second.stem != stem) named->second.path.clear();
    }
  }

  bool empty() const { return byPath_.empty(); }

  // The path of the script, empty when there is none.
  std::string scriptOf(const Script& lxf) const {
    const std::string stem = stemOf(lxf.path);
    if (const auto found = byPath_.find(stem); found != byPath_.end()) return found->second;
    if (const auto found = byRelative_.find(withExtension(lxf.relative, "")); found != byRelative_.end()) {
      return found->second;
    }
    const auto found = byName_.find(std::string(fileNameOf(stem)));
    return found == byName_.end() ? std::string() : found->second.path;
  }

 private:
  using Paths = std::unordered_map<std::string, std::string>;
  struct Named {
    std::string path;  // empty once another script has the name too
    std::string stem;
  };

  static std::string stemOf(const std::string& path) {
    return withExtension(std::filesystem::path(path).lexically_normal().generic_string(), "");
  }
  // The first of several counts, `.txt` before all.
  static void add(Paths& paths, std::string key, const std::string& path, bool isText) {
    const auto [found, fresh] = paths.try_emplace(std::move(key), path);
    if (!fresh && isText && withExtension(found->second, ".txt") != found->second) found->second = path;
  }

  Paths byPath_;
  Paths byRelative_;
  std::unordered_map<std::string, Named> byName_;
};

class Check {
 public:
  Check(Session& session, const Options& options) : session_(session), options_(options) {}

  void run();

 private:
  Findings checkFile(const Script& script, Buffers& buffers) const;
  Findings checkOneScript(const Script& script, Buffers& buffers) const;
  Findings checkOneExchangeFile(const Script& script, Buffers& buffers) const;
  std::string scriptBelow(const Script& lxf) const;
  void gatherFrozen();
  std::vector<Script> chosen(std::vector<Script> files);
  void addMissing(const std::vector<Script>& files, FindingReport& report);
  void take(const std::string& path, const Finding& finding, FindingReport& report);
  void openBaseline();
  void summary(std::size_t files);
  bool isWanted(const char* kind) const;
  bool isNarrowed() const;

  Session& session_;
  const Options& options_;
  FrozenNames frozen_;
  std::optional<GivenScripts> given_;  // when there are exchange files
  Baseline baseline_;
  std::size_t found_ = 0;
  std::size_t known_ = 0;
};

bool Check::isWanted(const char* kind) const {
  const auto named = [&](const std::vector<std::string>& kinds) {
    return std::find(kinds.begin(), kinds.end(), kind) != kinds.end();
  };
  return (options_.only.empty() || named(options_.only)) && !named(options_.ignore);
}

Findings Check::checkOneScript(const Script& script, Buffers& buffers) const {
  const auto [in, work] = openScript(session_, script.path, buffers.file, buffers.work);
  Findings findings(in.codec, options_.consistent);
  if (checkUtf16(findings, buffers.file)) return findings;
  const auto what = options_.against.empty() ? OutlineOf::Texts : OutlineOf::Dialogue;
  const ScriptView now{buffers.file, work, outlineOf(work, in.lists, what)};
  checkScript(findings, now);
  if (options_.against.empty()) return findings;
  const std::string oldPath = partnerIn(*session_.files, options_.against, script);
  if (session_.files->pathKind(oldPath) != PathKind::File) {
    findings.addWhole("missing", fmt::format("no original {}", shownName(oldPath)));
    return findings;
  }
  readBeside(session_, oldPath, in, buffers.otherFile);
  const std::string_view oldWork = in.codec.toWork(buffers.otherFile, buffers.otherWork);
  const ScriptView old{buffers.otherFile, oldWork, outlineOf(oldWork, in.lists)};
  checkAgainst(findings, old, now, options_.strict, options_.frozen ? &frozen_ : nullptr);
  return findings;
}

// The script of an exchange file below --scripts: the first of those with its name and another extension, `.txt` before
// all.
std::string Check::scriptBelow(const Script& lxf) const {
  if (session_.files->pathKind(options_.scripts) == PathKind::File) return options_.scripts;
  const std::string relative = relativeIn(*session_.files, options_.scripts, lxf);
  std::string path = joinPath(options_.scripts, withExtension(relative, ".txt"));
  if (session_.files->pathKind(path) == PathKind::File) return path;
  for (const std::string& pattern : session_.include) {
    const std::size_t dot = pattern.rfind('.');
    if (dot == std::string::npos || pattern.substr(dot) == ".lxf") continue;
    std::string other = joinPath(options_.scripts, withExtension(relative, pattern.substr(dot)));
    if (session_.files->pathKind(other) == PathKind::File) return other;
  }
  return path;
}

Findings Check::checkOneExchangeFile(const Script& script, Buffers& buffers) const {
  std::string& file = buffers.file;
  readFile(session_, script.path, file);
  const bool marked = file.starts_with(kUtf8Mark);
  if (marked) file.erase(0, kUtf8Mark.size());
  const bool alone = options_.scripts.empty() && (!given_ || given_->empty());
  std::string path;
  if (!alone) path = options_.scripts.empty() ? given_->scriptOf(script) : scriptBelow(script);
  const bool found = !path.empty() && session_.files->pathKind(path) == PathKind::File;
  if (found) readFile(session_, path, buffers.otherFile);
  const Encoding& in = found ? session_.pages->of(buffers.otherFile, file) : takeEncoding(session_, script.path, file);
  Findings findings(in.codec, options_.consistent);
  if (checkUtf16(findings, file)) return findings;
  if (marked) findings.addWhole("lxf-order", "begins with a byte order mark, which is no part of a number");
  const std::string_view lxf = in.codec.toWork(file, buffers.work);
  checkEncoding(findings, file, lxf);
  if (found) {
    const std::string_view work = in.codec.toWork(buffers.otherFile, buffers.otherWork);
    const ScriptView view{buffers.otherFile, work, outlineOf(work, in.lists)};
    // With --against the scripts are translations, and a record may be as in its script.
    checkExchangeFile(findings, lxf, &view, options_.against.empty());
    return findings;
  }
  if (!alone) {
    findings.addWhole("missing", path.empty() ? "no script of its name among those given"
                                              : fmt::format("no script {}", shownName(path)));
  }
  checkExchangeFile(findings, lxf, nullptr);
  return findings;
}

Findings Check::checkFile(const Script& script, Buffers& buffers) const {
  Findings findings =
      isExchangeFile(script.path) ? checkOneExchangeFile(script, buffers) : checkOneScript(script, buffers);
  std::stable_sort(findings.list().begin(), findings.list().end(), [](const Finding& a, const Finding& b) {
    return a.at.line != b.at.line ? a.at.line < b.at.line : a.at.column < b.at.column;
  });
  return findings;
}

void Check::gatherFrozen() {
  forEachScript<FrozenNames>(
      session_, collectScripts(session_, {options_.against}),
      [&](const Script& script, Buffers& buffers) {
        FrozenNames names;
        readFile(session_, script.path, buffers.file);
        const Encoding& in = session_.pages->of(buffers.file);
        const std::string_view work = in.codec.toWork(buffers.file, buffers.work);
        gatherFrozenNames({buffers.file, work, outlineOf(work, in.lists)}, script.relative, names);
        return names;
      },
      [&](const Script&, FrozenNames&& names) {
        frozen_.merge(names);
        return true;
      });
}

// Scripts of the original tree that the checked one lacks.
void Check::addMissing(const std::vector<Script>& files, FindingReport& report) {
  if (options_.against.empty() || options_.paths.size() != 1 ||
      session_.files->pathKind(options_.paths[0]) != PathKind::Folder ||
      session_.files->pathKind(options_.against) != PathKind::Folder) {
    return;
  }
  std::unordered_set<std::string> here;
  for (const Script& file : files) here.insert(file.relative);
  for (const Script& original : collectScripts(session_, {options_.against})) {
    if (here.count(original.relative) != 0) continue;
    take(joinPath(options_.paths[0], original.relative),
         {{}, "missing", fmt::format("{} has no partner here", shownName(original.path))}, report);
  }
}

void Check::take(const std::string& path, const Finding& finding, FindingReport& report) {
  if (!isWanted(finding.kind)) return;
  if (options_.writeBaseline) return baseline_.add(path, finding);
  if (baseline_.take(path, finding)) {
    ++known_;
    return;
  }
  ++found_;
  if (severityOf(finding.kind) >= options_.failOn) session_.console.fail();
  report.add(path, finding);
}

bool Check::isNarrowed() const { return !options_.changedSince.empty() || !options_.filesFrom.empty(); }

std::vector<Script> Check::chosen(std::vector<Script> files) {
  if (!isNarrowed()) return files;
  ChosenFiles chosen(session_);
  if (!options_.changedSince.empty()) chosen.addChangedSince(options_.changedSince);
  if (!options_.filesFrom.empty()) chosen.addListed(options_.filesFrom);
  return chosen.among(std::move(files));
}

void Check::openBaseline() {
  if (options_.writeBaseline && options_.baseline.empty()) throw UsageError("--write-baseline needs --baseline");
  if (options_.writeBaseline && isNarrowed()) throw UsageError("--write-baseline takes all files");
  if (options_.baseline.empty() || options_.writeBaseline) return;
  std::string text;
  readFile(session_, options_.baseline, text);
  baseline_.read(text, options_.baseline);
}

void Check::summary(std::size_t files) {
  std::string text = fmt::format("{} checked, ", counted(files, "file"));
  if (options_.writeBaseline) {
    text += fmt::format("{} known from now on", counted(baseline_.left(), "finding"));
  } else {
    text += counted(found_, "finding");
    if (!options_.baseline.empty()) text += fmt::format(", {} known", known_);
    const bool allKinds = options_.only.empty() && options_.ignore.empty();
    if (!isNarrowed() && allKinds && baseline_.left() > 0) text += fmt::format(", {} gone", baseline_.left());
  }
  session_.console.note(text);
}

void Check::run() {
  session_.prepare();
  for (const std::string& tree : {options_.against, options_.scripts}) {
    if (!tree.empty() && session_.files->pathKind(tree) == PathKind::Missing) {
      throw Failure(u"No such file or directory: '" + fromUtf8(tree) + u"'");
    }
  }
  if (options_.frozen && options_.against.empty()) throw UsageError("--frozen needs --against");
  openBaseline();
  if (options_.frozen) gatherFrozen();
  const std::vector<Script> all = collectScripts(session_, options_.paths, {"*.txt", "*.lxf"});
  const auto lxfs = static_cast<std::size_t>(
      std::count_if(all.begin(), all.end(), [](const Script& file) { return isExchangeFile(file.path); }));
  if (lxfs > 0) given_.emplace(all);
  const std::vector<Script> files = chosen(all);
  needOneScript(*session_.files, "--scripts", options_.scripts, lxfs);
  needOneScript(*session_.files, "--against", options_.against, all.size() - lxfs);
  Output output(*session_.outputs, options_.output);
  FindingReport report(options_.json ? ReportFormat::Json : options_.format, output.buffer());
  Consistency consistency;
  std::size_t done = 0;
  const bool whole = forEachScript<Findings>(
      session_, files, [&](const Script& file, Buffers& buffers) { return checkFile(file, buffers); },
      [&](const Script& file, Findings&& findings) {
        for (const Finding& finding : findings.list()) take(file.path, finding, report);
        consistency.add(file.path, std::move(findings.renderings()));
        ++done;
        return output.flushSome();
      });
  consistency.tell([&](const std::string& path, const Finding& finding) { take(path, finding, report); });
  if (!isNarrowed()) addMissing(files, report);
  report.end();
  if (options_.writeBaseline) {
    if (!whole) throw Failure(fromUtf8(options_.baseline) + u": not written, for not every file was checked");
    session_.outputs->write(options_.baseline, baseline_.text(), Outputs::Kind::Report, false);
  } else if (!output.close()) {
    session_.console.fail();
  }
  summary(done);
}

}  // namespace

void addCheck(Verb program, Session& session) {
  Verb verb = program.verb("check", "Find what breaks scripts, exchange files or what players see");
  const auto options = std::make_shared<Options>();
  std::vector<std::string> kinds;
  std::string footer = kFooter;
  for (const FindingKind& kind : findingKinds()) {
    kinds.emplace_back(kind.name);
    footer += fmt::format("  {:<16} {:<8} {}\n", kind.name, nameOf(kind.severity), kind.about);
  }
  footer.pop_back();
  verb.words("path", options->paths, "PATH...", "Scripts, exchange files (*.lxf) and folders");
  verb.text("--against", options->against, "DIR", "The tree, or the script, before it was translated");
  verb.text("--scripts", options->scripts, "DIR", "The tree, or the script, that exchange files belong to");
  verb.flag("--strict", options->strict, "Compare colour codes text by text, not by dialogue page");
  verb.flag("--frozen", options->frozen, "Find changed texts that code depends on; needs --against");
  verb.flag("--consistent", options->consistent, "Find one original with two translations, and two originals with one");
  verb.each("--only", options->only, "KIND", "Report this kind only; may be given again", kinds);
  verb.each("--ignore", options->ignore, "KIND", "Do not report this kind; may be given again", kinds);
  verb.text("--changed-since", options->changedSince, "REF", "Check only files that git finds changed since, or new");
  verb.text("--files-from", options->filesFrom, "FILE",
            "Check only files that this one lists, a line each, or parted by NUL; `-` is standard input");
  verb.text("--baseline", options->baseline, "FILE", "Report only findings that this file does not know");
  verb.flag("--write-baseline", options->writeBaseline, "Report nothing, write what is found to the baseline");
  verb.choice("--format", [options](const std::string& name) { options->format = formatOf(name); }, "FORMAT",
              "text, json (an object a line), sarif, or github (marks lines of a pull request)",
              {"github", "json", "sarif", "text"});
  verb.flag("--json", options->json, "The same as --format json");
  verb.choice("--fail-on", [options](const std::string& name) { options->failOn = levelOf(name); }, "SEVERITY",
              "The least that gives exit status 1: error, warning or note (default note)",
              {"error", "note", "warning"});
  verb.text("-o,--output", options->output, "FILE", "File for the findings instead of standard output");
  session.addOptions(verb);
  verb.footer(footer);
  verb.onRun([&session, options] { Check(session, *options).run(); });
}

}  // namespace dravenna

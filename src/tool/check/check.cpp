#include <fmt/core.h>

#include <algorithm>

#include "platform/failure.h"
#include "tool/check/baseline.h"
#include "tool/check/consistency.h"
#include "tool/check/findings.h"
#include "tool/check/given_scripts.h"
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

bool isExchangeFile(const Script& file) { return hasExtension(file.path, ".lxf"); }

// Looks into `file` and `buffer`.
ScriptView viewOf(const Encoding& in, std::string_view file, std::string& buffer,
                  OutlineOf what = OutlineOf::Dialogue) {
  const std::string_view work = in.codec.toWork(file, buffer);
  return {file, work, outlineOf(work, in.lists, what)};
}

class Check {
 public:
  Check(Session& session, const Options& options) : session_(session), options_(options) {}

  void run();

 private:
  Findings checkFile(const Script& script, Buffers& buffers) const;
  Findings checkOneScript(const Script& script, Buffers& buffers) const;
  Findings checkOneExchangeFile(const Script& script, Buffers& buffers) const;
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
  GivenScripts given_;  // for exchange files
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
  readFile(session_, script.path, buffers.file);
  const Encoding& in = session_.pages->take(script.path, buffers.file);
  Findings findings(in.codec, options_.consistent);
  if (checkUtf16(findings, buffers.file)) return findings;
  const auto what = options_.against.empty() ? OutlineOf::Texts : OutlineOf::Dialogue;
  const ScriptView now = viewOf(in, buffers.file, buffers.work, what);
  checkScript(findings, now);
  if (options_.against.empty()) return findings;
  const std::string oldPath = partnerIn(*session_.files, options_.against, script);
  if (session_.files->pathKind(oldPath) != PathKind::File) {
    findings.addWhole("missing", fmt::format("no original {}", shownName(oldPath)));
    return findings;
  }
  readBeside(session_, oldPath, in, buffers.otherFile);
  checkAgainst(findings, viewOf(in, buffers.otherFile, buffers.otherWork), now, options_.strict,
               options_.frozen ? &frozen_ : nullptr);
  return findings;
}

Findings Check::checkOneExchangeFile(const Script& script, Buffers& buffers) const {
  std::string& file = buffers.file;
  readFile(session_, script.path, file);
  const bool marked = file.starts_with(kUtf8Mark);
  if (marked) file.erase(0, kUtf8Mark.size());
  const std::string path =
      options_.scripts.empty() ? given_.scriptOf(script) : scriptIn(session_, options_.scripts, script);
  const bool found = !path.empty() && session_.files->pathKind(path) == PathKind::File;
  if (found) readFile(session_, path, buffers.otherFile);
  const Encoding& in = found ? session_.pages->of(buffers.otherFile, file) : session_.pages->take(script.path, file);
  Findings findings(in.codec, options_.consistent);
  if (checkUtf16(findings, file)) return findings;
  if (marked) findings.addWhole("lxf-order", "begins with a byte order mark, which is no part of a number");
  const std::string_view lxf = in.codec.toWork(file, buffers.work);
  checkEncoding(findings, file, lxf);
  if (found) {
    const ScriptView view = viewOf(in, buffers.otherFile, buffers.otherWork);
    // With --against the scripts are translations, and a record may be as in its script.
    checkExchangeFile(findings, lxf, &view, options_.against.empty());
    return findings;
  }
  if (!path.empty()) {
    findings.addWhole("missing", fmt::format("no script {}", shownName(path)));
  } else if (!given_.empty()) {
    findings.addWhole("missing", "no script of its name among those given");
  }
  checkExchangeFile(findings, lxf, nullptr);
  return findings;
}

Findings Check::checkFile(const Script& script, Buffers& buffers) const {
  Findings findings = isExchangeFile(script) ? checkOneExchangeFile(script, buffers) : checkOneScript(script, buffers);
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
        gatherFrozenNames(viewOf(in, buffers.file, buffers.work), script.relative, names);
        return names;
      },
      [&](const Script&, FrozenNames&& names) {
        frozen_.merge(names);
        return true;
      });
}

// Scripts of the original tree that the checked one lacks.
void Check::addMissing(const std::vector<Script>& files, FindingReport& report) {
  for (const Script& original : onlyInOriginal(session_, options_.paths, options_.against, files, false)) {
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
  for (const std::string& tree : {options_.against, options_.scripts}) needPath(*session_.files, tree);
  if (options_.frozen && options_.against.empty()) throw UsageError("--frozen needs --against");
  openBaseline();
  if (options_.frozen) gatherFrozen();
  const std::vector<Script> all = collectScripts(session_, options_.paths, {"*.txt", "*.lxf"});
  std::vector<Script> scripts = all;
  const std::size_t lxfs = std::erase_if(scripts, isExchangeFile);
  if (lxfs > 0) given_ = GivenScripts(scripts);
  const std::vector<Script> files = chosen(all);
  needOneScript(*session_.files, "--scripts", options_.scripts, lxfs);
  needOneScript(*session_.files, "--against", options_.against, scripts.size());
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
    if (!whole || session_.console.failed())
      throw Failure(fromUtf8(options_.baseline) + u": not written, for not every file was checked");
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
  verb.choice("--format", options->format, "FORMAT",
              "text, json (an object a line), sarif, or github (marks lines of a pull request)",
              {{"github", ReportFormat::GitHub},
               {"json", ReportFormat::Json},
               {"sarif", ReportFormat::Sarif},
               {"text", ReportFormat::Lines}});
  verb.flag("--json", options->json, "The same as --format json");
  verb.choice("--fail-on", options->failOn, "SEVERITY",
              "The least that gives exit status 1: error, warning or note (default note)",
              {{"error", Severity::Error}, {"note", Severity::Note}, {"warning", Severity::Warning}});
  verb.text("-o,--output", options->output, "FILE", "File for the findings instead of standard output");
  session.addOptions(verb);
  verb.footer(footer);
  verb.onRun([&session, options] { Check(session, *options).run(); });
}

}  // namespace dravenna

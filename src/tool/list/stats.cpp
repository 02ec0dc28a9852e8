#include <fmt/core.h>

#include <map>
#include <unordered_set>

#include "platform/failure.h"
#include "tool/list/progress.h"
#include "tool/list/words.h"
#include "tool/run/for_each_script.h"
#include "tool/script/outline.h"
#include "tool/script/pairing.h"
#include "tool/script/records.h"

namespace dravenna {

namespace {

constexpr char kStatsFooter[] =
    "Words and colour codes are those of messages and titles. Texts done are those with a record that are not as in\n"
    "the original, or hold no letter; the others remain, with those of scripts that only the original tree has.\n"
    "Examples:\n"
    "  dravenna-lxf stats npc                       a table, a line for each script and one for all\n"
    "  dravenna-lxf stats npc-es --against npc      how far the translation is\n"
    "  dravenna-lxf stats npc-es --against npc --by-folder --markdown --svg progress.svg\n"
    "  dravenna-lxf stats es.po --progress          translated, unsure and to do, in texts and words\n"
    "  dravenna-lxf stats npc --left-out            the texts that no exchange file shows, by reason\n"
    "  dravenna-lxf stats npc --json --output stats.json";

struct Options : ProgressOptions {
  bool leftOut = false;
  bool progress = false;
};

// The figures of a script or of all, in the order of the table.
enum Figure {
  Lines,
  Titles,
  Messages,
  Code,
  Plain,
  Records,
  Words,
  ColorCodes,
  ErrorLines,
  LackedBytes,
  Done,
  Remaining,
  kFigures
};
constexpr const char* kNames[kFigures] = {"lines", "titles", "messages", "code",   "plain", "records",
                                          "words", "codes",  "errors",   "lacked", "done",  "remaining"};

using Figures = std::array<std::size_t, kFigures>;
using Reasons = std::map<std::pair<std::string, std::string>, std::size_t>;  // reason, command

struct Outcome {
  std::string warning;
  Figures figures{};
  Reasons leftOut;
};

std::pair<std::string, std::string> reasonOf(const OutlineText& text, const Outline& outline, const Codec& codec) {
  std::string command;
  appendEscaped(codec, outline.commands[text.command], command);  // it may hold what no terminal should see
  if (text.segment == Segment::Title) return {"title", {}};
  if (!text.allowed) return {"command not listed", command.empty() ? "(none)" : command};
  if (text.firstOfSpecial) return {"first text of a special command", command};
  return {"bracket at one end", {}};
}

void addTexts(const Outline& outline, bool leftOut, const Codec& codec, std::string& buffer, Outcome& outcome) {
  for (const OutlineText& text : outline.texts) {
    const bool readable = text.segment == Segment::Message || text.segment == Segment::Title;
    ++outcome.figures[text.segment == Segment::Title     ? Titles
                      : text.segment == Segment::Message ? Messages
                      : text.segment == Segment::Code    ? Code
                                                         : Plain];
    if (text.record) ++outcome.figures[Records];
    if (!text.record && leftOut) ++outcome.leftOut[reasonOf(text, outline, codec)];
    if (!readable) continue;
    outcome.figures[Words] += countWords(text.text, buffer);
    outcome.figures[ColorCodes] += countColorCodes(text.text);
  }
  outcome.figures[Lines] = outline.lines;
  outcome.figures[ErrorLines] = outline.errors.size();
  if (!outline.errors.empty() && leftOut)
    outcome.leftOut[{"line with an odd number of quote marks", {}}] += outline.errors.size();
}

void addProgress(const Outline& outline, const Outline& old, const Pairing& pairing, Figures& figures) {
  for (std::size_t i = 0; i < outline.texts.size(); ++i) {
    if (!outline.texts[i].record) continue;
    const std::size_t from = pairing.oldOf[i];
    const bool same = from != kNoText && withoutColor(old.texts[from].text) == withoutColor(outline.texts[i].text);
    ++figures[same && hasLetter(outline.texts[i].text) ? Remaining : Done];
  }
}

Outcome measure(const Session& session, const Options& options, const Script& script, Buffers& buffers) {
  Outcome outcome;
  const auto [in, work] = openScript(session, script.path, buffers.file, buffers.work);
  const Outline outline = outlineOf(work, in.lists, OutlineOf::Texts);
  addTexts(outline, options.leftOut, in.codec, buffers.out, outcome);
  outcome.figures[LackedBytes] = in.codec.page().countUndefined(buffers.file);
  if (options.against.empty()) return outcome;
  const std::string oldPath = partnerIn(*session.files, options.against, script);
  if (session.files->pathKind(oldPath) != PathKind::File) {
    outcome.warning = fmt::format("{}: no original {}", shownName(script.path), shownName(oldPath));
    return outcome;
  }
  readBeside(session, oldPath, in, buffers.otherFile);
  const std::string_view oldWork = in.codec.toWork(buffers.otherFile, buffers.otherWork);
  const Outline old = outlineOf(oldWork, in.lists, OutlineOf::Texts);
  addProgress(outline, old, pairScripts(oldWork, old, work, outline), outcome.figures);
  return outcome;
}

// A script of the original tree that the translated one lacks: all of it remains.
Outcome measureMissing(const Session& session, const Script& original, Buffers& buffers) {
  Outcome outcome;
  const auto [in, work] = openScript(session, original.path, buffers.file, buffers.work);
  forEachRecordText(work, in.lists, [&](std::string_view, std::string_view) { ++outcome.figures[Remaining]; });
  return outcome;
}

// Two whole trees are compared, not some of their scripts.
std::vector<Script> missingScripts(Session& session, const Options& options, const std::vector<Script>& scripts) {
  std::vector<Script> missing;
  if (options.against.empty() || options.paths.size() != 1 ||
      session.files->pathKind(options.paths[0]) != PathKind::Folder ||
      session.files->pathKind(options.against) != PathKind::Folder) {
    return missing;
  }
  std::unordered_set<std::string> here;
  for (const Script& script : scripts) here.insert(script.relative);
  for (Script& original : collectScripts(session, {options.against})) {
    if (here.count(original.relative) == 0) missing.push_back(std::move(original));
  }
  return missing;
}

class Report {
 public:
  Report(const Options& options, std::string& out) : json_(options.json), leftOut_(options.leftOut), out_(out) {
    shown_ = options.against.empty() ? Done : kFigures;
    if (json_) out_ += "{\"files\":[";
    if (!json_ && !leftOut_) {
      for (std::size_t i = 0; i < shown_; ++i) out_ += fmt::format("{:>10}", kNames[i]);
      out_ += "  file\n";
    }
  }

  void add(const std::string& path, const Outcome& outcome) {
    if (json_) {
      out_ += files_ == 0 ? "\n" : ",\n";
      out_ += "{\"file\":";
      appendJsonString(fromUtf8(path), out_);
      for (std::size_t i = 0; i < shown_; ++i) out_ += fmt::format(",\"{}\":{}", kNames[i], outcome.figures[i]);
      out_ += "}";
    } else if (!leftOut_) {
      row(outcome.figures, shownName(path));
    }
    ++files_;
    addToTotal(outcome);
  }

  void addToTotal(const Outcome& outcome) {
    for (std::size_t i = 0; i < kFigures; ++i) total_[i] += outcome.figures[i];
    for (const auto& [reason, count] : outcome.leftOut) leftOutTotal_[reason] += count;
  }

  void end() {
    // The largest groups first; the map's order decides between equal ones.
    std::vector<std::pair<std::pair<std::string, std::string>, std::size_t>> reasons(leftOutTotal_.begin(),
                                                                                     leftOutTotal_.end());
    std::stable_sort(reasons.begin(), reasons.end(), [](const auto& a, const auto& b) { return a.second > b.second; });
    if (json_) {
      out_ += fmt::format("],\n\"total\":{{\"files\":{}", files_);
      for (std::size_t i = 0; i < shown_; ++i) out_ += fmt::format(",\"{}\":{}", kNames[i], total_[i]);
      out_ += "}";
      if (leftOut_) {
        out_ += ",\n\"leftOut\":[";
        for (std::size_t i = 0; i < reasons.size(); ++i) {
          const auto& [reason, count] = reasons[i];
          out_ += fmt::format("{}{{\"reason\":\"{}\",\"command\":", i == 0 ? "" : ",", reason.first);
          appendJsonString(fromUtf8(reason.second), out_);
          out_ += fmt::format(",\"texts\":{}}}", count);
        }
        out_ += "]";
      }
      out_ += "}\n";
    } else if (leftOut_) {
      out_ += fmt::format("{:>8}  {:<40} {}\n", "texts", "reason", "command");
      for (const auto& [reason, count] : reasons) {
        out_ += fmt::format("{:>8}  {:<40} {}\n", count, reason.first, reason.second);
      }
    } else {
      row(total_, fmt::format("in all, {}", counted(files_, "file")));
    }
  }

 private:
  void row(const Figures& figures, const std::string& name) {
    for (std::size_t i = 0; i < shown_; ++i) out_ += fmt::format("{:>10}", figures[i]);
    out_ += fmt::format("  {}\n", name);
  }

  bool json_;
  bool leftOut_;
  std::string& out_;
  std::size_t shown_;
  std::size_t files_ = 0;
  Figures total_{};
  Reasons leftOutTotal_;
};

void run(Session& session, const Options& options) {
  if (options.progress || options.byFolder || options.markdown || !options.svg.empty()) {
    if (options.leftOut) throw UsageError("--left-out does not go together with options of the progress");
    return showProgress(session, options);
  }
  session.prepare();
  if (options.leftOut && !options.against.empty()) throw UsageError("--left-out and --against do not go together");
  if (!options.against.empty() && session.files->pathKind(options.against) == PathKind::Missing) {
    throw Failure(u"No such file or directory: '" + fromUtf8(options.against) + u"'");
  }
  const std::vector<Script> scripts = collectScripts(session, options.paths);
  needOneScript(*session.files, "--against", options.against, scripts.size());
  Output output(*session.outputs, options.output);
  Report report(options, output.buffer());
  forEachScript<Outcome>(
      session, scripts,
      [&](const Script& script, Buffers& buffers) { return measure(session, options, script, buffers); },
      [&](const Script& script, Outcome&& outcome) {
        if (!outcome.warning.empty()) session.console.warning(outcome.warning);
        report.add(script.path, outcome);
        return output.flushSome();
      });
  forEachScript<Outcome>(
      session, missingScripts(session, options, scripts),
      [&](const Script& script, Buffers& buffers) { return measureMissing(session, script, buffers); },
      [&](const Script& script, Outcome&& outcome) {
        session.console.warning(fmt::format("{}: not in the translated tree, {} remaining", shownName(script.path),
                                            counted(outcome.figures[Remaining], "text")));
        report.add(script.path, outcome);
        return output.flushSome();
      });
  report.end();
  if (!output.close()) session.console.fail();
}

}  // namespace

void addStats(Verb program, Session& session) {
  Verb verb = program.verb("stats", "Count texts, words, colour codes, errors, and what is left to do");
  const auto options = std::make_shared<Options>();
  verb.words("path", options->paths, "PATH...", "Files and folders; for the progress *.lxf and *.po too");
  verb.text("--against", options->against, "OLDTREE",
            "The tree before it was translated: adds texts done and remaining");
  verb.flag("--left-out", options->leftOut, "The texts that get no record, by reason");
  verb.flag(
      "--progress", options->progress,
      "Translated, unsure and to do, in texts and words of the original; of scripts and *.lxf (with --against), *.po");
  verb.flag("--by-folder", options->byFolder, "The progress of each folder");
  verb.flag("--json", options->json, "JSON instead of a table");
  verb.flag("--markdown", options->markdown, "The progress as a table for a README");
  verb.text("--svg", options->svg, "FILE", "A picture of the progress, with a bar for each folder if by folder");
  verb.text("-o,--output", options->output, "FILE", "File for the result instead of standard output");
  session.addOptions(verb);
  verb.footer(kStatsFooter);
  verb.onRun([&session, options] { run(session, *options); });
}

}  // namespace dravenna

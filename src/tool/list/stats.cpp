#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <utility>

#include "platform/failure.h"
#include "tool/list/progress.h"
#include "tool/list/words.h"
#include "tool/run/for_each_script.h"
#include "tool/script/outline.h"
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
using Reason = std::pair<std::string, std::string>;  // and command
using Reasons = std::map<Reason, std::size_t>;

struct Outcome {
  std::string warning;
  Figures figures{};
  Reasons leftOut;
};

Reason reasonOf(const OutlineText& text, const Outline& outline, const Codec& codec) {
  std::string command;
  appendEscaped(codec, outline.commands[text.command], command);  // it may hold what no terminal should see
  if (text.segment == Segment::Title) return {"title", {}};
  if (!text.allowed) return {"command not listed", command.empty() ? "(none)" : command};
  if (text.firstOfSpecial) return {"first text of a special command", command};
  return {"bracket at one end", {}};
}

void addTexts(const Outline& outline, bool leftOut, const Codec& codec, std::string& buffer, Outcome& outcome) {
  for (const OutlineText& text : outline.texts) {
    ++outcome.figures[text.segment == Segment::Title     ? Titles
                      : text.segment == Segment::Message ? Messages
                      : text.segment == Segment::Code    ? Code
                                                         : Plain];
    if (text.record) ++outcome.figures[Records];
    if (!text.record && leftOut) ++outcome.leftOut[reasonOf(text, outline, codec)];
    if (!isReadable(text)) continue;
    outcome.figures[Words] += countWords(text.text, buffer);
    outcome.figures[ColorCodes] += countColorCodes(text.text);
  }
  outcome.figures[Lines] = outline.lines;
  outcome.figures[ErrorLines] = outline.errors.size();
  if (!outline.errors.empty() && leftOut)
    outcome.leftOut[{"line with an odd number of quote marks", {}}] += outline.errors.size();
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
  forEachState(old, outline, pairScripts(oldWork, old, work, outline), [&](Progress::State state, std::string_view) {
    ++outcome.figures[state == Progress::ToDo ? Remaining : Done];
  });
  return outcome;
}

// A script of the original tree that the translated one lacks: all of it remains.
Outcome measureMissing(const Session& session, const Options&, const Script& original, Buffers& buffers) {
  Outcome outcome;
  const auto [in, work] = openScript(session, original.path, buffers.file, buffers.work);
  forEachRecordText(work, in.lists, [&](std::string_view, std::string_view) { ++outcome.figures[Remaining]; });
  outcome.warning = fmt::format("{}: not in the translated tree, {} remaining", shownName(original.path),
                                counted(outcome.figures[Remaining], "text"));
  return outcome;
}

class Report {
 public:
  Report(const Options& options, std::string& out)
      : json_(options.json), leftOut_(options.leftOut), shown_(options.against.empty() ? Done : kFigures), out_(out) {
    if (json_) {
      out_ += "{\"files\":[";
    } else if (!leftOut_) {
      out_ += fmt::format("{:>10}  file\n", fmt::join(kNames, kNames + shown_, ""));
    }
  }

  void add(const std::string& path, const Outcome& outcome) {
    if (json_) {
      out_ += fmt::format("{}\n{{\"file\":{}{}}}", files_ == 0 ? "" : ",", jsonString(path), members(outcome.figures));
    } else if (!leftOut_) {
      row(outcome.figures, shownName(path));
    }
    ++files_;
    for (std::size_t i = 0; i < kFigures; ++i) total_[i] += outcome.figures[i];
    for (const auto& [reason, count] : outcome.leftOut) leftOutTotal_[reason] += count;
  }

  void end() {
    if (json_) out_ += fmt::format("],\n\"total\":{{\"files\":{}{}}}", files_, members(total_));
    if (leftOut_) {
      endLeftOut();
    } else if (!json_) {
      row(total_, fmt::format("in all, {}", counted(files_, "file")));
    }
    if (json_) out_ += "}\n";
  }

 private:
  void row(const Figures& figures, const std::string& name) {
    out_ += fmt::format("{:>10}  {}\n", fmt::join(figures.begin(), figures.begin() + shown_, ""), name);
  }

  std::string members(const Figures& figures) const {
    std::string out;
    for (std::size_t i = 0; i < shown_; ++i) out += fmt::format(",\"{}\":{}", kNames[i], figures[i]);
    return out;
  }

  void endLeftOut() {
    // The largest groups first; the map's order decides between equal ones.
    std::vector<std::pair<Reason, std::size_t>> reasons(leftOutTotal_.begin(), leftOutTotal_.end());
    std::stable_sort(reasons.begin(), reasons.end(), [](const auto& a, const auto& b) { return a.second > b.second; });
    out_ += json_ ? ",\n\"leftOut\":[" : fmt::format("{:>8}  {:<40} {}\n", "texts", "reason", "command");
    const char* comma = "";
    for (const auto& [reason, count] : reasons) {
      out_ += json_ ? fmt::format("{}{{\"reason\":\"{}\",\"command\":{},\"texts\":{}}}", std::exchange(comma, ","),
                                  reason.first, jsonString(reason.second), count)
                    : fmt::format("{:>8}  {:<40} {}\n", count, reason.first, reason.second);
    }
    if (json_) out_ += "]";
  }

  bool json_;
  bool leftOut_;
  std::size_t shown_;
  std::string& out_;
  std::size_t files_ = 0;
  Figures total_{};
  Reasons leftOutTotal_;
};

void run(Session& session, const Options& options) {
  const bool progress = options.progress || options.byFolder || options.markdown || !options.svg.empty();
  if (options.leftOut && progress) throw UsageError("--left-out does not go together with options of the progress");
  session.prepare();
  if (options.leftOut && !options.against.empty()) throw UsageError("--left-out and --against do not go together");
  needPath(*session.files, options.against);
  if (progress) return showProgress(session, options);
  const std::vector<Script> scripts = collectScripts(session, options.paths);
  needOneScript(*session.files, "--against", options.against, scripts.size());
  Output output(*session.outputs, options.output);
  Report report(options, output.buffer());
  const auto measureEach = [&](const std::vector<Script>& some, auto&& measureOne) {
    forEachScript<Outcome>(
        session, some,
        [&](const Script& script, Buffers& buffers) { return measureOne(session, options, script, buffers); },
        [&](const Script& script, Outcome&& outcome) {
          if (!outcome.warning.empty()) session.console.warning(outcome.warning);
          report.add(script.path, outcome);
          return output.flushSome();
        });
  };
  measureEach(scripts, measure);
  measureEach(onlyInOriginal(session, options.paths, options.against, scripts, false), measureMissing);
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

#include <fmt/core.h>

#include <algorithm>
#include <map>
#include <set>

#include "platform/failure.h"
#include "platform/terminal.h"
#include "platform/tree_files.h"
#include "text/text.h"
#include "tool/run/for_each_script.h"
#include "tool/run/notices.h"
#include "tool/run/session.h"
#include "tool/run/text_index.h"
#include "tool/script/contents.h"
#include "tool/script/exchange_file.h"
#include "tool/script/records.h"

namespace dravenna {

namespace {

constexpr char kImportFooter[] =
    "Examples:\n"
    "  dravenna-lxf import guard.txt guard.lxf               puts the translated texts into the script\n"
    "  dravenna-lxf import guard.txt - < guard.lxf           the exchange file from standard input\n"
    "  dravenna-lxf import npc --from lxf                    a tree; what is not translated stays as it is\n"
    "  dravenna-lxf import npc --from lxf --dry-run          only tells what would happen\n"
    "  dravenna-lxf import npc --from lxf --backup .orig     keeps each old script beside the new one\n"
    "A tree's script whose exchange file does not fit is left alone unless --force says otherwise.";

struct ImportOptions {
  std::vector<std::string> paths;
  std::string from;
  std::string backup;
  bool dryRun = false;
  std::optional<bool> keepEol;  // line ends stay, or are CR LF; none for what is usual
  bool likeWindow = false;
  bool strict = false;
  bool force = false;
  ReportOptions report;
};

// What is odd about the file although it is merged all the same.
void warnOfOddities(Session& session, const std::string& path, const ExchangeFile& lxf, std::size_t texts,
                    const std::optional<Failure>& wrongEncoding) {
  if (wrongEncoding) session.console.warning(shown(wrongEncoding->description()));
  if (const auto misfit = misfitOf(lxf, path, texts)) session.console.warning(shown(misfit->description()));
  for (std::size_t i = 0; i < lxf.records.size() && i < texts; ++i) {
    const char* const what = whatLeavesExport(lxf.records[i].text);
    if (what != nullptr) session.console.warning(fmt::format("{}:{}: {}", shownName(path), i + 1, what));
  }
}

void importOne(Session& session, const ImportOptions& options) {
  const std::string& path = options.paths[0];
  const std::string& lxfPath = options.paths[1];
  if (path == "-" && lxfPath == "-") throw UsageError("script and exchange file cannot both be standard input");
  if (path != "-" && session.files->pathKind(path) == PathKind::Folder) throw UsageError("a folder needs --from DIR");
  std::string file;
  std::string work;
  std::string lxfFile;
  std::string lxfWork;
  readFile(session, lxfPath, lxfFile);
  if (lxfFile.empty()) throw Failure(fromUtf8(lxfPath) + u": The exchange file is empty");
  readFile(session, path, file);
  const Encoding& in = session.pages->take(path, file, lxfFile);
  const std::string_view lxf = in.codec.toWork(lxfFile, lxfWork);
  const std::string_view script = in.codec.toWork(file, work);
  const ExchangeFile cut = cutExchangeFile(lxf);
  const bool named = lxfPath == "-" || withExtension(lxfPath, ".lxf") == lxfPath;
  const bool numbered = std::any_of(cut.records.begin(), cut.records.end(), [](const ByteRecord& record) {
    return !record.number.empty() && record.number.find_first_not_of("0123456789") == std::string_view::npos;
  });
  if (!named && !numbered && !options.force && contentsOf(lxf, in.lists) != Contents::ExchangeFile) {
    throw Failure(fromUtf8(lxfPath) + u": no exchange file: none of its lines has a number and a colon");
  }

  // As in the window a text goes in whatever it breaks, but not unheard.
  const Merge merge = mergeWork(in, script, lxf, lxfPath, {.keepEol = options.keepEol.value_or(false)});
  for (const BrokenRecord& record : merge.breaks) {
    const std::string told = fmt::format("{}:{}: {}:{}: {}", shownName(path), record.scriptLine, shownName(lxfPath),
                                         record.record, record.why);
    if (options.strict) throw Failure(fromUtf8(told));
    session.console.error(told);
  }
  if (merge.failure) throw Failure(*merge.failure);
  std::string buffer;
  const std::string_view bytes = in.codec.toFile(merge.work, buffer);
  warnOfOddities(session, lxfPath, cut, merge.counts.texts, wrongEncodingOf(lxfFile, lxfPath, file, in.codec.page()));
  if (path == "-" && !options.dryRun) {
    if (!writeStandardOutput(bytes)) session.console.fail();
    return;
  }
  if (!options.dryRun && bytes != file) {
    replaceScript(session, path, bytes, options.backup);
    flushFolders(session, {folderOf(path)});
  }
  session.console.note(fmt::format("{}: {} of {} {}{}", shownName(path), merge.counts.changed,
                                   counted(merge.counts.texts, "text"), options.dryRun ? "would change" : "changed",
                                   merge.counts.changed == 0 && bytes != file ? "; line ends only" : ""));
}

enum class Fate { Replaced, Unchanged, NoExchangeFile, Refused };

struct Outcome {
  Fate fate = Fate::Unchanged;
  std::string message;
  std::vector<Notice> warnings;
  MergeCounts counts;
  std::optional<TextDigest> digest;  // of the script as it will be, where the index knows its exchange file
};

// Merges the exchange files below options.from into the scripts, all or nothing each.
class TreeImport {
 public:
  TreeImport(Session& session, const ImportOptions& options)
      : session_(session),
        options_(options),
        scripts_(collectScripts(session, options.paths)),
        notices_(session, options.report),
        isFile_(session.files->pathKind(options.from) == PathKind::File),
        index_(session, isFile_ ? folderOf(options.from) : options.from) {}

  void run() {
    if (session_.files->pathKind(options_.from) == PathKind::Missing) {
      throw Failure(u"No such folder: '" + fromUtf8(options_.from) + u"'");
    }
    needOneScript(*session_.files, "--from", options_.from, scripts_.size());
    for (const Script& script : scripts_) {
      if (script.path == "-") throw UsageError("standard input cannot be merged with --from");
    }
    std::size_t done = 0;
    rewriteEachScript<Outcome>(
        session_, scripts_, options_.backup, options_.dryRun,
        [&](const Script& script, Buffers& buffers, std::optional<std::string>& bytes) {
          return mergeScript(script, buffers, bytes);
        },
        [&](const Script& script, Outcome&& outcome) {
          report(script, outcome);
          ++done;
          return true;
        });
    if (!options_.dryRun) index_.save();
    if (interrupted()) return session_.console.error("Interrupted; every script is the old or the new one");
    if (!scripts_.empty() && fates_[Fate::NoExchangeFile] == scripts_.size()) {
      session_.console.warning(
          fmt::format("{}: no exchange file of any of the scripts is there", shownName(options_.from)));
      session_.console.fail();
    }
    // A whole tree has scripts that nobody translates; a folder of exchange files is seldom left over.
    notices_.endGroup("texts");
    const bool wholeFolders = std::none_of(scripts_.begin(), scripts_.end(), [](const Script& s) { return s.named; });
    if (session_.include.empty() && session_.exclude.empty() && wholeFolders && !isFile_) findStrays();
    notices_.close();
    session_.console.note(fmt::format(
        "{}{} {} ({} changed), {} unchanged, {} without exchange file, {} left alone, {} failed",
        options_.dryRun ? "dry run: " : "", counted(fates_[Fate::Replaced], "script"),
        options_.dryRun ? "would be written" : "written", counted(changed_, "text"), fates_[Fate::Unchanged],
        fates_[Fate::NoExchangeFile], fates_[Fate::Refused], scripts_.size() - done));
  }

 private:
  // Why, when the script's texts are not those that the exchange file was made from, nor those that it puts in.
  std::optional<Failure> outOfDate(const std::string& lxfName, const std::string& lxfPath, const Encoding& in,
                                   std::string_view script, TextDigest texts, std::string_view lxf) const {
    if (index_.fits(lxfName, texts.value())) return std::nullopt;
    const Merge merge = mergeWork(in, script, lxf, lxfName, {.keepEol = true, .keepCodes = true});
    if (!merge.failure && merge.work == script) return std::nullopt;
    std::string why = lxfPath + ": made from other texts than the script has now: a new version needs `update`";
    // A few are most likely corrections of what the window or another tool has put in.
    if (!merge.failure)
      why += fmt::format("; --force writes {} of its {} over the script's", merge.counts.changed,
                         counted(merge.counts.texts, "text"));
    return Failure(fromUtf8(why));
  }

  Outcome mergeScript(const Script& script, Buffers& buffers, std::optional<std::string>& bytes) const {
    Outcome outcome;
    const std::string lxfName = nameOf(script);
    const std::string lxfPath = isFile_ ? options_.from : joinPath(options_.from, lxfName);
    if (session_.files->pathKind(lxfPath) != PathKind::File) {
      outcome.fate = Fate::NoExchangeFile;
      return outcome;
    }
    readFile(session_, lxfPath, buffers.otherFile);
    readFile(session_, script.path, buffers.file);
    const std::string& file = buffers.file;
    const Encoding& in = session_.pages->take(script.path, file, buffers.otherFile);
    const std::string_view lxf = in.codec.toWork(buffers.otherFile, buffers.otherWork);
    const std::string_view scriptWork = in.codec.toWork(file, buffers.work);
    const auto refuse = [&](std::string_view why) {
      outcome.fate = Fate::Refused;
      outcome.message = fmt::format("{}: left alone: {}", shownName(script.path), why);
      return outcome;
    };
    const ExchangeFile cut = cutExchangeFile(lxf);
    const bool likeWindow = options_.likeWindow;
    const MergeWay way{.keepEol = options_.keepEol.value_or(!likeWindow), .keepCodes = !likeWindow};
    const Merge merge = mergeWork(in, scriptWork, lxf, lxfPath, way);
    for (const auto& misfit :
         {wrongEncodingOf(buffers.otherFile, lxfPath, file, in.codec.page()),
          outOfDate(lxfName, lxfPath, in, scriptWork, merge.digest, lxf), misfitOf(cut, lxfPath, merge.counts.texts)}) {
      if (!misfit) continue;
      if (!options_.force) return refuse(shown(misfit->description()));
      outcome.warnings.push_back({.why = shown(misfit->description())});
    }
    if (lxf.empty()) return outcome;  // a script without texts, or forced with nothing to merge

    for (const BrokenRecord& record : merge.breaks) {
      outcome.warnings.push_back({script.path, record.scriptLine, "", lxfPath, record.record, record.why});
    }
    if (!merge.breaks.empty()) return refuse(fmt::format("{} would break it", shownName(lxfPath)));
    if (merge.failure) return refuse(shown(merge.failure->description()));
    for (std::size_t i = 0; i < cut.records.size() && i < merge.counts.texts; ++i) {
      const char* const what = whatLeavesExport(cut.records[i].text);
      if (what != nullptr) outcome.warnings.push_back({.from = lxfPath, .fromLine = i + 1, .why = what});
    }
    if (merge.counts.withoutCodes > 0 && !likeWindow) {
      outcome.warnings.push_back(
          {.why = fmt::format("{}: {} lost all colour codes by translation", shownName(script.path),
                              counted(merge.counts.withoutCodes, "text"))});
    }
    outcome.counts = merge.counts;
    const std::string_view now = in.codec.toFile(merge.work, buffers.out);
    if (index_.knows(lxfName)) outcome.digest = now == file ? merge.digest : digestOf(merge.work, in.lists);
    if (now == file) return outcome;
    outcome.fate = Fate::Replaced;
    bytes = now;
    return outcome;
  }

  void report(const Script& script, const Outcome& outcome) {
    ++fates_[outcome.fate];
    for (const Notice& warning : outcome.warnings) {
      warning.fromLine > 0 ? notices_.warn(warning) : notices_.warn(warning, Notices::kAll);
    }
    if (outcome.fate == Fate::Refused) notices_.error({.why = outcome.message});
    if (outcome.digest) index_.imported(nameOf(script), outcome.digest->value());
    if (outcome.fate != Fate::Replaced) return;
    changed_ += outcome.counts.changed;
    if (options_.dryRun) {
      session_.console.note(fmt::format("{}: {} of {} would change{}", shownName(script.path), outcome.counts.changed,
                                        counted(outcome.counts.texts, "text"),
                                        outcome.counts.changed == 0 ? "; line ends only" : ""));
    }
  }

  // Of its exchange file, below the folder.
  std::string nameOf(const Script& script) const {
    if (isFile_) return std::string(fileNameOf(options_.from));
    return withExtension(relativeIn(*session_.files, options_.from, script), ".lxf");
  }

  // Exchange files that no script asked for: a renamed script, most likely.
  void findStrays() {
    std::set<std::string> wanted;
    for (const Script& script : scripts_) wanted.insert(nameOf(script));
    for (const std::string& relative : filesBelow(
             session_, options_.from, [](const std::string&) { return true; },
             [](const std::string& name) { return name.ends_with(".lxf"); })) {
      if (wanted.count(relative) == 0)
        notices_.warn({.why = fmt::format("{}: no script for it", shownName(joinPath(options_.from, relative)))}, 5);
    }
    notices_.endGroup("without a script");
  }

  Session& session_;
  const ImportOptions& options_;
  std::vector<Script> scripts_;
  Notices notices_;
  bool isFile_;  // --from names the exchange file of a single script
  TextIndex index_;
  std::map<Fate, std::size_t> fates_;
  std::size_t changed_ = 0;
};

void run(Session& session, const ImportOptions& options) {
  session.prepare();
  if (!options.from.empty()) return TreeImport(session, options).run();
  if (options.paths.size() != 2) throw UsageError("give SCRIPT and LXF, or --from DIR for a tree");
  if (options.report.json || !options.report.file.empty()) throw UsageError("--report and --json go with --from");
  importOne(session, options);
}

}  // namespace

void addImport(Verb program, Session& session) {
  Verb verb = program.verb("import", "Merge translated exchange files back into their scripts");
  const auto options = std::make_shared<ImportOptions>();
  verb.words("path", options->paths, "PATH...",
             "SCRIPT LXF, `-` for a standard stream; or with --from files and folders");
  verb.text("--from", options->from, "DIR", "Folder with one exchange file a script, or the one of a single script");
  verb.flag("--dry-run", options->dryRun, "Change nothing, tell what would change");
  addBackupOption(verb, options->backup);
  verb.choice("--eol", options->keepEol, "KIND",
              "Line ends of a script that is written: crlf (throughout) or keep (default keep with --from, else crlf)",
              {{"crlf", false}, {"keep", true}});
  verb.flag("--like-window", options->likeWindow,
            "With --from: CR LF throughout, and untranslated texts lose their colour codes");
  verb.flag("--strict", options->strict, "Leave one script alone, too, when a text would break one of its lines");
  verb.flag("-f,--force", options->force, "Merge exchange files that do not fit too, as the window does");
  options->report.addTo(verb);
  session.addOptions(verb);
  verb.footer(kImportFooter);
  verb.onRun([&session, options] { run(session, *options); });
}

}  // namespace dravenna

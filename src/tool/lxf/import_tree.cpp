#include "tool/lxf/import_tree.h"

#include <fmt/core.h>

#include <algorithm>
#include <set>

#include "platform/failure.h"
#include "platform/tree_files.h"
#include "text/text.h"
#include "tool/run/for_each_script.h"
#include "tool/run/text_index.h"
#include "tool/script/exchange_file.h"
#include "tool/script/lxf_merge.h"
#include "tool/script/records.h"

namespace dravenna {

namespace {

enum class Fate { Replaced, Unchanged, NoExchangeFile, Refused };

struct Outcome {
  Fate fate = Fate::Unchanged;
  std::string message;
  std::vector<Notice> warnings;
  MergeCounts counts;
  std::optional<TextDigest> digest;  // of the script as it will be, where the index knows its exchange file
};

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
    const auto count = [&](Fate fate) { return fates_[static_cast<std::size_t>(fate)]; };
    if (!scripts_.empty() && count(Fate::NoExchangeFile) == scripts_.size()) {
      session_.console.warning(
          fmt::format("{}: no exchange file of any of the scripts is there", shownName(options_.from)));
      session_.console.fail();
    }
    // A whole tree has scripts that nobody translates; a folder of exchange files is seldom left over.
    notices_.endGroup("texts");
    const bool wholeFolders = std::none_of(scripts_.begin(), scripts_.end(), [](const Script& s) { return s.named; });
    if (session_.include.empty() && session_.exclude.empty() && wholeFolders && !isFile_) findStrays();
    notices_.close();
    session_.console.note(
        fmt::format("{}{} {} ({} changed), {} unchanged, {} without exchange file, {} left alone, {} failed",
                    options_.dryRun ? "dry run: " : "", counted(count(Fate::Replaced), "script"),
                    options_.dryRun ? "would be written" : "written", counted(changed_, "text"), count(Fate::Unchanged),
                    count(Fate::NoExchangeFile), count(Fate::Refused), scripts_.size() - done));
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
    const Encoding& in = takeEncoding(session_, script.path, file, buffers.otherFile);
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
    ++fates_[static_cast<std::size_t>(outcome.fate)];
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
  std::size_t fates_[4] = {};
  std::size_t changed_ = 0;
};

}  // namespace

void importTree(Session& session, const ImportOptions& options) { TreeImport(session, options).run(); }

}  // namespace dravenna

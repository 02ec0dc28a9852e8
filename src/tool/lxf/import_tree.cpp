#include "tool/lxf/import_tree.h"

#include <fmt/core.h>

#include <mutex>
#include <set>

#include "platform/failure.h"
#include "platform/tree_files.h"
#include "text/text.h"
#include "tool/run/ordered_pool.h"
#include "tool/script/exchange_file.h"
#include "tool/script/merge.h"
#include "tool/script/records.h"

namespace dravenna {

namespace {

enum class Fate { Replaced, Unchanged, NoExchangeFile, Refused, Failed };

struct Outcome {
  Fate fate = Fate::Unchanged;
  std::string message;
  std::vector<std::string> warnings;
  std::size_t texts = 0;
  std::size_t changed = 0;
};

// Scripts of one folder that are replaced together: one wait for the disk instead of one each.
struct Group {
  std::size_t begin;
  std::size_t end;
};
constexpr std::size_t kMostInGroup = 64;  // each keeps a file open

std::vector<Group> groupsOf(const std::vector<Script>& scripts) {
  std::vector<Group> groups;
  for (std::size_t i = 0; i < scripts.size(); ++i) {
    const bool same = !groups.empty() && i - groups.back().begin < kMostInGroup &&
                      folderOf(scripts[groups.back().begin].path) == folderOf(scripts[i].path);
    if (!same) groups.push_back({i, i});
    groups.back().end = i + 1;
  }
  return groups;
}

class TreeImport {
 public:
  TreeImport(Session& session, const ImportOptions& options)
      : session_(session), options_(options), scripts_(collectScripts(session, options.paths)) {}

  void run();

 private:
  std::vector<Outcome> mergeGroup(const Group& group);
  Outcome mergeScript(const Script& script, std::string& bytes);
  void report(const Script& script, const Outcome& outcome);
  void findStrays();

  Session& session_;
  const ImportOptions& options_;
  std::vector<Script> scripts_;
  std::mutex foldersMutex_;
  std::set<std::string> folders_;  // with renames that are not on disk yet
  std::size_t fates_[5] = {};
  std::size_t changed_ = 0;
};

Outcome TreeImport::mergeScript(const Script& script, std::string& bytes) {
  thread_local std::string file;
  thread_local std::string work;
  thread_local std::string lxfFile;
  thread_local std::string lxfWork;
  Outcome outcome;
  if (script.path == "-") throw UsageError("standard input cannot be merged with --from");
  const std::string lxfPath = joinPath(options_.from, withExtension(script.relative, ".lxf"));
  if (session_.files->pathKind(lxfPath) != PathKind::File) {
    outcome.fate = Fate::NoExchangeFile;
    return outcome;
  }
  const std::string_view lxf = readWork(session_, lxfPath, lxfFile, lxfWork);
  const std::string_view scriptWork = readWork(session_, script.path, file, work);
  const auto refuse = [&](std::string_view why) {
    outcome.fate = Fate::Refused;
    outcome.message = fmt::format("{}: left alone: {}", shownName(script.path), why);
    return outcome;
  };
  const ExchangeFile cut = cutExchangeFile(lxf);
  std::size_t texts = 0;
  forEachRecordText(scriptWork, *session_.lists, [&](std::string_view, std::string_view) { ++texts; });
  const std::string why = whyNoFit(cut, texts);
  if (!why.empty()) {
    const std::string told = fmt::format("{}: {}", shownName(lxfPath), why);
    if (!options_.force) return refuse(told);
    outcome.warnings.push_back(told);
  }
  if (isUtf8InAnotherPage(session_.codec->page(), lxfFile, file)) {
    outcome.warnings.push_back(fmt::format("{}: {}", shownName(lxfPath), kUtf8InAnotherPage));
  }
  if (lxf.empty()) return outcome;  // a script without texts, or forced with nothing to merge

  const bool likeWindow = options_.likeWindow;
  const MergeWay way{.keepEol = options_.eol.empty() ? !likeWindow : options_.eol == "keep", .keepCodes = !likeWindow};
  Merge merge;
  try {
    merge = mergeWork(*session_.lists, scriptWork, lxf, lxfPath, way);
  } catch (const Failure& failure) {
    return refuse(shown(failure.description()));
  }
  for (std::size_t i = 0; i < cut.records.size() && i < texts; ++i) {
    const char* const what = whatSpoilsScan(cut.records[i].text);
    if (what != nullptr) outcome.warnings.push_back(fmt::format("{}:{}: {}", shownName(lxfPath), i + 1, what));
  }
  if (merge.withoutCodes > 0 && !likeWindow) {
    outcome.warnings.push_back(fmt::format("{}: {} lost all colour codes by translation", shownName(script.path),
                                           counted(merge.withoutCodes, "text")));
  }
  outcome.texts = merge.texts;
  outcome.changed = merge.changed;
  bytes = session_.codec->toFile(merge.work, lxfFile);
  outcome.fate = bytes == file ? Fate::Unchanged : Fate::Replaced;
  return outcome;
}

std::vector<Outcome> TreeImport::mergeGroup(const Group& group) {
  std::vector<Outcome> outcomes(group.end - group.begin);
  Replacements replacements(*session_.files, options_.backup);
  std::vector<std::size_t> staged;
  for (std::size_t i = group.begin; i < group.end && !interrupted(); ++i) {
    Outcome& outcome = outcomes[i - group.begin];
    const auto failure = attempt([&] {
      std::string bytes;
      outcome = mergeScript(scripts_[i], bytes);
      if (outcome.fate == Fate::Replaced && !options_.dryRun) {
        replacements.stage(scripts_[i].path, bytes);
        staged.push_back(i - group.begin);
      }
    });
    if (failure) {
      outcome.fate = Fate::Failed;
      outcome.message = shown(failure->description());
    }
  }
  if (staged.empty()) return outcomes;
  const std::vector<std::u16string> failures = replacements.commit();
  for (std::size_t i = 0; i < staged.size(); ++i) {
    if (failures[i].empty()) {
      const std::lock_guard lock(foldersMutex_);
      folders_.insert(folderOf(scripts_[group.begin + staged[i]].path));
    } else {
      outcomes[staged[i]].fate = Fate::Failed;
      outcomes[staged[i]].message = shown(failures[i]);
    }
  }
  return outcomes;
}

void TreeImport::report(const Script& script, const Outcome& outcome) {
  ++fates_[static_cast<std::size_t>(outcome.fate)];
  for (const std::string& warning : outcome.warnings) session_.console.warning(warning);
  const bool told = interrupted() && outcome.message.starts_with("Interrupted");  // once, at the end
  if ((outcome.fate == Fate::Refused || outcome.fate == Fate::Failed) && !told) {
    session_.console.error(outcome.message);
  }
  if (outcome.fate != Fate::Replaced) return;
  changed_ += outcome.changed;
  if (options_.dryRun) {
    session_.console.note(fmt::format("{}: {} of {} would change{}", shownName(script.path), outcome.changed,
                                      counted(outcome.texts, "text"), outcome.changed == 0 ? "; line ends only" : ""));
  }
}

// Exchange files that no script asked for: a renamed script, most likely.
void TreeImport::findStrays() {
  std::set<std::string> wanted;
  for (const Script& script : scripts_) wanted.insert(withExtension(script.relative, ".lxf"));
  std::size_t strays = 0;
  for (const std::string& relative : session_.files->filesBelow(
           options_.from, [](const std::string&) { return true; },
           [](const std::string& name) { return name.size() > 4 && name.compare(name.size() - 4, 4, ".lxf") == 0; })) {
    if (wanted.count(relative) != 0) continue;
    if (++strays <= 5)
      session_.console.warning(fmt::format("{}: no script for it", shownName(joinPath(options_.from, relative))));
  }
  if (strays > 5) session_.console.warning(fmt::format("and {} more without a script", strays - 5));
}

void TreeImport::run() {
  if (session_.files->pathKind(options_.from) != PathKind::Folder) {
    throw Failure(u"No such folder: '" + fromUtf8(options_.from) + u"'");
  }
  const std::vector<Group> groups = groupsOf(scripts_);
  runOrdered<std::vector<Outcome>>(
      groups.size(), session_.jobs, [&](std::size_t i) { return mergeGroup(groups[i]); },
      [&](std::size_t i, std::vector<Outcome>&& outcomes) {
        for (std::size_t k = 0; k < outcomes.size(); ++k) report(scripts_[groups[i].begin + k], outcomes[k]);
        session_.console.progress(groups[i].end, scripts_.size());
        return true;
      });
  flushFolders(session_, folders_);
  if (interrupted()) return session_.console.error("Interrupted; every script is the old or the new one");
  const auto count = [&](Fate fate) { return fates_[static_cast<std::size_t>(fate)]; };
  // A whole tree has scripts that nobody translates; a folder of exchange files is seldom left over.
  if (session_.include.empty() && session_.exclude.empty()) findStrays();
  session_.console.note(
      fmt::format("{}{} {} ({} changed), {} unchanged, {} without exchange file, {} left alone, {} failed",
                  options_.dryRun ? "dry run: " : "", counted(count(Fate::Replaced), "script"),
                  options_.dryRun ? "would be written" : "written", counted(changed_, "text"), count(Fate::Unchanged),
                  count(Fate::NoExchangeFile), count(Fate::Refused), count(Fate::Failed)));
}

}  // namespace

void importTree(Session& session, const ImportOptions& options) { TreeImport(session, options).run(); }

}  // namespace dravenna

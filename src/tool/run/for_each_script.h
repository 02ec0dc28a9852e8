#pragma once

#include <algorithm>
#include <functional>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/failure.h"
#include "tool/run/ordered_pool.h"
#include "tool/run/session.h"

namespace dravenna {

// What a thread reads its scripts into, again and again.
struct Buffers {
  std::string file, work;            // of the script
  std::string otherFile, otherWork;  // of what stands beside it
  std::string out;
};

// What came of one script: a result, or why there is none.
template <class Result>
struct Attempted {
  std::optional<Result> result;
  std::string error;
};

// Scripts begin to end - 1 of a run.
struct ScriptGroup {
  std::size_t begin;
  std::size_t end;
};

// The loop of both functions below: work(group, buffers) gives what came of each script of the group.
template <class Result>
bool forEachGroup(Session& session, const std::vector<Script>& scripts, const std::vector<ScriptGroup>& groups,
                  const std::function<std::vector<Attempted<Result>>(ScriptGroup, Buffers&)>& work,
                  const std::function<bool(const Script&, Result&&)>& take) {
  bool allWell = true;
  const bool whole = runOrdered<std::vector<Attempted<Result>>>(
      groups.size(), session.jobs,
      [&](std::size_t i) {
        thread_local Buffers buffers;
        return work(groups[i], buffers);
      },
      [&](std::size_t i, std::vector<Attempted<Result>>&& group) {
        bool goOn = true;
        for (std::size_t k = 0; k < group.size() && goOn; ++k) {
          if (group[k].result) {
            goOn = take(scripts[groups[i].begin + k], std::move(*group[k].result));
          } else {
            if (!group[k].error.empty()) session.console.error(group[k].error);
            allWell = false;
          }
        }
        session.console.progress(groups[i].end, scripts.size());
        return goOn;
      });
  session.console.endProgress();
  return whole && allWell;
}

// Scripts in their order, at most so many together; with `byFolder` those of one folder.
std::vector<ScriptGroup> groupsOf(const std::vector<Script>& scripts, std::size_t most, bool byFolder);

// Tries work(i) for each script of the group, up to an interrupt.
template <class Result>
std::vector<Attempted<Result>> attemptEach(ScriptGroup group, const std::function<Result(std::size_t)>& work) {
  std::vector<Attempted<Result>> done;
  for (std::size_t i = group.begin; i < group.end && !interrupted(); ++i) {
    Attempted<Result>& one = done.emplace_back();
    const auto failure = attempt([&] { one.result.emplace(work(i)); });
    if (failure) one.error = shown(failure->description());
  }
  return done;
}

// Runs work(script, buffers) for each script on the session's threads and hands each result to take(script, result) on
// the calling thread, in order. A script whose work fails is told and sets the exit status; the others go on. Ends
// early when take() gives false or the process was interrupted. Gives whether every script was done. Where work makes a
// file for each, `makesFiles` keeps threads from waiting for each other's folder; its results should be small.
template <class Result>
bool forEachScript(Session& session, const std::vector<Script>& scripts,
                   const std::function<Result(const Script&, Buffers&)>& work,
                   const std::function<bool(const Script&, Result&&)>& take, bool makesFiles = false) {
  // So many together that threads seldom wait for each other, and enough groups for all threads.
  const std::size_t enough = scripts.size() / (std::size_t{8} * session.jobs);
  const std::size_t most = std::clamp<std::size_t>(enough, 1, makesFiles ? 128 : 32);
  return forEachGroup<Result>(
      session, scripts, groupsOf(scripts, most, makesFiles),
      [&](ScriptGroup group, Buffers& buffers) {
        return attemptEach<Result>(group, [&](std::size_t i) { return work(scripts[i], buffers); });
      },
      take);
}

// The same for work that may give its script new bytes, in `bytes`. These take the place of the old ones before
// take(), with one wait for the disk a group instead of one a script, unless it is a dry run. A script that keeps its
// old bytes because it cannot be replaced has failed; those that an interrupt keeps are not told.
template <class Result>
bool rewriteEachScript(Session& session, const std::vector<Script>& scripts, const std::string& backup, bool dryRun,
                       const std::function<Result(const Script&, Buffers&, std::optional<std::string>& bytes)>& work,
                       const std::function<bool(const Script&, Result&&)>& take) {
  constexpr std::size_t kMostOpen = 64;  // new files at a time
  std::mutex mutex;
  std::set<std::string> folders;  // with renames that are not on disk yet
  const bool whole = forEachGroup<Result>(
      session, scripts, groupsOf(scripts, kMostOpen, true),
      [&](ScriptGroup group, Buffers& buffers) {
        Replacements replacements(*session.files, backup);
        std::vector<std::size_t> staged;
        std::vector<Attempted<Result>> done = attemptEach<Result>(group, [&](std::size_t i) {
          std::optional<std::string> bytes;
          Result result = work(scripts[i], buffers, bytes);
          if (bytes && !dryRun) {
            replacements.stage(scripts[i].path, *bytes);
            staged.push_back(i - group.begin);
          }
          return result;
        });
        if (staged.empty()) return done;
        const std::vector<std::u16string> failures = replacements.commit();
        const std::lock_guard lock(mutex);
        for (std::size_t i = 0; i < staged.size(); ++i) {
          if (failures[i].empty()) {
            folders.insert(folderOf(scripts[group.begin + staged[i]].path));
          } else {
            const bool told = interrupted() && failures[i].starts_with(u"Interrupted");  // once, by the verb
            done[staged[i]] = {std::nullopt, told ? std::string() : shown(failures[i])};
          }
        }
        return done;
      },
      take);
  flushFolders(session, folders);
  return whole;
}

}  // namespace dravenna

#pragma once

#include <functional>
#include <optional>
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

// Runs work(script, buffers) for each script on the session's threads and hands each result to take(script, result) on
// the calling thread, in order. A script whose work fails is told and sets the exit status; the others go on. Ends
// early when take() gives false or the process was interrupted. Gives whether every script was done.
template <class Result>
bool forEachScript(Session& session, const std::vector<Script>& scripts,
                   const std::function<Result(const Script&, Buffers&)>& work,
                   const std::function<bool(const Script&, Result&&)>& take) {
  struct Outcome {
    std::optional<Result> result;
    std::string error;
  };
  std::size_t done = 0;
  bool allWell = true;
  const bool whole = runOrdered<Outcome>(
      scripts.size(), session.jobs,
      [&](std::size_t i) {
        thread_local Buffers buffers;
        Outcome outcome;
        const auto failure = attempt([&] { outcome.result.emplace(work(scripts[i], buffers)); });
        if (failure) outcome.error = shown(failure->description());
        return outcome;
      },
      [&](std::size_t i, Outcome&& outcome) {
        bool goOn = true;
        if (outcome.result) {
          goOn = take(scripts[i], std::move(*outcome.result));
        } else {
          session.console.error(outcome.error);
          allWell = false;
        }
        session.console.progress(++done, scripts.size());
        return goOn;
      });
  session.console.endProgress();
  return whole && allWell;
}

}  // namespace dravenna

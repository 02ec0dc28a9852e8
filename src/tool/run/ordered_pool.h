#pragma once

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "platform/terminal.h"

namespace dravenna {

// Runs work(i) for i from 0 to count - 1 on `jobs` threads and hands each result to take(i, result) on the calling
// thread, in order. Workers never run more than a few items ahead of take(), so results do not pile up. An exception
// of work() or take() comes out of here. Ends early, with false, when take() gives false or the process was
// interrupted.
template <class Result>
bool runOrdered(std::size_t count, unsigned jobs, const std::function<Result(std::size_t)>& work,
                const std::function<bool(std::size_t, Result&&)>& take) {
  if (jobs <= 1 || count <= 1) {
    for (std::size_t i = 0; i < count; ++i) {
      if (interrupted() || !take(i, work(i))) return false;
    }
    return true;
  }

  struct Slot {
    std::optional<Result> result;
    std::exception_ptr failure;
    bool done = false;
  };
  const std::size_t window = std::min<std::size_t>(count, std::size_t{4} * jobs);
  std::vector<Slot> slots(window);
  std::mutex mutex;
  std::condition_variable finished;
  std::condition_variable roomMade;
  std::size_t started = 0;
  std::size_t taken = 0;
  bool stop = false;

  const auto worker = [&] {
    std::unique_lock lock(mutex);
    for (;;) {
      roomMade.wait(lock, [&] { return stop || started == count || started < taken + window; });
      if (stop || started == count) return;
      const std::size_t item = started++;
      lock.unlock();
      Slot slot;
      try {
        if (!interrupted()) slot.result.emplace(work(item));
      } catch (...) {
        slot.failure = std::current_exception();
      }
      slot.done = true;
      lock.lock();
      slots[item % window] = std::move(slot);
      if (item == taken) finished.notify_one();
    }
  };
  std::vector<std::thread> threads;
  const auto end = [&] {
    {
      const std::lock_guard lock(mutex);
      stop = true;
    }
    roomMade.notify_all();
    for (std::thread& thread : threads) thread.join();
  };

  bool whole = true;
  try {
    for (unsigned i = 0; i < std::min<std::size_t>(jobs, count); ++i) threads.emplace_back(worker);
    for (std::size_t item = 0; item < count && whole; ++item) {
      Slot slot;
      {
        std::unique_lock lock(mutex);
        finished.wait(lock, [&] { return slots[item % window].done; });
        slot = std::move(slots[item % window]);
        slots[item % window] = Slot{};
        taken = item + 1;
      }
      roomMade.notify_one();
      if (slot.failure) std::rethrow_exception(slot.failure);
      whole = slot.result.has_value() && take(item, std::move(*slot.result)) && !interrupted();
    }
  } catch (...) {
    end();
    throw;
  }
  end();
  return whole;
}

}  // namespace dravenna

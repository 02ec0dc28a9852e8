#pragma once

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <tuple>

#include "platform/posix/system_calls.h"

namespace dravenna {

// The system with one call that goes wrong, or in which the process is killed.
class FaultyCalls : public posix::SystemCalls {
 public:
  enum class Fault { None, Error, Interrupted, ShortWrite, KillBefore, KillAfter };

  FaultyCalls() = default;
  // The call number `at`, from 0, goes wrong; `error` is its errno. Only the calls count that can go wrong in this way.
  FaultyCalls(Fault fault, int at, int error = EIO) : fault_(fault), left_(at), error_(error) {}

  bool happened() const { return !failed_.empty(); }
  const std::string& failed() const { return failed_; }  // name of the call
  bool killed() const { return failed_ == kKill; }
  bool onDisk() const { return !written_ && !renamed_; }  // a flush came behind the last write and the last rename

  // Runs `act`, in a process of its own if that is to be killed. `act` gives whether it told of a failure, and so does
  // this; one that was killed tells of nothing.
  bool attempt(const std::function<bool()>& act) {
    if (!kills()) {
      const bool told = act();
      EXPECT_TRUE(!told || fault_ == Fault::Error) << "an interruption or a short write is no failure";
      return told;
    }
    const pid_t child = ::fork();
    if (child == 0) {
      const bool told = act();
      std::fflush(nullptr);
      ::_exit(told || testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    if (WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) failed_ = kKill;
    EXPECT_TRUE(killed() || status == 0) << "status " << status;
    return false;
  }

  ssize_t write(int file, const void* from, std::size_t size) override {
    if ((fault_ == Fault::KillBefore || fault_ == Fault::Error) && left_ == 0)
      static_cast<void>(::write(file, from, size / 2));
    if (fault_ != Fault::ShortWrite || size < 2 || left_-- != 0) return SystemCalls::write(file, from, size);
    failed_ = "write";
    return SystemCalls::write(file, from, size / 2);
  }

 private:
  static constexpr char kKill[] = "kill";

  bool kills() const { return fault_ == Fault::KillBefore || fault_ == Fault::KillAfter; }
  bool canFail(const std::string& name) const {
    static const std::set<std::string> interruptible{"open", "close", "read", "write", "fsync", "flock"};
    if (fault_ == Fault::Interrupted) return interruptible.contains(name);
    // Where something cannot be removed it stays behind, and rightly so.
    return fault_ == Fault::Error && name != "unlink";
  }

  ssize_t make(const char* name, const std::function<ssize_t()>& call) override {
    const std::string_view what = name;
    EXPECT_TRUE(what != "rename" || !written_) << "a file takes its place before it is on disk";
    written_ = what == "write" || (written_ && what != "fsync");
    renamed_ = what == "rename" || (renamed_ && what != "fsync");
    if ((!kills() && !canFail(name)) || left_-- != 0) return call();
    failed_ = name;
    if (fault_ == Fault::KillBefore) ::kill(::getpid(), SIGKILL);
    if (fault_ == Fault::KillAfter || failed_ == "close") call();  // a file is closed even when that fails
    if (fault_ == Fault::KillAfter) ::kill(::getpid(), SIGKILL);
    errno = fault_ == Fault::Interrupted ? EINTR : error_;
    return -1;
  }

  Fault fault_ = Fault::None;
  int left_ = 0;
  int error_ = EIO;
  bool written_ = false;
  bool renamed_ = false;
  std::string failed_;
};

#ifdef DRAVENNA_ASAN
constexpr int kCallStep = 3;  // slow: each call fails with one of the errors only
#else
constexpr int kCallStep = 1;
#endif

// For each way to go wrong: runs `once` with the first call going wrong, then the second and so on, until it tells that
// no call did.
inline void atEachCall(const std::function<bool(const FaultyCalls& calls)>& once) {
  using Fault = FaultyCalls::Fault;
  const std::tuple<const char*, Fault, int> ways[] = {
      {"EIO", Fault::Error, EIO},           {"EACCES", Fault::Error, EACCES},
      {"EINVAL", Fault::Error, EINVAL},     {"half a write", Fault::ShortWrite, 0},
      {"EINTR", Fault::Interrupted, 0},     {"killed before", Fault::KillBefore, 0},
      {"killed after", Fault::KillAfter, 0}};
  for (int way = 0; way < static_cast<int>(std::size(ways)); ++way) {
    const auto& [name, fault, error] = ways[way];
    bool happened = true;
    for (int at = way % kCallStep; happened && !testing::Test::HasFailure(); at += kCallStep) {
      SCOPED_TRACE(std::string(name) + ", call number " + std::to_string(at));
      happened = once(FaultyCalls(fault, at, error));
      EXPECT_TRUE(happened || at > 0 || fault == Fault::ShortWrite) << "there was no call";
    }
  }
}

}  // namespace dravenna

#pragma once

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <functional>
#include <string>
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

  int open(const char* path, int flags, mode_t mode) override {
    return make("open", kBlocks, [&] { return SystemCalls::open(path, flags, mode); });
  }
  int close(int file) override {
    return make("close", kBlocks | kTakesEffect, [&] { return SystemCalls::close(file); });
  }
  ssize_t read(int file, void* to, std::size_t size) override {
    return make("read", kBlocks, [&] { return SystemCalls::read(file, to, size); });
  }
  ssize_t write(int file, const void* from, std::size_t size) override {
    const auto some = [&](std::size_t bytes) { return SystemCalls::write(file, from, bytes); };
    if (fault_ == Fault::KillBefore && left_ == 0) some(size / 2);
    if (fault_ == Fault::ShortWrite && size > 1 && left_-- == 0) {
      failed_ = "write";
      return some(size / 2);
    }
    return make("write", kBlocks, [&] { return some(size); });
  }
  int fsync(int file) override {
    return make("fsync", kBlocks, [&] { return SystemCalls::fsync(file); });
  }
  int startFlush(int file) override {
    return make("startFlush", 0, [&] { return SystemCalls::startFlush(file); });
  }
  int ftruncate(int file, off_t size) override {
    return make("ftruncate", kBlocks, [&] { return SystemCalls::ftruncate(file, size); });
  }
  int flock(int file, int operation) override {
    return make("flock", kBlocks, [&] { return SystemCalls::flock(file, operation); });
  }
  int fstat(int file, struct stat& to) override {
    return make("fstat", 0, [&] { return SystemCalls::fstat(file, to); });
  }
  int stat(const char* path, struct stat& to) override {
    return make("stat", 0, [&] { return SystemCalls::stat(path, to); });
  }
  int lstat(const char* path, struct stat& to) override {
    return make("lstat", 0, [&] { return SystemCalls::lstat(path, to); });
  }
  int mayWrite(const char* path) override {
    return make("mayWrite", 0, [&] { return SystemCalls::mayWrite(path); });
  }
  int realpath(const char* path, std::string& to) override {
    return make("realpath", 0, [&] { return SystemCalls::realpath(path, to); });
  }
  int readlink(const char* path, std::string& to) override {
    return make("readlink", 0, [&] { return SystemCalls::readlink(path, to); });
  }
  int fchmod(int file, mode_t mode) override {
    return make("fchmod", 0, [&] { return SystemCalls::fchmod(file, mode); });
  }
  int fchown(int file, uid_t user, gid_t group) override {
    return make("fchown", 0, [&] { return SystemCalls::fchown(file, user, group); });
  }
  int rename(const char* from, const char* to) override {
    return make("rename", 0, [&] { return SystemCalls::rename(from, to); });
  }
  int link(const char* file, const char* name) override {
    return make("link", 0, [&] { return SystemCalls::link(file, name); });
  }
  int unlink(const char* path) override {
    return make("unlink", kIsCleaning, [&] { return SystemCalls::unlink(path); });
  }
  int mkdir(const char* path, mode_t mode) override {
    return make("mkdir", 0, [&] { return SystemCalls::mkdir(path, mode); });
  }

 private:
  static constexpr int kBlocks = 1;       // a signal can interrupt it
  static constexpr int kTakesEffect = 2;  // even when it fails
  static constexpr int kIsCleaning = 4;   // when it fails something stays behind, and rightly so

  static constexpr char kKill[] = "kill";

  bool kills() const { return fault_ == Fault::KillBefore || fault_ == Fault::KillAfter; }

  template <typename Call>
  auto make(const char* name, int kind, Call call) -> decltype(call()) {
    const bool fails = (fault_ == Fault::Error && (kind & kIsCleaning) == 0) ||
                       (fault_ == Fault::Interrupted && (kind & kBlocks) != 0);
    if ((!kills() && !fails) || left_-- != 0) return call();
    failed_ = name;
    if (fault_ == Fault::KillBefore) ::kill(::getpid(), SIGKILL);
    if (fault_ == Fault::KillAfter || (kind & kTakesEffect) != 0) call();
    if (fault_ == Fault::KillAfter) ::kill(::getpid(), SIGKILL);
    errno = fault_ == Fault::Interrupted ? EINTR : error_;
    return -1;
  }

  Fault fault_ = Fault::None;
  int left_ = 0;
  int error_ = EIO;
  std::string failed_;
};

// For each way to go wrong: runs `once` with the first call going wrong, then the second and so on, until it tells that
// no call did.
inline void atEachCall(const std::function<bool(const FaultyCalls& calls)>& once) {
  using Fault = FaultyCalls::Fault;
  const std::tuple<const char*, Fault, int> ways[] = {{"EIO", Fault::Error, EIO},
                                                      {"EACCES", Fault::Error, EACCES},
                                                      {"EINVAL", Fault::Error, EINVAL},
                                                      {"EINTR", Fault::Interrupted, 0},
                                                      {"half a write", Fault::ShortWrite, 0},
                                                      {"killed before", Fault::KillBefore, 0},
                                                      {"killed after", Fault::KillAfter, 0}};
  for (const auto& [name, fault, error] : ways) {
    bool happened = true;
    for (int at = 0; happened && !testing::Test::HasFailure(); ++at) {
      SCOPED_TRACE(std::string(name) + ", call number " + std::to_string(at));
      happened = once(FaultyCalls(fault, at, error));
      EXPECT_TRUE(happened || at > 0 || fault == Fault::ShortWrite) << "there was no call";
    }
  }
}

}  // namespace dravenna

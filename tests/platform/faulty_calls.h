#pragma once

#include <string>

#include "platform/posix/system_calls.h"

namespace dravenna {

// The system with one call that goes wrong.
class FaultyCalls : public posix::SystemCalls {
 public:
  enum class Fault { Error, Interrupted, ShortWrite };

  // The call number `at`, from 0, goes wrong; `error` is its errno.
  FaultyCalls(Fault fault, int at, int error = EIO) : fault_(fault), left_(at), error_(error) {}

  bool happened() const { return !failed_.empty(); }
  const std::string& failed() const { return failed_; }  // name of the call

  int open(const char* path, int flags, mode_t mode) override {
    return fails("open") ? -1 : SystemCalls::open(path, flags, mode);
  }
  int close(int file) override {
    const int result = SystemCalls::close(file);
    return fails("close") ? -1 : result;
  }
  ssize_t read(int file, void* to, std::size_t size) override {
    return fails("read") ? -1 : SystemCalls::read(file, to, size);
  }
  ssize_t write(int file, const void* from, std::size_t size) override {
    if (fault_ == Fault::ShortWrite && size > 1 && left_-- == 0) {
      failed_ = "write";
      return SystemCalls::write(file, from, size / 2);
    }
    return fails("write") ? -1 : SystemCalls::write(file, from, size);
  }
  int fsync(int file) override { return fails("fsync") ? -1 : SystemCalls::fsync(file); }
  int flock(int file, int operation) override { return fails("flock") ? -1 : SystemCalls::flock(file, operation); }

  // These are never interrupted.
  int fstat(int file, struct stat& to) override { return refuses("fstat") ? -1 : SystemCalls::fstat(file, to); }
  int stat(const char* path, struct stat& to) override { return refuses("stat") ? -1 : SystemCalls::stat(path, to); }
  int lstat(const char* path, struct stat& to) override { return refuses("lstat") ? -1 : SystemCalls::lstat(path, to); }
  int mayWrite(const char* path) override { return refuses("mayWrite") ? -1 : SystemCalls::mayWrite(path); }
  int realpath(const char* path, std::string& to) override {
    return refuses("realpath") ? -1 : SystemCalls::realpath(path, to);
  }
  int readlink(const char* path, std::string& to) override {
    return refuses("readlink") ? -1 : SystemCalls::readlink(path, to);
  }
  int fchmod(int file, mode_t mode) override { return refuses("fchmod") ? -1 : SystemCalls::fchmod(file, mode); }
  int fchown(int file, uid_t user, gid_t group) override {
    return refuses("fchown") ? -1 : SystemCalls::fchown(file, user, group);
  }
  int rename(const char* from, const char* to) override {
    return refuses("rename") ? -1 : SystemCalls::rename(from, to);
  }
  int mkdir(const char* path, mode_t mode) override { return refuses("mkdir") ? -1 : SystemCalls::mkdir(path, mode); }

 private:
  bool refuses(const char* name) { return fault_ == Fault::Error && fails(name); }
  bool fails(const char* name) {
    if (fault_ == Fault::ShortWrite || left_-- != 0) return false;
    failed_ = name;
    errno = fault_ == Fault::Interrupted ? EINTR : error_;
    return true;
  }

  Fault fault_;
  int left_;
  int error_;
  std::string failed_;
};

}  // namespace dravenna

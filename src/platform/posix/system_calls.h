#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <cerrno>
#include <functional>
#include <string>
#include <string_view>

#include "platform/failure.h"

namespace dravenna::posix {

// Every call to the system that touches files; only folders are listed without it. Results and errno are those of the
// system. A test puts its own in place to make single calls fail.
class SystemCalls {
 public:
  virtual ~SystemCalls() = default;

  int open(const char* path, int flags, mode_t mode);
  int close(int file);
  virtual ssize_t read(int file, void* to, std::size_t size);
  virtual ssize_t write(int file, const void* from, std::size_t size);
  int fsync(int file);
  int startFlush(int file);  // lets the system begin to bring the file to disk, where it can be asked to
  virtual int fstat(int file, struct stat& status);
  int stat(const char* path, struct stat& status);
  int lstat(const char* path, struct stat& status);
  int mayWrite(const char* path);  // access for writing, by the effective user
  int realpath(const char* path, std::string& resolved);
  int readlink(const char* path, std::string& target);
  int fchmod(int file, mode_t mode);
  int fchown(int file, uid_t user, gid_t group);
  int rename(const char* from, const char* to);
  int link(const char* file, const char* name);
  int unlink(const char* path);
  int mkdir(const char* path, mode_t mode);
  int flock(int file, int operation);

 protected:
  // Makes a call, which gives its result; `name` is that of the function above.
  virtual ssize_t make(const char* name, const std::function<ssize_t()>& call);

 private:
  template <typename Function, typename... Arguments>
  auto made(const char* name, Function function, Arguments... arguments) {
    return static_cast<decltype(function(arguments...))>(make(name, [&] { return function(arguments...); }));
  }
};

SystemCalls& realSystemCalls();

// Runs a call again as long as a signal interrupts it.
template <typename Call>
auto uninterrupted(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

// A failure with its errno. The description is the system's word for it, in English, and the path in quotes.
class SystemFailure : public Failure {
 public:
  SystemFailure(int error, std::string_view path);
  int error() const { return error_; }

 private:
  int error_;
};

// Throws SystemFailure with the present errno.
[[noreturn]] void failWithErrno(std::string_view path);

// An open file. Closed by the destructor without a failure.
class OpenFile {
 public:
  OpenFile() = default;
  // Throws SystemFailure. `shownPath` is the path that failures name.
  OpenFile(SystemCalls& calls, const std::string& path, int flags, mode_t mode, std::string shownPath);
  OpenFile(OpenFile&& other) noexcept;
  OpenFile& operator=(OpenFile&& other) noexcept;
  ~OpenFile() { closeQuietly(); }

  bool isOpen() const { return file_ >= 0; }
  int number() const { return file_; }

  // These throw SystemFailure. `read` gives 0 at the end; `writeAll` stops only at a failure.
  std::size_t read(void* to, std::size_t size);
  void writeAll(std::string_view bytes);
  void startFlush() { calls_->startFlush(file_); }  // fails silently: sync() tells
  void sync();
  struct stat status();
  void close();
  [[noreturn]] void fail(int error) const;

  void closeQuietly() noexcept;

 private:
  SystemCalls* calls_ = nullptr;
  std::string shownPath_;
  int file_ = -1;
};

}  // namespace dravenna::posix

#include "platform/posix/system_calls.h"

#include <fcntl.h>
#include <locale.h>
#include <sys/file.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "text/text.h"

namespace dravenna::posix {

ssize_t SystemCalls::make(const char*, const std::function<ssize_t()>& call) { return call(); }

int SystemCalls::open(const char* path, int flags, mode_t mode) {
  return made("open", ::open, path, flags | O_CLOEXEC, mode);
}
int SystemCalls::close(int file) { return made("close", ::close, file); }
ssize_t SystemCalls::read(int file, void* to, std::size_t size) { return made("read", ::read, file, to, size); }
ssize_t SystemCalls::write(int file, const void* from, std::size_t size) {
  return made("write", ::write, file, from, size);
}
int SystemCalls::fsync(int file) { return made("fsync", ::fsync, file); }
int SystemCalls::fstat(int file, struct stat& status) { return made("fstat", ::fstat, file, &status); }
int SystemCalls::stat(const char* path, struct stat& status) { return made("stat", ::stat, path, &status); }
int SystemCalls::lstat(const char* path, struct stat& status) { return made("lstat", ::lstat, path, &status); }
int SystemCalls::mayWrite(const char* path) { return made("mayWrite", ::faccessat, AT_FDCWD, path, W_OK, AT_EACCESS); }
int SystemCalls::fchmod(int file, mode_t mode) { return made("fchmod", ::fchmod, file, mode); }
int SystemCalls::fchown(int file, uid_t user, gid_t group) { return made("fchown", ::fchown, file, user, group); }
int SystemCalls::rename(const char* from, const char* to) { return made("rename", ::rename, from, to); }
int SystemCalls::link(const char* file, const char* name) { return made("link", ::link, file, name); }
int SystemCalls::unlink(const char* path) { return made("unlink", ::unlink, path); }
int SystemCalls::mkdir(const char* path, mode_t mode) { return made("mkdir", ::mkdir, path, mode); }
int SystemCalls::flock(int file, int operation) { return made("flock", ::flock, file, operation); }

int SystemCalls::startFlush([[maybe_unused]] int file) {
#ifdef __linux__
  return made("startFlush", ::sync_file_range, file, off64_t{0}, off64_t{0}, unsigned{SYNC_FILE_RANGE_WRITE});
#else
  return 0;
#endif
}

int SystemCalls::realpath(const char* path, std::string& resolved) {
  return made("realpath", [&] {
    char* const found = ::realpath(path, nullptr);
    if (found == nullptr) return -1;
    resolved = found;
    std::free(found);
    return 0;
  });
}

int SystemCalls::readlink(const char* path, std::string& target) {
  char buffer[PATH_MAX];
  const ssize_t length = made("readlink", ::readlink, path, static_cast<char*>(buffer), sizeof buffer);
  if (length < 0) return -1;
  target.assign(buffer, static_cast<std::size_t>(length));
  return 0;
}

SystemCalls& realSystemCalls() {
  static SystemCalls calls;
  return calls;
}

namespace {

std::u16string describe(int error, std::string_view path) {
  // The text must not depend on the locale that the toolkit sets.
  static const locale_t plain = ::newlocale(LC_ALL_MASK, "C", nullptr);
  const char* const word = plain != nullptr ? ::strerror_l(error, plain) : nullptr;
  std::u16string text = word != nullptr ? fromUtf8(word) : u"System error " + decimal(error);
  if (!path.empty()) text += u": '" + fromUtf8(path) + u"'";
  return text;
}

}  // namespace

SystemFailure::SystemFailure(int error, std::string_view path) : Failure(describe(error, path)), error_(error) {}

void failWithErrno(std::string_view path) { throw SystemFailure(errno, path); }

OpenFile::OpenFile(SystemCalls& calls, const std::string& path, int flags, mode_t mode, std::string shownPath)
    : calls_(&calls), shownPath_(std::move(shownPath)) {
  file_ = uninterrupted([&] { return calls.open(path.c_str(), flags, mode); });
  if (file_ < 0) failWithErrno(shownPath_);
}

OpenFile::OpenFile(OpenFile&& other) noexcept
    : calls_(other.calls_), shownPath_(std::move(other.shownPath_)), file_(std::exchange(other.file_, -1)) {}

OpenFile& OpenFile::operator=(OpenFile&& other) noexcept {
  if (this != &other) {
    closeQuietly();
    calls_ = other.calls_;
    shownPath_ = std::move(other.shownPath_);
    file_ = std::exchange(other.file_, -1);
  }
  return *this;
}

std::size_t OpenFile::read(void* to, std::size_t size) {
  const ssize_t count = uninterrupted([&] { return calls_->read(file_, to, size); });
  if (count < 0) failWithErrno(shownPath_);
  return static_cast<std::size_t>(count);
}

void OpenFile::writeAll(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = uninterrupted([&] { return calls_->write(file_, bytes.data(), bytes.size()); });
    if (count < 0) failWithErrno(shownPath_);
    if (count == 0) fail(EIO);
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

void OpenFile::sync() {
  if (uninterrupted([&] { return calls_->fsync(file_); }) < 0) failWithErrno(shownPath_);
}

struct stat OpenFile::status() {
  struct stat found {};
  if (calls_->fstat(file_, found) < 0) failWithErrno(shownPath_);
  return found;
}

void OpenFile::close() {
  // The number is free afterwards, whatever the result.
  const int file = std::exchange(file_, -1);
  if (file >= 0 && calls_->close(file) < 0 && errno != EINTR) failWithErrno(shownPath_);
}

void OpenFile::fail(int error) const { throw SystemFailure(error, shownPath_); }

void OpenFile::closeQuietly() noexcept {
  const int file = std::exchange(file_, -1);
  if (file >= 0) calls_->close(file);
}

}  // namespace dravenna::posix

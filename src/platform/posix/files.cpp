#include "platform/posix/files.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <random>

#include "platform/file_state.h"
#include "platform/system.h"
#include "text/path_names.h"
#include "text/text.h"

namespace dravenna {

std::string readBytes(std::u16string_view path) {
  posix::OpenFile file = posix::openForReading(posix::realSystemCalls(), posix::pathBytes(path));
  return posix::readWholeFile(file, std::string().max_size());
}

void replaceBytes(std::u16string_view path, std::string_view bytes) {
  posix::replaceFile(posix::realSystemCalls(), posix::pathBytes(path), bytes, {});
}

std::optional<FileState> fileState(std::u16string_view path) {
  const std::string bytes = toUtf8(path);
  struct stat status {};
  if (bytes.find('\0') != std::string::npos || posix::realSystemCalls().stat(bytes.c_str(), status) != 0) return {};
  constexpr std::int64_t kNanoseconds = 1'000'000'000;
  return FileState{status.st_dev, status.st_ino, static_cast<std::uint64_t>(status.st_size),
                   status.st_mtim.tv_sec * kNanoseconds + status.st_mtim.tv_nsec};
}

namespace posix {

namespace {

constexpr int kMostLinks = 40;
constexpr int kMostNames = 100;
constexpr int kMostBackups = 9999;

std::string newTemporaryName(const std::string& folder) {
  static std::atomic<unsigned> count{0};
  static const unsigned seed = std::random_device{}();
  return folder + "/.dravenna-" + std::to_string(::getpid()) + "-" + std::to_string(seed + count++) + ".tmp";
}

}  // namespace

std::string pathBytes(std::u16string_view path) {
  std::string bytes = toUtf8(path);
  // The system would take what stands before the NUL for the path.
  if (bytes.find('\0') != std::string::npos) throw SystemFailure(ENOENT, bytes);
  return bytes;
}

std::string folderOf(const std::string& path) {
  std::string folder = dravenna::folderOf(path);
  return folder.empty() ? "." : folder;
}

std::string resolveTarget(SystemCalls& calls, const std::string& path) {
  // Nothing to resolve for a new file; its folders are many calls.
  struct stat there {};
  const bool names = !path.empty() && path.back() != '/';
  if (names && calls.lstat(path.c_str(), there) < 0 && errno == ENOENT) return path;
  std::string at = path;
  for (int links = 0; links < kMostLinks; ++links) {
    std::string resolved;
    if (calls.realpath(at.c_str(), resolved) == 0) return resolved;
    if (errno != ENOENT) failWithErrno(path);
    struct stat status {};
    if (calls.lstat(at.c_str(), status) < 0) {
      if (errno != ENOENT || at.empty() || at.back() == '/') failWithErrno(path);
      if (calls.realpath(folderOf(at).c_str(), resolved) < 0) failWithErrno(path);
      return joinPath(resolved, fileNameOf(at));
    }
    // A link to a missing file: that file is meant.
    std::string link;
    if (!S_ISLNK(status.st_mode)) throw SystemFailure(ENOENT, path);
    if (calls.readlink(at.c_str(), link) < 0) failWithErrno(path);
    at = link.starts_with('/') ? link : joinPath(folderOf(at), link);
  }
  throw SystemFailure(ELOOP, path);
}

void makeFolders(SystemCalls& calls, const std::string& folder, mode_t mode) {
  struct stat status {};
  if (calls.stat(folder.c_str(), status) == 0) {
    if (!S_ISDIR(status.st_mode)) throw SystemFailure(ENOTDIR, folder);
    return;
  }
  if (errno != ENOENT || folder == folderOf(folder)) failWithErrno(folder);
  makeFolders(calls, folderOf(folder), mode);
  if (calls.mkdir(folder.c_str(), mode) < 0 && errno != EEXIST) failWithErrno(folder);
}

void syncFolder(OpenFile& folder) {
  try {
    folder.sync();
  } catch (const SystemFailure& failure) {
    if (failure.error() != EINVAL && failure.error() != ENOTSUP && failure.error() != EROFS) throw;
  }
}

OpenFile openForReading(SystemCalls& calls, const std::string& path) {
  // A pipe without a writer must not keep the caller waiting.
  OpenFile file(calls, path, O_RDONLY | O_NONBLOCK, 0, path);
  const mode_t mode = file.status().st_mode;
  if (S_ISDIR(mode)) throw SystemFailure(EISDIR, path);
  if (!S_ISREG(mode)) throw SystemFailure(EINVAL, path);
  return file;
}

std::string readWholeFile(OpenFile& file, std::size_t limit) {
  constexpr std::size_t kChunk = 65536;
  std::string bytes;
  for (;;) {
    const std::size_t size = bytes.size();
    bytes.resize(size + kChunk);
    const std::size_t count = file.read(bytes.data() + size, kChunk);
    bytes.resize(size + count);
    if (count == 0) return bytes;
    if (bytes.size() > limit) file.fail(EFBIG);
  }
}

std::optional<std::string> readIfThere(SystemCalls& calls, const std::string& path, std::size_t limit) {
  try {
    OpenFile file = openForReading(calls, path);
    return readWholeFile(file, limit);
  } catch (const SystemFailure& failure) {
    if (failure.error() == ENOENT) return std::nullopt;
    throw;
  }
}

FileReplacement::FileReplacement(SystemCalls& calls, const std::string& path, Options options)
    : calls_(calls), path_(path), shownPath_(fromUtf8(path)), target_(resolveTarget(calls, path)) {
  struct stat status {};
  const bool exists = calls_.stat(target_.c_str(), status) == 0;
  if (!exists && errno != ENOENT) failWithErrno(path_);
  if (exists) {
    if (S_ISDIR(status.st_mode)) throw SystemFailure(EISDIR, path_);
    if (!S_ISREG(status.st_mode)) throw SystemFailure(EINVAL, path_);
    if (calls_.mayWrite(target_.c_str()) < 0) failWithErrno(path_);
    // The superuser may write everything: what nobody is meant to write is refused all the same.
    if ((status.st_mode & 0222) == 0) throw SystemFailure(EACCES, path_);
  }
  try {
    if (options.flushesFolder) folder_ = OpenFile(calls_, folderOf(target_), O_RDONLY | O_DIRECTORY, 0, path_);
  } catch (const SystemFailure& failure) {
    // A folder may be open for writing and not for reading: then its flush is left out.
    if (failure.error() != EACCES) throw;
  }
  openTemporary(options, exists);
  try {
    if (exists) takeOver(status);
  } catch (...) {
    removeTemporary();
    throw;
  }
}

void FileReplacement::openTemporary(Options options, bool targetExists) {
  // Until it has the bits of the target, the new file is closed to all others.
  const mode_t mode = targetExists ? 0600 : options.newFileMode;
  for (int names = 1;; ++names) {
    std::string name = options.locked ? target_ + ".new" : newTemporaryName(folderOf(target_));
    try {
      file_ = OpenFile(calls_, name, O_WRONLY | O_CREAT | O_EXCL, mode, path_);
      temporary_ = std::move(name);
      return;
    } catch (const SystemFailure& failure) {
      if (failure.error() != EEXIST || names == kMostNames) throw;
      if (options.locked && calls_.unlink(name.c_str()) < 0) failWithErrno(path_);
    }
  }
}

void FileReplacement::takeOver(const struct stat& target) {
  mode_t bits = target.st_mode & 07777;
  const struct stat own = file_.status();
  const bool sameOwner = own.st_uid == target.st_uid && own.st_gid == target.st_gid;
  if (!sameOwner && calls_.fchown(file_.number(), target.st_uid, target.st_gid) < 0) {
    bits &= 0777;
    if (own.st_gid != target.st_gid) static_cast<void>(calls_.fchown(file_.number(), own.st_uid, target.st_gid));
  }
  if (calls_.fchmod(file_.number(), bits) < 0) failWithErrno(path_);
}

FileReplacement::~FileReplacement() { removeTemporary(); }

void FileReplacement::removeTemporary() noexcept {
  file_.closeQuietly();
  if (!temporary_.empty()) calls_.unlink(temporary_.c_str());
  temporary_.clear();
}

void FileReplacement::flush() {
  file_.sync();
  file_.close();
}

// The old file under a second name, as a copy where the file system has no links. Neither of them, unlike a rename,
// takes the place of another file.
void FileReplacement::backUp(const std::string& backup) {
  std::string name = backup;
  for (int number = 2; calls_.link(target_.c_str(), name.c_str()) != 0; ++number) {
    if (errno == ENOENT) return;  // there is no old file
    if (errno != EEXIST) {
      try {
        return copyTo(name);
      } catch (const SystemFailure& failure) {
        if (failure.error() != EEXIST) throw;
      }
    }
    if (number > kMostBackups) throw SystemFailure(EEXIST, name);
    name = backup + std::to_string(number);
  }
}

void FileReplacement::copyTo(const std::string& name) {
  OpenFile from = openForReading(calls_, target_);
  OpenFile copy(calls_, name, O_WRONLY | O_CREAT | O_EXCL, 0600, name);
  try {
    copy.writeAll(readWholeFile(from, std::string().max_size()));
    if (calls_.fchmod(copy.number(), from.status().st_mode & 0777) < 0) failWithErrno(name);
    copy.sync();
    copy.close();
  } catch (...) {
    calls_.unlink(name.c_str());
    throw;
  }
}

void FileReplacement::place(std::u16string_view backupSuffix) {
  if (!backupSuffix.empty()) backUp(target_ + toUtf8(backupSuffix));
  if (calls_.rename(temporary_.c_str(), target_.c_str()) < 0) failWithErrno(path_);
  temporary_.clear();
  if (folder_.isOpen()) syncFolder(folder_);
}

void replaceFile(SystemCalls& calls, const std::string& path, std::string_view bytes,
                 FileReplacement::Options options) {
  FileReplacement replacement(calls, path, options);
  replacement.write(bytes);
  replacement.flush();
  replacement.place();
}

}  // namespace posix

}  // namespace dravenna

#include "platform/tree_files.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <system_error>
#include <utility>

#include "platform/posix/files.h"
#include "platform/posix/tree_calls.h"

namespace dravenna {

namespace fs = std::filesystem;
using posix::failWithErrno;
using posix::OpenFile;
using posix::SystemCalls;
using posix::SystemFailure;

namespace {

SystemCalls* treeCalls = nullptr;

SystemCalls& calls() { return treeCalls != nullptr ? *treeCalls : posix::realSystemCalls(); }

void listFolder(const fs::path& folder, const std::string& relative,
                const std::function<bool(const std::string&)>& enter,
                const std::function<bool(const std::string&)>& take, std::vector<std::string>& out) {
  std::error_code error;
  fs::directory_iterator entries(folder, error);
  if (error) throw SystemFailure(error.value(), folder.native());
  for (; entries != fs::directory_iterator(); entries.increment(error)) {
    const fs::directory_entry& entry = *entries;
    std::string name = relative + entry.path().filename().native();
    const bool link = entry.is_symlink(error);
    if (entry.is_directory(error)) {
      if (!link && enter(name)) listFolder(entry.path(), name + "/", enter, take, out);
    } else if (entry.is_regular_file(error) && take(name)) {
      out.push_back(std::move(name));
    }
  }
  if (error) throw SystemFailure(error.value(), folder.native());
}

}  // namespace

void posix::setTreeCalls(SystemCalls& replacement) { treeCalls = &replacement; }

PathKind pathKind(const fs::path& path) {
  struct stat status {};
  if (calls().stat(path.c_str(), status) != 0) {
    if (errno == ENOENT || errno == ENOTDIR) return PathKind::Missing;
    failWithErrno(path.native());
  }
  return S_ISDIR(status.st_mode) ? PathKind::Folder : PathKind::File;
}

std::vector<std::string> filesBelow(const fs::path& folder, const std::function<bool(const std::string&)>& enter,
                                    const std::function<bool(const std::string&)>& take) {
  std::vector<std::string> out;
  listFolder(folder, {}, enter, take, out);
  std::sort(out.begin(), out.end());
  return out;
}

void readWhole(const fs::path& path, std::string& bytes) {
  OpenFile file(calls(), path.native(), O_RDONLY, 0, path.native());
  const struct stat status = file.status();
  if (S_ISDIR(status.st_mode)) throw SystemFailure(EISDIR, path.native());
  std::size_t filled = 0;
  bytes.resize(static_cast<std::size_t>(status.st_size) + 1);  // one more, to see the end without growing
  for (;;) {
    const std::size_t room = bytes.size() - filled;
    const std::size_t got = file.read(bytes.data() + filled, room);
    filled += got;
    if (got == 0 || (got < room && S_ISREG(status.st_mode))) break;
    if (filled == bytes.size()) bytes.resize(bytes.size() + bytes.size() / 2 + 65536);
  }
  bytes.resize(filled);
}

void writeWhole(const fs::path& path, std::string_view bytes) {
  // The old contents are cut off behind the new ones, not before: a file that was emptied and written again is brought
  // to disk at its close by some file systems, which makes a tree many times slower.
  OpenFile file(calls(), path.native(), O_WRONLY | O_CREAT, 0666, path.native());
  const struct stat old = file.status();
  const auto cutAt = [&](off_t end) {
    return !S_ISREG(old.st_mode) || old.st_size <= end ? 0 : ::ftruncate(file.number(), end);
  };
  try {
    file.writeAll(bytes);
  } catch (const Failure&) {
    static_cast<void>(cutAt(::lseek(file.number(), 0, SEEK_CUR)));
    throw;
  }
  if (cutAt(static_cast<off_t>(bytes.size())) != 0) failWithErrno(path.native());
  file.close();
}

void makeFolders(const fs::path& folder) {
  std::error_code error;
  if (!folder.empty()) fs::create_directories(folder, error);
  if (error) throw SystemFailure(error.value(), folder.native());
}

std::unique_ptr<FileReplacement> replaceTreeFile(const fs::path& path) {
  if (pathKind(path) == PathKind::Missing) throw SystemFailure(ENOENT, path.native());
  return std::make_unique<posix::FileReplacement>(calls(), path.native(),
                                                  posix::FileReplacement::Options{.flushesFolder = false});
}

void moveOver(const fs::path& from, const fs::path& to) {
  if (calls().rename(from.c_str(), to.c_str()) != 0) failWithErrno(to.native());
}

void removeFile(const fs::path& path) {
  if (calls().unlink(path.c_str()) != 0 && errno != ENOENT) failWithErrno(path.native());
}

void flushFolder(const fs::path& folder) {
  const std::string path = folder.empty() ? "." : folder.native();
  OpenFile handle(calls(), path, O_RDONLY | O_DIRECTORY, 0, path);
  // Some file systems cannot flush a folder.
  const int flushed = posix::uninterrupted([&] { return calls().fsync(handle.number()); });
  if (flushed != 0 && errno != EINVAL) failWithErrno(path);
}

}  // namespace dravenna

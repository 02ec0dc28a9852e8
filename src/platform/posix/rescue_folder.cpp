#include "platform/posix/rescue_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <random>
#include <utility>

#include "platform/posix/files.h"
#include "platform/posix/user_folders.h"
#include "text/text.h"

namespace dravenna {

namespace posix {

namespace {

// The lock on the file is the mark that it is in use: the system takes it away with the process. Where the file system
// has no locks, nothing counts as in use.
class PosixRescueFile : public RescueFile {
 public:
  PosixRescueFile(SystemCalls& calls, std::string path)
      : calls_(calls),
        path_(std::move(path)),
        file_(calls, path_, O_WRONLY | O_CREAT | O_EXCL | O_APPEND, 0600, path_) {
    static_cast<void>(uninterrupted([&] { return calls_.flock(file_.number(), LOCK_EX | LOCK_NB); }));
  }

  void append(std::string_view bytes) override { file_.writeAll(bytes); }

  void flush() override {
    file_.sync();
    if (std::exchange(named_, true)) return;
    const std::string folder = folderOf(path_);
    OpenFile handle(calls_, folder, O_RDONLY | O_DIRECTORY, 0, folder);
    syncFolder(handle);
  }

  void remove() noexcept override { calls_.unlink(path_.c_str()); }

 private:
  SystemCalls& calls_;
  std::string path_;
  OpenFile file_;
  bool named_ = false;  // its name is on disk
};

class PosixRescueFolder : public RescueFolder {
 public:
  PosixRescueFolder(std::string folder, SystemCalls& calls) : folder_(std::move(folder)), calls_(calls) {}

  std::unique_ptr<RescueFile> create(std::u16string_view suffix) override {
    makeFolders(calls_, folder_, 0700);
    for (;;) {
      try {
        return std::make_unique<PosixRescueFile>(calls_, folder_ + '/' + newName() + toUtf8(suffix));
      } catch (const SystemFailure& failure) {
        if (failure.error() != EEXIST) throw;
      }
    }
  }

  std::vector<Entry> entries() override {
    std::vector<Entry> found;
    std::error_code error;
    const std::time_t now = std::time(nullptr);
    for (std::filesystem::directory_iterator at(folder_, error), end; !error && at != end; at.increment(error)) {
      try {
        OpenFile file = openForReading(calls_, at->path().native());
        const struct stat status = file.status();
        if (uninterrupted([&] { return calls_.flock(file.number(), LOCK_SH | LOCK_NB); }) < 0 && errno == EWOULDBLOCK) {
          continue;
        }
        found.push_back(
            {fromUtf8(at->path().native()), static_cast<std::uint64_t>(status.st_size), now - status.st_mtime});
      } catch (const SystemFailure&) {
        continue;  // gone, or not ours
      }
    }
    std::sort(found.begin(), found.end(), [](const Entry& one, const Entry& other) { return one.age > other.age; });
    return found;
  }

  std::string read(std::u16string_view path, std::uint64_t limit) override {
    OpenFile file = openForReading(calls_, pathBytes(path));
    return readWholeFile(file, limit);
  }

  void remove(std::u16string_view path) noexcept override { calls_.unlink(toUtf8(path).c_str()); }

 private:
  std::string newName() { return std::to_string(::getpid()) + '-' + std::to_string(random_()); }

  std::string folder_;
  SystemCalls& calls_;
  std::random_device random_;
};

}  // namespace

std::unique_ptr<RescueFolder> makeRescueFolder(std::string folder, SystemCalls& calls) {
  return std::make_unique<PosixRescueFolder>(std::move(folder), calls);
}

}  // namespace posix

std::u16string absolutePath(std::u16string_view path) {
  std::error_code error;
  const std::filesystem::path full = std::filesystem::absolute(toUtf8(path), error);
  return error ? std::u16string(path) : fromUtf8(full.native());
}

std::unique_ptr<RescueFolder> makeRescueFolder() {
  const std::string state = posix::userFolder("XDG_STATE_HOME", "/.local/state");
  if (state.empty()) return nullptr;
  return posix::makeRescueFolder(state + "/dravenna/rescue", posix::realSystemCalls());
}

}  // namespace dravenna

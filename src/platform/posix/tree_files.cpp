#include "platform/posix/tree_files.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <system_error>
#include <utility>

#include "platform/posix/files.h"

namespace dravenna {

std::unique_ptr<TreeFiles> makeTreeFiles() { return posix::makeTreeFiles(posix::realSystemCalls()); }

namespace posix {

namespace {

namespace fs = std::filesystem;

void listFolder(const fs::path& folder, const std::string& relative, const TreeFiles::Chooser& enter,
                const TreeFiles::Chooser& take, const TreeFiles::Hearer* hearer, std::vector<std::string>& out) {
  std::error_code error;
  fs::directory_iterator entries(folder, error);
  if (error) throw SystemFailure(error.value(), folder.native());
  for (; entries != fs::directory_iterator(); entries.increment(error)) {
    const fs::directory_entry& entry = *entries;
    std::string name = relative + entry.path().filename().native();
    const bool link = entry.is_symlink(error);
    if (entry.is_directory(error)) {
      if (link && hearer != nullptr) hearer->passedBy(name);
      if (link || !enter(name)) continue;
      const auto failure = attempt([&] { listFolder(entry.path(), name + "/", enter, take, hearer, out); });
      if (failure && hearer == nullptr) throw *failure;
      if (failure) hearer->unreadable(*failure);
    } else if (take(name)) {
      if (entry.is_regular_file(error)) {
        out.push_back(std::move(name));
      } else if (hearer != nullptr) {
        hearer->passedBy(name);
      }
    }
  }
  if (error) throw SystemFailure(error.value(), folder.native());
}

class PosixTreeFiles : public TreeFiles {
 public:
  explicit PosixTreeFiles(SystemCalls& calls) : calls_(calls) {}

  PathKind pathKind(const fs::path& path) override {
    struct stat status {};
    if (calls_.stat(path.c_str(), status) != 0) {
      if (errno == ENOENT || errno == ENOTDIR) return PathKind::Missing;
      failWithErrno(path.native());
    }
    return S_ISDIR(status.st_mode) ? PathKind::Folder : PathKind::File;
  }

  std::optional<FileIdentity> identity(const fs::path& path) override {
    struct stat status {};
    if (calls_.stat(path.c_str(), status) == 0)
      return FileIdentity{status.st_dev, status.st_ino, S_ISREG(status.st_mode)};
    if (errno != ENOENT && errno != ENOTDIR) failWithErrno(path.native());
    return std::nullopt;
  }

  std::vector<std::string> filesBelow(const fs::path& folder, const Chooser& enter, const Chooser& take,
                                      const Hearer* hearer) override {
    std::vector<std::string> out;
    listFolder(folder, {}, enter, take, hearer, out);
    std::sort(out.begin(), out.end());
    return out;
  }

  void readWhole(const fs::path& path, std::string& bytes) override {
    OpenFile file(calls_, path.native(), O_RDONLY, 0, path.native());
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

  void writeDevice(const fs::path& path, std::string_view bytes) override { write(path, bytes, O_WRONLY); }

  void append(const fs::path& path, std::string_view bytes) override { write(path, bytes, O_WRONLY | O_APPEND); }

  void makeFolders(const fs::path& folder) override {
    if (!folder.empty()) posix::makeFolders(calls_, folder.native(), 0777);
  }

  std::unique_ptr<dravenna::FileReplacement> replace(const fs::path& path) override {
    return std::make_unique<FileReplacement>(calls_, path.native(), FileReplacement::Options{.flushesFolder = false});
  }

  void flushFolder(const fs::path& folder) override {
    const std::string path = folder.empty() ? "." : folder.native();
    OpenFile handle(calls_, path, O_RDONLY | O_DIRECTORY, 0, path);
    syncFolder(handle);
  }

 private:
  void write(const fs::path& path, std::string_view bytes, int flags) {
    OpenFile file(calls_, path.native(), flags, 0, path.native());
    file.writeAll(bytes);
    file.close();
  }

  SystemCalls& calls_;
};

}  // namespace

std::unique_ptr<TreeFiles> makeTreeFiles(SystemCalls& calls) { return std::make_unique<PosixTreeFiles>(calls); }

}  // namespace posix

}  // namespace dravenna

#pragma once

#include <compare>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/failure.h"
#include "platform/file_replacement.h"

namespace dravenna {

enum class PathKind { Missing, File, Folder };

// Which file a path leads to: two paths of one file, links followed, have the same.
struct FileIdentity {
  std::uint64_t volume;
  std::uint64_t file;
  bool plain;  // no folder, device or pipe
  // NOLINTNEXTLINE(modernize-use-nullptr): a false alarm of clang-tidy 14
  auto operator<=>(const FileIdentity&) const = default;
};

// Files of whole trees, as bytes, for the command line tool. What can fail throws Failure, whose description names
// the path. Paths are native ones. Several threads may work at once.
class TreeFiles {
 public:
  using Chooser = std::function<bool(const std::string& relative)>;
  struct Hearer {
    std::function<void(const std::string& relative)> passedBy;
    std::function<void(const Failure& failure)> unreadable;
  };

  virtual ~TreeFiles() = default;

  // Links followed; a device or a pipe counts as a file. Fails when the system cannot tell.
  virtual PathKind pathKind(const std::filesystem::path& path) = 0;

  // Nothing for what is missing. Fails when the system cannot tell.
  virtual std::optional<FileIdentity> identity(const std::filesystem::path& path) = 0;

  // The files below a folder, as paths relative to it with `/` between their names, sorted by bytes. Links to files
  // count as files, links to folders are not entered. `enter` says whether a folder below is looked into, `take`
  // whether a file is wanted. A hearer is told of each link to a folder, of wanted ones that are no files, and of
  // folders below that cannot be read; without it such a folder is a failure, as the folder itself always is.
  virtual std::vector<std::string> filesBelow(const std::filesystem::path& folder, const Chooser& enter,
                                              const Chooser& take, const Hearer* hearer = nullptr) = 0;

  // The whole file into a buffer that is used again.
  virtual void readWhole(const std::filesystem::path& path, std::string& bytes) = 0;

  // Into a device or a pipe that is there; what is a plain file is replaced.
  virtual void writeDevice(const std::filesystem::path& path, std::string_view bytes) = 0;

  // Behind what a file holds that is there.
  virtual void append(const std::filesystem::path& path, std::string_view bytes) = 0;

  // The folder and all missing ones above it.
  virtual void makeFolders(const std::filesystem::path& folder) = 0;

  // Leaves the folder for flushFolder. The file may be missing, its folder not.
  virtual std::unique_ptr<FileReplacement> replace(const std::filesystem::path& path) = 0;

  // Brings the renames in a folder to disk.
  virtual void flushFolder(const std::filesystem::path& folder) = 0;
};

std::unique_ptr<TreeFiles> makeTreeFiles();

// These throw Failure. What is missing is removed already; a system without the right has nothing to give.
void removeFile(const std::filesystem::path& path);
// Whether the path itself is a link, wherever it leads.
bool isLink(const std::filesystem::path& path);
void allowToRun(const std::filesystem::path& path);

// Replaces files, all or nothing each: new contents go to a temporary file beside the old one. Permission bits are
// kept, links followed, read-only files refused. Nothing of a target changes before commit().
class Replacements {
 public:
  // With a suffix, the old files stay beside the new ones, as FileReplacement::place tells.
  explicit Replacements(TreeFiles& files, std::string_view backupSuffix = {});
  Replacements(const Replacements&) = delete;
  Replacements& operator=(const Replacements&) = delete;
  ~Replacements();  // takes away temporary files that did not take their place

  // Writes the new contents beside `path`. Fails with nothing left behind.
  void stage(const std::filesystem::path& path, std::string_view bytes);
  std::size_t staged() const { return staged_.size(); }

  // Brings all staged contents to disk, then renames one after the other; renames no more once interrupted()
  // (terminal.h) is true. Gives for each staged file, in the order of staging, an empty string or why its old contents
  // still stand. Nothing is staged afterwards.
  std::vector<std::u16string> commit();

 private:
  TreeFiles& files_;
  std::u16string backupSuffix_;
  std::vector<std::unique_ptr<FileReplacement>> staged_;
};

}  // namespace dravenna

#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file_replacement.h"

// Files of whole trees, as bytes, for the command line tool. What can fail throws Failure, whose description names
// the path. Paths are native ones.
namespace dravenna {

// Links followed; a device or a pipe counts as a file. Fails when the system cannot tell.
enum class PathKind { Missing, File, Folder };
PathKind pathKind(const std::filesystem::path& path);

// The files below a folder, as paths relative to it with `/` between their names, sorted by bytes. Links to files
// count as files, links to folders are not entered. `enter` says whether a folder below is looked into, `take` whether
// a file is wanted. Fails when a folder cannot be read.
std::vector<std::string> filesBelow(const std::filesystem::path& folder,
                                    const std::function<bool(const std::string& relative)>& enter,
                                    const std::function<bool(const std::string& relative)>& take);

// The whole file into a buffer that is used again.
void readWhole(const std::filesystem::path& path, std::string& bytes);

// Empties or makes the file and writes into it. A failure leaves what was written so far.
void writeWhole(const std::filesystem::path& path, std::string_view bytes);

// The folder and all missing ones above it.
void makeFolders(const std::filesystem::path& folder);

// Replaces files, all or nothing each: new contents go to a temporary file beside the old one. Permission bits are
// kept, links followed, read-only files refused. Nothing of a target changes before commit().
class Replacements {
 public:
  // With a suffix, the old files stay beside the new ones, as FileReplacement::place tells.
  explicit Replacements(std::string_view backupSuffix = {});
  Replacements(const Replacements&) = delete;
  Replacements& operator=(const Replacements&) = delete;
  ~Replacements();  // takes away temporary files that did not take their place

  // Writes the new contents beside `path`. Fails with nothing left behind.
  void stage(const std::filesystem::path& path, std::string_view bytes);

  // Brings all staged contents to disk, then renames one after the other; renames no more once interrupted()
  // (terminal.h) is true. Gives for each staged file, in the order of staging, an empty string or why its old contents
  // still stand.
  std::vector<std::u16string> commit();

 private:
  std::u16string backupSuffix_;
  std::vector<std::unique_ptr<FileReplacement>> staged_;
};

// Renames a file over another one.
void moveOver(const std::filesystem::path& from, const std::filesystem::path& to);
// Takes a file away; a missing one is no failure.
void removeFile(const std::filesystem::path& path);

// Brings the renames in a folder to disk.
void flushFolder(const std::filesystem::path& folder);

}  // namespace dravenna

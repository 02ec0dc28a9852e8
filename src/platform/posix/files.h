#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/file_replacement.h"
#include "platform/posix/system_calls.h"

// Paths are bytes here, without NULs. Everything that fails throws SystemFailure unless told otherwise.
namespace dravenna::posix {

// The bytes of a path.
std::string pathBytes(std::u16string_view path);

// The folder of a path: "." if it names none.
std::string folderOf(const std::string& path);

// The file that `path` leads to, through all symbolic links. The file itself may be missing, its folder not.
std::string resolveTarget(SystemCalls& calls, const std::string& path);

// Makes a folder and the missing ones above it, with these permission bits less the umask.
void makeFolders(SystemCalls& calls, const std::string& folder, mode_t mode);

// Brings the renames in an open folder to disk, if its file system can.
void syncFolder(OpenFile& folder);

// Opens for reading. Fails on a folder and on anything else that is no plain file.
OpenFile openForReading(SystemCalls& calls, const std::string& path);

// All bytes of a file that is no larger than `limit`; fails with EFBIG on a larger one.
std::string readWholeFile(OpenFile& file, std::size_t limit);

// The same of a path; nothing where there is no file.
std::optional<std::string> readIfThere(SystemCalls& calls, const std::string& path, std::size_t limit);

class FileReplacement : public dravenna::FileReplacement {
 public:
  struct Options {
    mode_t newFileMode = 0666;  // less the umask, for a file that does not exist
    bool locked = false;        // nobody else replaces this file now: a left-over temporary file is removed
    bool flushesFolder = true;  // `place` brings the rename to disk
  };

  // Refuses a folder and anything else that is no plain file, and a file that may not be written or has no permission
  // bit for writing. An existing file keeps its permission bits and, where the system allows, its owner.
  FileReplacement(SystemCalls& calls, const std::string& path, Options options);
  FileReplacement(const FileReplacement&) = delete;
  FileReplacement& operator=(const FileReplacement&) = delete;
  ~FileReplacement() override;

  const std::u16string& path() const override { return shownPath_; }
  void write(std::string_view bytes) override { file_.writeAll(bytes); }
  void startFlush() override { file_.startFlush(); }
  void flush() override;
  void close() override { file_.close(); }

  // A failure to flush the folder comes when the target is the new one already.
  void place(std::u16string_view backupSuffix = {}) override;

 private:
  void openTemporary(Options options, bool targetExists);
  void takeOver(const struct stat& target);
  void backUp(const std::string& backup);
  void copyTo(const std::string& name);
  void removeTemporary() noexcept;

  SystemCalls& calls_;
  std::string path_;  // as it was given, for failures
  std::u16string shownPath_;
  std::string target_;  // resolved
  std::string temporary_;
  OpenFile folder_;
  OpenFile file_;
};

void replaceFile(SystemCalls& calls, const std::string& path, std::string_view bytes, FileReplacement::Options options);

}  // namespace dravenna::posix

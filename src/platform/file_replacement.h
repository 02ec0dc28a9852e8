#pragma once

#include <string>
#include <string_view>

namespace dravenna {

// New contents for a file. They go into a temporary file beside it; `place` puts that in the place of the target. Until
// then, and when anything fails, the target is whole; the destructor removes the temporary file. What fails throws
// Failure, whose description names the path as it was given.
class FileReplacement {
 public:
  virtual ~FileReplacement() = default;

  virtual const std::u16string& path() const = 0;  // as it was given

  virtual void write(std::string_view bytes) = 0;

  // Lets the system begin to bring what was written to disk, so that several files wait together.
  virtual void startFlush() {}

  // To disk. Nothing can be written afterwards.
  virtual void flush() = 0;
  // In its place, for what can be made again: the system brings it to disk when it likes.
  virtual void close() = 0;

  // Once, behind flush() or close(). With a suffix, the old file stays under its name and that suffix; where such a
  // file exists already, a number follows the suffix, so that no backup is lost.
  virtual void place(std::u16string_view backupSuffix = {}) = 0;
};

}  // namespace dravenna

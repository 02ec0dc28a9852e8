#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace dravenna {

// A file of the rescue folder that this process alone writes, and that counts as in use until it is closed by the
// destructor or by the end of the process. What fails throws Failure.
class RescueFile {
 public:
  virtual ~RescueFile() = default;

  // Handed to the system: it outlives the process, but not a power cut. After a failure a part may stand there.
  virtual void append(std::string_view bytes) = 0;
  // To disk, its name too.
  virtual void flush() = 0;
  // Never fails: a file that cannot be removed stays.
  virtual void remove() noexcept = 0;
};

// A folder for what would be lost, made when the first file is. Only this user may look into it. Nobody ever waits for
// another process. What fails throws Failure unless told otherwise.
class RescueFolder {
 public:
  struct Entry {
    std::u16string path;
    std::uint64_t size = 0;  // in bytes
    std::int64_t age = 0;    // seconds since the last change
  };

  virtual ~RescueFolder() = default;

  // A new file whose name ends in `suffix`.
  virtual std::unique_ptr<RescueFile> create(std::u16string_view suffix) = 0;

  // All files that no process has in use, the oldest first; none if there is no folder. Never fails.
  virtual std::vector<Entry> entries() = 0;

  // The bytes of any file, in this folder or elsewhere. Fails on one that is larger than `limit`.
  virtual std::string read(std::u16string_view path, std::uint64_t limit) = 0;

  // Never fails: a file that cannot be removed stays.
  virtual void remove(std::u16string_view path) noexcept = 0;
};

// `path` with the working folder in front if it is relative. Never fails.
std::u16string absolutePath(std::u16string_view path);

// The user's. Null where the system tells of no place for it.
std::unique_ptr<RescueFolder> makeRescueFolder();

}  // namespace dravenna

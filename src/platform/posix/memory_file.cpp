#include "platform/memory_file.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include "platform/posix/files.h"

namespace dravenna {

namespace {

// Each open of the path begins at the front of the file.
class MemoryFile {
 public:
  MemoryFile() : number_(::memfd_create("dravenna", MFD_CLOEXEC)) {
    if (number_ < 0) posix::failWithErrno("memory");
  }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile() { posix::realSystemCalls().close(number_); }

  std::string path() const { return "/dev/fd/" + std::to_string(number_); }
  // Where a limit has cut the file at `size`, there is no room for one byte more.
  void checkRoomBehind(std::size_t size) const {
    if (::pwrite(number_, "", 1, static_cast<off_t>(size)) != 1) posix::failWithErrno("memory");
  }
  posix::OpenFile open(int flags) const { return {posix::realSystemCalls(), path(), flags, 0, "memory"}; }

 private:
  int number_;
};

}  // namespace

std::string bytesWrittenBy(const std::function<void(const std::string& path)>& write) {
  const MemoryFile memory;
  write(memory.path());
  posix::OpenFile file = memory.open(O_RDONLY);
  std::string bytes = posix::readWholeFile(file, std::string().max_size());
  memory.checkRoomBehind(bytes.size());
  return bytes;
}

void readFromMemory(const std::string& bytes, const std::function<void(const std::string& path)>& read) {
  const MemoryFile memory;
  memory.open(O_WRONLY).writeAll(bytes);
  read(memory.path());
}

}  // namespace dravenna

#include "platform/memory_file.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include "platform/posix/files.h"

namespace dravenna {

std::string bytesWrittenBy(const std::function<void(const std::string& path)>& write) {
  const int memory = ::memfd_create("dravenna", MFD_CLOEXEC);
  if (memory < 0) posix::failWithErrno("memory");
  const std::string path = "/dev/fd/" + std::to_string(memory);
  try {
    write(path);
    posix::OpenFile file(posix::realSystemCalls(), path, O_RDONLY, 0, path);
    std::string bytes = posix::readWholeFile(file, std::string().max_size());
    // Where a limit has cut them, there is no room for one more.
    if (::pwrite(memory, "", 1, static_cast<off_t>(bytes.size())) != 1) posix::failWithErrno("memory");
    ::close(memory);
    return bytes;
  } catch (...) {
    ::close(memory);
    throw;
  }
}

}  // namespace dravenna

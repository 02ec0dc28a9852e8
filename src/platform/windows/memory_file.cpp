#include "platform/memory_file.h"

#include <fcntl.h>
#include <stdlib.h>

#include <atomic>
#include <exception>
#include <thread>

#include "platform/windows/system_calls.h"

namespace dravenna {

namespace {

constexpr DWORD kBlock = 65536;  // bytes

class Handle {
 public:
  explicit Handle(HANDLE handle) : handle_(handle) {
    if (handle == nullptr || handle == INVALID_HANDLE_VALUE) windows::failWithLastError(u"memory");
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  ~Handle() { close(); }
  HANDLE get() const { return handle_; }
  void close() {
    if (handle_ != nullptr) ::CloseHandle(handle_);
    handle_ = nullptr;
  }

 private:
  HANDLE handle_;
};

// There are no files in memory, but a pipe has a name as they have; a thread serves its other end.
class Pipe {
 public:
  enum class Direction : DWORD { In = PIPE_ACCESS_INBOUND, Out = PIPE_ACCESS_OUTBOUND };

  explicit Pipe(Direction direction)
      : name_("\\\\.\\pipe\\dravenna-" + std::to_string(::GetCurrentProcessId()) + "-" + std::to_string(++count)),
        theirAccess_(direction == Direction::In ? GENERIC_WRITE : GENERIC_READ),
        pipe_(::CreateNamedPipeA(name_.c_str(),
                                 static_cast<DWORD>(direction) | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE,
                                 PIPE_TYPE_BYTE | PIPE_REJECT_REMOTE_CLIENTS, 1, kBlock, kBlock, 0, nullptr)) {}

  // `use` opens the path while a thread runs `serve` and closes the pipe then.
  template <typename Serve>
  void run(const std::function<void(const std::string& path)>& use, const Serve& serve) {
    _fmode = _O_BINARY;  // for what `use` opens: no byte stands for another one
    std::thread server([&] {
      finish([&](OVERLAPPED* state) { return ::ConnectNamedPipe(pipe_.get(), state); });
      serve();
      pipe_.close();
    });
    std::exception_ptr failure;
    try {
      use(name_);
      // If it was not opened, it is now; else this fails.
      ::CloseHandle(::CreateFileA(name_.c_str(), theirAccess_, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    } catch (...) {
      failure = std::current_exception();
      ::SetEvent(enough_.get());  // nobody may have closed the other end
    }
    server.join();
    if (failure) std::rethrow_exception(failure);
  }

  // The count of bytes, 0 at the end.
  DWORD read(char* to) {
    return finish([&](OVERLAPPED* state) { return ::ReadFile(pipe_.get(), to, kBlock, nullptr, state); });
  }
  DWORD write(const char* from, DWORD size) {
    return finish([&](OVERLAPPED* state) { return ::WriteFile(pipe_.get(), from, size, nullptr, state); });
  }

 private:
  template <typename Call>
  DWORD finish(const Call& call) {
    OVERLAPPED state{};
    state.hEvent = done_.get();
    if (!call(&state) && ::GetLastError() != ERROR_IO_PENDING) return 0;
    const HANDLE ends[] = {enough_.get(), done_.get()};
    if (::WaitForMultipleObjects(2, ends, FALSE, INFINITE) == WAIT_OBJECT_0) ::CancelIoEx(pipe_.get(), &state);
    DWORD size = 0;
    return ::GetOverlappedResult(pipe_.get(), &state, &size, TRUE) ? size : 0;
  }

  static inline std::atomic<unsigned> count{0};
  std::string name_;
  DWORD theirAccess_;
  Handle pipe_;
  Handle done_{::CreateEventW(nullptr, TRUE, FALSE, nullptr)};
  Handle enough_{::CreateEventW(nullptr, TRUE, FALSE, nullptr)};
};

}  // namespace

std::string bytesWrittenBy(const std::function<void(const std::string& path)>& write) {
  std::string bytes;
  std::string block(kBlock, '\0');
  Pipe pipe(Pipe::Direction::In);
  pipe.run(write, [&] {
    while (const DWORD size = pipe.read(block.data())) bytes.append(block, 0, size);
  });
  return bytes;
}

void readFromMemory(const std::string& bytes, const std::function<void(const std::string& path)>& read) {
  Pipe pipe(Pipe::Direction::Out);
  pipe.run(read, [&] {
    std::string_view rest = bytes;
    while (!rest.empty()) {
      const DWORD size = pipe.write(rest.data(), static_cast<DWORD>(std::min<std::size_t>(rest.size(), kBlock)));
      if (size == 0) break;
      rest.remove_prefix(size);
    }
  });
}

}  // namespace dravenna

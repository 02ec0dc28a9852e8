#include "platform/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <system_error>

#include "platform/posix/system_calls.h"

namespace dravenna {

namespace {

// Set by the signal handler, read by all threads.
std::atomic<int> caughtSignal{0};
static_assert(std::atomic<int>::is_always_lock_free);

bool writeAll(int handle, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = posix::uninterrupted([&] { return ::write(handle, bytes.data(), bytes.size()); });
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace

std::string readStandardInput() {
  std::string bytes;
  std::size_t filled = 0;
  for (;;) {
    bytes.resize(filled + filled / 2 + 65536);
    const ssize_t got =
        posix::uninterrupted([&] { return ::read(STDIN_FILENO, bytes.data() + filled, bytes.size() - filled); });
    if (got < 0) posix::failWithErrno("standard input");
    if (got == 0) break;
    filled += static_cast<std::size_t>(got);
  }
  bytes.resize(filled);
  return bytes;
}

bool writeStandardOutput(std::string_view bytes) {
  if (writeAll(STDOUT_FILENO, bytes)) return true;
  if (errno != EPIPE) posix::failWithErrno("standard output");
  return false;
}

void writeStandardError(std::string_view bytes) { static_cast<void>(writeAll(STDERR_FILENO, bytes)); }

bool errorIsTerminal() { return ::isatty(STDERR_FILENO) == 1; }

int errorColumns() {
  winsize size{};
  return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

void catchInterrupts() {
  struct sigaction action {};
  action.sa_handler = [](int number) { caughtSignal = number; };
  action.sa_flags = SA_RESTART;
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction before {};
    ::sigaction(number, nullptr, &before);
    if (before.sa_handler != SIG_IGN) ::sigaction(number, &action, nullptr);  // ignored under nohup
  }
  std::signal(SIGPIPE, SIG_IGN);
}

bool interrupted() { return caughtSignal != 0; }

void endIfInterrupted() {
  const int number = caughtSignal;
  if (number == 0) return;
  std::signal(number, SIG_DFL);
  std::raise(number);
}

std::filesystem::path executableFile() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error);
}

}  // namespace dravenna

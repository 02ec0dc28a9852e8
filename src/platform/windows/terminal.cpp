#include "platform/terminal.h"

#include <algorithm>
#include <atomic>

#include "platform/windows/files.h"
#include "text/code_page.h"
#include "text/text.h"

namespace dravenna {

namespace {

std::atomic<bool> interruptSeen{false};

bool isConsole(HANDLE handle) {
  DWORD mode = 0;
  return ::GetConsoleMode(handle, &mode) != 0;
}

bool writeToConsole(HANDLE handle, std::string_view bytes) {
  const std::wstring text = windows::toWide(fromUtf8(bytes));
  std::wstring_view rest = text;
  while (!rest.empty()) {
    DWORD count = 0;
    const auto size = static_cast<DWORD>(std::min<std::size_t>(rest.size(), 8192));
    if (::WriteConsoleW(handle, rest.data(), size, &count, nullptr) == 0 || count == 0) return false;
    rest.remove_prefix(count);
  }
  return true;
}

// A console takes text, anything else the bytes. `carried` holds the front of a character that was cut off.
bool writeAll(HANDLE handle, std::string_view bytes, std::string& carried) {
  if (handle == nullptr || handle == INVALID_HANDLE_VALUE) {
    ::SetLastError(ERROR_INVALID_HANDLE);
    return false;
  }
  if (isConsole(handle)) {
    carried += bytes;
    const std::size_t whole = carried.size() - CodePage::utf8()->incompleteTail(carried);
    const bool written = writeToConsole(handle, std::string_view(carried).substr(0, whole));
    carried.erase(0, whole);
    return written;
  }
  while (!bytes.empty()) {
    DWORD count = 0;
    const auto size = static_cast<DWORD>(std::min<std::size_t>(bytes.size(), 1u << 20));
    if (::WriteFile(handle, bytes.data(), size, &count, nullptr) == 0 || count == 0) return false;
    bytes.remove_prefix(count);
  }
  return true;
}

BOOL WINAPI noteInterrupt(DWORD) {
  interruptSeen = true;
  return TRUE;
}

}  // namespace

std::string readStandardInput() {
  const HANDLE handle = ::GetStdHandle(STD_INPUT_HANDLE);
  std::string bytes;
  std::size_t filled = 0;
  for (;;) {
    bytes.resize(filled + filled / 2 + 65536);
    DWORD count = 0;
    const auto size = static_cast<DWORD>(std::min<std::size_t>(bytes.size() - filled, 1u << 20));
    if (::ReadFile(handle, bytes.data() + filled, size, &count, nullptr) == 0) {
      if (::GetLastError() != ERROR_BROKEN_PIPE) windows::failWithLastError(u"standard input");
      count = 0;
    }
    if (count == 0) break;
    filled += count;
  }
  bytes.resize(filled);
  return bytes;
}

bool writeStandardOutput(std::string_view bytes) {
  static std::string carried;
  if (writeAll(::GetStdHandle(STD_OUTPUT_HANDLE), bytes, carried)) return true;
  const DWORD error = ::GetLastError();
  if (error != ERROR_BROKEN_PIPE && error != ERROR_NO_DATA && error != ERROR_PIPE_NOT_CONNECTED) {
    windows::failWithLastError(u"standard output");
  }
  return false;
}

void writeStandardError(std::string_view bytes) {
  static std::string carried;
  static_cast<void>(writeAll(::GetStdHandle(STD_ERROR_HANDLE), bytes, carried));
}

// Only one that understands the escape sequences for colours and cleared lines counts.
bool errorIsTerminal() {
  const HANDLE handle = ::GetStdHandle(STD_ERROR_HANDLE);
  DWORD mode = 0;
  return ::GetConsoleMode(handle, &mode) != 0 &&
         ::SetConsoleMode(handle, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

int errorColumns() {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  if (::GetConsoleScreenBufferInfo(::GetStdHandle(STD_ERROR_HANDLE), &info) == 0) return 80;
  return info.srWindow.Right - info.srWindow.Left + 1;
}

void catchInterrupts() { ::SetConsoleCtrlHandler(noteInterrupt, TRUE); }

bool interrupted() { return interruptSeen; }

void endIfInterrupted() {
  if (interruptSeen) ::ExitProcess(static_cast<UINT>(STATUS_CONTROL_C_EXIT));
}

std::filesystem::path executableFile() { return windows::programFile(); }

}  // namespace dravenna

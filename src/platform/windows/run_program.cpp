#include "platform/run_program.h"

#include "platform/windows/system_calls.h"
#include "text/text.h"

namespace dravenna {

namespace {

// A word as programs cut it out of their command line again: in quote marks, before which a backslash stands twice.
std::wstring quoted(const std::string& word) {
  std::wstring out = L"\"";
  std::size_t backslashes = 0;
  for (const wchar_t c : windows::toWide(fromUtf8(word))) {
    if (c == L'"') out.append(backslashes + 1, L'\\');
    backslashes = c == L'\\' ? backslashes + 1 : 0;
    out.push_back(c);
  }
  return out.append(backslashes, L'\\') + L"\"";
}

struct Handle {
  HANDLE handle = nullptr;
  ~Handle() { close(); }
  void close() {
    if (handle != nullptr && handle != INVALID_HANDLE_VALUE) ::CloseHandle(handle);
    handle = nullptr;
  }
};

}  // namespace

ProgramRun runProgram(const std::vector<std::string>& words) {
  const auto fail = [&] { windows::failWithLastError(fromUtf8(words[0])); };
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  Handle from;
  Handle to;
  if (::CreatePipe(&from.handle, &to.handle, &inherited, 0) == 0) fail();
  ::SetHandleInformation(from.handle, HANDLE_FLAG_INHERIT, 0);
  Handle nothing{::CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ, &inherited, OPEN_EXISTING, 0, nullptr)};
  STARTUPINFOW start{};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = nothing.handle;
  start.hStdOutput = to.handle;
  start.hStdError = ::GetStdHandle(STD_ERROR_HANDLE);
  std::wstring line;
  for (const std::string& word : words) line += (line.empty() ? L"" : L" ") + quoted(word);
  PROCESS_INFORMATION made{};
  if (::CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &made) == 0) fail();
  const Handle process{made.hProcess};
  const Handle thread{made.hThread};
  to.close();
  ProgramRun run{0, {}};
  char block[16384];
  DWORD got = 0;
  while (::ReadFile(from.handle, block, sizeof block, &got, nullptr) != 0 && got > 0) run.output.append(block, got);
  ::WaitForSingleObject(process.handle, INFINITE);
  DWORD status = 0;
  ::GetExitCodeProcess(process.handle, &status);
  run.status = static_cast<int>(status);
  return run;
}

}  // namespace dravenna

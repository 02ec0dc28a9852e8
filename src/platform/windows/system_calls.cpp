#include "platform/windows/system_calls.h"

#include <algorithm>
#include <utility>

#include "text/text.h"

namespace dravenna::windows {

namespace {

constexpr std::size_t kMostBytes = 1u << 30;  // in one call

// The words that other systems have for it; null for what has none.
const char16_t* commonWord(DWORD error) {
  switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
    case ERROR_BAD_PATHNAME:
    case ERROR_INVALID_DRIVE:
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
    case ERROR_CANT_RESOLVE_FILENAME:
      return u"No such file or directory";
    case ERROR_ACCESS_DENIED:
    case ERROR_PRIVILEGE_NOT_HELD:
      return u"Permission denied";
    case ERROR_WRITE_PROTECT:
      return u"Read-only file system";
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
      return u"No space left on device";
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
      return u"File exists";
    case kIsFolder:
      return u"Is a directory";
    case ERROR_DIRECTORY:
      return u"Not a directory";
    case ERROR_FILENAME_EXCED_RANGE:
      return u"File name too long";
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
      return u"The file is in use by another program";
    default:
      return nullptr;
  }
}

std::u16string systemWord(DWORD error) {
  constexpr DWORD kFlags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
  wchar_t buffer[512];
  DWORD length = 0;
  for (const DWORD language : {DWORD{MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US)}, DWORD{0}}) {
    if (length == 0) length = ::FormatMessageW(kFlags, nullptr, error, language, buffer, DWORD{512}, nullptr);
  }
  while (length > 0 && (buffer[length - 1] <= L' ' || buffer[length - 1] == L'.')) --length;
  return length > 0 ? fromWide({buffer, length}) : u"System error " + decimal(error);
}

std::u16string describe(DWORD error, std::u16string_view path) {
  const char16_t* const word = commonWord(error);
  std::u16string text = word != nullptr ? word : systemWord(error);
  if (!path.empty()) text.append(u": '").append(path).append(u"'");
  return text;
}

}  // namespace

std::wstring toWide(std::u16string_view text) { return {text.begin(), text.end()}; }

std::u16string fromWide(std::wstring_view text) { return {text.begin(), text.end()}; }

std::u16string environment(const wchar_t* name) {
  std::wstring value;
  for (DWORD size = 256;;) {
    value.resize(size);
    const DWORD length = ::GetEnvironmentVariableW(name, value.data(), size);
    if (length < size) return fromWide({value.data(), length});
    size = length + 1;
  }
}

SystemFailure::SystemFailure(DWORD error, std::u16string_view path) : Failure(describe(error, path)), error_(error) {}

void failWithLastError(std::u16string_view path) { throw SystemFailure(::GetLastError(), path); }

bool SystemCalls::make(const char*, const std::function<bool()>& call) { return call(); }

HANDLE SystemCalls::createFile(const wchar_t* path, DWORD access, DWORD sharing, DWORD disposition, DWORD flags) {
  return made("createFile", INVALID_HANDLE_VALUE, ::CreateFileW, path, access, sharing, nullptr, disposition, flags,
              nullptr);
}
BOOL SystemCalls::closeHandle(HANDLE file) { return made("closeHandle", FALSE, ::CloseHandle, file); }
BOOL SystemCalls::readFile(HANDLE file, void* to, DWORD size, DWORD& count) {
  return made("readFile", FALSE, ::ReadFile, file, to, size, &count, nullptr);
}
BOOL SystemCalls::writeFile(HANDLE file, const void* from, DWORD size, DWORD& count) {
  return made("writeFile", FALSE, ::WriteFile, file, from, size, &count, nullptr);
}
BOOL SystemCalls::setEndOfFile(HANDLE file) { return made("setEndOfFile", FALSE, ::SetEndOfFile, file); }
BOOL SystemCalls::flushFileBuffers(HANDLE file) { return made("flushFileBuffers", FALSE, ::FlushFileBuffers, file); }
DWORD SystemCalls::getFileAttributes(const wchar_t* path) {
  return made("getFileAttributes", INVALID_FILE_ATTRIBUTES, ::GetFileAttributesW, path);
}
BOOL SystemCalls::setFileAttributes(const wchar_t* path, DWORD attributes) {
  return made("setFileAttributes", FALSE, ::SetFileAttributesW, path, attributes);
}
BOOL SystemCalls::moveFile(const wchar_t* from, const wchar_t* to) {
  constexpr DWORD kFlags = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
  return made("moveFile", FALSE, ::MoveFileExW, from, to, kFlags);
}
BOOL SystemCalls::replaceFile(const wchar_t* target, const wchar_t* replacement, const wchar_t* backup) {
  constexpr DWORD kFlags = REPLACEFILE_IGNORE_MERGE_ERRORS;
  return made("replaceFile", FALSE, ::ReplaceFileW, target, replacement, backup, kFlags, nullptr, nullptr);
}
BOOL SystemCalls::copyFile(const wchar_t* from, const wchar_t* to) {
  return made("copyFile", FALSE, ::CopyFileW, from, to, FALSE);
}
BOOL SystemCalls::deleteFile(const wchar_t* path) { return made("deleteFile", FALSE, ::DeleteFileW, path); }
BOOL SystemCalls::createDirectory(const wchar_t* path) {
  return made("createDirectory", FALSE, ::CreateDirectoryW, path, nullptr);
}

SystemCalls& realSystemCalls() {
  static SystemCalls calls;
  return calls;
}

OpenFile::OpenFile(SystemCalls& calls, const std::wstring& path, How how, std::u16string shownPath)
    : calls_(&calls), shownPath_(std::move(shownPath)) {
  handle_ = calls.createFile(path.c_str(), how.access, how.sharing, how.disposition, how.flags);
  if (isOpen()) return;
  const DWORD error = ::GetLastError();
  const DWORD attributes = calls.getFileAttributes(path.c_str());
  const bool folder = attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  throw SystemFailure(folder ? kIsFolder : error, shownPath_);
}

OpenFile::OpenFile(OpenFile&& other) noexcept
    : calls_(other.calls_),
      shownPath_(std::move(other.shownPath_)),
      handle_(std::exchange(other.handle_, INVALID_HANDLE_VALUE)) {}

OpenFile& OpenFile::operator=(OpenFile&& other) noexcept {
  if (this != &other) {
    closeQuietly();
    calls_ = other.calls_;
    shownPath_ = std::move(other.shownPath_);
    handle_ = std::exchange(other.handle_, INVALID_HANDLE_VALUE);
  }
  return *this;
}

std::size_t OpenFile::size() const {
  LARGE_INTEGER size{};
  if (::GetFileSizeEx(handle_, &size) == 0) failWithLastError(shownPath_);
  return static_cast<std::size_t>(size.QuadPart);
}

std::size_t OpenFile::read(void* to, std::size_t size) {
  DWORD count = 0;
  if (calls_->readFile(handle_, to, static_cast<DWORD>(std::min(size, kMostBytes)), count) == 0) {
    if (::GetLastError() != ERROR_BROKEN_PIPE) failWithLastError(shownPath_);
    return 0;
  }
  return count;
}

void OpenFile::writeAll(std::string_view bytes) {
  while (!bytes.empty()) {
    DWORD count = 0;
    const auto size = static_cast<DWORD>(std::min(bytes.size(), kMostBytes));
    if (calls_->writeFile(handle_, bytes.data(), size, count) == 0) failWithLastError(shownPath_);
    if (count == 0) throw SystemFailure(ERROR_WRITE_FAULT, shownPath_);
    bytes.remove_prefix(count);
  }
}

void OpenFile::truncate() {
  if (calls_->setEndOfFile(handle_) == 0) failWithLastError(shownPath_);
}

void OpenFile::sync() {
  if (calls_->flushFileBuffers(handle_) == 0) failWithLastError(shownPath_);
}

void OpenFile::close() {
  const HANDLE handle = std::exchange(handle_, INVALID_HANDLE_VALUE);
  if (handle != INVALID_HANDLE_VALUE && calls_->closeHandle(handle) == 0) failWithLastError(shownPath_);
}

void OpenFile::closeQuietly() noexcept {
  const HANDLE handle = std::exchange(handle_, INVALID_HANDLE_VALUE);
  if (handle != INVALID_HANDLE_VALUE) calls_->closeHandle(handle);
}

}  // namespace dravenna::windows
